import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A labelled whole-number field bound to one preference; a value out of range is
// refused with the model's sentence and the field shows the stored value again.
// With `userKey` it is bound to that key of this machine's settings file instead.
RowLayout {
    id: row
    property string label
    property string preference
    property string userKey
    property int fallback: 0
    property string unit
    property int from: 0
    property int to: 720
    Layout.fillWidth: true
    spacing: 8
    Text {
        text: row.label
        font.pixelSize: 13
        color: theme.text
        Layout.fillWidth: true
    }
    SpinBox {
        id: box
        from: row.from
        to: row.to
        editable: true
        value: row.userKey !== "" ? settingsModel.userNumber(row.userKey, row.fallback)
                                  : settingsModel.preferences[row.preference]
        Accessible.name: row.label
        onValueModified: row.userKey !== "" ? settingsModel.setUserNumber(row.userKey, value)
                                            : settingsModel.setPreference(row.preference, value)
        palette.base: theme.raised
        palette.text: theme.text
        palette.button: theme.raised
        palette.buttonText: theme.text
    }
    Text {
        text: row.unit
        visible: text !== ""
        font.pixelSize: 12
        color: theme.secondaryText
    }
}
