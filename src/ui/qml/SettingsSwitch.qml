import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A labelled on/off switch with a visible focus ring.
Switch {
    id: control
    Layout.fillWidth: true
    implicitHeight: 32
    Accessible.name: text
    contentItem: Text {
        leftPadding: control.indicator.width + 8
        text: control.text
        font.pixelSize: 13
        color: control.enabled ? Theme.text : Theme.secondaryText
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.WordWrap
    }
    indicator: Rectangle {
        implicitWidth: 40
        implicitHeight: 22
        y: (control.height - height) / 2
        radius: 11
        color: control.checked ? Theme.coral : Theme.separator
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focusRing
        Rectangle {
            width: 18; height: 18; radius: 9
            y: 2
            x: control.checked ? parent.width - width - 2 : 2
            color: control.checked ? Theme.ink : "white"
        }
    }
}
