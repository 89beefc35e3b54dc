import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "calendars" page of the settings window: the integration switch, the calendars
// to show grouped by account with their colours, why no events appear, the directly
// connected Google accounts, and task sync with a CalDAV server.
ColumnLayout {
    spacing: 16
    SettingsPageTitle { title: "Calendars"; Layout.fillWidth: true }
    ColumnLayout {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        Layout.fillWidth: true
        spacing: 16
        SettingsSection {
            title: "Today's events"
            note: "Daywyn reads the calendars of your desktop (Evolution Data Server, as used by GNOME Calendar and Evolution) and the .ics files in ~/.local/share/Daywyn/calendars. It never changes them."
            SettingsSwitch {
                objectName: "calendarIntegrationSwitch"
                text: "Show calendar events in the drawer"
                checked: Calendars.integrationEnabled
                onToggled: Calendars.setIntegrationEnabled(checked)
            }
            Repeater {
                model: Calendars.explanations
                Text {
                    required property string modelData
                    Layout.fillWidth: true
                    text: modelData
                    wrapMode: Text.WordWrap
                    font.pixelSize: 12
                    color: Theme.text
                }
            }
            Text {
                Layout.fillWidth: true
                visible: Calendars.errorMessage !== ""
                text: Calendars.errorMessage
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.coral
            }
            Text {
                visible: Calendars.isLoading && Calendars.calendarGroups.length === 0
                text: "Looking for calendars…"
                font.pixelSize: 12
                color: Theme.secondaryText
            }
        }
        Repeater {
            model: Calendars.calendarGroups
            SettingsSection {
                id: group
                required property var modelData
                title: modelData.sourceTitle !== "" ? modelData.sourceTitle : "Other calendars"
                Repeater {
                    model: group.modelData.calendars
                    CheckBox {
                        id: box
                        required property var modelData
                        Layout.fillWidth: true
                        checked: modelData.selected
                        text: modelData.title
                        Accessible.name: modelData.title + " (" + group.modelData.sourceTitle + ")"
                        onToggled: Calendars.setCalendarSelected(modelData.id, checked)
                        contentItem: RowLayout {
                            spacing: 8
                            Item { implicitWidth: box.indicator.width }
                            Rectangle {
                                implicitWidth: 10
                                implicitHeight: 10
                                radius: 5
                                color: box.modelData.colorHex
                            }
                            Text {
                                Layout.fillWidth: true
                                text: box.text
                                elide: Text.ElideRight
                                font.pixelSize: 13
                                color: Theme.text
                            }
                        }
                    }
                }
            }
        }
        SettingsGoogleAccounts {}
        SettingsTaskSync {}
        SettingsSection {
            title: "Calendar accounts"
            note: "Online calendars (Google, Nextcloud, Microsoft 365) come through the accounts of your desktop."
            FlatButton {
                text: "Open Online Accounts"
                fill: Theme.raised
                onClicked: if (!SystemSettings.open("calendars")) calendarFailure.text = SystemSettings.failureMessage()
            }
            Text { id: calendarFailure; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: Theme.text }
        }
    }
}
