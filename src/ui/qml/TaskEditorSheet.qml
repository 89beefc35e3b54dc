import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The task editor: title, estimate, planned day, start, end, reminder, repeat and the
// checklist. The first problem is said below the fields and Save waits until it is gone.
Sheet {
    id: sheet
    title: Editor.isNew ? "New task" : "Edit task"
    onCloseRequested: Editor.close()
    function focusTitle() { titleField.forceActiveFocus() }

    component SwitchRow: RowLayout {
        id: switchRow
        property alias label: toggle.text
        property alias on: toggle.checked
        property alias value: valueField.text
        signal switched(bool on)
        signal edited(string text)
        // What a click on the switch does, for keyboard-free checks.
        function flip() { toggle.toggle(); switched(toggle.checked) }
        Layout.fillWidth: true
        Switch {
            id: toggle
            Layout.preferredWidth: 150
            onToggled: switchRow.switched(checked)
            contentItem: Text {
                leftPadding: toggle.indicator.width + 6
                text: toggle.text
                font.pixelSize: 13
                color: Theme.text
                verticalAlignment: Text.AlignVCenter
            }
        }
        Field {
            id: valueField
            Layout.fillWidth: true
            enabled: toggle.checked
            onTextEdited: switchRow.edited(text)
            Accessible.name: toggle.text
        }
    }

    Flickable {
        Layout.fillWidth: true
        Layout.fillHeight: true
        contentHeight: form.implicitHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        ScrollBar.vertical: ScrollBar { policy: form.implicitHeight > height ? ScrollBar.AlwaysOn : ScrollBar.AsNeeded }
        ColumnLayout {
            id: form
            width: parent.width - 12
            spacing: 8
            Field {
                id: titleField
                objectName: "editorTitle"
                Layout.fillWidth: true
                placeholderText: "Title"
                Accessible.name: "Title"
                text: Editor.title
                onTextEdited: Editor.title = text
                onAccepted: Editor.save()
            }
            RowLayout {
                Layout.fillWidth: true
                Switch {
                    id: estimateSwitch
                    Layout.preferredWidth: 150
                    text: "Estimate"
                    checked: Editor.hasEstimate
                    onToggled: Editor.hasEstimate = checked
                    contentItem: Text {
                        leftPadding: estimateSwitch.indicator.width + 6
                        text: estimateSwitch.text
                        font.pixelSize: 13
                        color: Theme.text
                        verticalAlignment: Text.AlignVCenter
                    }
                }
                SpinBox {
                    enabled: Editor.hasEstimate
                    opacity: enabled ? 1 : 0.55
                    from: 0
                    to: 720
                    stepSize: 5
                    editable: true
                    value: Editor.estimatedMinutes
                    onValueModified: Editor.estimatedMinutes = value
                    Accessible.name: "Estimate in minutes"
                }
                Text { text: "min"; color: Theme.secondaryText; font.pixelSize: 12 }
            }
            SwitchRow {
                objectName: "plannedDayRow"
                label: "Planned day"
                on: Editor.hasDay
                value: Editor.dayText
                onSwitched: (on) => Editor.hasDay = on
                onEdited: (text) => Editor.dayText = text
            }
            SwitchRow {
                label: "Start"
                on: Editor.hasStart
                value: Editor.startText
                onSwitched: (on) => Editor.hasStart = on
                onEdited: (text) => Editor.startText = text
            }
            SwitchRow {
                label: "End"
                on: Editor.hasEnd
                value: Editor.endText
                onSwitched: (on) => Editor.hasEnd = on
                onEdited: (text) => Editor.endText = text
            }
            SwitchRow {
                label: "Reminder"
                on: Editor.hasReminder
                value: Editor.reminderText
                onSwitched: (on) => Editor.hasReminder = on
                onEdited: (text) => Editor.reminderText = text
            }
            RowLayout {
                Text {
                    Layout.preferredWidth: 150
                    text: "Repeat"
                    font.pixelSize: 13
                    color: Theme.text
                }
                ComboBox {
                    Layout.fillWidth: true
                    model: Editor.recurrenceNames
                    currentIndex: Editor.recurrence
                    onActivated: (index) => Editor.recurrence = index
                    Accessible.name: "Repeat"
                }
            }
            Text {
                text: "Checklist"
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Theme.text
            }
            Repeater {
                model: Editor.checklist
                RowLayout {
                    id: checklistRow
                    Layout.fillWidth: true
                    required property int index
                    required property var modelData
                    CheckBox {
                        checked: checklistRow.modelData.isComplete
                        onToggled: Editor.setChecklistDone(checklistRow.index, checked)
                        Accessible.name: "Done: " + checklistRow.modelData.title
                    }
                    Field {
                        Layout.fillWidth: true
                        text: checklistRow.modelData.title
                        onEditingFinished: if (text !== checklistRow.modelData.title) Editor.setChecklistTitle(checklistRow.index, text)
                        Accessible.name: "Checklist item"
                    }
                    FlatButton {
                        text: "✕"
                        Accessible.name: "Remove " + checklistRow.modelData.title
                        onClicked: Editor.removeChecklistItem(checklistRow.index)
                    }
                }
            }
            Field {
                Layout.fillWidth: true
                placeholderText: "Add a checklist item"
                Accessible.name: "Add a checklist item"
                onAccepted: if (text.trim() !== "") { Editor.addChecklistItem(text); text = "" }
            }
        }
    }

    Banner { Layout.fillWidth: true; text: Editor.validationMessage !== "" ? Editor.validationMessage : Editor.saveError }

    RowLayout {
        Layout.fillWidth: true
        Item { Layout.fillWidth: true }
        FlatButton { text: "Cancel"; onClicked: Editor.close() }
        FlatButton {
            text: "Save"
            primary: true
            enabled: Editor.validationMessage === ""
            onClicked: Editor.save()
        }
    }
}
