#include "reminders/qt/DrawerReminderCoordinator.h"

#include "persistence/qt/UserSettings.h"
#include "reminders/DrawerReminderRules.h"
#include "reminders/qt/ReminderPresenter.h"

namespace daywyn {
namespace {

// The settings file keeps dates as seconds since 2001-01-01, like the seen map and
// the snoozed list.
constexpr double kSecondsFrom1970To2001 = 978307200.0;

QString key(std::string_view name) {
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace

DrawerReminderCoordinator::DrawerReminderCoordinator(UserSettings& settings, Calendar calendar,
                                                     Clock clock, QObject* parent)
    : QObject(parent)
    , settings_(settings)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    const Instant now = clock_();
    std::optional<Instant> lastNudge;
    const QVariant stored = settings_.value(key(kDrawerLastNudgeKey));
    bool isNumber = false;
    const double since2001 = stored.toDouble(&isNumber);
    if (stored.isValid() && isNumber) {
        lastNudge = Instant{since2001 + kSecondsFrom1970To2001};
    }
    state_ = DrawerReminderRules::restore(
        settings_.value(key(kDrawerReminderSeenKey)).toString().toStdString(),
        settings_.value(key(kDrawerReminderSnoozedKey)).toString().toStdString(), lastNudge, now);
    if (!lastNudge) {
        settings_.setValue(key(kDrawerLastNudgeKey), now.seconds - kSecondsFrom1970To2001);
    }
}

DrawerReminderCoordinator::~DrawerReminderCoordinator() = default;

DrawerReminderSettings DrawerReminderCoordinator::settings() const {
    // Read afresh each time: the settings window writes through the same store.
    const DrawerReminderSettings defaults;
    DrawerReminderSettings s;
    s.enabled = settings_.value(key(kInAppRemindersEnabledKey), defaults.enabled).toBool();
    s.paused = settings_.value(key(kInAppRemindersPausedKey), defaults.paused).toBool();
    s.activeStart = settings_.value(key(kInAppActiveStartKey), defaults.activeStart).toInt();
    s.activeEnd = settings_.value(key(kInAppActiveEndKey), defaults.activeEnd).toInt();
    s.nudgeHours = settings_.value(key(kInAppNudgeHoursKey), defaults.nudgeHours).toInt();
    return s;
}

bool DrawerReminderCoordinator::chimeEnabled() const {
    return settings_.value(key(kInAppReminderSoundEnabledKey), true).toBool();
}

DrawerReminderDecision
DrawerReminderCoordinator::check(const std::vector<TaskItem>& tasks,
                                 const std::vector<CalendarEventItem>& events, Instant now) {
    const Instant lastNudge = state_.lastNudge;
    const DrawerReminderDecision decision =
        DrawerReminderRules::check(state_, settings(), tasks, events, now, calendar_);
    switch (decision.kind) {
    case DrawerReminderDecision::Kind::nothing:
        break;
    case DrawerReminderDecision::Kind::closeVisible:
        if (presenter_) {
            presenter_->dismissReminder();
        }
        break;
    case DrawerReminderDecision::Kind::present: {
        if (state_.lastNudge != lastNudge) {
            settings_.setValue(key(kDrawerLastNudgeKey),
                               state_.lastNudge.seconds - kSecondsFrom1970To2001);
        }
        persist(now);
        if (presenter_) {
            const DrawerReminder reminder = *decision.reminder;
            ReminderPresenter::Callbacks callbacks{
                [this, reminder] { respond(DrawerReminderAction::open, reminder, clock_()); },
                [this, reminder] { respond(DrawerReminderAction::snooze, reminder, clock_()); },
                [this, reminder] { respond(DrawerReminderAction::dismiss, reminder, clock_()); },
            };
            presenter_->presentReminder(reminder, chimeEnabled(), std::move(callbacks));
        }
        break;
    }
    }
    return decision;
}

void DrawerReminderCoordinator::respond(DrawerReminderAction action, const DrawerReminder& reminder,
                                        Instant now) {
    if (DrawerReminderRules::respond(state_, action, reminder, now)) {
        persist(now);
    }
    if (presenter_) {
        if (action == DrawerReminderAction::open) {
            presenter_->showDrawer();
        }
        presenter_->dismissReminder();
    }
    Q_EMIT responded(action);
}

void DrawerReminderCoordinator::preview(Instant now) {
    if (presenter_) {
        const DrawerReminder sample = DrawerReminderRules::previewReminder(now);
        ReminderPresenter::Callbacks callbacks{[this] {
                                                   presenter_->showDrawer();
                                                   presenter_->dismissReminder();
                                               },
                                               [this] { presenter_->dismissReminder(); },
                                               [this] {
                                                   presenter_->dismissReminder();
                                               }};
        presenter_->presentReminder(sample, chimeEnabled(), std::move(callbacks));
    }
}

void DrawerReminderCoordinator::setLocked(bool locked) {
    state_.isLocked = locked;
    if (locked && presenter_) {
        presenter_->dismissReminder();
    }
}

void DrawerReminderCoordinator::persist(Instant now) {
    DrawerReminderRules::pruneSeen(state_, now);
    settings_.setValue(key(kDrawerReminderSeenKey),
                       QString::fromStdString(DrawerReminderRules::encodeSeen(state_.seen)));
    settings_.setValue(key(kDrawerReminderSnoozedKey),
                       QString::fromStdString(DrawerReminderRules::encodeSnoozed(state_.snoozed)));
}

} // namespace daywyn
