import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "calendars" page of the settings window.
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
                text: "Open Online Accounts"
                fill: theme.raised
                onClicked: if (!systemSettings.open("calendars")) calendarFailure.text = systemSettings.failureMessage()
            }
            Text { id: calendarFailure; visible: text !== ""; Layout.fillWidth: true; wrapMode: Text.WordWrap; font.pixelSize: 12; color: theme.text }
        }
    }
}
