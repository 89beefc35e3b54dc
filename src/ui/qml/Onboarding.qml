import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The welcome walk-through: the drawer, quick capture, notifications, then done.
// Enter or Next moves on; Back returns; finishing records that onboarding ran.
Rectangle {
    id: root
    property OnboardingWindow onboarding
    property int step: 0
    readonly property int lastStep: 2
    implicitWidth: 620
    implicitHeight: 580
    color: Theme.surface
    Accessible.role: Accessible.Dialog
    Accessible.name: "Welcome to Daywyn"

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 32
        spacing: 16

        Text {
            text: "Welcome to Daywyn"
            font.pixelSize: 20
            font.weight: Font.DemiBold
            color: Theme.text
            Accessible.role: Accessible.Heading
        }
        Text {
            text: "Step " + (root.step + 1) + " of " + (root.lastStep + 1)
            font.pixelSize: 12
            color: Theme.secondaryText
        }

        StackLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            currentIndex: root.step

            ColumnLayout {
                spacing: 12
                Text { text: "Your day, beside everything else"; font.pixelSize: 15; font.weight: Font.DemiBold; color: Theme.text }
                Text {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    font.pixelSize: 13
                    color: Theme.text
                    text: "Daywyn lives in a drawer at the edge of your screen. Click the small handle, or Daywyn's icon in the panel, and today's plan slides out: your priorities, what is planned for today, what carried over, and what is coming up."
                }
                SettingsSection {
                    title: "Drawer position"
                    note: "You can move it later on the General page of Settings."
                    ComboBox {
                        Layout.preferredWidth: 240
                        Layout.preferredHeight: 36
                        model: SettingsModel.anchors
                        textRole: "label"
                        valueRole: "value"
                        Accessible.name: "Drawer position"
                        palette.button: Theme.raised
                        palette.buttonText: Theme.text
                        palette.window: Theme.surface
                        palette.windowText: Theme.text
                        Component.onCompleted: currentIndex = indexOfValue(SettingsModel.preferences.edgeAnchor)
                        onActivated: SettingsModel.setPreference("edgeAnchor", currentValue)
                    }
                }
                Item { Layout.fillHeight: true }
            }

            ColumnLayout {
                spacing: 12
                Text { text: "Capture a task from anywhere"; font.pixelSize: 15; font.weight: Font.DemiBold; color: Theme.text }
                Text {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    font.pixelSize: 13
                    color: Theme.text
                    text: "Press " + QuickCapture.shortcutText + " in any application. Type a line such as \u201CCall Ama tomorrow at 10 for 20 minutes\u201D and press Enter: Daywyn takes out the day, the time and the estimate, and you are back where you were."
                }
                SettingsSwitch {
                    text: "Global quick capture"
                    checked: QuickCapture.isEnabled
                    onToggled: QuickCapture.isEnabled = checked
                }
                Text {
                    visible: text !== ""
                    text: QuickCapture.statusText
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    font.pixelSize: 12
                    color: Theme.text
                }
                FlatButton { text: "Try Quick Add now"; fill: Theme.raised; onClicked: QuickCapture.show() }
                Item { Layout.fillHeight: true }
            }

            ColumnLayout {
                spacing: 12
                Text { text: "Reminders"; font.pixelSize: 15; font.weight: Font.DemiBold; color: Theme.text }
                Text {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    font.pixelSize: 13
                    color: Theme.text
                    text: "Daywyn can remind you through your desktop's notifications when a task starts, and with gentle pop-outs beside the drawer. Choose what you want now; Settings › Notifications has the rest."
                }
                SettingsSwitch {
                    text: "Remind me when a task starts"
                    checked: SettingsModel.preferences.taskRemindersEnabled
                    onToggled: Notifications.setTaskRemindersEnabled(checked)
                }
                SettingsSwitch {
                    text: "Create an end-of-day report"
                    checked: SettingsModel.preferences.dailyReviewEnabled
                    onToggled: Notifications.setDailyReviewEnabled(checked)
                }
                Text {
                    visible: Notifications.errorMessage !== ""
                    text: Notifications.errorMessage
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    font.pixelSize: 12
                    color: Theme.text
                }
                Item { Layout.fillHeight: true }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            FlatButton {
                text: "Back"
                visible: root.step > 0
                onClicked: root.step -= 1
            }
            Item { Layout.fillWidth: true }
            FlatButton {
                id: nextButton
                objectName: "onboardingNext"
                primary: true
                focus: true
                text: root.step < root.lastStep ? "Next" : "Start using Daywyn"
                onClicked: root.step < root.lastStep ? root.step += 1 : root.onboarding.complete()
                Keys.onReturnPressed: clicked()
            }
        }
    }
}
