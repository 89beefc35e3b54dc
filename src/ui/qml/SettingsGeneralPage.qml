import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "general" page of the settings window.
ColumnLayout {
    spacing: 16
    SettingsPageTitle { title: "General"; Layout.fillWidth: true }
    ColumnLayout {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        Layout.fillWidth: true
        spacing: 16

        SettingsSection {
            title: "Drawer position"
            note: "Where the handle sits on the screen edge; the drawer slides out there. Top left is the default."
            ComboBox {
                objectName: "anchorChoice"
                Layout.preferredWidth: 240
                model: SettingsModel.anchors
                textRole: "label"
                valueRole: "value"
                Accessible.name: "Drawer position"
                Component.onCompleted: currentIndex = indexOfValue(SettingsModel.preferences.edgeAnchor)
                onActivated: SettingsModel.setPreference("edgeAnchor", currentValue)
            }
        }

        SettingsSection {
            title: "Startup"
            SettingsSwitch {
                objectName: "launchAtLoginSwitch"
                text: "Launch Daywyn at login"
                checked: LaunchAtLogin.isEnabled
                onToggled: LaunchAtLogin.isEnabled = checked
            }
            Text {
                visible: LaunchAtLogin.errorMessage !== ""
                text: LaunchAtLogin.errorMessage
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.text
            }
        }

        SettingsSection {
            title: "Global quick capture"
            note: QuickCapture.shortcutText + " opens Quick Add from any app."
            SettingsSwitch {
                objectName: "quickCaptureSwitch"
                text: "Global quick capture"
                checked: QuickCapture.isEnabled
                onToggled: QuickCapture.isEnabled = checked
            }
            Text {
                objectName: "quickCaptureStatus"
                visible: text !== ""
                text: QuickCapture.statusText
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: QuickCapture.isShortcutActive ? Theme.secondaryText : Theme.text
            }
            FlatButton {
                text: "Open quick capture"
                fill: Theme.raised
                onClicked: QuickCapture.show()
            }
        }

        SettingsSection {
            title: "New tasks"
            SettingsNumber {
                label: "Default estimate"
                preference: "defaultTaskMinutes"
                unit: "min"
                from: 1
                to: 720
            }
        }
        SettingsMessageLine {}
    }
}
