import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import QtQuick.Layouts

// The settings window: the page list on the left, the chosen page on the right.
// Up and Down move through the pages; Tab goes into the page.
Rectangle {
    id: root
    property string page: "general"
    readonly property var pages: [
        { name: "general", title: "General" },
        { name: "appearance", title: "Appearance" },
        { name: "notifications", title: "Notifications" },
        { name: "calendars", title: "Calendars" },
        { name: "voice", title: "Voice" },
        { name: "history", title: "History" },
        { name: "reports", title: "Reports" },
        { name: "about", title: "About" }
    ]
    color: theme.surface
    implicitWidth: 780
    implicitHeight: 600

    function indexOf(name) {
        for (let i = 0; i < pages.length; ++i)
            if (pages[i].name === name) return i
        return -1
    }
    onPageChanged: settingsModel.clearMessage()

    RowLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.fillHeight: true
            Layout.preferredWidth: 180
            color: theme.raised
            ListView {
                id: pageList
                objectName: "settingsPages"
                anchors.fill: parent
                anchors.margins: 12
                spacing: 4
                model: root.pages
                currentIndex: root.indexOf(root.page)
                focus: true
                activeFocusOnTab: true
                keyNavigationEnabled: true
                onCurrentIndexChanged: if (currentIndex >= 0) root.page = root.pages[currentIndex].name
                Accessible.role: Accessible.PageTabList
                Accessible.name: "Settings pages"
                delegate: Rectangle {
                    required property var modelData
                    required property int index
                    width: ListView.view.width
                    height: 32
                    radius: 8
                    color: ListView.isCurrentItem ? theme.selection : "transparent"
                    border.width: ListView.isCurrentItem && pageList.activeFocus ? 2 : 0
                    border.color: theme.focusRing
                    Accessible.role: Accessible.PageTab
                    Accessible.name: modelData.title
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.left: parent.left
                        anchors.leftMargin: 8
                        text: modelData.title
                        font.pixelSize: 13
                        color: ListView.isCurrentItem && !theme.dark ? theme.ink : theme.text
                    }
                    MouseArea {
                        anchors.fill: parent
                        onClicked: { pageList.currentIndex = index; pageList.forceActiveFocus() }
                    }
                }
            }
        }

        ScrollView {
            id: scroller
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth
            clip: true
            // The stock controls (choices, number fields, dialogs) in the theme's colours.
            palette.button: theme.raised
            palette.buttonText: theme.text
            palette.base: theme.raised
            palette.text: theme.text
            palette.window: theme.surface
            palette.windowText: theme.text
            palette.highlight: theme.selection
            palette.highlightedText: theme.dark ? theme.text : theme.ink
            Loader {
                id: pageLoader
                objectName: "settingsPage"
                width: scroller.availableWidth
                sourceComponent: {
                    switch (root.page) {
                    case "general": return generalPage
                    case "appearance": return appearancePage
                    case "notifications": return notificationsPage
                    case "calendars": return calendarsPage
                    case "voice": return voicePage
                    case "history": return historyPage
                    case "reports": return reportsPage
                    default: return aboutPage
                    }
                }
            }
        }
    }

    // The model's last sentence (a refused value, an export result) under the page.
    component MessageLine: Text {
        Layout.fillWidth: true
        visible: settingsModel.message !== ""
        text: settingsModel.message
        wrapMode: Text.WordWrap
        font.pixelSize: 12
        color: theme.text
        Accessible.role: Accessible.AlertMessage
    }

    component Page: ColumnLayout {
        property string title
        spacing: 16
        Text {
            Layout.topMargin: 16
            Layout.leftMargin: 16
            text: parent.title
            font.pixelSize: 20
            font.weight: Font.DemiBold
            color: theme.text
        }
    }

    Component {
        id: generalPage
        ColumnLayout {
            spacing: 16
            Page { title: "General"; Layout.fillWidth: true }
            ColumnLayout {
                Layout.leftMargin: 16
                Layout.rightMargin: 16
                Layout.fillWidth: true
                spacing: 16

                SettingsSection {
                    title: "Drawer position"
                    note: "Where the handle sits on the screen edge; the drawer slides out there. Top left is the default."
                    ComboBox {
                        objectName: "anchorChoice"
                        Layout.preferredWidth: 240
                        Layout.preferredHeight: 36
                        model: settingsModel.anchors
                        textRole: "label"
                        valueRole: "value"
                        Accessible.name: "Drawer position"
                        Component.onCompleted: currentIndex = indexOfValue(settingsModel.preferences.edgeAnchor)
                        onActivated: settingsModel.setPreference("edgeAnchor", currentValue)
                    }
                }

                SettingsSection {
                    title: "Startup"
                    SettingsSwitch {
                        objectName: "launchAtLoginSwitch"
                        text: "Launch Daywyn at login"
                        checked: launchAtLogin.isEnabled
                        onToggled: launchAtLogin.isEnabled = checked
                    }
                    Text {
                        visible: launchAtLogin.errorMessage !== ""
                        text: launchAtLogin.errorMessage
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                        font.pixelSize: 12
                        color: theme.text
                    }
                }

                SettingsSection {
                    title: "Global quick capture"
                    note: quickCapture.shortcutText + " opens Quick Add from any app."
                    SettingsSwitch {
                        objectName: "quickCaptureSwitch"
                        text: "Global quick capture"
                        checked: quickCapture.isEnabled
                        onToggled: quickCapture.isEnabled = checked
                    }
                    Text {
                        objectName: "quickCaptureStatus"
                        visible: text !== ""
                        text: quickCapture.statusText
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                        font.pixelSize: 12
                        color: quickCapture.isShortcutActive ? theme.secondaryText : theme.text
                    }
                    FlatButton {
                        text: "Open quick capture"
                        fill: theme.raised
                        onClicked: quickCapture.show()
                    }
                }

                SettingsSection {
                    title: "New tasks"
                    SettingsNumber {
                        label: "Default estimate"
                        preference: "defaultTaskMinutes"
                        unit: "min"
                        from: 1
                        to: 720
                    }
                }
                MessageLine {}
            }
        }
    }

    Component {
        id: appearancePage
        ColumnLayout {
            spacing: 16
            Page { title: "Appearance"; Layout.fillWidth: true }
            SettingsSection {
                Layout.leftMargin: 16
                Layout.rightMargin: 16
                title: "Theme"
                note: "System follows the desktop's light or dark style."
                Repeater {
                    model: [
                        { value: "system", label: "System" },
                        { value: "light", label: "Light" },
                        { value: "dark", label: "Dark" }
                    ]
                    RadioButton {
                        required property var modelData
                        text: modelData.label
                        checked: settingsModel.appearance === modelData.value
                        onClicked: settingsModel.appearance = modelData.value
                        Accessible.name: modelData.label
                        contentItem: Text {
                            leftPadding: parent.indicator.width + 8
                            text: parent.text
                            font.pixelSize: 13
                            color: theme.text
                            verticalAlignment: Text.AlignVCenter
                        }
                    }
                }
            }
        }
    }

    Component {
        id: notificationsPage
        ColumnLayout {
            spacing: 16
            Page { title: "Notifications"; Layout.fillWidth: true }
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
                        color: theme.text
                        text: notifications.authorizationStatus === "authorized"
                              ? "Daywyn can send notifications: your desktop's notification service answered."
                              : "No notification service answered, so Daywyn cannot send notifications. Start your desktop's notification service, then try again."
                    }
                    RowLayout {
                        spacing: 8
                        FlatButton {
                            text: "Send test notification"
                            fill: theme.raised
                            onClicked: notifications.sendTestNotification()
                        }
                        FlatButton {
                            text: "Check again"
                            fill: theme.raised
                            onClicked: notifications.refreshAuthorizationStatus()
                        }
                    }
                    Text {
                        visible: text !== ""
                        text: notifications.errorMessage !== "" ? notifications.errorMessage : notifications.actionMessage
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                        font.pixelSize: 12
                        color: theme.text
                        Accessible.role: Accessible.AlertMessage
                    }
                }
                SettingsSection {
                    title: "Reminders"
                    SettingsSwitch {
                        text: "Remind me when a task starts"
                        checked: settingsModel.preferences.taskRemindersEnabled
                        onToggled: notifications.setTaskRemindersEnabled(checked)
                    }
                    SettingsSwitch {
                        text: "Warn before a task's estimate runs out"
                        checked: settingsModel.preferences.budgetNotificationsEnabled
                        onToggled: notifications.setBudgetNotificationsEnabled(checked)
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
                        checked: settingsModel.preferences.scheduledEndAlertsEnabled
                        onToggled: notifications.setScheduledEndAlertsEnabled(checked)
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
                        checked: settingsModel.userSwitch("inAppRemindersEnabled", true)
                        onToggled: settingsModel.setUserSwitch("inAppRemindersEnabled", checked)
                    }
                    SettingsSwitch {
                        text: "Pause for presentations"
                        checked: settingsModel.userSwitch("inAppRemindersPaused", false)
                        onToggled: settingsModel.setUserSwitch("inAppRemindersPaused", checked)
                    }
                    SettingsSwitch {
                        text: "Play Daywyn chime with drawer reminders"
                        checked: settingsModel.userSwitch("inAppReminderSoundEnabled", true)
                        onToggled: settingsModel.setUserSwitch("inAppReminderSoundEnabled", checked)
                    }
                    FlatButton {
                        text: "Preview drawer reminder"
                        fill: theme.raised
                        onClicked: drawerReminders.preview()
                    }
                }
                SettingsSection {
                    title: "Unfinished tasks"
                    note: "Equal start and end hours allow reminders all day."
                    RowLayout {
                        Text { text: "Nudge me"; font.pixelSize: 13; color: theme.text; Layout.fillWidth: true }
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
                            Component.onCompleted: currentIndex = indexOfValue(settingsModel.preferences.unfinishedReminderCadence)
                            onActivated: notifications.setUnfinishedReminderCadence(currentValue)
                        }
                    }
                    SettingsNumber { label: "Active hours start"; preference: "activeHoursStart"; unit: ":00"; from: 0; to: 23 }
                    SettingsNumber { label: "Active hours end"; preference: "activeHoursEnd"; unit: ":00"; from: 1; to: 24 }
                }
                SettingsSection {
                    title: "Desktop notification settings"
                    FlatButton {
                        text: "Open Notification settings"
                        fill: theme.raised
                        onClicked: if (!systemSettings.open("notifications")) settingsFailure.text = systemSettings.failureMessage()
                    }
                    Text { id: settingsFailure; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: theme.text }
                }
                MessageLine {}
            }
        }
    }

    Component {
        id: calendarsPage
        ColumnLayout {
            spacing: 16
            Page { title: "Calendars"; Layout.fillWidth: true }
            ColumnLayout {
                Layout.leftMargin: 16
                Layout.rightMargin: 16
                Layout.fillWidth: true
                spacing: 16
                SettingsSection {
                    title: "Today's events"
                    note: "Saved now; reading your desktop calendars and Google accounts comes with a later version of Daywyn, so no events are shown yet."
                    SettingsSwitch {
                        text: "Show calendar events in the drawer"
                        checked: settingsModel.preferences.calendarIntegrationEnabled
                        onToggled: settingsModel.setPreference("calendarIntegrationEnabled", checked)
                    }
                }
                SettingsSection {
                    title: "Calendar accounts"
                    FlatButton {
                        text: "Open Calendar privacy settings"
                        fill: theme.raised
                        onClicked: if (!systemSettings.open("calendars")) calendarFailure.text = systemSettings.failureMessage()
                    }
                    Text { id: calendarFailure; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: theme.text }
                }
            }
        }
    }

    Component {
        id: voicePage
        ColumnLayout {
            spacing: 16
            Page { title: "Voice"; Layout.fillWidth: true }
            ColumnLayout {
                Layout.leftMargin: 16
                Layout.rightMargin: 16
                Layout.fillWidth: true
                spacing: 16
                SettingsSection {
                    title: "Voice capture"
                    note: "Speaking a task list, recognised on this computer only, comes with a later version of Daywyn. The Quick Add panel shows its button switched off until then."
                }
                SettingsSection {
                    title: "Microphone"
                    RowLayout {
                        spacing: 8
                        FlatButton {
                            text: "Open Microphone settings"
                            fill: theme.raised
                            onClicked: if (!systemSettings.open("microphone")) voiceFailure.text = systemSettings.failureMessage()
                        }
                        FlatButton {
                            text: "Open Speech Recognition settings"
                            fill: theme.raised
                            onClicked: if (!systemSettings.open("speechRecognition")) voiceFailure.text = systemSettings.failureMessage()
                        }
                    }
                    Text { id: voiceFailure; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: theme.text }
                }
            }
        }
    }

    Component {
        id: historyPage
        ColumnLayout {
            spacing: 12
            Page { title: "History"; Layout.fillWidth: true }
            Text {
                Layout.leftMargin: 16
                visible: settingsModel.completedTasks.length === 0
                text: "Tasks you complete appear here."
                font.pixelSize: 13
                color: theme.secondaryText
            }
            Repeater {
                model: settingsModel.completedTasks
                Rectangle {
                    required property var modelData
                    Layout.leftMargin: 16
                    Layout.rightMargin: 16
                    Layout.fillWidth: true
                    implicitHeight: 44
                    radius: 8
                    color: theme.raised
                    Accessible.role: Accessible.ListItem
                    Accessible.name: modelData.title + ", completed " + modelData.completed
                    ColumnLayout {
                        anchors.fill: parent
                        anchors.margins: 8
                        spacing: 0
                        Text { text: modelData.title; font.pixelSize: 13; color: theme.text; elide: Text.ElideRight; Layout.fillWidth: true }
                        Text { text: "Completed " + modelData.completed; font.pixelSize: 12; color: theme.secondaryText }
                    }
                }
            }
        }
    }

    Component {
        id: reportsPage
        ColumnLayout {
            spacing: 16
            Page { title: "Reports"; Layout.fillWidth: true }
            ColumnLayout {
                Layout.leftMargin: 16
                Layout.rightMargin: 16
                Layout.fillWidth: true
                spacing: 16
                MessageLine { objectName: "settingsMessage"; font.pixelSize: 13 }
                SettingsSection {
                    title: "Daily review"
                    note: "Reports stay on this computer and appear on the Reports page in Settings."
                    SettingsSwitch {
                        objectName: "dailyReviewSwitch"
                        text: "Create an end-of-day report"
                        checked: settingsModel.preferences.dailyReviewEnabled
                        onToggled: notifications.setDailyReviewEnabled(checked)
                    }
                    RowLayout {
                        spacing: 8
                        Text { text: "Review time"; font.pixelSize: 13; color: theme.text; Layout.fillWidth: true }
                        SpinBox {
                            from: 0; to: 23; editable: true
                            value: settingsModel.preferences.dailyReviewHour
                            Accessible.name: "Review hour"
                            textFromValue: (v) => ("0" + v).slice(-2)
                            onValueModified: settingsModel.setPreference("dailyReviewHour", value)
                        }
                        Text { text: ":"; color: theme.text }
                        SpinBox {
                            from: 0; to: 59; editable: true
                            value: settingsModel.preferences.dailyReviewMinute
                            Accessible.name: "Review minute"
                            textFromValue: (v) => ("0" + v).slice(-2)
                            onValueModified: settingsModel.setPreference("dailyReviewMinute", value)
                        }
                    }
                    FlatButton {
                        objectName: "generateReview"
                        text: "Generate any review that is due"
                        fill: theme.raised
                        onClicked: settingsModel.generateDueReport()
                    }
                }

                SettingsSection {
                    title: "Saved reviews"
                    Text {
                        visible: settingsModel.reports.length === 0
                        text: "No daily reviews yet"
                        font.pixelSize: 13
                        font.weight: Font.DemiBold
                        color: theme.text
                    }
                    Text {
                        visible: settingsModel.reports.length === 0
                        text: "A local summary appears after the configured review time."
                        font.pixelSize: 12
                        color: theme.secondaryText
                    }
                    Repeater {
                        model: settingsModel.reports
                        Rectangle {
                            required property var modelData
                            Layout.fillWidth: true
                            implicitHeight: reportColumn.implicitHeight + 16
                            radius: 8
                            color: theme.raised
                            ColumnLayout {
                                id: reportColumn
                                anchors.fill: parent
                                anchors.margins: 8
                                spacing: 2
                                Text {
                                    text: modelData.day + " · " + modelData.completed + " done, " + modelData.unfinished + " open"
                                    font.pixelSize: 13; font.weight: Font.DemiBold; color: theme.text
                                }
                                Repeater {
                                    model: modelData.lines
                                    Text { required property string modelData; text: modelData; font.pixelSize: 12; color: theme.secondaryText }
                                }
                            }
                        }
                    }
                }

                SettingsSection {
                    title: "Data export"
                    note: "Choose where to save. JSON includes tasks, checklists, sessions and saved reports; CSV is a task summary. Neither includes account credentials. Import is not included yet."
                    RowLayout {
                        spacing: 8
                        FlatButton {
                            objectName: "exportJson"
                            text: "Export tasks and reports (JSON)"
                            fill: theme.raised
                            onClicked: { exportDialog.asCsv = false; exportDialog.open() }
                        }
                        FlatButton {
                            objectName: "exportCsv"
                            text: "Export task spreadsheet (CSV)"
                            fill: theme.raised
                            onClicked: { exportDialog.asCsv = true; exportDialog.open() }
                        }
                    }
                }
            }
        }
    }

    Component {
        id: aboutPage
        ColumnLayout {
            spacing: 16
            Page { title: "About"; Layout.fillWidth: true }
            ColumnLayout {
                Layout.leftMargin: 16
                Layout.rightMargin: 16
                Layout.fillWidth: true
                spacing: 8
                Text { text: settingsModel.version; font.pixelSize: 13; color: theme.text }
                Text { text: "Your tasks and reports are kept in"; font.pixelSize: 12; color: theme.secondaryText }
                TextEdit {
                    text: settingsModel.dataFilePath
                    readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                    Layout.fillWidth: true
                    font.pixelSize: 13; color: theme.text
                    Accessible.name: "Data file"
                }
                Text { text: "Settings for this computer are kept in"; font.pixelSize: 12; color: theme.secondaryText }
                TextEdit {
                    text: settingsModel.settingsFilePath
                    readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                    Layout.fillWidth: true
                    font.pixelSize: 13; color: theme.text
                    Accessible.name: "Settings file"
                }
            }
        }
    }

    FileDialog {
        id: exportDialog
        property bool asCsv: false
        title: asCsv ? "Export task spreadsheet" : "Export tasks and reports"
        fileMode: FileDialog.SaveFile
        nameFilters: asCsv ? ["Comma-separated text (*.csv)"] : ["JSON (*.json)"]
        defaultSuffix: asCsv ? "csv" : "json"
        selectedFile: "Daywyn-export." + (asCsv ? "csv" : "json")
        onAccepted: settingsModel.exportData(asCsv, selectedFile)
    }
}
