import QtQuick
import Daywyn
import QtQuick.Layouts

// Today's events from the desktop's calendars, above the tasks. Shown while calendar
// integration is on; when no event can be shown it says why in one line. The arrow keys
// walk the rows between the add field and the tasks; Return opens a meeting link.
ColumnLayout {
    id: section
    spacing: 4
    // Up from the first row, Down from the last.
    signal leaveUp()
    signal leaveDown()
    // Puts the keyboard on the first row (or the last, coming from below); false when
    // there is no row.
    function enter(fromBelow) {
        if (!visible || rows.count === 0) return false
        rows.itemAt(fromBelow ? rows.count - 1 : 0).forceActiveFocus()
        return true
    }
    readonly property var events: Calendars.todayEvents
    readonly property var reasons: Calendars.explanations
    visible: (Calendars.integrationEnabled || events.length > 0) && (events.length > 0 || reasons.length > 0 || Calendars.errorMessage !== "")

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
        id: rows
        model: section.events
        EventRow {
            required property var modelData
            required property int index
            objectName: "eventRow"
            Layout.fillWidth: true
            Keys.onUpPressed: index > 0 ? rows.itemAt(index - 1).forceActiveFocus() : section.leaveUp()
            Keys.onDownPressed: index < rows.count - 1 ? rows.itemAt(index + 1).forceActiveFocus() : section.leaveDown()
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
