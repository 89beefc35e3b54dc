import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "history" page of the settings window.
ColumnLayout {
    spacing: 12
    SettingsPageTitle { title: "History"; Layout.fillWidth: true }
    Text {
        Layout.leftMargin: 16
        visible: SettingsModel.completedTasks.length === 0
        text: "Tasks you complete appear here."
        font.pixelSize: 13
        color: Theme.secondaryText
    }
    Repeater {
        model: SettingsModel.completedTasks
        Rectangle {
            id: completed
            required property var modelData
            Layout.leftMargin: 16
            Layout.rightMargin: 16
            Layout.fillWidth: true
            implicitHeight: 44
            radius: 8
            color: Theme.raised
            Accessible.role: Accessible.ListItem
            Accessible.name: modelData.title + ", completed " + modelData.completed
            ColumnLayout {
                anchors.fill: parent
                anchors.margins: 8
                spacing: 0
                Text { text: completed.modelData.title; font.pixelSize: 13; color: Theme.text; elide: Text.ElideRight; Layout.fillWidth: true }
                Text { text: "Completed " + completed.modelData.completed; font.pixelSize: 12; color: Theme.secondaryText }
            }
        }
    }
}
