import QtQuick
import Daywyn
import QtQuick.Controls.Basic

// A one-line text field in the drawer's colours with a visible focus ring.
TextField {
    id: field
    color: Theme.text
    placeholderTextColor: Theme.secondaryText
    font.pixelSize: 13
    selectByMouse: true
    selectionColor: Theme.selection
    selectedTextColor: Theme.dark ? Theme.text : Theme.ink
    opacity: enabled ? 1 : 0.55
    background: Rectangle {
        radius: 8
        color: Theme.raised
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? Theme.focusRing : Theme.separator
    }
}
