#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariantList>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "calendar/CalendarAccessStatus.h"
#include "calendar/CalendarChoice.h"
#include "calendar/CalendarEventItem.h"
#include "calendar/CalendarSource.h"

namespace daywyn {

class TodayTaskStore;

// Today's events from the desktop's calendars, for the drawer, the Calendars settings
// page and drawer reminders. Reads only, and only while calendar integration is on; a
// read runs in the background and is published on the main thread, where a newer
// request always wins over an older one still under way. The preferences it follows
// (the switch and the selected calendars) live in the store and change through it.
class CalendarManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString authorizationStatus READ authorizationStatusText NOTIFY changed)
    Q_PROPERTY(bool integrationEnabled READ integrationEnabled NOTIFY changed)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY changed)
    // Per source: {sourceTitle, calendars: [{id, title, colorHex, selected}]}.
    Q_PROPERTY(QVariantList calendarGroups READ calendarGroups NOTIFY changed)
    // Per event: {id, title, colorHex, calendarTitle, timeText, isAllDay, link}.
    Q_PROPERTY(QVariantList todayEvents READ todayEventRows NOTIFY changed)
    Q_PROPERTY(QString errorMessage READ errorMessageText NOTIFY changed)
    Q_PROPERTY(QStringList explanations READ explanations NOTIFY changed)

public:
    // The source must outlive the manager.
    CalendarManager(CalendarSource& source, Calendar calendar, Clock clock,
                    QObject* parent = nullptr);
    ~CalendarManager() override;

    // Attaches the store and reads for the first time. The store must outlive the
    // manager (or be detached with nullptr first).
    void configure(TodayTaskStore* store);

    // Reloads the access status, the calendar list and today's events.
    Q_INVOKABLE void refresh();
    // Reloads for the day that contains `day`.
    void refreshEvents(Instant day);
    // Reloads when the day of `now` is not the one shown (or asked for); else nothing.
    void refreshIfDayChanged(Instant now);
    // Turns the integration on or off through the store, then reloads.
    Q_INVOKABLE void setIntegrationEnabled(bool enabled);
    // Adds the calendar to the selection or takes it out, through the store, then reloads.
    Q_INVOKABLE void setCalendarSelected(const QString& id, bool selected);
    // Opens an event's meeting link in the browser; false when it is not an https link
    // or nothing could open it.
    Q_INVOKABLE bool openLink(const QString& link);

    CalendarAccessStatus authorizationStatus() const { return status_; }
    const std::vector<CalendarChoice>& calendars() const { return calendars_; }
    // Today's events of the system calendars and of the other sources, by start.
    const std::vector<CalendarEventItem>& todayEvents() const { return mergedEvents_; }
    // Events from elsewhere (connected Google accounts) shown beside the system ones.
    void setOtherEvents(std::vector<CalendarEventItem> events);
    const std::optional<std::string>& errorMessage() const { return errorMessage_; }
    // The start of the day todayEvents belongs to; absent before the first read.
    std::optional<Instant> displayedDay() const { return displayedDay_; }
    // Reads started so far (tests count them).
    int readsStarted() const { return readsStarted_; }

    QString authorizationStatusText() const;
    bool integrationEnabled() const;
    bool isLoading() const { return pendingGeneration_ != 0; }
    QVariantList calendarGroups() const;
    QVariantList todayEventRows() const;
    QString errorMessageText() const;
    QStringList explanations() const;

Q_SIGNALS:
    void changed();

private:
    void publishEmpty();
    void apply(CalendarSnapshot snapshot, DayInterval day);
    std::vector<std::string> selectedIdentifiers() const;
    void mergeEvents();

    CalendarSource& source_;
    Calendar calendar_;
    Clock clock_;
    TodayTaskStore* store_ = nullptr;
    CalendarAccessStatus status_ = CalendarAccessStatus::notDetermined;
    std::vector<CalendarChoice> calendars_;
    std::vector<CalendarEventItem> todayEvents_;
    std::vector<CalendarEventItem> otherEvents_;
    std::vector<CalendarEventItem> mergedEvents_;
    std::optional<std::string> errorMessage_;
    std::optional<Instant> displayedDay_;
    std::optional<Instant> requestedDay_;
    unsigned generation_ = 0;
    unsigned pendingGeneration_ = 0;
    int readsStarted_ = 0;
    // Changes at the source come in bursts (a sync writes many events): one read each.
    QTimer changeDelay_;
};

} // namespace daywyn
