import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import QtQuick.Layouts

// The settings window: the page list on the left, the chosen page on the right.
// Up and Down move through the pages; Tab goes into the page.
Rectangle {
    id: root
    property string page: "general"
    readonly property var pages: [
        { name: "general", title: "General" },
        { name: "appearance", title: "Appearance" },
        { name: "notifications", title: "Notifications" },
        { name: "calendars", title: "Calendars" },
        { name: "voice", title: "Voice" },
        { name: "history", title: "History" },
        { name: "reports", title: "Reports" },
        { name: "about", title: "About" }
    ]
    color: Theme.surface
    implicitWidth: 780
    implicitHeight: 600

    function indexOf(name) {
        for (let i = 0; i < pages.length; ++i)
            if (pages[i].name === name) return i
        return -1
    }
    onPageChanged: SettingsModel.clearMessage()

    // Escape (when no control or dialog wants it) and Ctrl+W close the window.
    Keys.onEscapePressed: root.Window.window.close()
    // The key sequences Qt gives StandardKey.Close on Linux desktops, written out: the
    // StandardKey enumeration is not resolved by qmllint 6.4.
    Shortcut {
        sequences: ["Ctrl+W", "Ctrl+F4"]
        onActivated: root.Window.window.close()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.fillHeight: true
            Layout.preferredWidth: 180
            color: Theme.raised
            ListView {
                id: pageList
                objectName: "settingsPages"
                anchors.fill: parent
                anchors.margins: 12
                spacing: 4
                model: root.pages
                currentIndex: root.indexOf(root.page)
                focus: true
                activeFocusOnTab: true
                keyNavigationEnabled: true
                onCurrentIndexChanged: if (currentIndex >= 0) root.page = root.pages[currentIndex].name
                Accessible.role: Accessible.PageTabList
                Accessible.name: "Settings pages"
                delegate: Rectangle {
                    id: tab
                    required property var modelData
                    required property int index
                    width: ListView.view.width
                    height: 32
                    radius: 8
                    color: ListView.isCurrentItem ? Theme.selection : "transparent"
                    border.width: ListView.isCurrentItem && ListView.view.activeFocus ? 2 : 0
                    border.color: Theme.focusRing
                    Accessible.role: Accessible.PageTab
                    Accessible.name: modelData.title
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.left: parent.left
                        anchors.leftMargin: 8
                        text: tab.modelData.title
                        font.pixelSize: 13
                        color: tab.ListView.isCurrentItem && !Theme.dark ? Theme.ink : Theme.text
                    }
                    MouseArea {
                        anchors.fill: parent
                        onClicked: { tab.ListView.view.currentIndex = tab.index; tab.ListView.view.forceActiveFocus() }
                    }
                }
            }
        }

        ScrollView {
            id: scroller
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth
            clip: true
            // The stock controls (choices, number fields, dialogs) in the theme's colours.
            palette.button: Theme.raised
            palette.buttonText: Theme.text
            palette.base: Theme.raised
            palette.text: Theme.text
            palette.window: Theme.surface
            palette.windowText: Theme.text
            palette.highlight: Theme.selection
            palette.highlightedText: Theme.dark ? Theme.text : Theme.ink
            Loader {
                id: pageLoader
                objectName: "settingsPage"
                width: scroller.availableWidth
                // Built once the page has its real width: wrapped notes laid out at a
                // narrower width first kept their taller height and overlapped the next
                // section.
                active: scroller.availableWidth > 100
                source: "Settings" + root.page.charAt(0).toUpperCase() + root.page.slice(1) + "Page.qml"
            }
        }
    }

    // The reports page's export buttons.
    Connections {
        target: pageLoader.item
        ignoreUnknownSignals: true
        function onExportRequested(asCsv) { root.openExport(asCsv) }
    }

    // Opens the save dialog; if it cannot appear, the page says so instead of nothing.
    function openExport(asCsv) {
        exportDialog.asCsv = asCsv
        exportDialog.open()
        if (!exportDialog.visible) SettingsModel.exportDialogFailed(asCsv)
    }

    FileDialog {
        id: exportDialog
        objectName: "exportDialog"
        // Declared under a view's root item, the dialog cannot find its window by
        // itself and would refuse to open; name it.
        parentWindow: root.Window.window
        property bool asCsv: false
        title: asCsv ? "Export task spreadsheet" : "Export tasks and reports"
        fileMode: FileDialog.SaveFile
        nameFilters: asCsv ? ["Comma-separated text (*.csv)"] : ["JSON (*.json)"]
        defaultSuffix: asCsv ? "csv" : "json"
        selectedFile: "Daywyn-export." + (asCsv ? "csv" : "json")
        onAccepted: SettingsModel.exportData(asCsv, selectedFile)
    }
}
