#include <QFile>
#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "persistence/qt/UserSettings.h"
#include "reminders/qt/DrawerReminderCoordinator.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/OnboardingWindow.h"
#include "ui/qt/SettingsModel.h"
#include "ui/qt/SettingsWindow.h"
#include "ui/qt/Theme.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

// A settings model over a store holding two tasks, with its own settings file.
class SettingsModelTest : public ::testing::Test {
protected:
    SettingsModelTest()
        : clock(test::at(test::berlin(), 2026, 11, 21, 21, 30))
        , settings(directory.filePath(QStringLiteral("Daywyn.conf"))) {
        PersistedState state;
        state.tasks = {TaskBuilder("=SUM(A1)").build(),
                       TaskBuilder("Send invoices").completedAt(clock.now() - 3600).build()};
        auto repo = test::FakeRepository::holding(state);
        repository = repo.get();
        store = std::make_unique<TodayTaskStore>(std::move(repo), clock.now(), calendar);
        model = std::make_unique<SettingsModel>(*store, calendar, clock.function(), settings,
                                                QStringLiteral("/data/daywyn.json"));
    }

    QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    Calendar calendar = test::berlin();
    test::ManualClock clock;
    QTemporaryDir directory;
    UserSettings settings;
    test::FakeRepository* repository = nullptr;
    std::unique_ptr<TodayTaskStore> store;
    std::unique_ptr<SettingsModel> model;
};

TEST_F(SettingsModelTest, ExportWritesTheFileTheDialogChoseAndSaysSo) {
    // The dialog hands over a file: URL.
    const QString json = directory.filePath(QStringLiteral("Daywyn-export.json"));
    EXPECT_TRUE(model->exportData(false, QUrl::fromLocalFile(json).toString()));
    EXPECT_EQ(model->message(), QStringLiteral("Export saved to Daywyn-export.json."));
    EXPECT_TRUE(read(json).contains("\"schemaVersion\": 1"));
    EXPECT_TRUE(read(json).contains("\"Send invoices\""));

    const QString csv = directory.filePath(QStringLiteral("Daywyn-export.csv"));
    EXPECT_TRUE(model->exportData(true, csv));
    EXPECT_TRUE(read(csv).startsWith("id,title,completed,"));
    EXPECT_TRUE(read(csv).contains("\"'=SUM(A1)\""));
}

TEST_F(SettingsModelTest, AnExportThatCannotBeWrittenSaysWhyAndLeavesNothing) {
    const QString missingFolder = directory.filePath(QStringLiteral("gone/Daywyn-export.csv"));
    EXPECT_FALSE(model->exportData(true, missingFolder));
    EXPECT_TRUE(model->message().startsWith(QStringLiteral("Export failed: ")))
        << model->message().toStdString();
    EXPECT_TRUE(model->message().endsWith(QLatin1Char('.')));
    EXPECT_FALSE(QFile::exists(missingFolder));
}

TEST_F(SettingsModelTest, PreferencesAreSavedWithTheTasksAndBadValuesAreRefused) {
    const int savesBefore = repository->saveCount();
    EXPECT_TRUE(model->setPreference(QStringLiteral("defaultTaskMinutes"), 40));
    EXPECT_TRUE(model->setPreference(QStringLiteral("edgeAnchor"), QStringLiteral("bottomRight")));
    EXPECT_TRUE(model->setPreference(QStringLiteral("unfinishedReminderCadence"), 120));
    EXPECT_EQ(repository->saveCount(), savesBefore + 3);
    EXPECT_EQ(repository->lastSaved().preferences.defaultTaskMinutes, 40);
    EXPECT_EQ(repository->lastSaved().preferences.edgeAnchor, EdgeAnchor::bottomRight);
    EXPECT_EQ(model->preferences().value(QStringLiteral("edgeAnchor")).toString(),
              QStringLiteral("bottomRight"));

    struct Refusal {
        const char* name;
        QVariant value;
        const char* sentence;
    };
    const Refusal refusals[] = {
        {"defaultTaskMinutes", 0, "The default estimate must be a whole number from 1 to 720."},
        {"dailyReviewMinute", 7.5, "The review minute must be a whole number from 0 to 59."},
        {"unfinishedReminderCadence", 45, "Choose off, every 30 minutes, hourly or every 2 hours."},
        {"edgeAnchor", QStringLiteral("middle"), "Choose one of the eight drawer positions."},
    };
    for (const Refusal& r : refusals) {
        SCOPED_TRACE(r.name);
        EXPECT_FALSE(model->setPreference(QString::fromLatin1(r.name), r.value));
        EXPECT_EQ(model->message(), QString::fromUtf8(r.sentence));
    }
    EXPECT_EQ(repository->saveCount(), savesBefore + 3);
    EXPECT_EQ(store->preferences().defaultTaskMinutes, 40);
}

