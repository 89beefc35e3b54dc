import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The task editor: title, estimate, planned day, start, end, reminder, repeat and the
// checklist. The first problem is said below the fields and Save waits until it is gone.
Sheet {
    id: sheet
    title: editor.isNew ? "New task" : "Edit task"
    onCloseRequested: editor.close()
    function focusTitle() { titleField.forceActiveFocus() }

    component SwitchRow: RowLayout {
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
            onToggled: switched(checked)
            contentItem: Text {
                leftPadding: toggle.indicator.width + 6
                text: toggle.text
                font.pixelSize: 13
                color: theme.text
                verticalAlignment: Text.AlignVCenter
            }
        }
        Field {
            id: valueField
            Layout.fillWidth: true
            enabled: toggle.checked
            onTextEdited: edited(text)
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
                text: editor.title
                onTextEdited: editor.title = text
                onAccepted: editor.save()
            }
            RowLayout {
                Layout.fillWidth: true
                Switch {
                    id: estimateSwitch
                    Layout.preferredWidth: 150
                    text: "Estimate"
                    checked: editor.hasEstimate
                    onToggled: editor.hasEstimate = checked
                    contentItem: Text {
                        leftPadding: estimateSwitch.indicator.width + 6
                        text: estimateSwitch.text
                        font.pixelSize: 13
                        color: theme.text
                        verticalAlignment: Text.AlignVCenter
                    }
                }
                SpinBox {
                    enabled: editor.hasEstimate
                    opacity: enabled ? 1 : 0.55
                    from: 0
                    to: 720
                    stepSize: 5
                    editable: true
                    value: editor.estimatedMinutes
                    onValueModified: editor.estimatedMinutes = value
                    Accessible.name: "Estimate in minutes"
                }
                Text { text: "min"; color: theme.secondaryText; font.pixelSize: 12 }
            }
            SwitchRow {
                objectName: "plannedDayRow"
                label: "Planned day"
                on: editor.hasDay
                value: editor.dayText
                onSwitched: (on) => editor.hasDay = on
                onEdited: (text) => editor.dayText = text
            }
            SwitchRow {
                label: "Start"
                on: editor.hasStart
                value: editor.startText
                onSwitched: (on) => editor.hasStart = on
                onEdited: (text) => editor.startText = text
            }
            SwitchRow {
                label: "End"
                on: editor.hasEnd
                value: editor.endText
                onSwitched: (on) => editor.hasEnd = on
                onEdited: (text) => editor.endText = text
            }
            SwitchRow {
                label: "Reminder"
                on: editor.hasReminder
                value: editor.reminderText
                onSwitched: (on) => editor.hasReminder = on
                onEdited: (text) => editor.reminderText = text
            }
            RowLayout {
                Text {
                    Layout.preferredWidth: 150
                    text: "Repeat"
                    font.pixelSize: 13
                    color: theme.text
                }
                ComboBox {
                    Layout.fillWidth: true
                    model: editor.recurrenceNames
                    currentIndex: editor.recurrence
                    onActivated: (index) => editor.recurrence = index
                    Accessible.name: "Repeat"
                }
            }
            Text {
                text: "Checklist"
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: theme.text
            }
            Repeater {
                model: editor.checklist
                RowLayout {
                    Layout.fillWidth: true
                    required property int index
                    required property var modelData
                    CheckBox {
                        checked: modelData.isComplete
                        onToggled: editor.setChecklistDone(index, checked)
                        Accessible.name: "Done: " + modelData.title
                    }
                    Field {
                        Layout.fillWidth: true
                        text: modelData.title
                        onEditingFinished: if (text !== modelData.title) editor.setChecklistTitle(index, text)
                        Accessible.name: "Checklist item"
                    }
                    FlatButton {
                        text: "✕"
                        Accessible.name: "Remove " + modelData.title
                        onClicked: editor.removeChecklistItem(index)
                    }
                }
            }
            Field {
                Layout.fillWidth: true
                placeholderText: "Add a checklist item"
                Accessible.name: "Add a checklist item"
                onAccepted: if (text.trim() !== "") { editor.addChecklistItem(text); text = "" }
            }
        }
    }

    Banner { Layout.fillWidth: true; text: editor.validationMessage !== "" ? editor.validationMessage : editor.saveError }

    RowLayout {
        Layout.fillWidth: true
        Item { Layout.fillWidth: true }
        FlatButton { text: "Cancel"; onClicked: editor.close() }
        FlatButton {
            text: "Save"
            primary: true
            enabled: editor.validationMessage === ""
            onClicked: editor.save()
        }
    }
}
