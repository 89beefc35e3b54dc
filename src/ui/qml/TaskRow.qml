import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// One task: checkbox, title (two lines at most), a secondary line with planned time,
// checklist progress and recorded time against the estimate, and the timer button.
// Hover or keyboard focus reveals pin and the menu button; their place is kept while
// hidden, so revealing them neither rewraps the title nor covers the secondary line.
Rectangle {
    id: row
    // The task's roles in the today model, set by the list's cell.
    property string taskId
    property string title
    property string detail
    property string timeText
    property string clock
    property bool isComplete: false
    property bool isRunning: false
    property bool isOverrun: false
    property int rank: 0
    property bool canDoToday: false
    property string section
    property bool current: false
    property bool listFocused: false
    signal edit()
    signal showHistory()
    signal menuClosed()

    readonly property bool revealed: hover.hovered || (current && listFocused)
    implicitHeight: Math.max(48, body.implicitHeight + 16)
    radius: 8
    color: row.current && row.listFocused ? Theme.selection
           : hover.hovered ? Theme.raised
           : row.section === "completed" ? Qt.rgba(Theme.mint.r, Theme.mint.g, Theme.mint.b,
                                               Theme.dark ? 0.08 : 0.25)
           : "transparent"
    border.width: row.current && row.listFocused ? 2 : 0
    border.color: Theme.focusRing
    Accessible.role: Accessible.ListItem
    Accessible.name: row.title + (row.isComplete ? ", completed" : "") + (row.isRunning ? ", timer running" : "")

    HoverHandler { id: hover }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: menu.popup()
    }
    TapHandler {
        acceptedButtons: Qt.LeftButton
        onDoubleTapped: row.edit()
    }

    RowLayout {
        id: body
        anchors.fill: parent
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        spacing: 8

        AbstractButton {
            id: check
            Layout.alignment: Qt.AlignVCenter
            implicitWidth: 28
            implicitHeight: 28
            focusPolicy: Qt.NoFocus
            Accessible.name: row.isComplete ? "Reopen " + row.title : "Complete " + row.title
            onClicked: Today.toggleComplete(row.taskId)
            contentItem: Item {
                Rectangle {
                    anchors.centerIn: parent
                    width: 18
                    height: 18
                    radius: 5
                    color: row.isComplete ? Theme.mint : "transparent"
                    border.width: 2
                    border.color: row.isComplete ? Theme.mint : Theme.secondaryText
                    Text {
                        anchors.centerIn: parent
                        text: "✓"
                        visible: row.isComplete
                        color: Theme.ink
                        font.pixelSize: 13
                        font.bold: true
                    }
                }
            }
        }

        ColumnLayout {
            // Takes what the buttons leave; a long title wraps instead of widening the row.
            Layout.fillWidth: true
            Layout.minimumWidth: 0
            Layout.preferredWidth: 1
            Layout.fillHeight: false
            Layout.alignment: Qt.AlignVCenter
            Layout.topMargin: 8
            Layout.bottomMargin: 8
            spacing: 2
            Text {
                Layout.fillWidth: true
                Layout.minimumWidth: 0
                text: row.title
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                font.pixelSize: 13
                font.strikeout: row.isComplete
                color: row.isComplete ? Theme.secondaryText : Theme.text
            }
            RowLayout {
                Layout.fillWidth: true
                Layout.minimumWidth: 0
                spacing: 6
                visible: detailText.text !== "" || timeLabel.text !== ""
                Text {
                    id: detailText
                    Layout.fillWidth: true
                    Layout.minimumWidth: 0
                    Layout.maximumWidth: implicitWidth
                    elide: Text.ElideRight
                    text: row.detail
                    visible: text !== ""
                    font.pixelSize: 12
                    color: Theme.secondaryText
                }
                Text {
                    id: timeLabel
                    text: row.timeText
                    visible: text !== ""
                    font.pixelSize: 12
                    color: row.isOverrun ? Theme.coral : Theme.secondaryText
                }
            }
        }

        Text {
            // A pinned task shows its rank.
            visible: row.rank > 0
            text: row.rank
            font.pixelSize: 12
            font.bold: true
            color: Theme.ink
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Layout.preferredWidth: 20
            Layout.preferredHeight: 20
            Accessible.name: "Priority " + row.rank
            Rectangle {
                anchors.fill: parent
                z: -1
                radius: 10
                // On the selected row (itself mint) the badge keeps an outline.
                color: Theme.mint
                border.width: row.current && row.listFocused ? 1 : 0
                border.color: Theme.ink
            }
        }

        FlatButton {
            visible: !row.isComplete
            opacity: row.revealed ? 1 : 0
            enabled: row.revealed
            // As wide as "Unpin" either way, so pinning does not shift the row.
            implicitWidth: Math.ceil(pinWidth.advanceWidth) + 16
            text: row.rank > 0 ? "Unpin" : "Pin"
            focusPolicy: Qt.NoFocus
            onClicked: Today.togglePin(row.taskId)
            TextMetrics { id: pinWidth; text: "Unpin"; font.pixelSize: 13 }
        }
        FlatButton {
            opacity: row.revealed ? 1 : 0
            enabled: row.revealed
            text: "⋯"
            focusPolicy: Qt.NoFocus
            Accessible.name: "More actions for " + row.title
            onClicked: menu.popup()
        }

        AbstractButton {
            id: timerButton
            objectName: "timerButton"
            visible: !row.isComplete
            Layout.alignment: Qt.AlignVCenter
            implicitHeight: 28
            implicitWidth: row.isRunning ? Math.max(64, Math.ceil(clockWidth.advanceWidth) + 34) : 28
            focusPolicy: Qt.NoFocus
            Accessible.name: row.isRunning ? "Stop timer for " + row.title : "Start timer for " + row.title
            onClicked: Today.toggleTimer(row.taskId)
            // The running clock's width, measured outside the button's content.
            TextMetrics { id: clockWidth; text: row.clock; font.pixelSize: 12; font.weight: Font.DemiBold }
            background: Rectangle {
                radius: 8
                color: row.isRunning ? Theme.coral : (timerButton.hovered ? Theme.raised : "transparent")
                border.width: row.isRunning ? 0 : 1
                border.color: Theme.separator
            }
            contentItem: Item {
                Row {
                    anchors.centerIn: parent
                    spacing: 6
                    // Pause: two bars; play: a triangle glyph.
                    Row {
                        visible: row.isRunning
                        spacing: 3
                        anchors.verticalCenter: parent.verticalCenter
                        Rectangle { width: 3; height: 11; color: Theme.ink }
                        Rectangle { width: 3; height: 11; color: Theme.ink }
                    }
                    Text {
                        visible: row.isRunning
                        text: row.clock
                        font.pixelSize: 12
                        font.weight: Font.DemiBold
                        color: Theme.ink
                    }
                    Text {
                        visible: !row.isRunning
                        text: "▶"
                        font.pixelSize: 11
                        color: Theme.text
                    }
                }
            }
        }
    }

    Menu {
        id: menu
        onClosed: row.menuClosed()
        MenuItem { text: "Edit"; onTriggered: row.edit() }
        MenuItem {
            text: "Do today"
            enabled: row.canDoToday
            onTriggered: Today.doToday(row.taskId)
        }
        MenuItem {
            text: "Move to tomorrow"
            enabled: !row.isComplete
            onTriggered: Today.moveToTomorrow(row.taskId)
        }
        MenuItem { text: "History"; onTriggered: row.showHistory() }
        MenuItem {
            text: row.rank > 0 ? "Unpin" : "Pin as priority"
            enabled: !row.isComplete
            onTriggered: Today.togglePin(row.taskId)
        }
        MenuItem { text: row.isRunning ? "Stop timer" : "Start timer"; enabled: !row.isComplete; onTriggered: Today.toggleTimer(row.taskId) }
        MenuSeparator {}
        MenuItem { text: "Delete"; onTriggered: Today.deleteTask(row.taskId) }
    }

    function openMenu() { menu.popup(row, row.width - 200, row.height) }
}
