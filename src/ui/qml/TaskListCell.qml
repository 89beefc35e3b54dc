import QtQuick
import Daywyn
import QtQuick.Layouts

// One row of the drawer's list: a section's header, a task, or the line shown when
// there is no task. The row is built for its kind only; each kind reads the cell's
// roles through its parent (this loader), since a component that names ids outside
// itself cannot be checked by qmllint 6.4.
Loader {
    required property int index
    required property string kind
    required property string section
    required property string headerTitle
    required property int headerCount
    required property var model
    width: ListView.view.width
    sourceComponent: kind === "header" ? header : kind === "task" ? task : empty

    Component {
        id: header
        RowLayout {
            id: headerRow
            readonly property TaskListCell cell: parent as TaskListCell
            width: cell.width
            height: 32
            Text {
                Layout.topMargin: headerRow.cell.index === 0 ? 0 : 8
                text: headerRow.cell.headerTitle
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: headerRow.cell.section === "priority" ? Theme.coral : Theme.text
                Accessible.role: Accessible.Heading
            }
            Text {
                Layout.topMargin: headerRow.cell.index === 0 ? 0 : 8
                text: headerRow.cell.headerCount
                font.pixelSize: 12
                color: Theme.secondaryText
            }
            Item { Layout.fillWidth: true }
        }
    }
    Component {
        id: task
        TaskRow {
            readonly property TaskListCell cell: parent as TaskListCell
            width: cell.width
            taskId: cell.model.taskId
            title: cell.model.title
            detail: cell.model.detail
            timeText: cell.model.timeText
            clock: cell.model.clock
            isComplete: cell.model.isComplete
            isRunning: cell.model.isRunning
            isOverrun: cell.model.isOverrun
            rank: cell.model.rank
            canDoToday: cell.model.canDoToday
            section: cell.section
            current: cell.ListView.isCurrentItem
            listFocused: cell.ListView.view.activeFocus
            // The drawer gives the opened sheet the keyboard, and brings it back to the
            // list when the sheet closes.
            onEdit: Editor.openTask(taskId)
            onShowHistory: Sessions.openTask(taskId)
            // A closed menu gives the keyboard back to its row, unless its choice opened
            // a sheet: the list is disabled while one is open.
            onMenuClosed: {
                const view = cell.ListView.view
                if (!view.enabled) return
                view.currentIndex = cell.index
                view.forceActiveFocus()
            }
        }
    }
    Component {
        id: empty
        Text {
            readonly property TaskListCell cell: parent as TaskListCell
            width: cell.width
            topPadding: 4
            bottomPadding: 12
            wrapMode: Text.Wrap
            font.pixelSize: 13
            color: Theme.secondaryText
            text: Today.hasTasks
                  ? "Today is clear. Add something above, or bring a task in with Do today."
                  : "Nothing planned yet. Type a task above and press Enter; try “Call Ama tomorrow at 10 for 20 minutes”."
        }
    }
}
