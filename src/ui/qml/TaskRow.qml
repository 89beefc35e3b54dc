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
    property bool current: false
    property bool listFocused: false
    signal edit()
    signal showHistory()
    signal menuClosed()

    readonly property bool revealed: hover.hovered || (current && listFocused)
    implicitHeight: Math.max(48, body.implicitHeight + 16)
    radius: 8
    color: current && listFocused ? Theme.selection
           : hover.hovered ? Theme.raised
           : section === "completed" ? Qt.rgba(Theme.mint.r, Theme.mint.g, Theme.mint.b,
                                               Theme.dark ? 0.08 : 0.25)
           : "transparent"
    border.width: current && listFocused ? 2 : 0
    border.color: Theme.focusRing
    Accessible.role: Accessible.ListItem
    Accessible.name: title + (isComplete ? ", completed" : "") + (isRunning ? ", timer running" : "")

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
            Accessible.name: isComplete ? "Reopen " + title : "Complete " + title
            onClicked: Today.toggleComplete(taskId)
            contentItem: Item {
                Rectangle {
                    anchors.centerIn: parent
                    width: 18
                    height: 18
                    radius: 5
                    color: isComplete ? Theme.mint : "transparent"
                    border.width: 2
                    border.color: isComplete ? Theme.mint : Theme.secondaryText
                    Text {
                        anchors.centerIn: parent
                        text: "✓"
                        visible: isComplete
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
                text: title
                wrapMode: Text.Wrap
                maximumLineCount: 2
                elide: Text.ElideRight
                font.pixelSize: 13
                font.strikeout: isComplete
                color: isComplete ? Theme.secondaryText : Theme.text
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
                    text: detail
                    visible: text !== ""
                    font.pixelSize: 12
                    color: Theme.secondaryText
                }
                Text {
                    id: timeLabel
                    text: timeText
                    visible: text !== ""
                    font.pixelSize: 12
                    color: isOverrun ? Theme.coral : Theme.secondaryText
                }
            }
        }

        Text {
            // A pinned task shows its rank.
            visible: rank > 0
            text: rank
            font.pixelSize: 12
            font.bold: true
            color: Theme.ink
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Layout.preferredWidth: 20
            Layout.preferredHeight: 20
            Accessible.name: "Priority " + rank
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
            visible: !isComplete
            opacity: row.revealed ? 1 : 0
            enabled: row.revealed
            // As wide as "Unpin" either way, so pinning does not shift the row.
            implicitWidth: Math.ceil(pinWidth.advanceWidth) + 16
            text: rank > 0 ? "Unpin" : "Pin"
            focusPolicy: Qt.NoFocus
            onClicked: Today.togglePin(taskId)
            TextMetrics { id: pinWidth; text: "Unpin"; font.pixelSize: 13 }
        }
        FlatButton {
            opacity: row.revealed ? 1 : 0
            enabled: row.revealed
            text: "⋯"
            focusPolicy: Qt.NoFocus
            Accessible.name: "More actions for " + title
            onClicked: menu.popup()
        }

        AbstractButton {
            id: timerButton
            objectName: "timerButton"
            visible: !isComplete
            Layout.alignment: Qt.AlignVCenter
            implicitHeight: 28
            implicitWidth: isRunning ? Math.max(64, clockLabel.implicitWidth + 34) : 28
            focusPolicy: Qt.NoFocus
            Accessible.name: isRunning ? "Stop timer for " + title : "Start timer for " + title
            onClicked: Today.toggleTimer(taskId)
            background: Rectangle {
                radius: 8
                color: isRunning ? Theme.coral : (timerButton.hovered ? Theme.raised : "transparent")
                border.width: isRunning ? 0 : 1
                border.color: Theme.separator
            }
            contentItem: Item {
                Row {
                    anchors.centerIn: parent
                    spacing: 6
                    // Pause: two bars; play: a triangle glyph.
                    Row {
                        visible: isRunning
                        spacing: 3
                        anchors.verticalCenter: parent.verticalCenter
                        Rectangle { width: 3; height: 11; color: Theme.ink }
                        Rectangle { width: 3; height: 11; color: Theme.ink }
                    }
                    Text {
                        id: clockLabel
                        visible: isRunning
                        text: clock
                        font.pixelSize: 12
                        font.weight: Font.DemiBold
                        color: Theme.ink
                    }
                    Text {
                        visible: !isRunning
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
            enabled: canDoToday
            onTriggered: Today.doToday(taskId)
        }
        MenuItem {
            text: "Move to tomorrow"
            enabled: !isComplete
            onTriggered: Today.moveToTomorrow(taskId)
        }
        MenuItem { text: "History"; onTriggered: row.showHistory() }
        MenuItem {
            text: rank > 0 ? "Unpin" : "Pin as priority"
            enabled: !isComplete
            onTriggered: Today.togglePin(taskId)
        }
        MenuItem { text: isRunning ? "Stop timer" : "Start timer"; enabled: !isComplete; onTriggered: Today.toggleTimer(taskId) }
        MenuSeparator {}
        MenuItem { text: "Delete"; onTriggered: Today.deleteTask(taskId) }
    }

    function openMenu() { menu.popup(row, row.width - 200, row.height) }
}
