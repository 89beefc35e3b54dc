import QtQuick
import QtQuick.Controls.Basic

// A one-line text field in the drawer's colours with a visible focus ring.
TextField {
    id: field
    color: theme.text
    placeholderTextColor: theme.secondaryText
    font.pixelSize: 13
    selectByMouse: true
    selectionColor: theme.selection
    selectedTextColor: theme.dark ? theme.text : theme.ink
    opacity: enabled ? 1 : 0.55
    background: Rectangle {
        radius: 8
        color: theme.raised
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? theme.focusRing : theme.separator
    }
}
