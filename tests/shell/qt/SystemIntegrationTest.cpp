#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "shell/LaunchAtLoginEntry.h"
#include "shell/qt/LaunchAtLoginController.h"
#include "shell/qt/SystemSettingsNavigator.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(LaunchAtLoginController, WritesTheAutostartEntryAndRemovesItAgain) {
    QTemporaryDir config;
    const QString entry = config.filePath(QStringLiteral("autostart/daywyn.desktop"));
    LaunchAtLoginController login(entry, QStringLiteral("/opt/Day Wyn/daywyn"));
    EXPECT_FALSE(login.isEnabled());
    EXPECT_FALSE(login.requiresApproval());

    login.setEnabled(true);
    EXPECT_TRUE(login.isEnabled());
    EXPECT_TRUE(login.errorMessage().isEmpty());
    EXPECT_EQ(readAll(entry).toStdString(), LaunchAtLoginEntry::text("/opt/Day Wyn/daywyn"));
    EXPECT_TRUE(QFile::permissions(entry).testFlag(QFileDevice::ReadOwner));

    login.setEnabled(false);
    EXPECT_FALSE(login.isEnabled());
    EXPECT_FALSE(QFile::exists(entry));
    // Switching off what is already off is no error.
    login.setEnabled(false);
    EXPECT_TRUE(login.errorMessage().isEmpty());
}

TEST(LaunchAtLoginController, AnEntryHiddenByTheDesktopCountsAsOff) {
    QTemporaryDir config;
    QDir(config.path()).mkpath(QStringLiteral("autostart"));
    const QString entry = config.filePath(QStringLiteral("autostart/daywyn.desktop"));
    QFile file(entry);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Desktop Entry]\nType=Application\nExec=daywyn\nHidden=true\n");
    file.close();
    LaunchAtLoginController login(entry, QStringLiteral("/usr/bin/daywyn"));
    EXPECT_FALSE(login.isEnabled());
    login.setEnabled(true);
    EXPECT_TRUE(login.isEnabled());
}

TEST(LaunchAtLoginController, AFailureIsShownAndTheStateReadBack) {
    QTemporaryDir config;
    // A file where the autostart folder should be: nothing can be created below it
    // (a read-only folder would not stop the root user the tests may run as).
    QFile blocker(config.filePath(QStringLiteral("autostart")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    LaunchAtLoginController login(config.filePath(QStringLiteral("autostart/daywyn.desktop")),
                                  QStringLiteral("/usr/bin/daywyn"));
    login.setEnabled(true);
    EXPECT_FALSE(login.isEnabled());
    EXPECT_TRUE(
        login.errorMessage().startsWith(QStringLiteral("Launch at login could not be changed: ")))
        << login.errorMessage().toStdString();
}

// Stub settings programs first (and alone) on PATH, each recording how it was called.
class SystemSettingsNavigatorTest : public ::testing::Test {
protected:
    SystemSettingsNavigatorTest()
        : savedPath(qgetenv("PATH"))
        , savedDesktop(qgetenv("XDG_CURRENT_DESKTOP")) {
        qputenv("PATH", stubs.path().toLocal8Bit());
    }
    ~SystemSettingsNavigatorTest() override {
        qputenv("PATH", savedPath);
        qputenv("XDG_CURRENT_DESKTOP", savedDesktop);
    }
    void addStub(const QString& name) {
        QFile stub(stubs.filePath(name));
        ASSERT_TRUE(stub.open(QIODevice::WriteOnly));
        stub.write(
            QStringLiteral("#!/bin/sh\necho \"%1 $*\" >> '%2'\n").arg(name, calls()).toLocal8Bit());
        stub.close();
        stub.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                            QFileDevice::ExeOwner);
    }
    QString calls() const { return stubs.filePath(QStringLiteral("calls.txt")); }

    QTemporaryDir stubs;
    QByteArray savedPath;
    QByteArray savedDesktop;
};

TEST_F(SystemSettingsNavigatorTest, OpensThePaneWithTheFirstSettingsProgramThatExists) {
    qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    addStub(QStringLiteral("systemsettings"));
    SystemSettingsNavigator navigator;
    EXPECT_TRUE(navigator.open(QStringLiteral("notifications")));
    // GNOME's is tried first but missing here; KDE's module is next.
    EXPECT_TRUE(test::waitUntil([&] { return QFile::exists(calls()); }));
    EXPECT_TRUE(test::waitUntil([&] {
        return readAll(calls()) == "systemsettings kcm_notifications\n";
    })) << readAll(calls()).toStdString();
}

TEST_F(SystemSettingsNavigatorTest, SaysSoWhenNoSettingsProgramStarts) {
    SystemSettingsNavigator navigator;
    EXPECT_FALSE(navigator.open(SystemSettingsDestination::microphone));
    EXPECT_FALSE(navigator.open(QStringLiteral("no such pane")));
    EXPECT_EQ(navigator.failureMessage(),
              QStringLiteral("Settings could not be opened. Open your desktop's privacy settings "
                             "manually and allow Daywyn."));
}

TEST(SystemSettingsNavigator, TriesEachCommandInOrderUntilOneStarts) {
    QStringList tried;
    SystemSettingsNavigator navigator([&](const QString& program, const QStringList& arguments) {
        tried << (program + QLatin1Char(' ') + arguments.join(QLatin1Char(' '))).trimmed();
        return program == QLatin1String("gnome-control-center") && arguments.isEmpty();
    });
    qputenv("XDG_CURRENT_DESKTOP", "GNOME");
    EXPECT_TRUE(navigator.open(SystemSettingsDestination::calendars));
    EXPECT_EQ(tried, (QStringList{QStringLiteral("gnome-control-center online-accounts"),
                                  QStringLiteral("systemsettings kcm_kaccounts"),
                                  QStringLiteral("gnome-control-center")}));
}

} // namespace
} // namespace daywyn
