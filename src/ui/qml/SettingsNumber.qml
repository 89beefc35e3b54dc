import QtQuick
import Daywyn
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
        color: Theme.text
        Layout.fillWidth: true
    }
    SpinBox {
        id: box
        from: row.from
        to: row.to
        editable: true
        value: row.userKey !== "" ? SettingsModel.userNumber(row.userKey, row.fallback)
                                  : SettingsModel.preferences[row.preference]
        Accessible.name: row.label
        onValueModified: row.userKey !== "" ? SettingsModel.setUserNumber(row.userKey, value)
                                            : SettingsModel.setPreference(row.preference, value)
        palette.base: Theme.raised
        palette.text: Theme.text
        palette.button: Theme.raised
        palette.buttonText: Theme.text
    }
    Text {
        text: row.unit
        visible: text !== ""
        font.pixelSize: 12
        color: Theme.secondaryText
    }
}
