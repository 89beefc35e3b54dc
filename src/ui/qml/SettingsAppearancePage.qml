import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "appearance" page of the settings window.
ColumnLayout {
    spacing: 16
    SettingsPageTitle { title: "Appearance"; Layout.fillWidth: true }
    SettingsSection {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        title: "Theme"
        note: "System follows the desktop's light or dark style."
        Repeater {
            model: [
                { value: "system", label: "System" },
                { value: "light", label: "Light" },
                { value: "dark", label: "Dark" }
            ]
            RadioButton {
                id: choice
                required property var modelData
                text: modelData.label
                checked: SettingsModel.appearance === modelData.value
                onClicked: SettingsModel.appearance = modelData.value
                Accessible.name: modelData.label
                contentItem: Text {
                    leftPadding: choice.indicator.width + 8
                    text: choice.text
                    font.pixelSize: 13
                    color: Theme.text
                    verticalAlignment: Text.AlignVCenter
                }
            }
        }
    }
}
