import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The drawer: the day, the add field with its preview, the persistence banner, the
// day's sections, the undo bar and, when task sync is on, its quiet status line. Sheets (editor, session history, completed history)
// open over it. The add field has the keyboard whenever the drawer opens, so typing
// never acts on a task; Down moves into the list, where arrows, Home, End, Page Up and
// Page Down move between tasks, Space completes, Enter edits, T times, P pins, Delete
// deletes and the Menu key opens the task's menu. Ctrl+Z undoes, Escape closes a sheet
// or hides the drawer.
Rectangle {
    id: root
    color: Theme.surface
    border.color: Theme.separator
    border.width: 1
    // Stock controls (menus, switches, spin boxes, combo boxes, check boxes) in the
    // theme's colours; the sheets inherit it.
    palette.window: Theme.surface
    palette.windowText: Theme.text
    palette.base: Theme.raised
    palette.text: Theme.text
    palette.button: Theme.raised
    palette.buttonText: Theme.text
    // The highlighted menu item's fill: the selection colour, which the text reads on
    // in both themes (white vanished on the light menu, and under light text in dark).
    palette.light: Theme.selection
    palette.midlight: Theme.separator
    palette.mid: Theme.separator
    palette.dark: Theme.dark ? Theme.mint : Theme.ink
    palette.highlight: Theme.selection
    palette.highlightedText: Theme.dark ? Theme.text : Theme.ink

    readonly property bool sheetOpen: Editor.isOpen || Sessions.isOpen || History.isOpen
    // Where the keyboard goes back to when the last sheet closes: the list (on the row
    // the sheet was opened from) or the add field.
    property bool listHadFocus: false

    function closeTopSheet() {
        if (Editor.isOpen) Editor.close()
        else if (Sessions.isOpen) Sessions.close()
        else if (History.isOpen) History.close()
        else return false
        return true
    }

    // However a sheet was opened (key, button, menu or mouse) it takes the keyboard, so
    // Escape reaches it; however it was closed, the keyboard comes back to the drawer.
    onSheetOpenChanged: {
        if (sheetOpen) {
            listHadFocus = list.activeFocus || listHadFocus
            if (Editor.isOpen) editorSheet.focusTitle()
            else if (Sessions.isOpen) sessionSheet.forceActiveFocus()
            else historySheet.forceActiveFocus()
        } else {
            if (listHadFocus && list.currentIndex >= 0) list.forceActiveFocus()
            else addField.forceActiveFocus()
            listHadFocus = false
        }
    }
    // One sheet can replace another (Edit from History); the new one takes the keys.
    Connections {
        target: Sessions
        function onOpenChanged() { if (Sessions.isOpen && !Editor.isOpen) sessionSheet.forceActiveFocus() }
    }
    Connections {
        target: Editor
        function onOpenChanged() { if (Editor.isOpen) editorSheet.focusTitle() }
    }

    Keys.onEscapePressed: if (!closeTopSheet()) EdgePanel.hide()

    // The key sequences Qt gives StandardKey.Undo on Linux desktops, written out: the
    // StandardKey enumeration is not resolved by qmllint 6.4.
    Shortcut {
        sequences: ["Ctrl+Z", "Alt+Backspace"]
        enabled: !root.sheetOpen
        onActivated: Today.undo()
    }

    Connections {
        target: EdgePanel
        function onAddFieldFocusRequested() { addField.forceActiveFocus() }
        // A freshly opened drawer types into the add field, never into a row.
        function onIsVisibleChanged() {
            if (EdgePanel.isVisible && !root.sheetOpen) addField.forceActiveFocus()
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
            text: Today.dayTitle
            font.pixelSize: 20
            font.weight: Font.DemiBold
            color: Theme.text
            Accessible.role: Accessible.Heading
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            Text {
                Layout.fillWidth: true
                text: Today.openCount === 1 ? "1 open task" : Today.openCount + " open tasks"
                font.pixelSize: 12
                color: Theme.secondaryText
            }
            Rectangle {
                // The running timer, live while the drawer is shown.
                visible: Today.runningClock !== ""
                radius: 8
                color: Theme.coral
                implicitHeight: 28
                implicitWidth: runningLabel.implicitWidth + 16
                Accessible.name: "Timer running for " + Today.runningTitle + ": " + Today.runningClock
                Text {
                    id: runningLabel
                    anchors.centerIn: parent
                    text: Today.runningClock
                    font.pixelSize: 13
                    font.weight: Font.DemiBold
                    color: Theme.ink
                }
            }
            FlatButton {
                objectName: "historyButton"
                text: "History"
                Accessible.name: "Completed task history"
                onClicked: History.open()
            }
            FlatButton {
                objectName: "drawerVoiceButton"
                text: "Voice"
                Accessible.name: "Speak a task list and review before saving"
                Accessible.description: "Opens voice capture. Recording starts only when you press the microphone there."
                visible: typeof VoiceReview !== "undefined"
                onClicked: VoiceReview.present()
            }
            FlatButton {
                objectName: "settingsButton"
                text: "Settings"
                Accessible.name: "Open Daywyn settings"
                onClicked: App.openSettings()
            }
        }

        TextField {
            id: addField
            objectName: "addField"
            focus: true
            Layout.fillWidth: true
            placeholderText: "What do you need to do?"
            placeholderTextColor: Theme.secondaryText
            color: Theme.text
            font.pixelSize: 13
            Accessible.name: "Add a task"
            Keys.onDownPressed: if (!events.enter(false)) list.enter()
            property var chips: []
            onTextChanged: chips = Today.previewQuickAdd(text)
            onAccepted: if (Today.addFromText(text)) text = ""
            Keys.onEscapePressed: (event) => {
                if (text !== "") { text = ""; event.accepted = true }
                else event.accepted = false
            }
            background: Rectangle {
                radius: 8
                color: Theme.raised
                border.width: addField.activeFocus ? 2 : 1
                border.color: addField.activeFocus ? Theme.focusRing : Theme.separator
            }
        }

        Flow {
            Layout.fillWidth: true
            spacing: 6
            visible: addField.chips.length > 0
            Accessible.name: "Recognised: " + addField.chips.map(c => c.text).join(", ")
            Repeater {
                model: addField.chips
                Chip {
                    required property var modelData
                    text: modelData.text
                }
            }
        }

        Banner {
            Layout.fillWidth: true
            text: Today.persistenceError
        }
        Banner {
            Layout.fillWidth: true
            text: Today.errorMessage
            dismissible: true
            onDismissed: Today.clearError()
        }

        // Today's calendar events, above the tasks.
        TodayEvents {
            id: events
            Layout.fillWidth: true
            onLeaveUp: addField.forceActiveFocus()
            onLeaveDown: list.enter()
        }

        ListView {
            id: list
            objectName: "taskList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            model: Today
            spacing: 4
            // Tab reaches the list too (after the add field), as Down does.
            activeFocusOnTab: true
            keyNavigationEnabled: false
            highlightFollowsCurrentItem: false
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: "Today's tasks"
            property string currentTaskId: ""

            // Rows are rebuilt on every change; keep the keyboard on the same task.
            Connections {
                target: Today
                function onModelReset() { list.restoreCurrent() }
            }
            function restoreCurrent() {
                var row = Today.rowOfTask(currentTaskId)
                if (row < 0) row = firstTaskRow(Math.min(currentIndex, count - 1), 1)
                if (row < 0) row = firstTaskRow(Math.min(currentIndex, count - 1), -1)
                currentIndex = row
                showCurrent()
            }
            function showCurrent() { if (currentIndex >= 0) positionViewAtIndex(currentIndex, ListView.Contain) }
            // From the add field: onto the remembered task, else the first one.
            function enter() {
                if (count === 0 || firstTaskRow(0, 1) < 0) return
                if (currentIndex < 0 || Today.taskIdAt(currentIndex) === "") currentIndex = firstTaskRow(0, 1)
                forceActiveFocus()
                showCurrent()
            }
            function firstTaskRow(from, step) {
                for (var i = from; i >= 0 && i < count; i += step) {
                    if (Today.taskIdAt(i) !== "") return i
                }
                return -1
            }
            function move(step) {
                var row = firstTaskRow(currentIndex + step, step)
                if (row >= 0) {
                    currentIndex = row
                    showCurrent()
                } else if (step < 0 && !events.enter(true)) {
                    addField.forceActiveFocus()
                }
            }
            // Home, End and the page keys: to the first, last or a page's worth of tasks
            // further, always landing on a task and never leaving the list.
            function jumpTo(row, step) {
                var target = firstTaskRow(Math.max(0, Math.min(row, count - 1)), step)
                if (target < 0) target = firstTaskRow(Math.max(0, Math.min(row, count - 1)), -step)
                if (target >= 0) {
                    currentIndex = target
                    showCurrent()
                }
            }
            function pageRows() {
                var item = currentItem
                var rowHeight = item && item.height > 0 ? item.height + spacing : 56
                return Math.max(1, Math.floor(height / rowHeight) - 1)
            }
            onCurrentIndexChanged: {
                var id = Today.taskIdAt(currentIndex)
                if (id) currentTaskId = id
            }
            onActiveFocusChanged: if (activeFocus && currentIndex < 0) currentIndex = firstTaskRow(0, 1)

            Keys.onUpPressed: move(-1)
            Keys.onDownPressed: move(1)
            Keys.onPressed: (event) => {
                if (event.modifiers !== Qt.NoModifier) return
                switch (event.key) {
                case Qt.Key_Home: jumpTo(0, 1); break
                case Qt.Key_End: jumpTo(count - 1, -1); break
                case Qt.Key_PageUp: jumpTo(currentIndex - pageRows(), -1); break
                case Qt.Key_PageDown: jumpTo(currentIndex + pageRows(), 1); break
                // T starts or stops the focused task's timer, P pins or unpins it.
                case Qt.Key_T: if (currentTaskId) Today.toggleTimer(currentTaskId); break
                case Qt.Key_P: if (currentTaskId) Today.togglePin(currentTaskId); break
                default: return
                }
                event.accepted = true
            }
            Keys.onSpacePressed: if (currentTaskId) Today.toggleComplete(currentTaskId)
            Keys.onReturnPressed: if (currentTaskId) root.openEditor(currentTaskId)
            Keys.onEnterPressed: if (currentTaskId) root.openEditor(currentTaskId)
            Keys.onDeletePressed: if (currentTaskId) Today.deleteTask(currentTaskId)
            Keys.onMenuPressed: {
                const cell = currentItem as Loader
                const row = cell ? cell.item as TaskRow : null
                if (row) row.openMenu()
            }

            delegate: TaskListCell {}
        }

        Rectangle {
            // Undo stays reachable for a few seconds after a deletion (and Ctrl+Z longer).
            id: undoBar
            Layout.fillWidth: true
            implicitHeight: 40
            radius: 8
            color: Theme.dark ? Theme.raised : Theme.ink
            visible: undoTimer.running && Today.undoDescription !== ""
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 12
                anchors.rightMargin: 4
                Text {
                    Layout.fillWidth: true
                    text: Today.undoDescription
                    elide: Text.ElideRight
                    font.pixelSize: 13
                    color: Theme.dark ? Theme.text : "white"
                }
                FlatButton {
                    text: "Undo"
                    tint: Theme.mint
                    onClicked: Today.undo()
                }
            }
            Timer { id: undoTimer; interval: 6000 }
            Connections {
                target: Today
                function onRefreshed() {
                    if (Today.undoDescription !== "" && Today.undoDescription !== undoBar.shown) undoTimer.restart()
                    undoBar.shown = Today.undoDescription
                }
            }
            property string shown: ""
        }

        RowLayout {
            // Task sync, quietly: when it last synced, or what failed.
            objectName: "syncLine"
            Layout.fillWidth: true
            visible: TaskSync.statusLine !== ""
            spacing: 6
            Rectangle {
                visible: TaskSync.hasFailed
                implicitWidth: 6
                implicitHeight: 6
                radius: 3
                color: Theme.coral
            }
            Text {
                Layout.fillWidth: true
                text: TaskSync.statusLine
                elide: Text.ElideRight
                font.pixelSize: 12
                color: Theme.secondaryText
                Accessible.name: "Task sync: " + text
            }
        }
    }

    function openEditor(taskId) {
        if (list.activeFocus) listHadFocus = true
        if (Editor.openTask(taskId)) editorSheet.focusTitle()
    }

    TaskEditorSheet { id: editorSheet; objectName: "editorSheet"; anchors.fill: parent; visible: Editor.isOpen }
    SessionHistorySheet { id: sessionSheet; objectName: "sessionSheet"; anchors.fill: parent; visible: Sessions.isOpen && !Editor.isOpen }
    CompletedHistorySheet { id: historySheet; objectName: "historySheet"; anchors.fill: parent; visible: History.isOpen && !Editor.isOpen && !Sessions.isOpen }
}
