import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Every completed task, newest first, with the time it took; Reopen brings one back.
Sheet {
    title: "Completed tasks"
    onCloseRequested: History.close()

    Text {
        visible: historyList.count === 0
        text: "Tasks you complete appear here."
        font.pixelSize: 13
        color: Theme.secondaryText
    }

    ListView {
        id: historyList
        Layout.fillWidth: true
        Layout.fillHeight: true
        clip: true
        model: History
        spacing: 4
        delegate: Rectangle {
            id: entry
            required property string taskId
            required property string title
            required property string completedText
            required property string timeText
            width: ListView.view.width
            height: 48
            radius: 8
            color: Theme.raised
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 8
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 0
                    Text { Layout.fillWidth: true; text: entry.title; elide: Text.ElideRight; font.pixelSize: 13; color: Theme.text }
                    Text {
                        text: entry.completedText + (entry.timeText !== "" ? " · " + entry.timeText : "")
                        font.pixelSize: 12
                        color: Theme.secondaryText
                    }
                }
                FlatButton { text: "Reopen"; Accessible.name: "Reopen " + entry.title; onClicked: History.reopen(entry.taskId) }
            }
        }
    }
}
