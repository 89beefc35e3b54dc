import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// A task's work sessions, newest first: add one, edit one, delete one (with undo).
Sheet {
    id: sheet
    title: "History of " + Sessions.taskTitle
    onCloseRequested: Sessions.close()
    property string editingId: ""

    Text {
        text: Sessions.totalText !== "" ? "Recorded " + Sessions.totalText : "Nothing recorded yet."
        font.pixelSize: 12
        color: Theme.secondaryText
    }

    ListView {
        Layout.fillWidth: true
        Layout.fillHeight: true
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
            width: ListView.view.width
            height: 40
            radius: 8
            color: sheet.editingId === sessionId ? Theme.selection : Theme.raised
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 8
                Text { Layout.fillWidth: true; text: session.span; font.pixelSize: 13; color: Theme.text; elide: Text.ElideRight }
                Text { text: session.duration; font.pixelSize: 12; color: Theme.secondaryText }
                FlatButton {
                    text: "Edit"
                    onClicked: { sheet.editingId = session.sessionId; startField.text = session.startText; endField.text = session.endText }
                }
                FlatButton {
                    text: "Delete"
                    Accessible.name: "Delete session " + session.span
                    onClicked: { if (sheet.editingId === session.sessionId) sheet.editingId = ""; Sessions.deleteSession(session.sessionId) }
                }
            }
        }
    }

    GridLayout {
        Layout.fillWidth: true
        columns: 2
        Text { text: "Start"; font.pixelSize: 13; color: Theme.text }
        Field { id: startField; Layout.fillWidth: true; text: Sessions.suggestedStart(); Accessible.name: "Session start" }
        Text { text: "End"; font.pixelSize: 13; color: Theme.text }
        Field { id: endField; Layout.fillWidth: true; text: Sessions.suggestedEnd(); Accessible.name: "Session end" }
    }

    Banner { Layout.fillWidth: true; text: Sessions.errorMessage }

    RowLayout {
        Layout.fillWidth: true
        FlatButton {
            visible: Sessions.undoDescription !== ""
            text: "Undo"
            Accessible.name: "Undo " + Sessions.undoDescription
            onClicked: Sessions.undo()
        }
        Item { Layout.fillWidth: true }
        FlatButton {
            visible: sheet.editingId !== ""
            text: "Cancel edit"
            onClicked: sheet.editingId = ""
        }
        FlatButton {
            primary: true
            text: sheet.editingId !== "" ? "Save session" : "Add session"
            onClicked: {
                var ok = sheet.editingId !== ""
                    ? Sessions.updateSession(sheet.editingId, startField.text, endField.text)
                    : Sessions.addSession(startField.text, endField.text)
                if (ok) sheet.editingId = ""
            }
        }
    }
}
