import QtQuick
import Daywyn
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "about" page of the settings window: the version, where the data lives, and
// the update check with its download.
ColumnLayout {
    id: page
    spacing: 16

    function megabytes(bytes) {
        return (bytes / (1024 * 1024)).toFixed(1) + " MB"
    }

    SettingsPageTitle { title: "About"; Layout.fillWidth: true }
    ColumnLayout {
        Layout.leftMargin: 16
        Layout.rightMargin: 16
        Layout.fillWidth: true
        spacing: 16

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 8
            Text {
                objectName: "aboutVersion"
                text: "Daywyn " + Updates.currentVersion + " (build " + Updates.currentBuild + ")"
                font.pixelSize: 13; color: Theme.text
                Accessible.name: text
            }
            Text { text: "Your tasks and reports are kept in"; font.pixelSize: 12; color: Theme.secondaryText }
            TextEdit {
                text: SettingsModel.dataFilePath
                readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                Layout.fillWidth: true
                font.pixelSize: 13; color: Theme.text
                Accessible.name: "Data file"
            }
            Text { text: "Settings for this computer are kept in"; font.pixelSize: 12; color: Theme.secondaryText }
            TextEdit {
                text: SettingsModel.settingsFilePath
                readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                Layout.fillWidth: true
                font.pixelSize: 13; color: Theme.text
                Accessible.name: "Settings file"
            }
        }

        SettingsSection {
            title: "Updates"
            note: "Daywyn downloads the package to your Downloads folder and verifies its checksum. "
                  + "Open it, then install it with your desktop's package installer. "
                  + "Daywyn never installs or replaces itself."

            RowLayout {
                spacing: 8
                FlatButton {
                    objectName: "checkForUpdates"
                    text: "Check for updates"
                    fill: Theme.raised
                    enabled: !Updates.isChecking && !Updates.isDownloading
                    onClicked: Updates.checkForUpdates()
                }
                FlatButton {
                    objectName: "downloadUpdate"
                    visible: Updates.updateAvailable
                    // Once the package is saved, opening it is the next step.
                    primary: Updates.downloadedInstallerPath === ""
                    fill: Theme.raised
                    opacity: enabled ? 1 : 0.5
                    text: "Download Daywyn " + (Updates.latestRelease.version || "")
                    enabled: !Updates.isDownloading && !Updates.isChecking
                    onClicked: Updates.downloadLatest()
                }
                FlatButton {
                    objectName: "openDownloadedInstaller"
                    visible: Updates.downloadedInstallerPath !== ""
                    text: "Open downloaded installer"
                    primary: true
                    onClicked: Updates.openDownloadedInstaller()
                }
            }

            Text {
                objectName: "updateStatus"
                Layout.fillWidth: true
                visible: text !== ""
                text: Updates.statusMessage
                wrapMode: Text.WordWrap
                font.pixelSize: 13
                color: Theme.text
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }

            ColumnLayout {
                objectName: "downloadProgress"
                visible: Updates.isDownloading
                Layout.fillWidth: true
                spacing: 4
                ProgressBar {
                    id: bar
                    Layout.fillWidth: true
                    Layout.maximumWidth: 360
                    from: 0
                    to: Math.max(1, Updates.bytesTotal)
                    value: Updates.bytesReceived
                    indeterminate: Updates.bytesTotal < 0
                    Accessible.name: "Download progress"
                    background: Rectangle { implicitHeight: 6; radius: 3; color: Theme.separator }
                    contentItem: Item {
                        implicitHeight: 6
                        Rectangle {
                            width: bar.indeterminate ? parent.width * 0.3 : bar.visualPosition * parent.width
                            height: parent.height
                            radius: 3
                            color: Theme.coral
                        }
                    }
                }
                Text {
                    text: Updates.bytesTotal > 0
                          ? page.megabytes(Updates.bytesReceived) + " of " + page.megabytes(Updates.bytesTotal)
                          : page.megabytes(Updates.bytesReceived)
                    font.pixelSize: 12
                    color: Theme.secondaryText
                }
            }

            TextEdit {
                objectName: "downloadedInstallerPath"
                visible: Updates.downloadedInstallerPath !== ""
                text: Updates.downloadedInstallerPath
                readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                Layout.fillWidth: true
                font.pixelSize: 12; color: Theme.secondaryText
                Accessible.name: "Downloaded installer"
            }

            ColumnLayout {
                visible: Updates.latestRelease.version !== undefined
                Layout.fillWidth: true
                spacing: 4
                Text {
                    text: "Latest release: " + (Updates.latestRelease.version || "")
                          + " (build " + (Updates.latestRelease.build || "") + "), published "
                          + (Updates.latestRelease.publishedAt || "")
                    font.pixelSize: 12; color: Theme.secondaryText
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                }
                Repeater {
                    model: Updates.latestRelease.notes || []
                    Text {
                        required property string modelData
                        text: "\u2022 " + modelData
                        font.pixelSize: 12; color: Theme.text
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                    }
                }
            }
        }
    }
}
