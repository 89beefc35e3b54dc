#pragma once

#include <QAbstractItemModel>
#include <QObject>
#include <QQmlEngine>

#include "app/qt/AppEnvironment.h"
#include "app/qt/ScreenEngine.h"
#include "calendar/qt/CalendarManager.h"
#include "calendar/qt/GoogleCalendarManager.h"
#include "reminders/qt/DrawerReminderCoordinator.h"
#include "reminders/qt/NotificationManager.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/LaunchAtLoginController.h"
#include "shell/qt/QuickCaptureController.h"
#include "shell/qt/SystemSettingsNavigator.h"
#include "sync/qt/SyncController.h"
#include "ui/qt/CompletedHistoryModel.h"
#include "ui/qt/OnboardingWindow.h"
#include "ui/qt/SessionHistoryModel.h"
#include "ui/qt/SettingsModel.h"
#include "ui/qt/TaskEditor.h"
#include "ui/qt/Theme.h"
#include "ui/qt/TodayModel.h"
#include "updates/qt/AppUpdateManager.h"
#include "voice/qt/VoiceCaptureManager.h"
#include "voice/qt/VoiceReviewController.h"

// The parts the screens reach, registered with the QML module as singletons of the
// names the QML uses. Each hands out the part of the ScreenEngine that asks, so the
// screens are checked by the QML tools against the parts' real properties and types.
namespace daywyn::screens {

struct ThemeSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::Theme)
    QML_NAMED_ELEMENT(Theme)
    QML_SINGLETON

public:
    static Theme* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::theme);
    }
};

struct TodaySingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::TodayModel)
    QML_NAMED_ELEMENT(Today)
    QML_SINGLETON

public:
    static TodayModel* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::today);
    }
};

struct EditorSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::TaskEditor)
    QML_NAMED_ELEMENT(Editor)
    QML_SINGLETON

public:
    static TaskEditor* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::editor);
    }
};

struct SessionsSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::SessionHistoryModel)
    QML_NAMED_ELEMENT(Sessions)
    QML_SINGLETON

public:
    static SessionHistoryModel* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::sessions);
    }
};

struct HistorySingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::CompletedHistoryModel)
    QML_NAMED_ELEMENT(History)
    QML_SINGLETON

public:
    static CompletedHistoryModel* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::history);
    }
};

struct NotificationsSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::NotificationManager)
    QML_NAMED_ELEMENT(Notifications)
    QML_SINGLETON

public:
    static NotificationManager* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::notifications);
    }
};

struct DrawerRemindersSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::DrawerReminderCoordinator)
    QML_NAMED_ELEMENT(DrawerReminders)
    QML_SINGLETON

public:
    static DrawerReminderCoordinator* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::drawerReminders);
    }
};

struct CalendarsSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::CalendarManager)
    QML_NAMED_ELEMENT(Calendars)
    QML_SINGLETON

public:
    static CalendarManager* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::calendars);
    }
};

struct GoogleCalendarsSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::GoogleCalendarManager)
    QML_NAMED_ELEMENT(GoogleCalendars)
    QML_SINGLETON

public:
    static GoogleCalendarManager* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::googleCalendars);
    }
};

struct QuickCaptureSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::QuickCaptureController)
    QML_NAMED_ELEMENT(QuickCapture)
    QML_SINGLETON

public:
    static QuickCaptureController* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::quickCapture);
    }
};

struct LaunchAtLoginSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::LaunchAtLoginController)
    QML_NAMED_ELEMENT(LaunchAtLogin)
    QML_SINGLETON

public:
    static LaunchAtLoginController* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::launchAtLogin);
    }
};

struct SystemSettingsSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::SystemSettingsNavigator)
    QML_NAMED_ELEMENT(SystemSettings)
    QML_SINGLETON

public:
    static SystemSettingsNavigator* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::systemSettings);
    }
};

struct SettingsModelSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::SettingsModel)
    QML_NAMED_ELEMENT(SettingsModel)
    QML_SINGLETON

public:
    static SettingsModel* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::settings);
    }
};

struct UpdatesSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::AppUpdateManager)
    QML_NAMED_ELEMENT(Updates)
    QML_SINGLETON

public:
    static AppUpdateManager* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::updates);
    }
};

struct VoiceSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::VoiceCaptureManager)
    QML_NAMED_ELEMENT(Voice)
    QML_SINGLETON

public:
    static VoiceCaptureManager* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::voice);
    }
};

struct VoiceReviewSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::VoiceReviewController)
    QML_NAMED_ELEMENT(VoiceReview)
    QML_SINGLETON

public:
    static VoiceReviewController* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::voiceReview);
    }
};

struct EdgePanelSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::EdgePanelController)
    QML_NAMED_ELEMENT(EdgePanel)
    QML_SINGLETON

public:
    static EdgePanelController* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::drawer);
    }
};

struct TaskSyncSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::sync::SyncController)
    QML_NAMED_ELEMENT(TaskSync)
    QML_SINGLETON

public:
    static sync::SyncController* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::taskSync);
    }
};

struct AppSingleton {
    Q_GADGET
    QML_FOREIGN(daywyn::AppEnvironment)
    QML_NAMED_ELEMENT(App)
    QML_SINGLETON

public:
    static AppEnvironment* create(QQmlEngine* engine, QJSEngine*) {
        return ScreenEngine::part(engine, &ScreenServices::app);
    }
};

// The welcome window, handed to its screen as the typed property `onboarding`.
struct OnboardingWindowType {
    Q_GADGET
    QML_FOREIGN(daywyn::OnboardingWindow)
    QML_NAMED_ELEMENT(OnboardingWindow)
    QML_UNCREATABLE("The welcome window is made by the app.")
};

// Qt 6.4's modules name QAbstractListModel but declare its base nowhere the screens
// import, so the models' chain of types stopped short of QObject and a Connections could
// not be checked against one. Declared here, the chain is whole.
struct AbstractItemModelType {
    Q_GADGET
    QML_FOREIGN(QAbstractItemModel)
    QML_ANONYMOUS
};

} // namespace daywyn::screens
