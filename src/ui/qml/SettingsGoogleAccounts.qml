import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The Google half of the Calendars page: connect an account in the browser, and per
// account its address, its calendars with their colours, and Disconnect (asked first).
SettingsSection {
    title: "Google Calendar"
    note: "Sign-in opens your browser. Access tokens stay in this Mac’s Keychain. While the app is in Google testing mode, only approved test accounts can connect, and Google may require reconnection after seven days."
    RowLayout {
        spacing: 12
        FlatButton {
            objectName: "connectGoogleButton"
            visible: GoogleCalendars.registrationProblem === ""
            enabled: !GoogleCalendars.isConnecting
            text: "Connect Google Account"
            fill: Theme.raised
            onClicked: GoogleCalendars.connectAccount()
        }
        Text {
            visible: GoogleCalendars.isConnecting
            text: "Waiting for Google…"
            font.pixelSize: 12
            color: Theme.secondaryText
        }
    }
    Text {
        Layout.fillWidth: true
        visible: GoogleCalendars.registrationProblem !== ""
        text: GoogleCalendars.registrationProblem
        wrapMode: Text.WordWrap
        font.pixelSize: 12
        color: Theme.text
    }
    Text {
        Layout.fillWidth: true
        visible: GoogleCalendars.errorMessage !== ""
        text: GoogleCalendars.errorMessage
        wrapMode: Text.WordWrap
        font.pixelSize: 12
        color: Theme.coral
    }
    Repeater {
        model: GoogleCalendars.accounts
        ColumnLayout {
            id: account
            required property var modelData
            property bool confirming: false
            Layout.fillWidth: true
            Layout.topMargin: 8
            spacing: 4
            RowLayout {
                Layout.fillWidth: true
                Text {
                    Layout.fillWidth: true
                    text: account.modelData.email
                    elide: Text.ElideRight
                    font.pixelSize: 13
                    font.weight: Font.DemiBold
                    color: Theme.text
                }
                FlatButton {
                    visible: !account.confirming
                    text: "Disconnect"
                    fill: Theme.raised
                    onClicked: account.confirming = true
                }
            }
            ColumnLayout {
                visible: account.confirming
                Layout.fillWidth: true
                spacing: 6
                Text {
                    Layout.fillWidth: true
                    text: "Disconnect this Google account from Daywyn?"
                    wrapMode: Text.WordWrap
                    font.pixelSize: 13
                    color: Theme.text
                }
                Text {
                    Layout.fillWidth: true
                    text: "This removes its saved access and events from Daywyn, not the Google account or its calendars. You can also revoke Daywyn in your Google Account’s connected-app settings."
                    wrapMode: Text.WordWrap
                    font.pixelSize: 12
                    color: Theme.secondaryText
                }
                RowLayout {
                    spacing: 8
                    FlatButton {
                        text: "Disconnect"
                        fill: Theme.coral
                        onClicked: {
                            account.confirming = false
                            GoogleCalendars.disconnectAccount(account.modelData.id)
                        }
                    }
                    FlatButton {
                        text: "Cancel"
                        fill: Theme.raised
                        onClicked: account.confirming = false
                    }
                }
            }
            Text {
                Layout.fillWidth: true
                visible: account.modelData.message !== ""
                text: account.modelData.message
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.coral
            }
            Repeater {
                // Each calendar with its account's id and address: the check boxes are
                // built apart from this account's block and see only their own entry.
                model: account.modelData.calendars.map(calendar => ({
                    calendar: calendar,
                    accountId: account.modelData.id,
                    email: account.modelData.email
                }))
                CheckBox {
                    id: box
                    required property var modelData
                    Layout.fillWidth: true
                    checked: modelData.calendar.selected
                    text: modelData.calendar.title
                    Accessible.name: modelData.calendar.title + " (" + modelData.email + ")"
                    onToggled: GoogleCalendars.setCalendarSelected(box.modelData.accountId, box.modelData.calendar.id, checked)
                    contentItem: RowLayout {
                        spacing: 8
                        Item { implicitWidth: box.indicator.width }
                        Rectangle {
                            implicitWidth: 10
                            implicitHeight: 10
                            radius: 5
                            color: box.modelData.calendar.colorHex
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
}
