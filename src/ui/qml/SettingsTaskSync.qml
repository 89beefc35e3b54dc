import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The task sync part of the Calendars page: the CalDAV account and task list in use,
// the last pass with Sync Now, and the conflict log (what was kept, what was
// replaced). Without an account it says how to set one up.
SettingsSection {
    objectName: "taskSyncSection"
    title: "Task sync"
    note: TaskSync.isSetUp
          ? "Your tasks sync with a task list on your own CalDAV server (Nextcloud, Radicale, Baïkal, Fastmail…) after each change, every 5 minutes and when the computer wakes. The password stays in your keyring."
          : "Keep one plan on several computers (and a phone app that speaks CalDAV) through a task list on your own CalDAV server: Nextcloud, Radicale, Baïkal, Fastmail or any other."

    // Not set up: the one command that sets it up.
    ColumnLayout {
        visible: !TaskSync.isSetUp
        Layout.fillWidth: true
        spacing: 4
        Text {
            Layout.fillWidth: true
            text: "To set it up, quit Daywyn and run in a terminal:"
            wrapMode: Text.WordWrap
            font.pixelSize: 13
            color: Theme.text
        }
        TextEdit {
            objectName: "taskSyncSetupCommand"
            Layout.fillWidth: true
            readOnly: true
            selectByMouse: true
            text: "daywyn sync setup https://your.server/ --user NAME --password-stdin"
            font.family: "monospace"
            font.pixelSize: 12
            color: Theme.text
            wrapMode: TextEdit.WrapAnywhere
            Accessible.name: "Set-up command"
        }
    }

    Repeater {
        model: TaskSync.isSetUp ? [
            { label: "Server", value: TaskSync.serverUrl },
            { label: "User", value: TaskSync.user },
            { label: "Task list", value: TaskSync.listName + "  (" + TaskSync.listUrl + ")" },
            { label: "Last pass", value: TaskSync.lastPass }
        ] : []
        RowLayout {
            id: detail
            required property var modelData
            Layout.fillWidth: true
            spacing: 12
            Text {
                Layout.preferredWidth: 72
                Layout.alignment: Qt.AlignTop
                text: detail.modelData.label
                font.pixelSize: 12
                color: Theme.secondaryText
            }
            Text {
                Layout.fillWidth: true
                text: detail.modelData.value
                wrapMode: Text.WrapAnywhere
                font.pixelSize: 13
                color: Theme.text
            }
        }
    }

    RowLayout {
        visible: TaskSync.isSetUp
        spacing: 12
        FlatButton {
            objectName: "syncNowButton"
            text: TaskSync.isSyncing ? "Syncing…" : "Sync Now"
            enabled: !TaskSync.isSyncing
            fill: Theme.raised
            onClicked: TaskSync.syncNow()
        }
        Text {
            visible: TaskSync.pendingChanges > 0
            text: TaskSync.pendingChanges === 1 ? "1 change waits to be sent" : TaskSync.pendingChanges + " changes wait to be sent"
            font.pixelSize: 12
            color: Theme.secondaryText
        }
    }

    Text {
        Layout.fillWidth: true
        visible: TaskSync.notice !== ""
        text: TaskSync.notice
        wrapMode: Text.WordWrap
        font.pixelSize: 12
        color: Theme.text
    }

    Text {
        visible: TaskSync.isSetUp
        Layout.topMargin: 8
        text: TaskSync.conflicts.length === 0 ? "No conflicts: no field was edited on two machines at once." : "Conflicts, newest first (the later edit is kept)"
        font.pixelSize: TaskSync.conflicts.length === 0 ? 12 : 13
        font.weight: TaskSync.conflicts.length === 0 ? Font.Normal : Font.DemiBold
        color: TaskSync.conflicts.length === 0 ? Theme.secondaryText : Theme.text
        Layout.fillWidth: true
        wrapMode: Text.WordWrap
    }
    Repeater {
        model: TaskSync.isSetUp ? TaskSync.conflicts : []
        ColumnLayout {
            id: conflict
            required property var modelData
            objectName: "conflictRow"
            Layout.fillWidth: true
            spacing: 2
            Text {
                Layout.fillWidth: true
                text: conflict.modelData.title + "  ·  " + conflict.modelData.when
                elide: Text.ElideRight
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Theme.text
            }
            Text {
                Layout.fillWidth: true
                text: conflict.modelData.text
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.secondaryText
            }
        }
    }
}
