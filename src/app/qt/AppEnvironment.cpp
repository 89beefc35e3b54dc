#include "app/qt/AppEnvironment.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QPointer>
#include <QQmlContext>
#include <QQmlEngine>

#include "calendar/CombinedCalendarSource.h"
#include "calendar/qt/CalendarManager.h"
#include "calendar/qt/EdsCalendarSource.h"
#include "calendar/qt/IcsFolderCalendarSource.h"
#include "persistence/JSONTaskRepository.h"
#include "reminders/qt/DrawerReminderCoordinator.h"
#include "reminders/qt/NotificationManager.h"
#include "reminders/qt/ScreenLockWatcher.h"
#include "reminders/qt/SoundEffectChime.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/GlobalShortcut.h"
#include "shell/qt/LaunchAtLoginController.h"
#include "shell/qt/QuickCaptureController.h"
#include "shell/qt/QuickCaptureFocus.h"
#include "shell/qt/SystemSettingsNavigator.h"
#include "persistence/qt/UserSettings.h"
#include "ui/qt/CompletedHistoryModel.h"
#include "ui/qt/OnboardingWindow.h"
#include "ui/qt/SessionHistoryModel.h"
#include "ui/qt/SettingsModel.h"
#include "ui/qt/SettingsWindow.h"
#include "ui/qt/TaskEditor.h"
#include "ui/qt/Theme.h"
#include "ui/qt/TodayModel.h"
#include "updates/qt/AppUpdateManager.h"
#include "voice/qt/VoiceCaptureManager.h"
#include "voice/qt/VoiceCaptureWindow.h"
#include "voice/qt/VoiceReviewController.h"

namespace daywyn {

AppEnvironment::AppEnvironment(std::unique_ptr<TaskRepository> repository, Calendar calendar,
                               Clock clock, bool darkTheme, QObject* parent)
    : QObject(parent)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    drawerReminders_ = new DrawerReminderCoordinator(
        DrawerReminderCoordinator::defaultSettingsPath(), calendar_, clock_, this);
    screenLock_ =
        new ScreenLockWatcher(QDBusConnection::sessionBus(), QDBusConnection::systemBus(), this);
    connect(screenLock_, &ScreenLockWatcher::lockedChanged, drawerReminders_,
            &DrawerReminderCoordinator::setLocked);
    store_ = std::make_unique<TodayTaskStore>(std::move(repository), clock_(), calendar_);
    drawerController_ = new EdgePanelController(this);
    drawerController_->setReminderChime(std::make_unique<SoundEffectChime>());
    drawerReminders_->setPresenter(drawerController_);
    notificationManager_ =
        new NotificationManager(*store_, calendar_, clock_, NotificationManager::defaultStatePath(),
                                QDBusConnection::sessionBus(), this);
    userSettings_ = new UserSettings(UserSettings::defaultFilePath(), this);
    edsCalendars_ = new EdsCalendarSource(calendar_, this);
    icsCalendars_ =
        new IcsFolderCalendarSource(IcsFolderCalendarSource::defaultFolder(), calendar_, this);
    calendarSources_ = std::make_unique<CombinedCalendarSource>(
        std::vector<CalendarSource*>{edsCalendars_, icsCalendars_});
    calendarManager_ = new CalendarManager(*calendarSources_, calendar_, clock_, this);
    voiceCapture_ = VoiceCaptureManager::forThisDesktop(this);
    voiceReview_ = new VoiceReviewController(
        *voiceCapture_,
        [this](const std::vector<VoiceTaskCandidate>& candidates) {
            return store_->addVoiceTasks(candidates, clock_(), calendar_);
        },
        calendar_, clock_, this);
    theme_ = new Theme(darkTheme, this);
    today_ = new TodayModel(*store_, calendar_, clock_, this);
    editor_ = new TaskEditor(*store_, calendar_, clock_, this);
    sessions_ = new SessionHistoryModel(*store_, calendar_, clock_, this);
    history_ = new CompletedHistoryModel(*store_, calendar_, clock_, this);
    const auto dataFile = JSONTaskRepository::defaultFilePath();
    settingsModel_ = new SettingsModel(*store_, calendar_, clock_, *userSettings_,
                                       dataFile ? QString::fromStdString(dataFile.value())
                                                : QString::fromStdString(dataFile.error()),
                                       this);
    // A new appearance choice repaints the open screens at once.
    connect(settingsModel_, &SettingsModel::appearanceChanged, theme_,
            [this] { theme_->setDark(Theme::resolveDark(settingsModel_->appearance())); });
    quickCapture_ = new QuickCaptureController(*store_, calendar_, clock_, *userSettings_,
                                               GlobalShortcut::forThisSession(),
                                               QuickCaptureFocus::forThisSession(), true, this);
    launchAtLogin_ = new LaunchAtLoginController(LaunchAtLoginController::defaultEntryPath(),
                                                 QCoreApplication::applicationFilePath(), this);
    systemSettings_ = new SystemSettingsNavigator(this);
    AppUpdateManager::Options updateOptions;
    updateOptions.manifestURL = AppUpdateManager::manifestURLFrom(*userSettings_);
    updates_ = new AppUpdateManager(updateOptions, this);
    connect(drawerController_, &EdgePanelController::isVisibleChanged, today_,
            [this] { today_->setLive(drawerController_->isVisible()); });

    maintenanceTimer_.setInterval(maintenanceIntervalMilliseconds);
    // Coarse: a pass a few hundred milliseconds late costs nothing and lets the system
    // batch wake-ups.
    maintenanceTimer_.setTimerType(Qt::VeryCoarseTimer);
    connect(&maintenanceTimer_, &QTimer::timeout, this, &AppEnvironment::performMaintenance);
}

