#include "app/qt/AppEnvironment.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QPointer>

#include "app/qt/ScreenEngine.h"
#include "calendar/CombinedCalendarSource.h"
#include "calendar/qt/CalendarManager.h"
#include "calendar/qt/EdsCalendarSource.h"
#include "calendar/qt/GoogleCalendarManager.h"
#include "calendar/qt/IcsFolderCalendarSource.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "persistence/qt/UserSettings.h"
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
#include "sync/SyncStateFile.h"
#include "sync/ical/IcalTaskCoding.h"
#include "sync/qt/SyncAccountAccess.h"
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
                               Clock clock, QObject* parent)
    : QObject(parent)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    userSettings_ = std::make_unique<UserSettings>(UserSettings::defaultFilePath());
    store_ = std::make_unique<TodayTaskStore>(std::move(repository), clock_(), calendar_);
    drawerReminders_ =
        std::make_unique<DrawerReminderCoordinator>(*userSettings_, calendar_, clock_);
    screenLock_ = std::make_unique<ScreenLockWatcher>(QDBusConnection::sessionBus(),
                                                      QDBusConnection::systemBus());
    connect(screenLock_.get(), &ScreenLockWatcher::lockedChanged, drawerReminders_.get(),
            &DrawerReminderCoordinator::setLocked);
    notificationManager_ = std::make_unique<NotificationManager>(
        *store_, calendar_, clock_, NotificationManager::defaultStatePath(),
        QDBusConnection::sessionBus());
    edsCalendars_ = std::make_unique<EdsCalendarSource>(calendar_);
    icsCalendars_ = std::make_unique<IcsFolderCalendarSource>(
        IcsFolderCalendarSource::defaultFolder(), calendar_);
    calendarSources_ = std::make_unique<CombinedCalendarSource>(
        std::vector<CalendarSource*>{edsCalendars_.get(), icsCalendars_.get()});
    calendarManager_ = std::make_unique<CalendarManager>(*calendarSources_, calendar_, clock_);
    googleCalendars_ = GoogleCalendarManager::forThisDesktop(calendar_, clock_);
    connect(googleCalendars_.get(), &GoogleCalendarManager::eventsChanged, calendarManager_.get(),
            [this] { calendarManager_->setOtherEvents(googleCalendars_->events()); });
    voiceCapture_.reset(VoiceCaptureManager::forThisDesktop(nullptr));
    voiceReview_ = std::make_unique<VoiceReviewController>(
        *voiceCapture_,
        [this](const std::vector<VoiceTaskCandidate>& candidates) {
            return store_->addVoiceTasks(candidates, clock_(), calendar_);
        },
        calendar_, clock_);
    today_ = std::make_unique<TodayModel>(*store_, calendar_, clock_);
    editor_ = std::make_unique<TaskEditor>(*store_, calendar_, clock_);
    sessions_ = std::make_unique<SessionHistoryModel>(*store_, calendar_, clock_);
    history_ = std::make_unique<CompletedHistoryModel>(*store_, calendar_, clock_);
    const auto dataFile = JSONTaskRepository::defaultFilePath();
    settingsModel_ =
        std::make_unique<SettingsModel>(*store_, calendar_, clock_, *userSettings_,
                                        dataFile ? QString::fromStdString(dataFile.value())
                                                 : QString::fromStdString(dataFile.error()));
    theme_ = std::make_unique<Theme>(Theme::resolveDark(settingsModel_->appearance()));
    // A new appearance choice repaints the open screens at once.
    connect(settingsModel_.get(), &SettingsModel::appearanceChanged, theme_.get(),
            [this] { theme_->setDark(Theme::resolveDark(settingsModel_->appearance())); });
    launchAtLogin_ = std::make_unique<LaunchAtLoginController>(
        LaunchAtLoginController::defaultEntryPath(), QCoreApplication::applicationFilePath());
    systemSettings_ = std::make_unique<SystemSettingsNavigator>();
    AppUpdateManager::Options updateOptions;
    updateOptions.manifestURL = AppUpdateManager::manifestURLFrom(*userSettings_);
    updates_ = std::make_unique<AppUpdateManager>(updateOptions);
    const auto syncStatePath = sync::SyncStateFile::defaultPath();
    taskSync_ = std::make_unique<sync::SyncController>(
        sync::SyncController::TaskList{
            [this]() -> const std::vector<TaskItem>& { return store_->tasks(); },
            [this](std::vector<TaskItem> merged) {
                return store_->replaceWithSyncedTasks(std::move(merged));
            }},
        // Without a home folder the state cannot load, and the settings page says why.
        sync::SyncStateFile(syncStatePath ? syncStatePath.value() : std::string(),
                            std::make_shared<PosixFileSystem>()),
        std::make_shared<sync::IcalTaskCoding>(), sync::openSyncCollection, calendar_, clock_,
        sync::SyncController::Timing{});

    drawerController_ = std::make_unique<EdgePanelController>();
    drawerController_->setReminderChime(std::make_unique<SoundEffectChime>());
    drawerReminders_->setPresenter(drawerController_.get());
    quickCapture_ = std::make_unique<QuickCaptureController>(
        *store_, calendar_, clock_, *userSettings_, GlobalShortcut::forThisSession(),
        QuickCaptureFocus::forThisSession(), true);
    engine_ = std::make_unique<ScreenEngine>(screenServices());
    quickCapture_->setPanelEngine(*engine_);
    connect(drawerController_.get(), &EdgePanelController::isVisibleChanged, today_.get(),
            [this] { today_->setLive(drawerController_->isVisible()); });
    connect(drawerController_.get(), &EdgePanelController::isVisibleChanged, googleCalendars_.get(),
            [this] {
                if (drawerController_->isVisible()) {
                    googleCalendars_->refreshIfNeeded();
                }
            });

    maintenanceTimer_.setInterval(maintenanceIntervalMilliseconds);
    // Coarse: a pass a few hundred milliseconds late costs nothing and lets the system
    // batch wake-ups.
    maintenanceTimer_.setTimerType(Qt::VeryCoarseTimer);
    connect(&maintenanceTimer_, &QTimer::timeout, this, &AppEnvironment::performMaintenance);
}

