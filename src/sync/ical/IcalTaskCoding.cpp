#include "sync/ical/IcalTaskCoding.h"

#include <array>
#include <cmath>
#include <cstring>
#include <libical/ical.h>
#include <memory>

#include "sync/TaskFieldJson.h"
#include "sync/TaskMerge.h"

namespace daywyn::sync {

namespace {

constexpr std::string_view kOwnPrefix = "X-DAYWYN-";
constexpr const char* kScheduledDayName = "X-DAYWYN-SCHEDULED-DAY";
constexpr const char* kRecurrenceName = "X-DAYWYN-RECURRENCE";
constexpr const char* kPriorityRankName = "X-DAYWYN-PRIORITY-RANK";
// When each field last changed (fieldTimesText); named after no field of the record.
constexpr const char* kFieldTimesName = "X-DAYWYN-FIELD-TIMES";

// The fields written as standard properties; every other field of the task record goes
// into an X-DAYWYN- property of its own, named after it.
constexpr std::array<std::string_view, 11> kStandardFields = {
    "id",        "title",       "reminderDate", "scheduledStart", "scheduledDay", "scheduledEnd",
    "createdAt", "completedAt", "isComplete",   "recurrence",     "priorityRank"};

constexpr bool isStandard(std::string_view key) {
    for (auto standard : kStandardFields) {
        if (standard == key) {
            return true;
        }
    }
    return false;
}

// "estimatedMinutes" -> "X-DAYWYN-ESTIMATED-MINUTES".
std::string ownPropertyName(std::string_view key) {
    std::string name(kOwnPrefix);
    for (char c : key) {
        if (c >= 'A' && c <= 'Z') {
            name += '-';
            name += c;
        } else {
            name += static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
        }
    }
    return name;
}

struct ComponentDeleter {
    void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};
using Component = std::unique_ptr<icalcomponent, ComponentDeleter>;

void quietLibical() {
    // A malformed line must become a parse error, never an abort.
    static const bool quiet = [] {
        icalerror_set_errors_are_fatal(0);
        return true;
    }();
    (void)quiet;
}

// The whole calendar object and its first VTODO (or the VTODO alone).
struct Parsed {
    Component root;
    icalcomponent* todo = nullptr;
};

Parsed parse(std::string_view ics) {
    quietLibical();
    Parsed parsed;
    const std::string text(ics);
    parsed.root.reset(icalparser_parse_string(text.c_str()));
    if (!parsed.root) {
        return parsed;
    }
    if (icalcomponent_isa(parsed.root.get()) == ICAL_VTODO_COMPONENT) {
        parsed.todo = parsed.root.get();
    } else {
        parsed.todo = icalcomponent_get_first_component(parsed.root.get(), ICAL_VTODO_COMPONENT);
    }
    return parsed;
}

// ---- times --------------------------------------------------------------------

// The property's time with the zone its TZID names: one defined in the object, else one
// of libical's built-in zones.
icaltimetype withZone(icalcomponent* root, icalproperty* property, icaltimetype t) {
    if (icaltime_is_utc(t) || icaltime_is_date(t) || t.zone != nullptr) {
        return t;
    }
    icalparameter* parameter = icalproperty_get_first_parameter(property, ICAL_TZID_PARAMETER);
    const char* tzid = parameter ? icalparameter_get_tzid(parameter) : nullptr;
    if (tzid == nullptr) {
        return t;
    }
    icaltimezone* zone = root ? icalcomponent_get_timezone(root, tzid) : nullptr;
    if (zone == nullptr) {
        zone = icaltimezone_get_builtin_timezone_from_tzid(tzid);
    }
    if (zone == nullptr) {
        zone = icaltimezone_get_builtin_timezone(tzid);
    }
    if (zone != nullptr) {
        t = icaltime_set_timezone(&t, zone);
    }
    return t;
}

// The times iCalendar can write: whole seconds within the years 1 to 9999.
constexpr double kEarliest = -62'135'596'800.0; // 0001-01-01T00:00:00Z
constexpr double kLatest = 253'402'300'799.0;   // 9999-12-31T23:59:59Z

std::optional<Instant> instantIn(const icaltimetype& t, const Calendar& calendar);

// A date is the start of that day in the user's calendar, as is a floating time's
// wall clock; UTC and zoned times are absolute. A time outside what iCalendar can
// write again is no time.
std::optional<Instant> instantOf(const icaltimetype& t, const Calendar& calendar) {
    const auto at = instantIn(t, calendar);
    if (!at || !(at->seconds >= kEarliest && at->seconds <= kLatest)) {
        return std::nullopt;
    }
    return at;
}

std::optional<Instant> instantIn(const icaltimetype& t, const Calendar& calendar) {
    if (icaltime_is_null_time(t) || !icaltime_is_valid_time(t)) {
        return std::nullopt;
    }
    if (icaltime_is_date(t)) {
        return calendar.date(t.year, t.month, t.day);
    }
    if (icaltime_is_utc(t)) {
        return Instant{
            static_cast<double>(icaltime_as_timet_with_zone(t, icaltimezone_get_utc_timezone()))};
    }
    if (t.zone != nullptr) {
        return Instant{
            static_cast<double>(icaltime_as_timet_with_zone(t, const_cast<icaltimezone*>(t.zone)))};
    }
    return calendar.date(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

struct TimeProperty {
    icalproperty* property = nullptr;
    icaltimetype time = icaltime_null_time();
};

TimeProperty timeProperty(icalcomponent* root, icalcomponent* todo, icalproperty_kind kind) {
    TimeProperty found;
    found.property = icalcomponent_get_first_property(todo, kind);
    if (found.property != nullptr) {
        icalvalue* value = icalproperty_get_value(found.property);
        if (value != nullptr && (icalvalue_isa(value) == ICAL_DATETIME_VALUE ||
                                 icalvalue_isa(value) == ICAL_DATE_VALUE)) {
            found.time = withZone(root, found.property, icalvalue_get_datetime(value));
        }
    }
    return found;
}

std::optional<Instant> timeOf(icalcomponent* root, icalcomponent* todo, icalproperty_kind kind,
                              const Calendar& calendar) {
    return instantOf(timeProperty(root, todo, kind).time, calendar);
}

// Whole seconds within the years 1 to 9999, which iCalendar can write.
icaltimetype utcTime(Instant at) {
    double seconds = std::floor(at.seconds);
    if (!(seconds >= kEarliest)) {
        seconds = kEarliest;
    } else if (seconds > kLatest) {
        seconds = kLatest;
    }
    return icaltime_from_timet_with_zone(static_cast<time_t>(seconds), 0,
                                         icaltimezone_get_utc_timezone());
}

icaltimetype dateOf(Instant day, const Calendar& calendar) {
    const DateParts parts = calendar.parts(day);
    icaltimetype date = icaltime_null_date();
    date.year = parts.year;
    date.month = parts.month;
    date.day = parts.day;
    date.is_date = 1;
    return date;
}

void removeAll(icalcomponent* todo, icalproperty_kind kind) {
    while (icalproperty* property = icalcomponent_get_first_property(todo, kind)) {
        icalcomponent_remove_property(todo, property);
        icalproperty_free(property);
    }
}

// ---- Daywyn's own properties ------------------------------------------------------

icalproperty* ownProperty(icalcomponent* todo, std::string_view name) {
    for (icalproperty* property = icalcomponent_get_first_property(todo, ICAL_X_PROPERTY);
         property != nullptr; property = icalcomponent_get_next_property(todo, ICAL_X_PROPERTY)) {
        const char* propertyName = icalproperty_get_x_name(property);
        if (propertyName != nullptr && name == propertyName) {
            return property;
        }
    }
    return nullptr;
}

std::optional<std::string> ownText(icalcomponent* todo, std::string_view name) {
    icalproperty* property = ownProperty(todo, name);
    const char* value = property ? icalproperty_get_x(property) : nullptr;
    if (value == nullptr) {
        return std::nullopt;
    }
    return std::string(value);
}

void removeOwn(icalcomponent* todo, std::string_view name) {
    while (icalproperty* property = ownProperty(todo, name)) {
        icalcomponent_remove_property(todo, property);
        icalproperty_free(property);
    }
}

void setOwn(icalcomponent* todo, const std::string& name, const std::string& value) {
    removeOwn(todo, name);
    icalproperty* property = icalproperty_new_x(value.c_str());
    icalproperty_set_x_name(property, name.c_str());
    icalcomponent_add_property(todo, property);
}

// ---- the reminder -------------------------------------------------------------------

// The alarm's time: an absolute trigger, or one relative to the start (or, with
// RELATED=END, to the due time) when the task has that time.
std::optional<Instant> alarmTime(icalcomponent* root, icalcomponent* todo, icalcomponent* alarm,
                                 const Calendar& calendar) {
    icalproperty* property = icalcomponent_get_first_property(alarm, ICAL_TRIGGER_PROPERTY);
    if (property == nullptr) {
        return std::nullopt;
    }
    const icaltriggertype trigger = icalproperty_get_trigger(property);
    if (!icaltime_is_null_time(trigger.time)) {
        return instantOf(withZone(root, property, trigger.time), calendar);
    }
    icalparameter* related = icalproperty_get_first_parameter(property, ICAL_RELATED_PARAMETER);
    const bool fromEnd = related && icalparameter_get_related(related) == ICAL_RELATED_END;
    const auto anchor =
        timeOf(root, todo, fromEnd ? ICAL_DUE_PROPERTY : ICAL_DTSTART_PROPERTY, calendar);
    if (!anchor) {
        return std::nullopt;
    }
    return *anchor + static_cast<double>(icaldurationtype_as_int(trigger.duration));
}

// The first alarm with a time stands for the task's reminder.
icalcomponent* reminderAlarm(icalcomponent* root, icalcomponent* todo, const Calendar& calendar,
                             std::optional<Instant>* at = nullptr) {
    for (icalcomponent* alarm = icalcomponent_get_first_component(todo, ICAL_VALARM_COMPONENT);
         alarm != nullptr; alarm = icalcomponent_get_next_component(todo, ICAL_VALARM_COMPONENT)) {
        if (auto time = alarmTime(root, todo, alarm, calendar)) {
            if (at != nullptr) {
                *at = time;
            }
            return alarm;
        }
    }
    return nullptr;
}

void setTrigger(icalcomponent* alarm, Instant at) {
    removeAll(alarm, ICAL_TRIGGER_PROPERTY);
    icaltriggertype trigger{};
    trigger.time = utcTime(at);
    trigger.duration = icaldurationtype_null_duration();
    icalcomponent_add_property(alarm, icalproperty_new_trigger(trigger));
}

// ---- repeat rules -------------------------------------------------------------------

std::string_view ruleText(TaskRecurrence recurrence) {
    switch (recurrence) {
    case TaskRecurrence::daily:
        return "FREQ=DAILY";
    case TaskRecurrence::weekdays:
        return "FREQ=WEEKLY;BYDAY=MO,TU,WE,TH,FR";
    case TaskRecurrence::weekly:
        return "FREQ=WEEKLY";
    case TaskRecurrence::monthly:
        return "FREQ=MONTHLY";
    case TaskRecurrence::none:
        break;
    }
    return {};
}

// One of the four repeats, written in libical's canonical form (which drops INTERVAL=1
// and WKST); any other rule is not one of Daywyn's.
std::optional<TaskRecurrence> recurrenceOf(icalcomponent* todo) {
    icalproperty* property = icalcomponent_get_first_property(todo, ICAL_RRULE_PROPERTY);
    if (property == nullptr) {
        const auto own = ownText(todo, kRecurrenceName);
        if (own && *own == rawValue(TaskRecurrence::none)) {
            return TaskRecurrence::none;
        }
        return std::nullopt;
    }
    if (icalcomponent_get_next_property(todo, ICAL_RRULE_PROPERTY) != nullptr) {
        return std::nullopt;
    }
    icalrecurrencetype rule = icalproperty_get_rrule(property);
    char* text = icalrecurrencetype_as_string_r(&rule);
    if (text == nullptr) {
        return std::nullopt;
    }
    const std::string canonical(text);
    icalmemory_free_buffer(text);
    for (auto recurrence : kAllRecurrences) {
        if (recurrence != TaskRecurrence::none && canonical == ruleText(recurrence)) {
            return recurrence;
        }
    }
    return std::nullopt;
}

// ---- status and priority ------------------------------------------------------------

bool isCompleteOf(icalcomponent* todo) {
    if (icalcomponent_get_first_property(todo, ICAL_STATUS_PROPERTY) != nullptr) {
        return icalcomponent_get_status(todo) == ICAL_STATUS_COMPLETED;
    }
    if (icalcomponent_get_first_property(todo, ICAL_COMPLETED_PROPERTY) != nullptr) {
        return true;
    }
    icalproperty* percent = icalcomponent_get_first_property(todo, ICAL_PERCENTCOMPLETE_PROPERTY);
    return percent != nullptr && icalproperty_get_percentcomplete(percent) >= 100;
}

bool isPinnedPriority(long long value) {
    return value >= 1 && value <= 3;
}

// PRIORITY 1 to 3 is a pinned rank; other ranks are kept in Daywyn's own property, and
// other priorities (a client's "medium", 5) are not a pin.
std::optional<long long> priorityRankOf(icalcomponent* todo) {
    if (icalproperty* property = icalcomponent_get_first_property(todo, ICAL_PRIORITY_PROPERTY)) {
        const long long priority = icalproperty_get_priority(property);
        if (isPinnedPriority(priority)) {
            return priority;
        }
    }
    long long rank = 0;
    if (const auto own = ownText(todo, kPriorityRankName); own && readFieldJson(*own, rank)) {
        return rank;
    }
    return std::nullopt;
}

// ---- the whole task -----------------------------------------------------------------

std::string textOf(const char* value) {
    return value == nullptr ? std::string() : value;
}

std::optional<Instant> createdAtOf(icalcomponent* root, icalcomponent* todo,
                                   const Calendar& calendar) {
    for (auto kind : {ICAL_CREATED_PROPERTY, ICAL_DTSTAMP_PROPERTY, ICAL_LASTMODIFIED_PROPERTY}) {
        if (auto at = timeOf(root, todo, kind, calendar)) {
            return at;
        }
    }
    return std::nullopt;
}

// The planned day and the start share DTSTART: a start is a date-time, a day without a
// start a date. The day's exact instant (when it is not the start of the day, or when
// there is also a start) is kept in Daywyn's own property, which counts only while it
// agrees with DTSTART.
void readSchedule(icalcomponent* root, icalcomponent* todo, const Calendar& calendar,
                  TaskItem& task) {
    const TimeProperty start = timeProperty(root, todo, ICAL_DTSTART_PROPERTY);
    const auto startAt = instantOf(start.time, calendar);
    std::optional<Instant> ownDay;
    if (const auto own = ownText(todo, kScheduledDayName)) {
        Instant day;
        if (readFieldJson(*own, day)) {
            ownDay = day;
        }
    }
    if (startAt && icaltime_is_date(start.time)) {
        task.scheduledDay = ownDay && calendar.isSameDay(*ownDay, *startAt) ? *ownDay : *startAt;
    } else if (startAt) {
        task.scheduledStart = startAt;
        task.scheduledDay = ownDay;
    }
    const TimeProperty due = timeProperty(root, todo, ICAL_DUE_PROPERTY);
    if (const auto dueAt = instantOf(due.time, calendar)) {
        // A due date without a time is due by the end of that day.
        task.scheduledEnd = icaltime_is_date(due.time) ? calendar.addingDays(*dueAt, 1) : dueAt;
    }
}

// The fields kept in Daywyn's own properties, one per field.
void readOwnFields(icalcomponent* todo, TaskItem& task) {
    std::apply(
        [&](const auto&... field) {
            (
                [&] {
                    // Another machine's reminder bookkeeping (written by older versions)
                    // is not this machine's.
                    if (isStandard(field.key) || isMachineLocalField(field.key)) {
                        return;
                    }
                    if (const auto own = ownText(todo, ownPropertyName(field.key))) {
                        // A value another program mangled is left at the field's default.
                        (void)readFieldJson(*own, task.*field.member);
                    }
                }(),
                ...);
        },
        JsonRecord<TaskItem>::fields);
}

void writeOwnFields(icalcomponent* todo, const TaskItem& current, const TaskItem& task) {
    std::apply(
        [&](const auto&... field) {
            (
                [&] {
                    if (isMachineLocalField(field.key)) {
                        removeOwn(todo, ownPropertyName(field.key));
                        return;
                    }
                    if (isStandard(field.key) ||
                        fieldJson(current.*field.member) == fieldJson(task.*field.member)) {
                        return;
                    }
                    const std::string name = ownPropertyName(field.key);
                    const auto& value = task.*field.member;
                    using Member = std::decay_t<decltype(value)>;
                    if constexpr (IsOptional<Member>::value) {
                        if (!value) {
                            removeOwn(todo, name);
                            return;
                        }
                    }
                    setOwn(todo, name, fieldJson(value));
                }(),
                ...);
        },
        JsonRecord<TaskItem>::fields);
}

Result<DecodedTask> decodeTodo(icalcomponent* root, icalcomponent* todo, const Calendar& calendar) {
    DecodedTask decoded;
    decoded.uid = textOf(icalcomponent_get_uid(todo));
    if (decoded.uid.empty()) {
        return Error{"The task has no UID."};
    }
    TaskItem& task = decoded.task;
    task.id = taskIdForUid(decoded.uid);
    task.title = textOf(icalcomponent_get_summary(todo));
    // A carriage return on its own is a line break to libical when the text is read
    // again; a title keeps only what survives that.
    std::erase(task.title, '\r');
    readSchedule(root, todo, calendar, task);
    std::optional<Instant> reminder;
    reminderAlarm(root, todo, calendar, &reminder);
    task.reminderDate = reminder;
    task.createdAt = createdAtOf(root, todo, calendar).value_or(Instant{});
    task.completedAt = timeOf(root, todo, ICAL_COMPLETED_PROPERTY, calendar);
    task.isComplete = isCompleteOf(todo);
    task.recurrence = recurrenceOf(todo);
    task.priorityRank = priorityRankOf(todo);
    readOwnFields(todo, task);
    decoded.lastModified = timeOf(root, todo, ICAL_LASTMODIFIED_PROPERTY, calendar);
    if (!decoded.lastModified) {
        decoded.lastModified = timeOf(root, todo, ICAL_DTSTAMP_PROPERTY, calendar);
    }
    if (const auto times = ownText(todo, kFieldTimesName)) {
        decoded.fieldTimes = readFieldTimes(*times, task);
    }
    return decoded;
}

// ---- writing over the previous text -------------------------------------------------

void setTime(icalcomponent* todo, icalproperty_kind kind, const std::optional<Instant>& at) {
    removeAll(todo, kind);
    if (!at) {
        return;
    }
    icalproperty* property = icalproperty_new(kind);
    icalproperty_set_value(property, icalvalue_new_datetime(utcTime(*at)));
    icalcomponent_add_property(todo, property);
}

void writeSchedule(icalcomponent* todo, const TaskItem& task, const Calendar& calendar) {
    removeAll(todo, ICAL_DTSTART_PROPERTY);
    removeOwn(todo, kScheduledDayName);
    if (task.scheduledStart) {
        setTime(todo, ICAL_DTSTART_PROPERTY, task.scheduledStart);
    } else if (task.scheduledDay) {
        icalcomponent_add_property(todo,
                                   icalproperty_new_dtstart(dateOf(*task.scheduledDay, calendar)));
    }
    if (task.scheduledDay &&
        (task.scheduledStart || calendar.startOfDay(*task.scheduledDay) != *task.scheduledDay)) {
        setOwn(todo, kScheduledDayName, fieldJson(*task.scheduledDay));
    }
}

void writeReminder(icalcomponent* root, icalcomponent* todo, const TaskItem& task,
                   const Calendar& calendar) {
    if (!task.reminderDate) {
        // Every alarm with a time would stand for the reminder next: none stays.
        while (icalcomponent* alarm = reminderAlarm(root, todo, calendar)) {
            icalcomponent_remove_component(todo, alarm);
            icalcomponent_free(alarm);
        }
        return;
    }
    if (icalcomponent* alarm = reminderAlarm(root, todo, calendar)) {
        setTrigger(alarm, *task.reminderDate);
        return;
    }
    icalcomponent* alarm = icalcomponent_new_valarm();
    icalcomponent_add_property(alarm, icalproperty_new_action(ICAL_ACTION_DISPLAY));
    icalcomponent_add_property(alarm, icalproperty_new_description(task.title.c_str()));
    setTrigger(alarm, *task.reminderDate);
    icalcomponent_add_component(todo, alarm);
}

void writeStatus(icalcomponent* todo, bool isComplete) {
    removeAll(todo, ICAL_STATUS_PROPERTY);
    icalcomponent_add_property(todo, icalproperty_new_status(isComplete ? ICAL_STATUS_COMPLETED
                                                                        : ICAL_STATUS_NEEDSACTION));
    if (icalproperty* percent =
            icalcomponent_get_first_property(todo, ICAL_PERCENTCOMPLETE_PROPERTY)) {
        icalproperty_set_percentcomplete(percent, isComplete ? 100 : 0);
    }
}

void writeRecurrence(icalcomponent* todo, const std::optional<TaskRecurrence>& recurrence) {
    removeAll(todo, ICAL_RRULE_PROPERTY);
    removeOwn(todo, kRecurrenceName);
    if (!recurrence) {
        return;
    }
    if (*recurrence == TaskRecurrence::none) {
        setOwn(todo, kRecurrenceName, std::string(rawValue(TaskRecurrence::none)));
        return;
    }
    const std::string text(ruleText(*recurrence));
    icalcomponent_add_property(
        todo, icalproperty_new_rrule(icalrecurrencetype_from_string(text.c_str())));
}

void writePriorityRank(icalcomponent* todo, const std::optional<long long>& rank) {
    removeOwn(todo, kPriorityRankName);
    if (icalproperty* property = icalcomponent_get_first_property(todo, ICAL_PRIORITY_PROPERTY);
        property != nullptr && isPinnedPriority(icalproperty_get_priority(property))) {
        removeAll(todo, ICAL_PRIORITY_PROPERTY);
    }
    if (!rank) {
        return;
    }
    if (isPinnedPriority(*rank)) {
        removeAll(todo, ICAL_PRIORITY_PROPERTY);
        icalcomponent_add_property(todo, icalproperty_new_priority(static_cast<int>(*rank)));
    } else {
        setOwn(todo, kPriorityRankName, fieldJson(*rank));
    }
}

// libical's notes on lines it could not read are not part of the task.
void dropParseNotes(icalcomponent* component) {
    removeAll(component, ICAL_XLICERROR_PROPERTY);
    for (icalcomponent* inner = icalcomponent_get_first_component(component, ICAL_ANY_COMPONENT);
         inner != nullptr;
         inner = icalcomponent_get_next_component(component, ICAL_ANY_COMPONENT)) {
        dropParseNotes(inner);
    }
}

Component newCalendar() {
    Component root(icalcomponent_new_vcalendar());
    icalcomponent_add_property(root.get(), icalproperty_new_version("2.0"));
    icalcomponent_add_property(root.get(), icalproperty_new_prodid("-//Daywyn//Daywyn//EN"));
    return root;
}

Parsed freshObject(const TaskItem& task) {
    Parsed parsed;
    parsed.root = newCalendar();
    parsed.todo = icalcomponent_new_vtodo();
    icalcomponent_add_property(parsed.todo, icalproperty_new_uid(task.id.text().c_str()));
    icalcomponent_add_component(parsed.root.get(), parsed.todo);
    return parsed;
}

// A task found inside something that is not a calendar (a misspelt BEGIN line) is
// written in a calendar of its own, with the time zones it refers to.
Parsed inCalendar(Parsed parsed) {
    if (icalcomponent_isa(parsed.root.get()) == ICAL_VCALENDAR_COMPONENT) {
        return parsed;
    }
    Parsed wrapped;
    wrapped.root = newCalendar();
    for (icalcomponent* zone =
             icalcomponent_get_first_component(parsed.root.get(), ICAL_VTIMEZONE_COMPONENT);
         zone != nullptr;
         zone = icalcomponent_get_next_component(parsed.root.get(), ICAL_VTIMEZONE_COMPONENT)) {
        icalcomponent_add_component(wrapped.root.get(), icalcomponent_new_clone(zone));
    }
    wrapped.todo = icalcomponent_new_clone(parsed.todo);
    icalcomponent_add_component(wrapped.root.get(), wrapped.todo);
    return wrapped;
}

} // namespace

Result<DecodedTask> IcalTaskCoding::decode(std::string_view ics, const Calendar& calendar) const {
    const Parsed parsed = parse(ics);
    if (!parsed.root) {
        return Error{"The task is not iCalendar text."};
    }
    if (parsed.todo == nullptr) {
        return Error{"The calendar object holds no task."};
    }
    return decodeTodo(parsed.root.get(), parsed.todo, calendar);
}

std::string IcalTaskCoding::encode(const TaskItem& given, const FieldTimes& fieldTimes,
                                   std::string_view previous, Instant modifiedAt,
                                   const Calendar& calendar) const {
    const TaskItem task = atWholeSeconds(given);
    Parsed parsed = previous.empty() ? Parsed{} : parse(previous);
    // Every field's time: the one given; else the previous text's while the value is
    // unchanged (another program's text gives its LAST-MODIFIED); else this write's.
    FieldTimes times;
    if (parsed.root && parsed.todo != nullptr) {
        if (auto before = decodeTodo(parsed.root.get(), parsed.todo, calendar)) {
            const auto changed = differingFields(before->task, task);
            for (const auto& [name, at] : before->fieldTimes) {
                times.emplace(name, at);
            }
            std::apply(
                [&](const auto&... field) {
                    ((times.contains(field.key) || !before->lastModified
                          ? void()
                          : void(times.emplace(std::string(field.key), *before->lastModified))),
                     ...);
                },
                JsonRecord<TaskItem>::fields);
            for (const std::string_view name : changed) {
                times.erase(std::string(name));
            }
        }
    }
    for (const auto& [name, at] : fieldTimes) {
        times.insert_or_assign(name, at);
    }
    std::apply(
        [&](const auto&... field) {
            ((void)times.try_emplace(std::string(field.key), modifiedAt), ...);
        },
        JsonRecord<TaskItem>::fields);

    if (parsed.root && parsed.todo != nullptr) {
        parsed = inCalendar(std::move(parsed));
        const auto uid = textOf(icalcomponent_get_uid(parsed.todo));
        if (uid.empty() || taskIdForUid(uid) != task.id) {
            icalcomponent_set_uid(parsed.todo, task.id.text().c_str());
        }
    } else {
        parsed = freshObject(task);
    }
    icalcomponent* root = parsed.root.get();
    icalcomponent* todo = parsed.todo;
    dropParseNotes(root);
    setTime(todo, ICAL_DTSTAMP_PROPERTY, modifiedAt);
    setTime(todo, ICAL_LASTMODIFIED_PROPERTY, modifiedAt);

    // Each property is rewritten only when it no longer reads as the task's value, so
    // that what another program wrote (a zone, a relative alarm) stays as it was. The
    // reminder comes after the times it may be relative to.
    const auto current = [&] {
        auto decoded = decodeTodo(root, todo, calendar);
        return decoded ? std::move(decoded).value().task : TaskItem{};
    };
    TaskItem now = current();
    if (now.title != task.title) {
        icalcomponent_set_summary(todo, task.title.c_str());
    }
    if (now.scheduledStart != task.scheduledStart || now.scheduledDay != task.scheduledDay) {
        writeSchedule(todo, task, calendar);
    }
    if (now.scheduledEnd != task.scheduledEnd) {
        setTime(todo, ICAL_DUE_PROPERTY, task.scheduledEnd);
    }
    now = current();
    if (now.reminderDate != task.reminderDate) {
        writeReminder(root, todo, task, calendar);
    }
    if (now.createdAt != task.createdAt) {
        setTime(todo, ICAL_CREATED_PROPERTY, task.createdAt);
    }
    if (now.completedAt != task.completedAt) {
        setTime(todo, ICAL_COMPLETED_PROPERTY, task.completedAt);
    }
    // Other clients go by STATUS: a completed task says so even where COMPLETED would do.
    const bool saysCompleted =
        icalcomponent_get_first_property(todo, ICAL_STATUS_PROPERTY) != nullptr &&
        icalcomponent_get_status(todo) == ICAL_STATUS_COMPLETED;
    if (task.isComplete ? !saysCompleted : current().isComplete) {
        writeStatus(todo, task.isComplete);
    }
    if (now.recurrence != task.recurrence) {
        writeRecurrence(todo, task.recurrence);
    }
    if (now.priorityRank != task.priorityRank) {
        writePriorityRank(todo, task.priorityRank);
    }
    writeOwnFields(todo, now, task);
    setOwn(todo, kFieldTimesName, fieldTimesText(task, times));

    char* text = icalcomponent_as_ical_string_r(root);
    std::string written = text ? text : "";
    icalmemory_free_buffer(text);
    // Text mangled beyond what libical can keep straight (broken nesting, a broken zone)
    // may not read back as the task; the task is then written afresh, since what goes to
    // the server must always be the task.
    if (!previous.empty()) {
        const auto check = decode(written, calendar);
        if (!check || !sameAtWholeSeconds(check->task, task)) {
            return encode(task, times, {}, modifiedAt, calendar);
        }
    }
    return written;
}

} // namespace daywyn::sync