AppEnvironment::~AppEnvironment() {
    // The listener must not outlive the controllers it reaches.
    store_->setOnMeaningfulChange({});
    // The settings and welcome windows bind to every controller below: they go first.
    delete settingsWindow_;
    settingsWindow_ = nullptr;
    delete onboardingWindow_;
    onboardingWindow_ = nullptr;
    drawerReminders_->setPresenter(nullptr);
    // It holds the store by reference.
    delete notificationManager_;
    notificationManager_ = nullptr;
    // Windows first (they use the engine), then the engine (it uses the models), then
    // the models (they observe the store), and the store last as a member.
    delete drawerController_;
    drawerController_ = nullptr;
    delete quickCapture_;
    quickCapture_ = nullptr;
    delete voiceWindow_;
    voiceWindow_ = nullptr;
    engine_.reset();
    // The screens are gone; the manager reads through the sources, which go after it.
    delete calendarManager_;
    calendarManager_ = nullptr;
    delete edsCalendars_;
    delete icsCalendars_;
    delete voiceReview_;
    delete voiceCapture_;
    delete settingsModel_;
    delete history_;
    delete sessions_;
    delete editor_;
    delete today_;
}

QQmlEngine& AppEnvironment::engine() {
    if (!engine_) {
        engine_ = std::make_unique<QQmlEngine>();
        QQmlContext* context = engine_->rootContext();
        context->setContextProperty(QStringLiteral("theme"), theme_);
        context->setContextProperty(QStringLiteral("today"), today_);
        context->setContextProperty(QStringLiteral("editor"), editor_);
        context->setContextProperty(QStringLiteral("sessions"), sessions_);
        context->setContextProperty(QStringLiteral("history"), history_);
        // The settings screens' notification switches, messages and previews.
        context->setContextProperty(QStringLiteral("notifications"), notificationManager_);
        context->setContextProperty(QStringLiteral("drawerReminders"), drawerReminders_);
        context->setContextProperty(QStringLiteral("calendarManager"), calendarManager_);
        context->setContextProperty(QStringLiteral("quickCapture"), quickCapture_);
        context->setContextProperty(QStringLiteral("launchAtLogin"), launchAtLogin_);
        context->setContextProperty(QStringLiteral("systemSettings"), systemSettings_);
        context->setContextProperty(QStringLiteral("settingsModel"), settingsModel_);
        context->setContextProperty(QStringLiteral("updates"), updates_);
        context->setContextProperty(QStringLiteral("app"), this);
        context->setContextProperty(QStringLiteral("voice"), voiceCapture_);
        context->setContextProperty(QStringLiteral("voiceReview"), voiceReview_);
    }
    return *engine_;
}

void AppEnvironment::openSettings() {
    settingsWindow().show();
}

SettingsWindow& AppEnvironment::settingsWindow() {
    if (!settingsWindow_) {
        settingsWindow_ = new SettingsWindow(engine(), this);
    }
    return *settingsWindow_;
}

OnboardingWindow& AppEnvironment::onboardingWindow() {
    if (!onboardingWindow_) {
        onboardingWindow_ = new OnboardingWindow(engine(), *userSettings_, this);
        // After the welcome, the drawer opens once so a new user sees where it lives.
        connect(onboardingWindow_, &OnboardingWindow::completed, drawerController_,
                &EdgePanelController::show);
    }
    return *onboardingWindow_;
}

void AppEnvironment::start() {
    if (hasStarted_) {
        return;
    }
    hasStarted_ = true;
    quickCapture_->setPanelEngine(engine());
    quickCapture_->start();
    drawerController_->prepare(engine());
    voiceWindow_ = new VoiceCaptureWindow(engine(), *voiceReview_, this);
    notificationManager_->configure(drawerController_);
    calendarManager_->configure(store_.get());
    launchAtLogin_->refresh();

    // The listener reaches the controllers weakly: it never keeps one alive, and a
    // controller gone at shutdown is simply skipped.
    QPointer<EdgePanelController> drawer = drawerController_;
    QPointer<NotificationManager> notifications = notificationManager_;
    QPointer<CalendarManager> calendars = calendarManager_;
    Clock clock = clock_;
    store_->setOnMeaningfulChange(
        [drawer, notifications, calendars, clock](const std::vector<TaskItem>& tasks,
                                                  const AppPreferences& preferences) {
            if (notifications) {
                notifications->refreshSchedules(tasks, preferences, clock());
            }
            // With integration on this reads today's events again; turned off, it empties
            // the lists without touching the calendars.
            if (calendars) {
                calendars->refresh();
            }
            if (drawer) {
                drawer->setAnchor(preferences.edgeAnchor);
            }
        });
    drawerController_->setAnchor(store_->preferences().edgeAnchor);

    performMaintenance();
    maintenanceTimer_.start();

    // After a suspend the timer's monotonic clock has stood still: catch up at once.
    QDBusConnection::systemBus().connect(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
        SLOT(onPrepareForSleep(bool)));
}

void AppEnvironment::onPrepareForSleep(bool goingToSleep) {
    if (!goingToSleep) {
        performMaintenance();
    }
}

void AppEnvironment::performMaintenance() {
    // Google calendars refresh first here once connected accounts exist.
    const Instant now = clock_();
    store_->generateDueReportIfNeeded(now, calendar_);
    // A notification timer that stood still through a suspend delivers now.
    notificationManager_->catchUp();
    calendarManager_->refreshIfDayChanged(now);
    drawerReminders_->check(store_->tasks(), calendarManager_->todayEvents(), now);
    ++maintenancePasses_;
    Q_EMIT maintenancePerformed();
}

} // namespace daywyn