AppEnvironment::~AppEnvironment() {
    // The drawer goes before the coordinator that points at it.
    drawerReminders_->setPresenter(nullptr);
}

ScreenServices AppEnvironment::screenServices() {
    ScreenServices services;
    services.theme = theme_.get();
    services.today = today_.get();
    services.editor = editor_.get();
    services.sessions = sessions_.get();
    services.history = history_.get();
    services.notifications = notificationManager_.get();
    services.drawerReminders = drawerReminders_.get();
    services.calendars = calendarManager_.get();
    services.googleCalendars = googleCalendars_.get();
    services.quickCapture = quickCapture_.get();
    services.launchAtLogin = launchAtLogin_.get();
    services.systemSettings = systemSettings_.get();
    services.settings = settingsModel_.get();
    services.updates = updates_.get();
    services.voice = voiceCapture_.get();
    services.voiceReview = voiceReview_.get();
    services.drawer = drawerController_.get();
    services.taskSync = taskSync_.get();
    services.app = this;
    return services;
}

QQmlEngine& AppEnvironment::engine() {
    return *engine_;
}

void AppEnvironment::openSettings() {
    settingsWindow().show();
}

SettingsWindow& AppEnvironment::settingsWindow() {
    if (!settingsWindow_) {
        settingsWindow_ = std::make_unique<SettingsWindow>(*engine_);
    }
    return *settingsWindow_;
}

OnboardingWindow& AppEnvironment::onboardingWindow() {
    if (!onboardingWindow_) {
        onboardingWindow_ = std::make_unique<OnboardingWindow>(*engine_, *userSettings_);
        // After the welcome, the drawer opens once so a new user sees where it lives.
        connect(onboardingWindow_.get(), &OnboardingWindow::completed, drawerController_.get(),
                &EdgePanelController::show);
    }
    return *onboardingWindow_;
}

void AppEnvironment::start() {
    if (hasStarted_) {
        return;
    }
    hasStarted_ = true;
    quickCapture_->start();
    drawerController_->prepare(*engine_);
    voiceWindow_ = std::make_unique<VoiceCaptureWindow>(*engine_, *voiceReview_);
    QPointer<EdgePanelController> shown = drawerController_.get();
    notificationManager_->configure([shown] {
        if (shown) {
            shown->show();
        }
    });
    calendarManager_->configure(store_.get());
    googleCalendars_->restore();
    launchAtLogin_->refresh();

    // The listener reaches the controllers weakly: it never keeps one alive, and a
    // controller gone at shutdown is simply skipped.
    QPointer<EdgePanelController> drawer = drawerController_.get();
    QPointer<NotificationManager> notifications = notificationManager_.get();
    QPointer<CalendarManager> calendars = calendarManager_.get();
    QPointer<sync::SyncController> taskSync = taskSync_.get();
    Clock clock = clock_;
    store_->setOnMeaningfulChange(
        [drawer, notifications, calendars, taskSync, clock](const std::vector<TaskItem>& tasks,
                                                            const AppPreferences& preferences) {
            // Every change of the tasks is a change to sync, whoever made it.
            if (taskSync) {
                taskSync->noteStoreChange(tasks);
            }
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
    taskSync_->start(&resumed_);

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
        Q_EMIT resumed_.resumed();
    }
}

void AppEnvironment::performMaintenance() {
    const Instant now = clock_();
    googleCalendars_->refreshIfNeeded();
    store_->generateDueReportIfNeeded(now, calendar_);
    // A notification timer that stood still through a suspend delivers now.
    notificationManager_->catchUp();
    calendarManager_->refreshIfDayChanged(now);
    drawerReminders_->check(store_->tasks(), calendarManager_->todayEvents(), now);
    ++maintenancePasses_;
    Q_EMIT maintenancePerformed();
}

} // namespace daywyn
