#include "shell/qt/DaywynBusService.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <gtest/gtest.h>

#include "shell/CommandLine.h"
#include "shell/qt/AppEnvironment.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

// The service on the private session bus, called from a second connection as another
// process would; the verbs reach a recording runner instead of the command line.
class DaywynBusServiceTest : public ::testing::Test {
protected:
    DaywynBusServiceTest()
        : clock(Instant{1779440400.0})
        , environment(nullptr, test::berlin(), clock.function(), false)
        , service(environment, [this](const std::vector<std::string>& args) {
            verbs.push_back(args);
            return CommandOutput{args.size() > 1 ? 0 : 2, "out of " + args[0], "err of " + args[0]};
        }) {
        environment.start();
        environment.drawerController().setReducedMotion(true);
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.registerObject(QStringLiteral("/org/daywyn/Daywyn"), &service,
                           QDBusConnection::ExportAllSlots);
        registered = bus.registerService(QStringLiteral("org.daywyn.Daywyn"));
    }
    ~DaywynBusServiceTest() override {
        QDBusConnection::sessionBus().unregisterService(QStringLiteral("org.daywyn.Daywyn"));
        QDBusConnection::sessionBus().unregisterObject(QStringLiteral("/org/daywyn/Daywyn"));
    }

    // Calls a method from a separate connection and waits for the answer.
    QList<QVariant> call(const QString& method, const QList<QVariant>& arguments) {
        QDBusConnection client =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("client"));
        QDBusMessage message = QDBusMessage::createMethodCall(
            QStringLiteral("org.daywyn.Daywyn"), QStringLiteral("/org/daywyn/Daywyn"),
            QStringLiteral("org.daywyn.Daywyn"), method);
        message.setArguments(arguments);
        QDBusPendingCallWatcher watcher(client.asyncCall(message));
        EXPECT_TRUE(test::waitUntil([&] { return watcher.isFinished(); }));
        EXPECT_FALSE(watcher.isError()) << watcher.error().message().toStdString();
        return watcher.reply().arguments();
    }

    test::ManualClock clock;
    AppEnvironment environment;
    std::vector<std::vector<std::string>> verbs;
    DaywynBusService service;
    bool registered = false;
};

TEST_F(DaywynBusServiceTest, WritingVerbsAnswerWithTheCommandLinesOutput) {
    ASSERT_TRUE(registered);
    const QList<QVariant> done = call(
        QStringLiteral("Done"), {QStringList{QStringLiteral("Water"), QStringLiteral("plants")}});
    EXPECT_EQ(done,
              (QList<QVariant>{0, QStringLiteral("out of done"), QStringLiteral("err of done")}));
    const QList<QVariant> report = call(QStringLiteral("Report"), {QStringList{}});
    EXPECT_EQ(report.value(0).toInt(), 2);
    ASSERT_EQ(verbs.size(), 2u);
    EXPECT_EQ(verbs[0], (std::vector<std::string>{"done", "Water", "plants"}));
    EXPECT_EQ(verbs[1], (std::vector<std::string>{"report"}));
}

TEST_F(DaywynBusServiceTest, ShowHideAndToggleDriveTheDrawerAndQuickAddOpensThePanel) {
    ASSERT_TRUE(registered);
    EdgePanelController& drawer = environment.drawerController();
    call(QStringLiteral("Show"), {});
    EXPECT_TRUE(drawer.isVisible());
    call(QStringLiteral("Toggle"), {});
    EXPECT_FALSE(drawer.isVisible());
    call(QStringLiteral("Show"), {});
    call(QStringLiteral("Hide"), {});
    EXPECT_FALSE(drawer.isVisible());
    call(QStringLiteral("QuickAdd"), {});
    EXPECT_TRUE(environment.quickCapture().isPanelVisible());
    EXPECT_FALSE(drawer.isVisible());
}

} // namespace
} // namespace daywyn
