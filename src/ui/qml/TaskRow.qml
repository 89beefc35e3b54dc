import QtQuick
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
    color: current && listFocused ? theme.selection
           : hover.hovered ? theme.raised
           : section === "completed" ? Qt.rgba(theme.mint.r, theme.mint.g, theme.mint.b,
                                               theme.dark ? 0.08 : 0.25)
           : "transparent"
    border.width: current && listFocused ? 2 : 0
    border.color: theme.focusRing
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
            onClicked: today.toggleComplete(taskId)
            contentItem: Item {
                Rectangle {
                    anchors.centerIn: parent
                    width: 18
                    height: 18
                    radius: 5
                    color: isComplete ? theme.mint : "transparent"
                    border.width: 2
                    border.color: isComplete ? theme.mint : theme.secondaryText
                    Text {
                        anchors.centerIn: parent
                        text: "✓"
                        visible: isComplete
                        color: theme.ink
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
                color: isComplete ? theme.secondaryText : theme.text
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
                    color: theme.secondaryText
                }
                Text {
                    id: timeLabel
                    text: timeText
                    visible: text !== ""
                    font.pixelSize: 12
                    color: isOverrun ? theme.coral : theme.secondaryText
                }
            }
        }

        Text {
            // A pinned task shows its rank.
            visible: rank > 0
            text: rank
            font.pixelSize: 12
            font.bold: true
            color: theme.ink
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
                color: theme.mint
                border.width: row.current && row.listFocused ? 1 : 0
                border.color: theme.ink
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
            onClicked: today.togglePin(taskId)
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
            onClicked: today.toggleTimer(taskId)
            background: Rectangle {
                radius: 8
                color: isRunning ? theme.coral : (timerButton.hovered ? theme.raised : "transparent")
                border.width: isRunning ? 0 : 1
                border.color: theme.separator
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
                        Rectangle { width: 3; height: 11; color: theme.ink }
                        Rectangle { width: 3; height: 11; color: theme.ink }
                    }
                    Text {
                        id: clockLabel
                        visible: isRunning
                        text: clock
                        font.pixelSize: 12
                        font.weight: Font.DemiBold
                        color: theme.ink
                    }
                    Text {
                        visible: !isRunning
                        text: "▶"
                        font.pixelSize: 11
                        color: theme.text
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
            onTriggered: today.doToday(taskId)
        }
        MenuItem {
            text: "Move to tomorrow"
            enabled: !isComplete
            onTriggered: today.moveToTomorrow(taskId)
        }
        MenuItem { text: "History"; onTriggered: row.showHistory() }
        MenuItem {
            text: rank > 0 ? "Unpin" : "Pin as priority"
            enabled: !isComplete
            onTriggered: today.togglePin(taskId)
        }
        MenuItem { text: isRunning ? "Stop timer" : "Start timer"; enabled: !isComplete; onTriggered: today.toggleTimer(taskId) }
        MenuSeparator {}
        MenuItem { text: "Delete"; onTriggered: today.deleteTask(taskId) }
    }

    function openMenu() { menu.popup(row, row.width - 200, row.height) }
}
