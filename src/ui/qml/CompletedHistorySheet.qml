import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Every completed task, newest first, with the time it took; Reopen brings one back.
Sheet {
    title: "Completed tasks"
    onCloseRequested: history.close()

    Text {
        visible: historyList.count === 0
        text: "Tasks you complete appear here."
        font.pixelSize: 13
        color: theme.secondaryText
    }

    ListView {
        id: historyList
        Layout.fillWidth: true
        Layout.fillHeight: true
        clip: true
        model: history
        spacing: 4
        delegate: Rectangle {
            required property string taskId
            required property string title
            required property string completedText
            required property string timeText
            width: ListView.view.width
            height: 48
            radius: 8
            color: theme.raised
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 8
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 0
                    Text { Layout.fillWidth: true; text: title; elide: Text.ElideRight; font.pixelSize: 13; color: theme.text }
                    Text {
                        text: completedText + (timeText !== "" ? " · " + timeText : "")
                        font.pixelSize: 12
                        color: theme.secondaryText
                    }
                }
                FlatButton { text: "Reopen"; Accessible.name: "Reopen " + title; onClicked: history.reopen(taskId) }
            }
        }
    }
}
