import QtQuick
import Daywyn
import QtQuick.Layouts

// The drawer's reminder pop-out: a headline, one line of detail and three buttons. It
// fades in, never takes the keyboard, and leaves the decision to the user.
Item {
    id: root
    property string title
    property string detail

    function fadeIn(animate) {
        fade.stop();
        card.opacity = animate ? 0 : 1;
        if (animate)
            fade.start();
    }

    Accessible.role: Accessible.AlertMessage
    Accessible.name: root.title

    Rectangle {
        // The soft shadow: a slightly larger, faint ink card behind the panel.
        anchors.fill: card
        anchors.margins: -2
        anchors.topMargin: 0
        anchors.bottomMargin: -4
        radius: 14
        color: Qt.rgba(0.145, 0.071, 0.184, Theme.dark ? 0.5 : 0.14)
        opacity: card.opacity
    }

    Rectangle {
        id: card
        objectName: "reminderCard"
        anchors.fill: parent
        anchors.margins: 4
        radius: 12
        color: Theme.surface
        border.width: 1
        border.color: Theme.separator

        NumberAnimation {
            id: fade
            target: card
            property: "opacity"
            from: 0
            to: 1
            duration: 180
            easing.type: Easing.OutCubic
        }

        ColumnLayout {
            anchors.fill: parent
            anchors.margins: 12
            spacing: 4

            RowLayout {
                spacing: 8
                Layout.fillWidth: true
                Rectangle {
                    // The coral dot: this needs attention now.
                    width: 8
                    height: 8
                    radius: 4
                    color: Theme.coral
                    Layout.alignment: Qt.AlignVCenter
                }
                Text {
                    objectName: "reminderTitle"
                    text: root.title
                    color: Theme.text
                    font.pixelSize: 15
                    font.weight: Font.DemiBold
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
            }
            Text {
                objectName: "reminderDetail"
                text: root.detail
                color: Theme.secondaryText
                font.pixelSize: 13
                wrapMode: Text.Wrap
                maximumLineCount: 3
                elide: Text.ElideRight
                Layout.fillWidth: true
                Layout.fillHeight: true
            }
            RowLayout {
                spacing: 8
                Layout.fillWidth: true
                FlatButton {
                    objectName: "reminderOpen"
                    text: "Open"
                    primary: true
                    focusPolicy: Qt.NoFocus
                    onClicked: EdgePanel.openReminder()
                }
                FlatButton {
                    objectName: "reminderSnooze"
                    text: "Snooze 10 min"
                    fill: Theme.raised
                    focusPolicy: Qt.NoFocus
                    onClicked: EdgePanel.snoozeReminder()
                }
                Item { Layout.fillWidth: true }
                FlatButton {
                    objectName: "reminderDismiss"
                    text: "Dismiss"
                    Accessible.name: "Dismiss reminder"
                    tint: Theme.secondaryText
                    focusPolicy: Qt.NoFocus
                    onClicked: EdgePanel.closeReminder()
                }
            }
        }
    }
}
