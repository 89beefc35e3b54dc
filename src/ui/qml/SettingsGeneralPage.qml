import QtQuick
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
                model: settingsModel.anchors
                textRole: "label"
                valueRole: "value"
                Accessible.name: "Drawer position"
                Component.onCompleted: currentIndex = indexOfValue(settingsModel.preferences.edgeAnchor)
                onActivated: settingsModel.setPreference("edgeAnchor", currentValue)
            }
        }

        SettingsSection {
            title: "Startup"
            SettingsSwitch {
                objectName: "launchAtLoginSwitch"
                text: "Launch Daywyn at login"
                checked: launchAtLogin.isEnabled
                onToggled: launchAtLogin.isEnabled = checked
            }
            Text {
                visible: launchAtLogin.errorMessage !== ""
                text: launchAtLogin.errorMessage
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: theme.text
            }
        }

        SettingsSection {
            title: "Global quick capture"
            note: quickCapture.shortcutText + " opens Quick Add from any app."
            SettingsSwitch {
                objectName: "quickCaptureSwitch"
                text: "Global quick capture"
                checked: quickCapture.isEnabled
                onToggled: quickCapture.isEnabled = checked
            }
            Text {
                objectName: "quickCaptureStatus"
                visible: text !== ""
                text: quickCapture.statusText
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: quickCapture.isShortcutActive ? theme.secondaryText : theme.text
            }
            FlatButton {
                text: "Open quick capture"
                fill: theme.raised
                onClicked: quickCapture.show()
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
