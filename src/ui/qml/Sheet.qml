import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A full-drawer sheet: a title bar with Close, and the content below it.
Rectangle {
    id: sheet
    property string title
    default property alias content: body.data
    signal closeRequested()
    color: Theme.surface
    border.color: Theme.separator
    border.width: 1

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 8
        RowLayout {
            Layout.fillWidth: true
            Text {
                Layout.fillWidth: true
                text: sheet.title
                elide: Text.ElideRight
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Theme.text
                Accessible.role: Accessible.Heading
            }
            FlatButton {
                text: "Close"
                onClicked: sheet.closeRequested()
            }
        }
        ColumnLayout {
            id: body
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: 8
        }
    }
}