TEST_F(SettingsModelTest, AppearanceIsWrittenToTheSettingsFileTheThemeReadsAtStart) {
    EXPECT_EQ(model->appearance(), QStringLiteral("system"));
    model->setAppearance(QStringLiteral("dark"));
    const QString stored =
        UserSettings(settings.filePath()).stringValue(QStringLiteral("appearance"));
    EXPECT_EQ(stored, QStringLiteral("dark"));
    EXPECT_TRUE(Theme::resolveDark(stored));
    model->setAppearance(QStringLiteral("sepia"));
    EXPECT_EQ(model->appearance(), QStringLiteral("system"));
}

TEST_F(SettingsModelTest, PopOutSwitchesLiveInThisMachinesSettingsFile) {
    EXPECT_TRUE(model->userSwitch(QStringLiteral("inAppRemindersEnabled"), true));
    model->setUserSwitch(QStringLiteral("inAppRemindersEnabled"), false);
    EXPECT_FALSE(
        UserSettings(settings.filePath()).boolValue(QStringLiteral("inAppRemindersEnabled"), true));
    EXPECT_FALSE(model->userSwitch(QStringLiteral("inAppRemindersEnabled"), true));
}

TEST_F(SettingsModelTest, GeneratingADueReviewListsItOnceAndThenSaysNoneIsDue) {
    EXPECT_TRUE(model->reports().isEmpty());
    model->generateDueReport();
    EXPECT_EQ(model->message(),
              QStringLiteral("The review for Saturday 21 November is ready below."));
    ASSERT_EQ(model->reports().size(), 1);
    EXPECT_EQ(model->reports()[0].toMap().value(QStringLiteral("completed")).toInt(), 1);
    model->generateDueReport();
    EXPECT_EQ(model->message(), QStringLiteral("No review is due now."));
    EXPECT_EQ(model->reports().size(), 1);
    ASSERT_EQ(model->completedTasks().size(), 1);
    EXPECT_EQ(model->completedTasks()[0].toMap().value(QStringLiteral("title")).toString(),
              QStringLiteral("Send invoices"));
}

// Every page of the real window loads its QML without a warning.
TEST(SettingsWindow, EveryPageLoads) {
    AppEnvironment environment(nullptr, test::berlin(),
                               test::ManualClock(Instant{1779440400.0}).function());
    static QStringList warnings;
    warnings.clear();
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type != QtDebugMsg && !text.contains(QLatin1String("does not support"))) {
                warnings << text;
            }
        });
    SettingsWindow& window = environment.settingsWindow();
    for (const char* page : {"history", "reports", "general", "notifications", "calendars", "voice",
                             "appearance", "about"}) {
        SCOPED_TRACE(page);
        window.show(QString::fromLatin1(page));
        QQuickItem* loader = test::findItem(*window.window(), QStringLiteral("settingsPage"));
        ASSERT_TRUE(loader);
        EXPECT_TRUE(test::waitUntil(
            [&] { return loader->property("item").value<QQuickItem*>() != nullptr; }));
    }
    qInstallMessageHandler(previous);
    EXPECT_TRUE(warnings.isEmpty()) << warnings.join(QLatin1Char('\n')).toStdString();
}

// The welcome window over its own settings file.
class OnboardingWindowTest : public ::testing::Test {
protected:
    AppEnvironment environment{nullptr, test::berlin(),
                               test::ManualClock(Instant{1779440400.0}).function()};
    QTemporaryDir directory;
    UserSettings settings{directory.filePath(QStringLiteral("Daywyn.conf"))};
    OnboardingWindow onboarding{environment.engine(), settings};
};

