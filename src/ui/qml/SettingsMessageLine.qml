import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The model's last sentence (a refused value, an export result) under a page.
Text {
    Layout.fillWidth: true
    visible: SettingsModel.message !== ""
    text: SettingsModel.message
    wrapMode: Text.WordWrap
    font.pixelSize: 12
    color: Theme.text
    Accessible.role: Accessible.AlertMessage
}
