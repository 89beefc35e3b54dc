import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The floating Quick Add panel: one field, a preview of what the quick parser recognised,
// the error line and the key hint. Enter adds, Escape closes.
Rectangle {
    id: root
    property QuickCapture capture
    implicitWidth: 560
    implicitHeight: 176
    color: Theme.surface
    radius: 12
    border.color: Theme.separator
    Accessible.role: Accessible.Dialog
    Accessible.name: "Quick Add"

    Connections {
        target: root.capture
        // A draft kept from last time is selected, so typing replaces it instead of
        // running on after it; the chips below always read what the field holds.
        function onFocusRequested() {
            field.forceActiveFocus()
            field.selectAll()
        }
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 12
        spacing: 8

        Text {
            text: "Quick Add"
            font.pixelSize: 15
            font.weight: Font.DemiBold
            color: Theme.text
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 8
            Field {
                id: field
                objectName: "quickAddField"
                Layout.fillWidth: true
                implicitHeight: 32
                placeholderText: "What do you need to do?"
                Accessible.name: "What do you need to do?"
                text: root.capture ? root.capture.draftText : ""
                onTextEdited: root.capture.draftText = text
                onAccepted: root.capture.submit()
                Keys.onEscapePressed: root.capture.dismiss(true)
                property var chips: Today.previewQuickAdd(text)
            }
            // Opens voice capture in its own window; Quick Add steps aside for it.
            Item {
                implicitWidth: voice.implicitWidth
                implicitHeight: voice.implicitHeight
                HoverHandler { id: voiceHover }
                FlatButton {
                    id: voice
                    objectName: "quickAddVoice"
                    text: "Voice"
                    enabled: typeof VoiceReview !== "undefined"
                    Accessible.name: "Speak a task list and review before saving"
                    Accessible.description: "Opens voice capture. Recording starts only when you press the microphone there."
                    onClicked: {
                        root.capture.dismiss(false)
                        VoiceReview.present()
                    }
                }
                ToolTip.visible: voiceHover.hovered
                ToolTip.text: "Speak a task list and review before saving. Opens voice capture. Recording starts only when you press the microphone there."
            }
        }

        Flow {
            objectName: "quickAddPreview"
            Layout.fillWidth: true
            spacing: 6
            visible: field.chips.length > 0
            Accessible.name: "Recognised: " + field.chips.map(c => c.text).join(", ")
            Repeater {
                model: field.chips
                Chip {
                    required property var modelData
                    text: modelData.text
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            visible: root.capture && root.capture.captureError !== ""
            spacing: 6
            Text { text: "\u26A0"; color: Theme.coral; font.pixelSize: 13 }
            Text {
                objectName: "quickAddError"
                Layout.fillWidth: true
                text: root.capture ? root.capture.captureError : ""
                color: Theme.text
                font.pixelSize: 12
                wrapMode: Text.WordWrap
                Accessible.role: Accessible.AlertMessage
            }
        }

        Item { Layout.fillHeight: true }

        Text {
            text: "Enter to add \u00B7 Escape to close"
            color: Theme.secondaryText
            font.pixelSize: 12
        }
    }
}
