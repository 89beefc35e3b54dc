import QtQuick
import Daywyn

// The handle at the screen edge: a thin bar that grows into the logo when the pointer
// comes near; a click (or Enter/Space from assistive technology) toggles the drawer.
// While a timer runs the bar carries a coral mark. The window is cut to visibleShape,
// so no box shows around the bar without a compositor.
Item {
    id: root
    Accessible.role: Accessible.Button
    Accessible.name: "Move closer to reveal Daywyn"
    Accessible.description: "The edge bar expands into the Daywyn logo when the pointer is nearby."

    readonly property bool near: area.containsMouse || EdgePanel.isVisible
    readonly property bool leftSide: EdgePanel.anchor === "topLeft" || EdgePanel.anchor === "bottomLeft"
                                     || EdgePanel.anchor === "leftCenter"
    readonly property bool rightSide: EdgePanel.anchor === "topRight" || EdgePanel.anchor === "bottomRight"
                                      || EdgePanel.anchor === "rightCenter"
    readonly property bool timerRunning: Today.runningClock !== ""
    readonly property rect visibleShape: Qt.rect(tile.x, tile.y, tile.width, tile.height)

    Rectangle {
        // The resting bar hugs the screen edge; near, it becomes the full logo tile.
        id: tile
        color: Theme.ink
        radius: root.near ? 12 : 3
        width: root.near ? root.width : (root.leftSide || root.rightSide ? 6 : root.width - 16)
        height: root.near ? root.height : (root.leftSide || root.rightSide ? root.height - 16 : 6)
        x: root.near ? 0 : (root.leftSide ? 0 : root.rightSide ? root.width - width
                                                                : (root.width - width) / 2)
        y: root.near ? 0 : (root.leftSide || root.rightSide ? (root.height - height) / 2
                           : EdgePanel.anchor === "topCenter" ? 0 : root.height - height)

        Rectangle {
            // The running timer's mark: a coral stretch in the middle of the bar.
            objectName: "timerMark"
            visible: root.timerRunning && !root.near
            anchors.centerIn: parent
            width: root.leftSide || root.rightSide ? parent.width : 14
            height: root.leftSide || root.rightSide ? 14 : parent.height
            radius: 3
            color: Theme.coral
        }
        Rectangle {
            // On the tile: a coral dot in the corner.
            visible: root.timerRunning && root.near
            x: parent.width - width - 6
            y: 6
            width: 10
            height: 10
            radius: 5
            color: Theme.coral
        }

        Item {
            anchors.fill: parent
            visible: root.near
            Rectangle {
                // The sun rising over the horizon, clipped at the line.
                id: sunClip
                x: parent.width * 0.24
                y: parent.height * 0.28
                width: parent.width * 0.52
                height: parent.height * 0.36
                color: "transparent"
                clip: true
                Rectangle {
                    width: parent.width
                    height: width
                    radius: width / 2
                    color: Theme.mint
                }
            }
            Rectangle {
                x: parent.width * 0.16
                y: parent.height * 0.68
                width: parent.width * 0.68
                height: parent.height * 0.08
                radius: height / 2
                color: Theme.coral
            }
        }
    }

    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        cursorShape: Qt.PointingHandCursor
        Accessible.role: Accessible.Button
        Accessible.name: EdgePanel.isVisible ? "Hide edge drawer" : "Show edge drawer"
        Accessible.onPressAction: EdgePanel.toggle()
        onClicked: EdgePanel.toggle()
    }
}
