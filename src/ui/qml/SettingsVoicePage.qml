import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "voice" page of the settings window: what voice capture needs, whether it is
// there, and the way to the capture screen.
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
            note: "Speak one or more tasks. Pause or say “next task” between items, then review the list before saving. Speech is recognised on this computer only; no audio leaves it."
            RowLayout {
                spacing: 8
                FlatButton {
                    objectName: "openVoiceCapture"
                    text: "Open voice capture"
                    fill: Theme.raised
                    Accessible.description: "Opens voice capture. Recording starts only when you press the microphone there."
                    onClicked: VoiceReview.present()
                }
            }
        }
        SettingsSection {
            title: "Microphone and speech model"
            // Read afresh whenever voice capture opens; asking the sound server from
            // here would wake it just to show a settings page.
            Text {
                objectName: "voicePermissionSummary"
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                text: Voice.permissionSummary
                font.pixelSize: 13
                color: Theme.text
            }
            RowLayout {
                spacing: 8
                FlatButton {
                    text: "Open Microphone settings"
                    fill: Theme.raised
                    onClicked: if (!SystemSettings.open("microphone")) voiceFailure.text = SystemSettings.failureMessage()
                }
                FlatButton {
                    objectName: "installSpeechModel"
                    text: "Install the speech model"
                    fill: Theme.raised
                    onClicked: {
                        voiceFailure.text = "Speech is recognised with the US English model of pocketsphinx. Install it with “sudo apt install pocketsphinx-en-us”, then press Open voice capture again."
                        Qt.openUrlExternally("appstream://pocketsphinx-en-us")
                    }
                }
            }
            Text { id: voiceFailure; objectName: "voiceSettingsMessage"; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: Theme.text }
        }
    }
}
