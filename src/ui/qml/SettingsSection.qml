import QtQuick
import Daywyn
import QtQuick.Layouts

// A titled group on a settings page, with an optional explanation under the title.
ColumnLayout {
    property string title
    property string note
    Layout.fillWidth: true
    spacing: 8
    Text {
        text: parent.title
        visible: text !== ""
        font.pixelSize: 15
        font.weight: Font.DemiBold
        color: Theme.text
        Accessible.role: Accessible.Heading
    }
    Text {
        text: parent.note
        visible: text !== ""
        Layout.fillWidth: true
        wrapMode: Text.WordWrap
        font.pixelSize: 12
        color: Theme.secondaryText
    }
}
