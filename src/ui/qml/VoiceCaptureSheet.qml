import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Voice capture: speak a list, review it, save it. Nothing is saved until the user
// approves the list. Binds to `voiceReview` (the screen's state) and `voice` (the
// listening session).
Rectangle {
    id: root
    color: Theme.surface
    implicitWidth: 460
    implicitHeight: 560
    readonly property string phase: VoiceReview.phase
    readonly property bool listening: phase === "listening"

    Keys.onEscapePressed: VoiceReview.close()

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 16
        spacing: 12

        RowLayout {
            Layout.fillWidth: true
            Text {
                Layout.fillWidth: true
                text: "Voice Capture"
                font.pixelSize: 20
                font.weight: Font.DemiBold
                color: Theme.text
                Accessible.role: Accessible.Heading
            }
            FlatButton {
                objectName: "voiceClose"
                text: "Close"
                onClicked: VoiceReview.close()
            }
        }
        Text {
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            text: "Speak one or more tasks. Pause or say “next task” between items, then review the list before saving. Nothing is saved until you approve it."
            font.pixelSize: 12
            color: Theme.secondaryText
        }

        // Capture: the microphone button, the state and the live words.
        RowLayout {
            Layout.fillWidth: true
            spacing: 12
            visible: root.phase !== "reviewing"
            FlatButton {
                id: micButton
                objectName: "voiceMicrophone"
                focus: true
                implicitWidth: 56
                implicitHeight: 56
                primary: root.listening
                fill: Theme.raised
                enabled: root.phase !== "finalizing"
                text: root.listening ? "■" : "🎤"
                Accessible.name: root.listening ? "Stop voice capture" : "Start voice capture"
                Accessible.description: root.listening
                    ? "Stops listening and prepares the transcript for review."
                    : "Requests access if needed, then listens for task titles."
                ToolTip.visible: hovered
                ToolTip.text: Accessible.name
                onClicked: VoiceReview.toggleCapture()
            }
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 4
                Text {
                    objectName: "voiceStatus"
                    Layout.fillWidth: true
                    text: VoiceReview.statusText
                    font.pixelSize: 15
                    font.weight: Font.DemiBold
                    color: Theme.text
                }
                RowLayout {
                    visible: root.listening
                    spacing: 6
                    Rectangle {
                        width: 10; height: 10; radius: 5
                        color: Voice.hasDetectedAudio ? Theme.mint : Theme.separator
                        border.color: Theme.separator
                    }
                    Text {
                        objectName: "voiceAudio"
                        text: VoiceReview.audioText
                        font.pixelSize: 12
                        color: Theme.secondaryText
                    }
                }
                Text {
                    visible: root.listening
                    text: "Pause or say “next task” between items."
                    font.pixelSize: 12
                    color: Theme.secondaryText
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: 120
            visible: root.phase !== "reviewing"
            radius: 8
            color: Theme.raised
            border.color: Theme.separator
            Text {
                objectName: "voiceTranscript"
                anchors.fill: parent
                anchors.margins: 8
                wrapMode: Text.WordWrap
                text: Voice.transcript !== "" ? Voice.transcript : "Your words will appear here."
                color: Voice.transcript !== "" ? Theme.text : Theme.secondaryText
                font.pixelSize: 13
            }
        }

        // Permission and recognition problems, with the way to fix them.
        ColumnLayout {
            Layout.fillWidth: true
            visible: Voice.errorMessage !== "" && root.phase !== "reviewing"
            spacing: 6
            Text {
                objectName: "voiceError"
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                text: "⚠ " + Voice.errorMessage
                color: Theme.text
                font.pixelSize: 12
            }
            RowLayout {
                spacing: 8
                FlatButton {
                    visible: Voice.shouldOfferMicrophoneSettings
                    text: "Open Microphone settings"
                    fill: Theme.raised
                    onClicked: SystemSettings.open("microphone")
                }
                FlatButton {
                    visible: Voice.shouldOfferSpeechSettings
                    text: "Install the speech model"
                    fill: Theme.raised
                    onClicked: {
                        installHint.text = "Install it with “sudo apt install pocketsphinx-en-us”, then press the microphone again."
                        Qt.openUrlExternally("appstream://pocketsphinx-en-us")
                    }
                }
            }
            Text {
                id: installHint
                objectName: "voiceInstallHint"
                Layout.fillWidth: true
                visible: text !== ""
                wrapMode: Text.WordWrap
                font.pixelSize: 12
                color: Theme.text
            }
        }

        // Review: editable titles, removable rows, one Save for all.
        ColumnLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: root.phase === "reviewing"
            spacing: 8
            Text {
                objectName: "voiceReviewHeading"
                text: "Review your list"
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Theme.text
                Accessible.role: Accessible.Heading
            }
            Text {
                objectName: "voiceReviewNotice"
                Layout.fillWidth: true
                visible: VoiceReview.reviewNotice !== ""
                wrapMode: Text.WordWrap
                text: "⚠ " + VoiceReview.reviewNotice
                color: Theme.text
                font.pixelSize: 12
            }
            Text {
                objectName: "voiceEmptyReview"
                Layout.fillWidth: true
                visible: VoiceReview.emptyReviewText !== ""
                wrapMode: Text.WordWrap
                text: VoiceReview.emptyReviewText
                color: Theme.secondaryText
                font.pixelSize: 13
            }
            ListView {
                id: list
                objectName: "voiceCandidates"
                Layout.fillWidth: true
                Layout.fillHeight: true
                clip: true
                spacing: 8
                model: VoiceReview.candidates
                delegate: RowLayout {
                    id: candidate
                    required property var modelData
                    required property int index
                    width: ListView.view.width
                    spacing: 8
                    Field {
                        Layout.fillWidth: true
                        implicitHeight: 32
                        text: candidate.modelData.title
                        Accessible.name: "Task " + (candidate.index + 1) + " title"
                        onTextEdited: VoiceReview.setCandidateTitle(candidate.index, text)
                    }
                    Chip {
                        visible: candidate.modelData.when !== ""
                        text: candidate.modelData.when
                    }
                    FlatButton {
                        text: "Remove"
                        Accessible.name: "Remove task " + (candidate.index + 1)
                        onClicked: VoiceReview.removeCandidate(candidate.index)
                    }
                }
            }
            ColumnLayout {
                Layout.fillWidth: true
                visible: VoiceReview.saveError !== ""
                spacing: 2
                Text {
                    text: "Tasks could not be saved"
                    font.pixelSize: 13
                    font.weight: Font.DemiBold
                    color: Theme.text
                }
                Text {
                    objectName: "voiceSaveError"
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    text: VoiceReview.saveError
                    font.pixelSize: 12
                    color: Theme.text
                }
            }
            RowLayout {
                Layout.fillWidth: true
                spacing: 8
                Item { Layout.fillWidth: true }
                FlatButton {
                    objectName: "voiceStartOver"
                    text: "Speak again"
                    fill: Theme.raised
                    onClicked: VoiceReview.startOver()
                }
                FlatButton {
                    objectName: "voiceSave"
                    text: list.count === 1 ? "Add 1 task" : "Add " + list.count + " tasks"
                    primary: true
                    enabled: list.count > 0
                    onClicked: VoiceReview.save()
                }
            }
        }
        Item { Layout.fillHeight: true; visible: root.phase !== "reviewing" }
    }
}
