#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QTimer>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "store/TaskRepository.h"
#include "store/TodayTaskStore.h"
#include "sync/qt/SyncController.h"

namespace daywyn {

class CalendarManager;
class CombinedCalendarSource;
class CompletedHistoryModel;
class EdsCalendarSource;
class GoogleCalendarManager;
class IcsFolderCalendarSource;
class DrawerReminderCoordinator;
class EdgePanelController;
class LaunchAtLoginController;
class OnboardingWindow;
class QuickCaptureController;
class ScreenEngine;
class SettingsModel;
class SettingsWindow;
class SystemSettingsNavigator;
class NotificationManager;
class ScreenLockWatcher;
class SessionHistoryModel;
class TaskEditor;
class Theme;
class TodayModel;
class UserSettings;
class AppUpdateManager;
class VoiceCaptureManager;
class VoiceCaptureWindow;
class VoiceReviewController;
struct ScreenServices;

// The app's composition root: owns the store and every long-lived part for the whole
// run, wires the store's change listener and runs the maintenance pass every 15 seconds
// on the main thread. It is handed the one clock; everything below it is handed `now`.
// Notifications, calendars, voice capture, quick capture and drawer reminders plug in
// here (construction, start() and performMaintenance()). The parts are members in the
// order they are built, so each is destroyed before anything it uses; the windows come
// last, after the engine they are built from.
class AppEnvironment : public QObject {
    Q_OBJECT

public:
    static constexpr int maintenanceIntervalMilliseconds = 15'000;

    // Builds the store from the repository (none: an in-memory store that never
    // saves), which loads and normalises the saved state, then the parts, over the
    // machine's own settings file (UserSettings::defaultFilePath).
    AppEnvironment(std::unique_ptr<TaskRepository> repository, Calendar calendar, Clock clock,
                   QObject* parent = nullptr);
    ~AppEnvironment() override;

    // Prepares the drawer, installs the change listener, runs one maintenance pass
    // at once and starts the repeating one. Only the first call does anything.
    void start();
    bool hasStarted() const { return hasStarted_; }

    // One maintenance pass: generates the daily report when one is due. Reads the wall
    // clock afresh, since the timer's own clock stops while the machine sleeps.
    void performMaintenance();
    int maintenancePasses() const { return maintenancePasses_; }

    Instant now() const { return clock_(); }
    const Calendar& calendar() const { return calendar_; }
    TodayTaskStore& store() { return *store_; }
    EdgePanelController& drawerController() { return *drawerController_; }
    // The machine's own settings ($XDG_CONFIG_HOME/Daywyn/Daywyn.conf).
    UserSettings& userSettings() { return *userSettings_; }
    QuickCaptureController& quickCapture() { return *quickCapture_; }
    LaunchAtLoginController& launchAtLogin() { return *launchAtLogin_; }
    SystemSettingsNavigator& systemSettings() { return *systemSettings_; }
    SettingsModel& settingsModel() { return *settingsModel_; }
    // The settings and welcome windows, built from the engine on first use.
    SettingsWindow& settingsWindow();
    // Brings up the settings window (the drawer's Settings button, the tray).
    Q_INVOKABLE void openSettings();
    OnboardingWindow& onboardingWindow();
    NotificationManager& notificationManager() { return *notificationManager_; }
    DrawerReminderCoordinator& drawerReminders() { return *drawerReminders_; }
    // Today's events from the desktop's calendars.
    CalendarManager& calendarManager() { return *calendarManager_; }
    // Connected Google accounts; their events reach the drawer through calendarManager().
    GoogleCalendarManager& googleCalendars() { return *googleCalendars_; }
    TodayModel& today() { return *today_; }
    // Update checks and downloads, shown on the About page.
    AppUpdateManager& updates() { return *updates_; }
    TaskEditor& editor() { return *editor_; }
    Theme& theme() { return *theme_; }
    // The parts the screens reach, by the names the QML uses.
    ScreenServices screenServices();
    // The engine every screen of the app is built from.
    QQmlEngine& engine();
    VoiceCaptureManager& voiceCapture() { return *voiceCapture_; }
    VoiceReviewController& voiceReview() { return *voiceReview_; }
    // Task sync with the user's CalDAV server, when it is set up.
    sync::SyncController& taskSync() { return *taskSync_; }
    const QTimer& maintenanceTimer() const { return maintenanceTimer_; }

Q_SIGNALS:
    void maintenancePerformed();

private Q_SLOTS:
    void onPrepareForSleep(bool goingToSleep);

private:
    Calendar calendar_;
    Clock clock_;
    std::unique_ptr<UserSettings> userSettings_;
    std::unique_ptr<TodayTaskStore> store_;
    std::unique_ptr<DrawerReminderCoordinator> drawerReminders_;
    std::unique_ptr<ScreenLockWatcher> screenLock_;
    std::unique_ptr<NotificationManager> notificationManager_;
    // The desktop's calendars: Evolution Data Server and the folder of .ics files.
    std::unique_ptr<EdsCalendarSource> edsCalendars_;
    std::unique_ptr<IcsFolderCalendarSource> icsCalendars_;
    std::unique_ptr<CombinedCalendarSource> calendarSources_;
    std::unique_ptr<CalendarManager> calendarManager_;
    std::unique_ptr<GoogleCalendarManager> googleCalendars_;
    std::unique_ptr<VoiceCaptureManager> voiceCapture_;
    std::unique_ptr<VoiceReviewController> voiceReview_;
    std::unique_ptr<Theme> theme_;
    std::unique_ptr<TodayModel> today_;
    std::unique_ptr<TaskEditor> editor_;
    std::unique_ptr<SessionHistoryModel> sessions_;
    std::unique_ptr<CompletedHistoryModel> history_;
    std::unique_ptr<SettingsModel> settingsModel_;
    std::unique_ptr<LaunchAtLoginController> launchAtLogin_;
    std::unique_ptr<SystemSettingsNavigator> systemSettings_;
    std::unique_ptr<AppUpdateManager> updates_;
    // Emitted when the computer wakes (logind's PrepareForSleep(false)).
    sync::ResumeSignal resumed_;
    std::unique_ptr<sync::SyncController> taskSync_;
    // Everything above outlives the engine; everything below is built from it.
    std::unique_ptr<ScreenEngine> engine_;
    std::unique_ptr<QuickCaptureController> quickCapture_;
    std::unique_ptr<EdgePanelController> drawerController_;
    std::unique_ptr<VoiceCaptureWindow> voiceWindow_;
    std::unique_ptr<SettingsWindow> settingsWindow_;
    std::unique_ptr<OnboardingWindow> onboardingWindow_;
    bool hasStarted_ = false;
    int maintenancePasses_ = 0;
    QTimer maintenanceTimer_;
};

} // namespace daywyn
