import QtQuick
import Daywyn
import QtQuick.Layouts

// A task's work sessions, newest first, each with Edit and Delete. The one being edited
// is highlighted; Edit asks the sheet to put its times into the editor's fields.
ListView {
    objectName: "sessionList"
    property string editingId: ""
    signal editRequested(string startText, string endText)
    clip: true
    model: Sessions
    spacing: 4
    delegate: Rectangle {
        id: session
        required property string sessionId
        required property string startText
        required property string endText
        required property string span
        required property string duration
        // The list, through the view every delegate is given: its ids are not in reach.
        readonly property SessionList list: ListView.view as SessionList
        width: ListView.view.width
        height: 40
        radius: 8
        color: list.editingId === sessionId ? Theme.selection : Theme.raised
        RowLayout {
            anchors.fill: parent
            anchors.leftMargin: 8
            Text { Layout.fillWidth: true; text: session.span; font.pixelSize: 13; color: Theme.text; elide: Text.ElideRight }
            Text { text: session.duration; font.pixelSize: 12; color: Theme.secondaryText }
            FlatButton {
                text: "Edit"
                onClicked: {
                    session.list.editingId = session.sessionId
                    session.list.editRequested(session.startText, session.endText)
                }
            }
            FlatButton {
                text: "Delete"
                Accessible.name: "Delete session " + session.span
                onClicked: {
                    if (session.list.editingId === session.sessionId) session.list.editingId = ""
                    Sessions.deleteSession(session.sessionId)
                }
            }
        }
    }
}
