import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A settings page's title.
ColumnLayout {
    property string title
    spacing: 16
    Text {
        Layout.topMargin: 16
        Layout.leftMargin: 16
        text: parent.title
        font.pixelSize: 20
        font.weight: Font.DemiBold
        color: Theme.text
    }
}
