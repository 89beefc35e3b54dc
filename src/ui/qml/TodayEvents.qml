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
    // Up and Down from a row come here (the rows leave them alone): to the next row, or
    // out of the section past its first or last.
    Keys.onUpPressed: (event) => { event.accepted = section.move(-1) }
    Keys.onDownPressed: (event) => { event.accepted = section.move(1) }
    function move(step) {
        let from = -1
        for (let i = 0; i < rows.count; ++i) {
            if (rows.itemAt(i).activeFocus) from = i
        }
        if (from < 0) return false
        const to = from + step
        if (to < 0) section.leaveUp()
        else if (to >= rows.count) section.leaveDown()
        else rows.itemAt(to).forceActiveFocus()
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
            objectName: "eventRow"
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
