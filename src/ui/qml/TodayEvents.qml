import QtQuick
import Daywyn
import QtQuick.Layouts

// Today's events from the desktop's calendars, above the tasks. Shown while calendar
// integration is on; when no event can be shown it says why in one line.
ColumnLayout {
    id: section
    spacing: 4
    readonly property var events: Calendars.todayEvents
    readonly property var reasons: Calendars.explanations
    visible: Calendars.integrationEnabled && (events.length > 0 || reasons.length > 0 || Calendars.errorMessage !== "")

    RowLayout {
        Layout.fillWidth: true
        Text {
            text: "Events"
            font.pixelSize: 15
            font.weight: Font.DemiBold
            color: Theme.text
            Accessible.role: Accessible.Heading
        }
        Text {
            text: section.events.length
            visible: section.events.length > 0
            font.pixelSize: 12
            color: Theme.secondaryText
        }
        Item { Layout.fillWidth: true }
    }
    Repeater {
        model: section.events
        EventRow {
            Layout.fillWidth: true
            title: modelData.title
            timeText: modelData.timeText
            colorHex: modelData.colorHex
            calendarTitle: modelData.calendarTitle
            link: modelData.link
        }
    }
    Text {
        Layout.fillWidth: true
        visible: section.events.length === 0
        text: Calendars.errorMessage !== "" ? Calendars.errorMessage : section.reasons.join(" ")
        wrapMode: Text.Wrap
        font.pixelSize: 12
        color: Theme.secondaryText
    }
}