TEST_F(OnboardingWindowTest, OpensAtLaunchUntilFinished) {
    ASSERT_TRUE(onboarding.showIfNeeded());
    EXPECT_EQ(onboarding.window()->title(), QStringLiteral("Welcome to Daywyn"));
    EXPECT_EQ(onboarding.window()->size(), QSize(620, 580));

    // Next, Next, then the last button finishes.
    QQuickItem* next = test::findItem(*onboarding.window(), QStringLiteral("onboardingNext"));
    ASSERT_TRUE(next);
    for (int i = 0; i < 3; ++i) {
        test::click(*onboarding.window(), *next);
    }
    EXPECT_TRUE(settings.boolValue(QStringLiteral("onboardingCompleted"), false));
    const QQuickView* finished = onboarding.window();
    EXPECT_TRUE(finished == nullptr || !finished->isVisible());
    EXPECT_FALSE(onboarding.showIfNeeded());
    // A finished welcome gives its window and scene back.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(onboarding.window(), nullptr);
}

TEST_F(OnboardingWindowTest, ClosedUnfinishedItIsReleasedAndOpensAgainFromTheStart) {
    ASSERT_TRUE(onboarding.showIfNeeded());
    QQuickItem* next = test::findItem(*onboarding.window(), QStringLiteral("onboardingNext"));
    ASSERT_TRUE(next);
    test::click(*onboarding.window(), *next);
    onboarding.window()->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(onboarding.window(), nullptr);
    EXPECT_FALSE(settings.boolValue(QStringLiteral("onboardingCompleted"), false));

    // Shown again, it is a new window at its first step: three clicks still finish it.
    ASSERT_TRUE(onboarding.showIfNeeded());
    ASSERT_TRUE(onboarding.window()->isVisible());
    next = test::findItem(*onboarding.window(), QStringLiteral("onboardingNext"));
    ASSERT_TRUE(next);
    test::click(*onboarding.window(), *next);
    test::click(*onboarding.window(), *next);
    EXPECT_FALSE(settings.boolValue(QStringLiteral("onboardingCompleted"), false));
    test::click(*onboarding.window(), *next);
    EXPECT_TRUE(settings.boolValue(QStringLiteral("onboardingCompleted"), false));
}

} // namespace
} // namespace daywyn

namespace daywyn {
namespace {

// The spin box inside a labelled SettingsNumber row.
QQuickItem* spinBoxIn(QQuickItem& row) {
    for (QQuickItem* child : row.childItems()) {
        if (child->property("stepSize").isValid() && child->property("value").isValid()) {
            return child;
        }
    }
    return nullptr;
}

// The pop-outs and the notifications each have their own active hours, and each
// control changes only its own: the pop-outs' in this machine's settings file, the
// notifications' in the state file.
TEST(SettingsWindow, PopOutAndNotificationActiveHoursAreSetSeparately) {
    AppEnvironment app(nullptr, test::berlin(),
                       test::ManualClock(test::at(test::berlin(), 2026, 11, 21, 9)).function());
    app.settingsWindow().show(QStringLiteral("notifications"));
    QQuickView& window = *app.settingsWindow().window();
    ASSERT_TRUE(test::waitUntil([&] { return window.activeFocusItem() != nullptr; }));
    const auto step = [&](const char* name, Qt::Key key) {
        QQuickItem* row = test::findItem(window, QString::fromLatin1(name));
        ASSERT_NE(row, nullptr) << name;
        QQuickItem* box = spinBoxIn(*row);
        ASSERT_NE(box, nullptr) << name;
        box->forceActiveFocus();
        QTest::keyClick(&window, key);
    };
    ASSERT_EQ(app.drawerReminders().settings().activeStart, 9);
    step("popOutsFrom", Qt::Key_Up);
    step("popOutsUntil", Qt::Key_Down);
    EXPECT_EQ(app.drawerReminders().settings().activeStart, 10);
    EXPECT_EQ(app.drawerReminders().settings().activeEnd, 20);
    EXPECT_EQ(app.store().preferences().activeHoursStart, 9);
    EXPECT_EQ(app.store().preferences().activeHoursEnd, 21);

    step("nudgesFrom", Qt::Key_Down);
    EXPECT_EQ(app.store().preferences().activeHoursStart, 8);
    EXPECT_EQ(app.drawerReminders().settings().activeStart, 10);
}

} // namespace
} // namespace daywyn
