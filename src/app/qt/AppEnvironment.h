#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QTimer>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "store/TaskRepository.h"
#include "store/TodayTaskStore.h"

class QQmlEngine;

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

// The app's composition root: owns the store and every long-lived controller for the
// whole run, wires the store's change listener and runs the maintenance pass every 15
// seconds on the main thread. It owns the one real clock; everything below it is
// handed `now`. Notifications, calendars, voice capture, quick capture and drawer
// reminders plug in here (construction, start() and performMaintenance()).
class AppEnvironment : public QObject {
    Q_OBJECT

public:
    using Clock = std::function<Instant()>;
    static constexpr int maintenanceIntervalMilliseconds = 15'000;

    // Builds the store from the repository (none: an in-memory store that never
    // saves), which loads and normalises the saved state, then the controllers.
    AppEnvironment(std::unique_ptr<TaskRepository> repository, Calendar calendar, Clock clock,
                   bool darkTheme, QObject* parent = nullptr);
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
    QQmlEngine& engine();
    VoiceCaptureManager& voiceCapture() { return *voiceCapture_; }
    VoiceReviewController& voiceReview() { return *voiceReview_; }
    const QTimer& maintenanceTimer() const { return maintenanceTimer_; }

Q_SIGNALS:
    void maintenancePerformed();

private Q_SLOTS:
    void onPrepareForSleep(bool goingToSleep);

private:
    Calendar calendar_;
    Clock clock_;
    // Owned through QObject parenting; declared in construction order.
    DrawerReminderCoordinator* drawerReminders_ = nullptr;
    ScreenLockWatcher* screenLock_ = nullptr;
    std::unique_ptr<TodayTaskStore> store_;
    EdgePanelController* drawerController_ = nullptr;
    UserSettings* userSettings_ = nullptr;
    // The desktop's calendars: Evolution Data Server and the folder of .ics files.
    EdsCalendarSource* edsCalendars_ = nullptr;
    IcsFolderCalendarSource* icsCalendars_ = nullptr;
    std::unique_ptr<CombinedCalendarSource> calendarSources_;
    CalendarManager* calendarManager_ = nullptr;
    GoogleCalendarManager* googleCalendars_ = nullptr;
    QuickCaptureController* quickCapture_ = nullptr;
    LaunchAtLoginController* launchAtLogin_ = nullptr;
    SystemSettingsNavigator* systemSettings_ = nullptr;
    SettingsModel* settingsModel_ = nullptr;
    SettingsWindow* settingsWindow_ = nullptr;
    OnboardingWindow* onboardingWindow_ = nullptr;
    NotificationManager* notificationManager_ = nullptr;
    Theme* theme_ = nullptr;
    TodayModel* today_ = nullptr;
    TaskEditor* editor_ = nullptr;
    SessionHistoryModel* sessions_ = nullptr;
    CompletedHistoryModel* history_ = nullptr;
    AppUpdateManager* updates_ = nullptr;
    VoiceCaptureManager* voiceCapture_ = nullptr;
    VoiceReviewController* voiceReview_ = nullptr;
    VoiceCaptureWindow* voiceWindow_ = nullptr;
    std::unique_ptr<QQmlEngine> engine_;
    bool hasStarted_ = false;
    int maintenancePasses_ = 0;
    QTimer maintenanceTimer_;
};

} // namespace daywyn
