#include <cstdlib>
#include <memory>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include "support/qt/PrivateDesktop.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::eventually;

// The keycode that types Space on this server, or 0.
xcb_keycode_t spaceKeycode(xcb_connection_t* connection) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    xcb_get_keyboard_mapping_reply_t* reply = xcb_get_keyboard_mapping_reply(
        connection,
        xcb_get_keyboard_mapping(connection, setup->min_keycode, static_cast<std::uint8_t>(count)),
        nullptr);
    xcb_keycode_t found = 0;
    for (int i = 0; reply && i < count && !found; ++i) {
        if (xcb_get_keyboard_mapping_keysyms(reply)[i * reply->keysyms_per_keycode] == 0x20) {
            found = static_cast<xcb_keycode_t>(setup->min_keycode + i);
        }
    }
    std::free(reply);
    return found;
}

// A private X server with the openbox window manager, and the real Daywyn binary on it.
class QuickCaptureX11Test : public ::testing::Test {
protected:
    // One X server and window manager for the whole suite: starting them per test
    // races with the previous server's shutdown.
    static void SetUpTestSuite() {
        for (const char* tool : {"Xvfb", "openbox", "xdotool", "xmessage", "xprop"}) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty()) {
                missingTool = tool;
                return;
            }
        }
        desktop = std::make_unique<test::PrivateDesktop>(QStringLiteral("1280x800x24"));
        display = desktop->display();
        environment = desktop->environment();
        ready = desktop->ready();
    }

    static void TearDownTestSuite() { desktop.reset(); }

    static void stop(QProcess* process) { test::stopProcess(process); }

    void SetUp() override {
        if (missingTool) {
            GTEST_SKIP() << missingTool
                         << " is not installed (scripts/install-deps.sh installs it).";
        }
        ASSERT_TRUE(ready) << desktop->failure().toStdString();
    }

    void TearDown() override {
        stop(&app);
        stop(&holder);
    }

    // Runs a tool on the private display and returns its standard output.
    static std::string run(const QString& program, const QStringList& args) {
        return desktop->run(program, args).toStdString();
    }

    // Runs xdotool on the private display; its standard output, trimmed.
    std::string xdotool(std::vector<std::string> args) {
        QStringList arguments;
        for (const std::string& a : args) {
            arguments << QString::fromStdString(a);
        }
        std::string out = run(QStringLiteral("xdotool"), arguments);
        while (!out.empty() && (out.back() == '\n' || out.back() == ' ')) {
            out.pop_back();
        }
        return out;
    }

    // Another application's window, which the window manager brings to the front.
    std::string openHolderWindow() {
        holder.setProcessEnvironment(environment);
        holder.start(QStringLiteral("xmessage"), {QStringLiteral("-name"), QStringLiteral("holder"),
                                                  QStringLiteral("Another application")});
        std::string id;
        eventually([&] {
            id = xdotool({"search", "--classname", "holder"});
            return !id.empty() && xdotool({"getactivewindow"}) == id.substr(0, id.find('\n'));
        });
        return id.substr(0, id.find('\n'));
    }

    void startApp() {
        QProcessEnvironment env = environment;
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        env.insert(QStringLiteral("DAYWYN_QUICK_ADD_LOG"), QStringLiteral("1"));
        // Onboarding done: its welcome window would otherwise take the front, and
        // Quick Add rightly gives focus back only to another application.
        QDir(config.path()).mkpath(QStringLiteral("Daywyn"));
        QFile settings(config.filePath(QStringLiteral("Daywyn/Daywyn.conf")));
        settings.open(QIODevice::WriteOnly);
        settings.write("[General]\nonboardingCompleted=true\n");
        settings.close();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        app.setProcessEnvironment(env);
        app.start(QString::fromLatin1(DAYWYN_BINARY_PATH), {});
    }

    // Starts the app while another application's window is in front, and waits until
    // the shortcut is held.
    void startAppBehind(const std::string& holderWindow) {
        ASSERT_FALSE(holderWindow.empty());
        startApp();
        ASSERT_TRUE(appSaid(QStringLiteral("Quick capture status: active"))) << log.toStdString();
    }

    // True once the app has written a line containing `text` to standard error.
    bool appSaid(const QString& text) {
        return eventually([&] {
            app.waitForReadyRead(20);
            log += QString::fromUtf8(app.readAllStandardError());
            return log.contains(text);
        });
    }

    int countInLog(const QString& text) {
        app.waitForReadyRead(20);
        log += QString::fromUtf8(app.readAllStandardError());
        return static_cast<int>(log.count(text));
    }

    static inline const char* missingTool = nullptr;
    static inline std::unique_ptr<test::PrivateDesktop> desktop;
    static inline QString display;
    static inline QProcessEnvironment environment;
    static inline bool ready = false;
    QTemporaryDir config;
    QProcess holder;
    QProcess app;
    QString log;
};

