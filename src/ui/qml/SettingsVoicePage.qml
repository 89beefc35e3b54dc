import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "voice" page of the settings window.
ColumnLayout {
    spacing: 16
    SettingsPageTitle { title: "Voice"; Layout.fillWidth: true }
    ColumnLayout {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        Layout.fillWidth: true
        spacing: 16
        SettingsSection {
            title: "Voice capture"
            note: "Speaking a task list, recognised on this computer only, comes with a later version of Daywyn. The Quick Add panel shows its button switched off until then."
        }
        SettingsSection {
            title: "Microphone"
            RowLayout {
                spacing: 8
                FlatButton {
                    text: "Open Microphone settings"
                    fill: theme.raised
                    onClicked: if (!systemSettings.open("microphone")) voiceFailure.text = systemSettings.failureMessage()
                }
                FlatButton {
                    text: "Install the speech model"
                    fill: theme.raised
                    onClicked: voiceFailure.text = "Recognition on this computer uses the English speech model. In a terminal, run: sudo apt install pocketsphinx-en-us"
                }
            }
            Text { id: voiceFailure; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: theme.text }
        }
    }
}
