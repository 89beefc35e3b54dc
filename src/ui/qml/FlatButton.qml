import QtQuick
import Daywyn
import QtQuick.Controls.Basic

// A compact text or glyph button with a visible keyboard focus ring and a 28 px target.
AbstractButton {
    id: control
    property color tint: Theme.text
    property color fill: "transparent"
    property bool primary: false
    implicitHeight: 28
    implicitWidth: Math.max(28, implicitContentWidth + 16)
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    contentItem: Text {
        text: control.text
        font.pixelSize: 13
        font.weight: control.primary ? Font.DemiBold : Font.Normal
        color: control.primary ? Theme.ink : (control.enabled ? control.tint : Theme.secondaryText)
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: 8
        color: control.primary ? Theme.coral
               : control.down ? Theme.separator
               : control.hovered ? Theme.raised : control.fill
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focusRing
    }
}
