import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The drawer: the day, the add field with its preview, the persistence banner, the
// day's sections and the undo bar. Sheets (editor, session history, completed history)
// open over it. Keys: arrows move between tasks, Space completes, Enter edits, T times,
// P pins, Delete deletes, Ctrl+Z undoes, Escape closes a sheet or hides the drawer.
Rectangle {
    id: root
    color: theme.surface
    border.color: theme.separator
    border.width: 1
    // Stock controls (menus, switches, spin boxes, combo boxes, check boxes) in the
    // theme's colours; the sheets inherit it.
    palette.window: theme.surface
    palette.windowText: theme.text
    palette.base: theme.raised
    palette.text: theme.text
    palette.button: theme.raised
    palette.buttonText: theme.text
    palette.light: theme.dark ? theme.text : "white"
    palette.midlight: theme.separator
    palette.mid: theme.separator
    palette.dark: theme.dark ? theme.mint : theme.ink
    palette.highlight: theme.selection
    palette.highlightedText: theme.dark ? theme.text : theme.ink

    readonly property bool sheetOpen: editor.isOpen || sessions.isOpen || history.isOpen

    function closeTopSheet() {
        if (editor.isOpen) editor.close()
        else if (sessions.isOpen) sessions.close()
        else if (history.isOpen) history.close()
        else return false
        list.forceActiveFocus()
        return true
    }

    Keys.onEscapePressed: if (!closeTopSheet()) drawer.hide()

    Shortcut {
        sequences: [StandardKey.Undo]
        enabled: !root.sheetOpen
        onActivated: today.undo()
    }

    Connections {
        target: drawer
        function onAddFieldFocusRequested() { addField.forceActiveFocus() }
        function onIsVisibleChanged() {
            if (drawer.isVisible && !addField.activeFocus) list.forceActiveFocus()
        }
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 8
        enabled: !root.sheetOpen
        visible: !root.sheetOpen

        Text {
            Layout.fillWidth: true
            elide: Text.ElideRight
            text: today.dayTitle
            font.pixelSize: 20
            font.weight: Font.DemiBold
            color: theme.text
            Accessible.role: Accessible.Heading
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            Text {
                Layout.fillWidth: true
                text: today.openCount === 1 ? "1 open task" : today.openCount + " open tasks"
                font.pixelSize: 12
                color: theme.secondaryText
            }
            Rectangle {
                // The running timer, live while the drawer is shown.
                visible: today.runningClock !== ""
                radius: 8
                color: theme.coral
                implicitHeight: 28
                implicitWidth: runningLabel.implicitWidth + 16
                Accessible.name: "Timer running for " + today.runningTitle + ": " + today.runningClock
                Text {
                    id: runningLabel
                    anchors.centerIn: parent
                    text: today.runningClock
                    font.pixelSize: 13
                    font.weight: Font.DemiBold
                    color: theme.ink
                }
            }
            FlatButton {
                text: "History"
                Accessible.name: "Completed task history"
                onClicked: history.open()
            }
            FlatButton {
                objectName: "drawerVoiceButton"
                text: "Voice"
                Accessible.name: "Speak a task list and review before saving"
                Accessible.description: "Opens voice capture. Recording starts only when you press the microphone there."
                visible: typeof voiceReview !== "undefined"
                onClicked: voiceReview.present()
            }
            FlatButton {
                objectName: "settingsButton"
                text: "Settings"
                Accessible.name: "Open Daywyn settings"
                onClicked: app.openSettings()
            }
        }

        TextField {
            id: addField
            objectName: "addField"
            Layout.fillWidth: true
            placeholderText: "What do you need to do?"
            placeholderTextColor: theme.secondaryText
            color: theme.text
            font.pixelSize: 13
            Accessible.name: "Add a task"
            KeyNavigation.down: list
            property var chips: []
            onTextChanged: chips = today.previewQuickAdd(text)
            onAccepted: if (today.addFromText(text)) text = ""
            Keys.onEscapePressed: (event) => {
                if (text !== "") { text = ""; event.accepted = true }
                else event.accepted = false
            }
            background: Rectangle {
                radius: 8
                color: theme.raised
                border.width: addField.activeFocus ? 2 : 1
                border.color: addField.activeFocus ? theme.focusRing : theme.separator
            }
        }

        Flow {
            Layout.fillWidth: true
            spacing: 6
            visible: addField.chips.length > 0
            Accessible.name: "Recognised: " + addField.chips.map(c => c.text).join(", ")
            Repeater {
                model: addField.chips
                Chip { text: modelData.text }
            }
        }

        Banner {
            Layout.fillWidth: true
            text: today.persistenceError
        }
        Banner {
            Layout.fillWidth: true
            text: today.errorMessage
            dismissible: true
            onDismissed: today.clearError()
        }

        ListView {
            id: list
            objectName: "taskList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            model: today
            spacing: 4
            focus: true
            keyNavigationEnabled: false
            highlightFollowsCurrentItem: false
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: "Today's tasks"
            property string currentTaskId: ""

            // Rows are rebuilt on every change; keep the keyboard on the same task.
            Connections {
                target: today
                function onModelReset() { list.restoreCurrent() }
            }
            function restoreCurrent() {
                var row = today.rowOfTask(currentTaskId)
                if (row < 0) row = firstTaskRow(Math.min(currentIndex, count - 1), 1)
                if (row < 0) row = firstTaskRow(Math.min(currentIndex, count - 1), -1)
                currentIndex = row
            }
            function firstTaskRow(from, step) {
                for (var i = from; i >= 0 && i < count; i += step) {
                    if (today.taskIdAt(i) !== "") return i
                }
                return -1
            }
            function move(step) {
                var row = firstTaskRow(currentIndex + step, step)
                if (row >= 0) {
                    currentIndex = row
                    positionViewAtIndex(row, ListView.Contain)
                } else if (step < 0) {
                    addField.forceActiveFocus()
                }
            }
            onCurrentIndexChanged: {
                var id = today.taskIdAt(currentIndex)
                if (id) currentTaskId = id
            }
            onActiveFocusChanged: if (activeFocus && currentIndex < 0) currentIndex = firstTaskRow(0, 1)

            Keys.onUpPressed: move(-1)
            Keys.onDownPressed: move(1)
            Keys.onSpacePressed: if (currentTaskId) today.toggleComplete(currentTaskId)
            Keys.onReturnPressed: if (currentTaskId) root.openEditor(currentTaskId)
            Keys.onEnterPressed: if (currentTaskId) root.openEditor(currentTaskId)
            Keys.onDeletePressed: if (currentTaskId) today.deleteTask(currentTaskId)
            // T starts or stops the focused task's timer, P pins or unpins it.
            Keys.onPressed: (event) => {
                if (!currentTaskId || event.modifiers !== Qt.NoModifier) return
                if (event.key === Qt.Key_T) { today.toggleTimer(currentTaskId); event.accepted = true }
                else if (event.key === Qt.Key_P) { today.togglePin(currentTaskId); event.accepted = true }
            }
            Keys.onMenuPressed: if (currentItem && currentItem.item && currentItem.item.openMenu) currentItem.item.openMenu()

            delegate: Loader {
                id: cell
                width: ListView.view.width
                required property int index
                required property string kind
                required property string section
                required property string headerTitle
                required property int headerCount
                required property var model
                sourceComponent: kind === "header" ? header : kind === "task" ? task : empty

                Component {
                    id: header
                    RowLayout {
                        width: cell.width
                        height: 32
                        Text {
                            Layout.topMargin: cell.index === 0 ? 0 : 8
                            text: cell.headerTitle
                            font.pixelSize: 15
                            font.weight: Font.DemiBold
                            color: cell.section === "priority" ? theme.coral : theme.text
                            Accessible.role: Accessible.Heading
                        }
                        Text {
                            Layout.topMargin: cell.index === 0 ? 0 : 8
                            text: cell.headerCount
                            font.pixelSize: 12
                            color: theme.secondaryText
                        }
                        Item { Layout.fillWidth: true }
                    }
                }
                Component {
                    id: task
                    TaskRow {
                        width: cell.width
                        // The row's roles come from the model through the cell.
                        property string taskId: cell.model.taskId
                        property string title: cell.model.title
                        property string detail: cell.model.detail
                        property string timeText: cell.model.timeText
                        property string clock: cell.model.clock
                        property bool isComplete: cell.model.isComplete
                        property bool isRunning: cell.model.isRunning
                        property bool isOverrun: cell.model.isOverrun
                        property int rank: cell.model.rank
                        property bool canDoToday: cell.model.canDoToday
                        property string section: cell.section
                        current: cell.ListView.isCurrentItem
                        listFocused: list.activeFocus
                        onEdit: root.openEditor(taskId)
                        onShowHistory: sessions.openTask(taskId)
                    }
                }
                Component {
                    id: empty
                    Text {
                        width: cell.width
                        topPadding: 4
                        bottomPadding: 12
                        wrapMode: Text.Wrap
                        font.pixelSize: 13
                        color: theme.secondaryText
                        text: today.hasTasks
                              ? "Today is clear. Add something above, or bring a task in with Do today."
                              : "Nothing planned yet. Type a task above and press Enter; try “Call Ama tomorrow at 10 for 20 minutes”."
                    }
                }
            }
        }

        Rectangle {
            // Undo stays reachable for a few seconds after a deletion (and Ctrl+Z longer).
            id: undoBar
            Layout.fillWidth: true
            implicitHeight: 40
            radius: 8
            color: theme.dark ? theme.raised : theme.ink
            visible: undoTimer.running && today.undoDescription !== ""
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 12
                anchors.rightMargin: 4
                Text {
                    Layout.fillWidth: true
                    text: today.undoDescription
                    elide: Text.ElideRight
                    font.pixelSize: 13
                    color: theme.dark ? theme.text : "white"
                }
                FlatButton {
                    text: "Undo"
                    tint: theme.mint
                    onClicked: today.undo()
                }
            }
            Timer { id: undoTimer; interval: 6000 }
            Connections {
                target: today
                function onRefreshed() {
                    if (today.undoDescription !== "" && today.undoDescription !== undoBar.shown) undoTimer.restart()
                    undoBar.shown = today.undoDescription
                }
            }
            property string shown: ""
        }
    }

    function openEditor(taskId) {
        if (editor.openTask(taskId)) editorSheet.focusTitle()
    }

    TaskEditorSheet { id: editorSheet; anchors.fill: parent; visible: editor.isOpen }
    SessionHistorySheet { anchors.fill: parent; visible: sessions.isOpen && !editor.isOpen }
    CompletedHistorySheet { anchors.fill: parent; visible: history.isOpen && !editor.isOpen && !sessions.isOpen }
}
