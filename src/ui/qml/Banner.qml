import QtQuick
import Daywyn
import QtQuick.Layouts

// A sentence the user must see (a save failure, a refused action), on a coral tint.
Rectangle {
    id: banner
    property string text
    property bool dismissible: false
    signal dismissed()
    visible: text !== ""
    implicitHeight: row.implicitHeight + 16
    radius: 8
    color: Qt.rgba(Theme.coral.r, Theme.coral.g, Theme.coral.b, Theme.dark ? 0.25 : 0.18)
    border.color: Theme.coral
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 8
        Text {
            Layout.fillWidth: true
            text: banner.text
            wrapMode: Text.Wrap
            font.pixelSize: 13
            color: Theme.text
        }
        FlatButton {
            visible: banner.dismissible
            text: "✕"
            Accessible.name: "Dismiss message"
            onClicked: banner.dismissed()
        }
    }
}
