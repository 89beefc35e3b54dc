import QtQuick
import Daywyn

// A quiet label for something the add field recognised ("Tomorrow", "10:00", "20 min").
Rectangle {
    property alias text: label.text
    height: 22
    width: label.implicitWidth + 16
    radius: 11
    color: Theme.raised
    border.color: Theme.separator
    Text {
        id: label
        anchors.centerIn: parent
        font.pixelSize: 12
        color: Theme.text
    }
}