TEST_F(QuickCaptureX11Test, ThePressOpensTheFocusedPanelAndEnterSavesAndGivesFocusBack) {
    const std::string holderWindow = openHolderWindow();
    ASSERT_NO_FATAL_FAILURE(startAppBehind(holderWindow));

    xdotool({"key", "ctrl+alt+space"});
    ASSERT_TRUE(appSaid(QStringLiteral("Quick Add ready after"))) << log.toStdString();
    EXPECT_EQ(xdotool({"getactivewindow", "getwindowname"}), "Quick Add");

    xdotool({"type", "--delay", "5", "Water plants for 10 minutes"});
    xdotool({"key", "Return"});
    ASSERT_TRUE(appSaid(QStringLiteral("Quick Add saved and closed"))) << log.toStdString();
    EXPECT_TRUE(eventually([&] { return xdotool({"getactivewindow"}) == holderWindow; }));
    const QString stateFile =
        QDir(qEnvironmentVariable("XDG_DATA_HOME")).filePath(QStringLiteral("Daywyn/daywyn.json"));
    EXPECT_TRUE(eventually([&] {
        QFile file(stateFile);
        return file.open(QIODevice::ReadOnly) && file.readAll().contains("\"Water plants\"");
    }));
}

TEST_F(QuickCaptureX11Test, CapsLockDoesNotHideThePressAndEscapeGivesFocusBack) {
    const std::string holderWindow = openHolderWindow();
    ASSERT_NO_FATAL_FAILURE(startAppBehind(holderWindow));

    xdotool({"key", "Caps_Lock"});
    xdotool({"key", "ctrl+alt+space"});
    ASSERT_TRUE(appSaid(QStringLiteral("Quick Add ready after"))) << log.toStdString();
    xdotool({"key", "Escape"});
    xdotool({"key", "Caps_Lock"});
    EXPECT_TRUE(eventually([&] { return xdotool({"getactivewindow"}) == holderWindow; }));
    EXPECT_EQ(countInLog(QStringLiteral("saved and closed")), 0);
}

TEST_F(QuickCaptureX11Test, TheQuickAddVerbOpensThePanelOfTheRunningApp) {
    const std::string holderWindow = openHolderWindow();
    ASSERT_NO_FATAL_FAILURE(startAppBehind(holderWindow));

    // What a desktop's custom shortcut runs where the X grab cannot reach.
    QProcess verb;
    verb.start(QString::fromLatin1(DAYWYN_BINARY_PATH), {QStringLiteral("quick-add")});
    ASSERT_TRUE(verb.waitForFinished(20000));
    EXPECT_EQ(verb.exitCode(), 0) << verb.readAllStandardError().toStdString();
    EXPECT_TRUE(eventually([&] {
        return xdotool({"getactivewindow", "getwindowname"}) == "Quick Add";
    }));
    xdotool({"key", "Escape"});
    EXPECT_TRUE(eventually([&] { return xdotool({"getactivewindow"}) == holderWindow; }));
}

TEST_F(QuickCaptureX11Test, AnotherClientHoldingTheShortcutMakesItUnavailable) {
    // A second client grabs the bare combination first, as another launcher would.
    int screenNumber = 0;
    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> other(
        xcb_connect(display.toLatin1().constData(), &screenNumber), xcb_disconnect);
    ASSERT_EQ(xcb_connection_has_error(other.get()), 0);
    const xcb_setup_t* setup = xcb_get_setup(other.get());
    const xcb_window_t root = xcb_setup_roots_iterator(setup).data->root;
    const xcb_keycode_t keycode = spaceKeycode(other.get());
    ASSERT_NE(keycode, 0);
    xcb_generic_error_t* error = xcb_request_check(
        other.get(),
        xcb_grab_key_checked(other.get(), 0, root, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1, keycode,
                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    ASSERT_EQ(error, nullptr);

    startApp();
    EXPECT_TRUE(appSaid(QStringLiteral("Quick capture status: Ctrl+Alt+Space is unavailable "
                                       "(error 10). Another app may already use it.")))
        << log.toStdString();
}

} // namespace
} // namespace daywyn
