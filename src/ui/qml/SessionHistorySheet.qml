import QtQuick
import Daywyn
import QtQuick.Layouts

// A task's work sessions, newest first: add one, edit one, delete one (with undo).
Sheet {
    id: sheet
    title: "History of " + Sessions.taskTitle
    onCloseRequested: Sessions.close()

    Text {
        text: Sessions.totalText !== "" ? "Recorded " + Sessions.totalText : "Nothing recorded yet."
        font.pixelSize: 12
        color: Theme.secondaryText
    }

    SessionList {
        id: sessionList
        Layout.fillWidth: true
        Layout.fillHeight: true
        onEditRequested: (startText, endText) => {
            startField.text = startText
            endField.text = endText
        }
    }

    GridLayout {
        Layout.fillWidth: true
        columns: 2
        Text { text: "Start"; font.pixelSize: 13; color: Theme.text }
        Field { id: startField; objectName: "sessionStart"; Layout.fillWidth: true; text: Sessions.suggestedStart(); Accessible.name: "Session start" }
        Text { text: "End"; font.pixelSize: 13; color: Theme.text }
        Field { id: endField; objectName: "sessionEnd"; Layout.fillWidth: true; text: Sessions.suggestedEnd(); Accessible.name: "Session end" }
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
            visible: sessionList.editingId !== ""
            text: "Cancel edit"
            onClicked: sessionList.editingId = ""
        }
        FlatButton {
            primary: true
            text: sessionList.editingId !== "" ? "Save session" : "Add session"
            onClicked: {
                var ok = sessionList.editingId !== ""
                    ? Sessions.updateSession(sessionList.editingId, startField.text, endField.text)
                    : Sessions.addSession(startField.text, endField.text)
                if (ok) sessionList.editingId = ""
            }
        }
    }
}
