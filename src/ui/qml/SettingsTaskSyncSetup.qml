import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// Setting task sync up: the server's address, the user name and the password, then
// the task lists the server has (or a new "Daywyn" one) and Start syncing. The
// password lives in the field and goes to the keyring only; it is cleared once the
// account is kept. Enter in a field or on a list goes on to the next step, Escape
// cancels the step (and, with nothing under way or typed, closes the window as
// everywhere in Settings).
ColumnLayout {
    id: form
    objectName: "taskSyncSetup"
    readonly property string step: TaskSync.setupStep
    readonly property bool choosing: step === "choosing" || step === "starting"
    readonly property bool busy: step === "finding" || step === "starting"
    Layout.fillWidth: true
    spacing: 8

    function submit() {
        if (form.busy)
            return
        if (form.choosing)
            TaskSync.startSyncing(passwordField.text, form.chosenUrl())
        else
            TaskSync.findTaskLists(serverField.text, userField.text, passwordField.text)
    }
    // From the lists (or while looking for them) back to the fields as typed; from the
    // fields, an empty form.
    function cancel() {
        const typing = form.step === "form"
        TaskSync.cancelSetup()
        passwordField.text = ""
        if (typing) {
            serverField.text = ""
            userField.text = ""
        }
        serverField.forceActiveFocus()
    }
    // One of the lists to choose, with its address under its name (none for the new one).
    component ListChoice: RadioButton {
        id: choice
        property string url: ""
        objectName: "taskListChoice"
        Layout.fillWidth: true
        contentItem: ColumnLayout {
            spacing: 0
            Text {
                Layout.fillWidth: true
                Layout.leftMargin: choice.indicator.width + choice.spacing
                text: choice.text
                elide: Text.ElideRight
                font.pixelSize: 13
                color: Theme.text
            }
            Text {
                Layout.fillWidth: true
                Layout.leftMargin: choice.indicator.width + choice.spacing
                visible: choice.url !== ""
                text: choice.url
                elide: Text.ElideMiddle
                font.pixelSize: 12
                color: Theme.secondaryText
            }
        }
    }

    // The address of the chosen list; empty for the new one. The choices are radio
    // buttons side by side in one column, so one is checked at a time.
    function chosenUrl() {
        for (let i = 0; i < choices.children.length; ++i) {
            const choice = choices.children[i]
            if (choice.objectName === "taskListChoice" && choice.checked)
                return choice.url
        }
        return ""
    }
    // As the command line chooses: the list named like the new one, else the only
    // list, else the new one.
    function chooseDefault() {
        let named = null
        let found = []
        let fresh = null
        for (let i = 0; i < choices.children.length; ++i) {
            const choice = choices.children[i]
            if (choice.objectName !== "taskListChoice" || !choice.visible)
                continue
            if (choice.url === "")
                fresh = choice
            else if (choice.text === "Daywyn")
                named = choice
            else
                found.push(choice)
        }
        const chosen = named !== null ? named : found.length === 1 ? found[0] : fresh !== null ? fresh : found[0]
        if (chosen)
            chosen.checked = true
    }

    // Once the lists' buttons are made.
    Timer {
        id: chooseLater
        interval: 0
        onTriggered: form.chooseDefault()
    }
    Connections {
        target: TaskSync
        function onChanged() {
            if (TaskSync.isSetUp && passwordField.text !== "")
                passwordField.text = ""
        }
    }
    // Focus stays in the form as its fields turn off and on, so that Escape still
    // reaches it: the step's own button, or the first field after a failure.
    onStepChanged: {
        if (step === "choosing" && TaskSync.setupError === "")
            chooseLater.start()
        if (step === "finding")
            cancelButton.forceActiveFocus()
        else if (step === "starting")
            form.forceActiveFocus()
        else if (step === "choosing")
            submitButton.forceActiveFocus()
        else if (TaskSync.setupError !== "")
            serverField.forceActiveFocus()
    }

    // Enter on a list goes on too (a field takes its own Enter; a button is left alone).
    Keys.onReturnPressed: (event) => {
        if (form.choosing && !submitButton.activeFocus && !cancelButton.activeFocus)
            form.submit()
        else
            event.accepted = false
    }
    Keys.onEnterPressed: (event) => {
        if (form.choosing && !submitButton.activeFocus && !cancelButton.activeFocus)
            form.submit()
        else
            event.accepted = false
    }
    Keys.onEscapePressed: (event) => {
        if (form.step === "form" && serverField.text === "" && userField.text === "" && passwordField.text === "") {
            event.accepted = false
            return
        }
        if (form.step !== "starting")
            form.cancel()
    }

    GridLayout {
        Layout.fillWidth: true
        columns: 2
        columnSpacing: 12
        rowSpacing: 8
        Text {
            text: "Server address"
            font.pixelSize: 12
            color: Theme.secondaryText
        }
        Field {
            id: serverField
            objectName: "taskSyncServerField"
            Layout.fillWidth: true
            enabled: !form.busy && !form.choosing
            placeholderText: "https://dav.example.org/"
            inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoAutoUppercase
            Accessible.name: "Server address"
            onAccepted: form.submit()
        }
        Text {
            text: "User name"
            font.pixelSize: 12
            color: Theme.secondaryText
        }
        Field {
            id: userField
            objectName: "taskSyncUserField"
            Layout.fillWidth: true
            enabled: !form.busy && !form.choosing
            inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
            Accessible.name: "User name"
            onAccepted: form.submit()
        }
        Text {
            text: "Password"
            font.pixelSize: 12
            color: Theme.secondaryText
        }
        Field {
            id: passwordField
            objectName: "taskSyncPasswordField"
            Layout.fillWidth: true
            enabled: !form.busy && !form.choosing
            echoMode: TextInput.Password
            inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
            Accessible.name: "Password"
            onAccepted: form.submit()
        }
    }

    // The lists found, and the new one Daywyn can make.
    ColumnLayout {
        id: choices
        visible: form.choosing
        enabled: !form.busy
        Layout.fillWidth: true
        Layout.topMargin: 4
        spacing: 2
        Text {
            Layout.fillWidth: true
            text: TaskSync.foundLists.length === 0 ? "The account has no task list yet." : "Sync your tasks with"
            wrapMode: Text.WordWrap
            font.pixelSize: 13
            color: Theme.text
        }
        Repeater {
            model: form.choosing ? TaskSync.foundLists : []
            ListChoice {
                required property var modelData
                url: modelData.url
                text: modelData.name
                Accessible.name: "Task list " + modelData.name
            }
        }
        ListChoice {
            visible: TaskSync.newListName !== ""
            text: "A new task list named \u201c" + TaskSync.newListName + "\u201d"
        }
    }

    RowLayout {
        Layout.topMargin: 4
        spacing: 8
        FlatButton {
            id: submitButton
            objectName: form.choosing ? "taskSyncStartButton" : "taskSyncFindButton"
            primary: true
            enabled: !form.busy && (!form.choosing || TaskSync.foundLists.length > 0 || TaskSync.newListName !== "")
            text: form.choosing ? "Start syncing" : "Find task lists"
            onClicked: form.submit()
        }
        FlatButton {
            id: cancelButton
            objectName: "taskSyncCancelButton"
            visible: form.step === "finding" || form.step === "choosing"
            fill: Theme.raised
            text: "Cancel"
            onClicked: form.cancel()
        }
        Text {
            visible: form.busy
            text: form.step === "finding" ? "Looking for your task lists…" : "Setting up and syncing…"
            font.pixelSize: 12
            color: Theme.secondaryText
        }
    }

    Text {
        objectName: "taskSyncSetupError"
        Layout.fillWidth: true
        visible: TaskSync.setupError !== ""
        text: TaskSync.setupError
        wrapMode: Text.WordWrap
        font.pixelSize: 12
        color: Theme.text
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
}
