import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "reports" page of the settings window. The export buttons ask the window, which
// owns the save dialog.
ColumnLayout {
    id: page
    signal exportRequested(bool asCsv)
    spacing: 16
    SettingsPageTitle { title: "Reports"; Layout.fillWidth: true }
    ColumnLayout {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        Layout.fillWidth: true
        spacing: 16
        SettingsMessageLine { objectName: "settingsMessage"; font.pixelSize: 13 }
        SettingsSection {
            title: "Daily review"
            note: "Reports stay on this computer and appear on the Reports page in Settings."
            SettingsSwitch {
                objectName: "dailyReviewSwitch"
                text: "Create an end-of-day report"
                checked: SettingsModel.preferences.dailyReviewEnabled
                onToggled: Notifications.setDailyReviewEnabled(checked)
            }
            RowLayout {
                spacing: 8
                Text { text: "Review time"; font.pixelSize: 13; color: Theme.text; Layout.fillWidth: true }
                SpinBox {
                    from: 0; to: 23; editable: true
                    value: SettingsModel.preferences.dailyReviewHour
                    Accessible.name: "Review hour"
                    textFromValue: (v) => ("0" + v).slice(-2)
                    onValueModified: SettingsModel.setPreference("dailyReviewHour", value)
                }
                Text { text: ":"; color: Theme.text }
                SpinBox {
                    from: 0; to: 59; editable: true
                    value: SettingsModel.preferences.dailyReviewMinute
                    Accessible.name: "Review minute"
                    textFromValue: (v) => ("0" + v).slice(-2)
                    onValueModified: SettingsModel.setPreference("dailyReviewMinute", value)
                }
            }
            FlatButton {
                objectName: "generateReview"
                text: "Generate any review that is due"
                fill: Theme.raised
                onClicked: SettingsModel.generateDueReport()
            }
        }

        SettingsSection {
            title: "Saved reviews"
            Text {
                visible: SettingsModel.reports.length === 0
                text: "No daily reviews yet"
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Theme.text
            }
            Text {
                visible: SettingsModel.reports.length === 0
                text: "A local summary appears after the configured review time."
                font.pixelSize: 12
                color: Theme.secondaryText
            }
            Repeater {
                model: SettingsModel.reports
                Rectangle {
                    id: report
                    required property var modelData
                    Layout.fillWidth: true
                    implicitHeight: reportColumn.implicitHeight + 16
                    radius: 8
                    color: Theme.raised
                    ColumnLayout {
                        id: reportColumn
                        anchors.fill: parent
                        anchors.margins: 8
                        spacing: 2
                        Text {
                            text: report.modelData.day + " · " + report.modelData.completed + " done, " + report.modelData.unfinished + " open"
                            font.pixelSize: 13; font.weight: Font.DemiBold; color: Theme.text
                        }
                        Repeater {
                            model: report.modelData.lines
                            Text { required property string modelData; text: modelData; font.pixelSize: 12; color: Theme.secondaryText }
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
                    fill: Theme.raised
                    onClicked: page.exportRequested(false)
                }
                FlatButton {
                    objectName: "exportCsv"
                    text: "Export task spreadsheet (CSV)"
                    fill: Theme.raised
                    onClicked: page.exportRequested(true)
                }
            }
        }
    }
}
