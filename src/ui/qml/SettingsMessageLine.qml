import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The model's last sentence (a refused value, an export result) under a page.
Text {
    Layout.fillWidth: true
    visible: settingsModel.message !== ""
    text: settingsModel.message
    wrapMode: Text.WordWrap
    font.pixelSize: 12
    color: theme.text
    Accessible.role: Accessible.AlertMessage
}
