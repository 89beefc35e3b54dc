import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "about" page of the settings window.
ColumnLayout {
    spacing: 16
    SettingsPageTitle { title: "About"; Layout.fillWidth: true }
    ColumnLayout {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        Layout.fillWidth: true
        spacing: 8
        Text { text: settingsModel.version; font.pixelSize: 13; color: theme.text }
        Text { text: "Your tasks and reports are kept in"; font.pixelSize: 12; color: theme.secondaryText }
        TextEdit {
            text: settingsModel.dataFilePath
            readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
            Layout.fillWidth: true
            font.pixelSize: 13; color: theme.text
            Accessible.name: "Data file"
        }
        Text { text: "Settings for this computer are kept in"; font.pixelSize: 12; color: theme.secondaryText }
        TextEdit {
            text: settingsModel.settingsFilePath
            readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
            Layout.fillWidth: true
            font.pixelSize: 13; color: theme.text
            Accessible.name: "Settings file"
        }
    }
}
