import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The task sync part of the Calendars page: the CalDAV account and task list in use,
// the last pass with Sync Now, Stop syncing (asked first), and the conflict log (what
// was kept, what was replaced). Without an account, the form that sets one up.
SettingsSection {
    objectName: "taskSyncSection"
    title: "Task sync"
    note: TaskSync.isSetUp
          ? "Your tasks sync with a task list on your own CalDAV server (Nextcloud, Radicale, Baïkal, Fastmail…) after each change, every 5 minutes and when the computer wakes. The password stays in your keyring."
          : "Keep one plan on several computers (and a phone app that speaks CalDAV) through a task list on your own CalDAV server: Nextcloud, Radicale, Baïkal, Fastmail or any other."

    // Not set up: the form that sets it up.
    SettingsTaskSyncSetup {
        visible: !TaskSync.isSetUp
    }

    // Long addresses are cut in the middle (the start and the list's own name stay),
    // and shown whole in a tool tip; the rest wraps.
    Repeater {
        model: TaskSync.isSetUp ? [
            { label: "Server", value: TaskSync.serverUrl, address: true },
            { label: "User", value: TaskSync.user, address: false },
            { label: "Task list", value: TaskSync.listName, address: false },
            { label: "Address", value: TaskSync.listUrl, address: true },
            { label: "Last pass", value: TaskSync.lastPass, address: false }
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
                id: value
                Layout.fillWidth: true
                Layout.preferredWidth: 100
                text: detail.modelData.value
                elide: detail.modelData.address ? Text.ElideMiddle : Text.ElideNone
                wrapMode: detail.modelData.address ? Text.NoWrap : Text.Wrap
                font.pixelSize: 13
                color: Theme.text
                Accessible.name: detail.modelData.label + ": " + detail.modelData.value
                HoverHandler { id: valueHover }
                ToolTip.visible: value.truncated && valueHover.hovered
                ToolTip.text: detail.modelData.value
                ToolTip.delay: 500
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
        FlatButton {
            id: stopButton
            objectName: "stopSyncingButton"
            visible: !stopConfirm.visible
            text: "Stop syncing…"
            fill: Theme.raised
            onClicked: {
                stopConfirm.visible = true
                keepStopping.forceActiveFocus()
            }
        }
        Text {
            visible: TaskSync.pendingChanges > 0
            text: TaskSync.pendingChanges === 1 ? "1 change waits to be sent" : TaskSync.pendingChanges + " changes wait to be sent"
            font.pixelSize: 12
            color: Theme.secondaryText
        }
    }

    ColumnLayout {
        id: stopConfirm
        objectName: "stopSyncingConfirm"
        visible: false
        Layout.fillWidth: true
        spacing: 6
        function keep() {
            stopConfirm.visible = false
            stopButton.forceActiveFocus()
        }
        Keys.onEscapePressed: stopConfirm.keep()
        Text {
            Layout.fillWidth: true
            text: "Stop syncing tasks with this server?"
            wrapMode: Text.WordWrap
            font.pixelSize: 13
            color: Theme.text
        }
        Text {
            Layout.fillWidth: true
            text: "Daywyn forgets the account, its password in the keyring and the conflict log. Your tasks stay here as they are, and the server keeps its copy."
            wrapMode: Text.WordWrap
            font.pixelSize: 12
            color: Theme.secondaryText
        }
        RowLayout {
            spacing: 8
            FlatButton {
                objectName: "confirmStopSyncingButton"
                text: "Stop syncing"
                fill: Theme.coral
                tint: Theme.ink
                onClicked: {
                    stopConfirm.visible = false
                    TaskSync.stopSyncing()
                }
            }
            FlatButton {
                id: keepStopping
                text: "Cancel"
                fill: Theme.raised
                onClicked: stopConfirm.keep()
            }
        }
    }
    Connections {
        target: TaskSync
        function onChanged() {
            if (!TaskSync.isSetUp)
                stopConfirm.visible = false
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
    // Up to 200 entries: a list of its own height that scrolls, the newest first.
    Rectangle {
        visible: TaskSync.isSetUp && TaskSync.conflicts.length > 0
        Layout.fillWidth: true
        Layout.preferredHeight: Math.min(conflictLog.contentHeight + 16, 260)
        radius: 8
        color: Theme.raised
        border.width: conflictLog.activeFocus ? 2 : 0
        border.color: Theme.focusRing
        ListView {
            id: conflictLog
            objectName: "conflictLog"
            anchors.fill: parent
            anchors.margins: 8
            clip: true
            spacing: 8
            boundsBehavior: Flickable.StopAtBounds
            activeFocusOnTab: true
            keyNavigationEnabled: true
            Accessible.role: Accessible.List
            Accessible.name: "Conflict log"
            model: TaskSync.isSetUp ? TaskSync.conflicts : []
            ScrollBar.vertical: ScrollBar { policy: conflictLog.contentHeight > conflictLog.height ? ScrollBar.AlwaysOn : ScrollBar.AsNeeded }
            delegate: ColumnLayout {
                id: conflict
                required property var modelData
                objectName: "conflictRow"
                width: ListView.view.width - 12
                spacing: 2
                Accessible.role: Accessible.ListItem
                Accessible.name: conflict.modelData.title + ", " + conflict.modelData.when + ": " + conflict.modelData.text
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
}
