import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

// The "about" page of the settings window: the version, where the data lives, and
// the update check with its download.
ColumnLayout {
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
                text: "Daywyn " + updates.currentVersion + " (build " + updates.currentBuild + ")"
                font.pixelSize: 13; color: theme.text
                Accessible.name: text
            }
            Text { text: "Your tasks and reports are kept in"; font.pixelSize: 12; color: theme.secondaryText }
            TextEdit {
                text: settingsModel.dataFilePath
                readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                Layout.fillWidth: true
                font.pixelSize: 13; color: theme.text
                Accessible.name: "Data file"
            }
            Text { text: "Settings for this computer are kept in"; font.pixelSize: 12; color: theme.secondaryText }
            TextEdit {
                text: settingsModel.settingsFilePath
                readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                Layout.fillWidth: true
                font.pixelSize: 13; color: theme.text
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
                    fill: theme.raised
                    enabled: !updates.isChecking && !updates.isDownloading
                    onClicked: updates.checkForUpdates()
                }
                FlatButton {
                    objectName: "downloadUpdate"
                    visible: updates.updateAvailable
                    // Once the package is saved, opening it is the next step.
                    primary: updates.downloadedInstallerURL.toString() === ""
                    fill: theme.raised
                    opacity: enabled ? 1 : 0.5
                    text: "Download Daywyn " + (updates.latestRelease.version || "")
                    enabled: !updates.isDownloading && !updates.isChecking
                    onClicked: updates.downloadLatest()
                }
                FlatButton {
                    objectName: "openDownloadedInstaller"
                    visible: updates.downloadedInstallerURL.toString() !== ""
                    text: "Open downloaded installer"
                    primary: true
                    onClicked: updates.openDownloadedInstaller()
                }
            }

            Text {
                objectName: "updateStatus"
                Layout.fillWidth: true
                visible: text !== ""
                text: updates.statusMessage
                wrapMode: Text.WordWrap
                font.pixelSize: 13
                color: theme.text
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }

            ColumnLayout {
                objectName: "downloadProgress"
                visible: updates.isDownloading
                Layout.fillWidth: true
                spacing: 4
                ProgressBar {
                    id: bar
                    Layout.fillWidth: true
                    Layout.maximumWidth: 360
                    from: 0
                    to: Math.max(1, updates.bytesTotal)
                    value: updates.bytesReceived
                    indeterminate: updates.bytesTotal < 0
                    Accessible.name: "Download progress"
                    background: Rectangle { implicitHeight: 6; radius: 3; color: theme.separator }
                    contentItem: Item {
                        implicitHeight: 6
                        Rectangle {
                            width: bar.indeterminate ? parent.width * 0.3 : bar.visualPosition * parent.width
                            height: parent.height
                            radius: 3
                            color: theme.coral
                        }
                    }
                }
                Text {
                    text: updates.bytesTotal > 0
                          ? megabytes(updates.bytesReceived) + " of " + megabytes(updates.bytesTotal)
                          : megabytes(updates.bytesReceived)
                    font.pixelSize: 12
                    color: theme.secondaryText
                }
            }

            TextEdit {
                objectName: "downloadedInstallerPath"
                visible: updates.downloadedInstallerURL.toString() !== ""
                text: updates.downloadedInstallerPath
                readOnly: true; selectByMouse: true; wrapMode: TextEdit.WrapAnywhere
                Layout.fillWidth: true
                font.pixelSize: 12; color: theme.secondaryText
                Accessible.name: "Downloaded installer"
            }

            ColumnLayout {
                visible: updates.latestRelease.version !== undefined
                Layout.fillWidth: true
                spacing: 4
                Text {
                    text: "Latest release: " + (updates.latestRelease.version || "")
                          + " (build " + (updates.latestRelease.build || "") + "), published "
                          + (updates.latestRelease.publishedAt || "")
                    font.pixelSize: 12; color: theme.secondaryText
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                }
                Repeater {
                    model: updates.latestRelease.notes || []
                    Text {
                        required property string modelData
                        text: "\u2022 " + modelData
                        font.pixelSize: 12; color: theme.text
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                    }
                }
            }
        }
    }
}
