import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "notifications" page of the settings window.
ColumnLayout {
    spacing: 16
    SettingsPageTitle { title: "Notifications"; Layout.fillWidth: true }
    ColumnLayout {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        Layout.fillWidth: true
        spacing: 16
        SettingsSection {
            title: "Desktop notifications"
            Text {
                objectName: "notificationStatus"
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.text
                text: Notifications.authorizationStatus === "authorized"
                      ? "Daywyn can send notifications: your desktop's notification service answered."
                      : "No notification service answered, so Daywyn cannot send notifications. Start your desktop's notification service, then try again."
            }
            RowLayout {
                spacing: 8
                FlatButton {
                    text: "Send test notification"
                    fill: Theme.raised
                    onClicked: Notifications.sendTestNotification()
                }
                FlatButton {
                    text: "Check again"
                    fill: Theme.raised
                    onClicked: Notifications.refreshAuthorizationStatus()
                }
            }
            Text {
                visible: text !== ""
                text: Notifications.errorMessage !== "" ? Notifications.errorMessage : Notifications.actionMessage
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.text
                Accessible.role: Accessible.AlertMessage
            }
        }
        SettingsSection {
            title: "Reminders"
            SettingsSwitch {
                text: "Remind me when a task starts"
                checked: SettingsModel.preferences.taskRemindersEnabled
                onToggled: Notifications.setTaskRemindersEnabled(checked)
            }
            SettingsSwitch {
                text: "Warn before a task's estimate runs out"
                checked: SettingsModel.preferences.budgetNotificationsEnabled
                onToggled: Notifications.setBudgetNotificationsEnabled(checked)
            }
            SettingsNumber {
                label: "Estimate warning lead"
                preference: "budgetWarningLeadMinutes"
                unit: "min"
                from: 1
                to: 120
            }
            SettingsSwitch {
                text: "Alert when a scheduled end passes"
                checked: SettingsModel.preferences.scheduledEndAlertsEnabled
                onToggled: Notifications.setScheduledEndAlertsEnabled(checked)
            }
            SettingsNumber {
                label: "End warning lead"
                preference: "endWarningLeadMinutes"
                unit: "min"
                from: 1
                to: 120
            }
        }
        SettingsSection {
            title: "Drawer pop-outs"
            note: "Gentle reminders beside the drawer for due tasks and a check-in now and then; never while the screen is locked, and old reminders are not replayed after long absences."
            SettingsSwitch {
                text: "Show gentle drawer pop-outs"
                checked: SettingsModel.userSwitch("inAppRemindersEnabled", true)
                onToggled: SettingsModel.setUserSwitch("inAppRemindersEnabled", checked)
            }
            SettingsSwitch {
                text: "Pause for presentations"
                checked: SettingsModel.userSwitch("inAppRemindersPaused", false)
                onToggled: SettingsModel.setUserSwitch("inAppRemindersPaused", checked)
            }
            SettingsSwitch {
                text: "Play Daywyn chime with drawer reminders"
                checked: SettingsModel.userSwitch("inAppReminderSoundEnabled", true)
                onToggled: SettingsModel.setUserSwitch("inAppReminderSoundEnabled", checked)
            }
            SettingsNumber { objectName: "popOutsFrom"; label: "Pop-outs from"; userKey: "inAppActiveStart"; fallback: 9; unit: ":00"; from: 0; to: 23 }
            SettingsNumber { objectName: "popOutsUntil"; label: "Pop-outs until"; userKey: "inAppActiveEnd"; fallback: 21; unit: ":00"; from: 0; to: 24 }
            Text {
                Layout.fillWidth: true
                text: "Pop-outs appear only between these hours; equal hours allow them all day."
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.secondaryText
            }
            FlatButton {
                text: "Preview drawer reminder"
                fill: Theme.raised
                onClicked: DrawerReminders.preview()
            }
        }
        SettingsSection {
            title: "Unfinished tasks"
            note: "Notifications about open tasks are sent only between these hours; equal hours allow them all day."
            RowLayout {
                Text { text: "Nudge me"; font.pixelSize: 13; color: Theme.text; Layout.fillWidth: true }
                ComboBox {
                    Layout.preferredWidth: 200
                    Layout.preferredHeight: 36
                    model: [
                        { value: 0, label: "Off" },
                        { value: 30, label: "Every 30 minutes" },
                        { value: 60, label: "Hourly" },
                        { value: 120, label: "Every 2 hours" }
                    ]
                    textRole: "label"
                    valueRole: "value"
                    Accessible.name: "Unfinished task reminders"
                    Component.onCompleted: currentIndex = indexOfValue(SettingsModel.preferences.unfinishedReminderCadence)
                    onActivated: Notifications.setUnfinishedReminderCadence(currentValue)
                }
            }
            SettingsNumber { objectName: "nudgesFrom"; label: "Notifications from"; preference: "activeHoursStart"; unit: ":00"; from: 0; to: 23 }
            SettingsNumber { objectName: "nudgesUntil"; label: "Notifications until"; preference: "activeHoursEnd"; unit: ":00"; from: 1; to: 24 }
        }
        SettingsSection {
            title: "Desktop notification settings"
            FlatButton {
                text: "Open Notification settings"
                fill: Theme.raised
                onClicked: if (!SystemSettings.open("notifications")) settingsFailure.text = SystemSettings.failureMessage()
            }
            Text { id: settingsFailure; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: Theme.text }
        }
        SettingsMessageLine {}
    }
}
