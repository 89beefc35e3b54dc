import QtQuick
import Daywyn
import QtQuick.Layouts

// One of today's calendar events: the calendar's colour, the time span or "All day",
// the title, and a link button when the event has a meeting link.
Rectangle {
    id: row
    property string title
    property string timeText
    property string colorHex
    property string calendarTitle
    property string link
    implicitHeight: Math.max(36, content.implicitHeight + 12)
    radius: 8
    color: "transparent"
    activeFocusOnTab: true
    border.width: activeFocus ? 2 : 0
    border.color: Theme.focusRing
    Accessible.role: Accessible.ListItem
    Accessible.name: timeText + ", " + title + " (" + calendarTitle + ")"
    Accessible.description: link !== "" ? "Press Return to open the meeting link." : ""
    Keys.onReturnPressed: if (link !== "") Calendars.openLink(link)
    Keys.onEnterPressed: if (link !== "") Calendars.openLink(link)
    Keys.onSpacePressed: if (link !== "") Calendars.openLink(link)

    RowLayout {
        id: content
        anchors.fill: parent
        anchors.leftMargin: 8
        anchors.rightMargin: 4
        spacing: 8
        Rectangle {
            // The calendar's colour.
            implicitWidth: 10
            implicitHeight: 10
            radius: 5
            color: row.colorHex
            Layout.alignment: Qt.AlignVCenter
        }
        Text {
            text: row.timeText
            font.pixelSize: 12
            color: Theme.secondaryText
            Layout.alignment: Qt.AlignVCenter
        }
        Text {
            text: row.title
            Layout.fillWidth: true
            elide: Text.ElideRight
            maximumLineCount: 2
            wrapMode: Text.Wrap
            font.pixelSize: 13
            color: Theme.text
            Layout.alignment: Qt.AlignVCenter
        }
        FlatButton {
            visible: row.link !== ""
            // The row itself takes the keyboard: Return opens the link.
            focusPolicy: Qt.NoFocus
            text: "Open meeting link"
            onClicked: Calendars.openLink(row.link)
        }
    }
}
