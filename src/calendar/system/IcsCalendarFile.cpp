#include "calendar/system/IcsCalendarFile.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <libical/ical.h>

namespace daywyn {

namespace {

// A rule that yields this many occurrences before reaching the day is given up on, so
// a pathological rule cannot stall a refresh.
constexpr int kMaximumRecurrenceSteps = 50'000;
constexpr double kDaySeconds = 86'400.0;

// Whether a time names an absolute instant on its own (UTC or with a zone), as opposed to
// a floating time or a date, which are read in the user's calendar.
bool isFixed(const icaltimetype& t) {
    return !icaltime_is_date(t) && (icaltime_is_utc(t) || t.zone != nullptr);
}

// The instant of a UTC or zoned time.
Instant fixedInstant(const icaltimetype& t) {
    if (icaltime_is_utc(t)) {
        return Instant{
            static_cast<double>(icaltime_as_timet_with_zone(t, icaltimezone_get_utc_timezone()))};
    }
    return Instant{
        static_cast<double>(icaltime_as_timet_with_zone(t, const_cast<icaltimezone*>(t.zone)))};
}

std::optional<Instant> instantOf(const icaltimetype& t, const Calendar& calendar) {
    if (icaltime_is_null_time(t) || !icaltime_is_valid_time(t)) {
        return std::nullopt;
    }
    if (icaltime_is_date(t)) {
        return calendar.date(t.year, t.month, t.day);
    }
    if (isFixed(t)) {
        return fixedInstant(t);
    }
    return calendar.date(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

// A property's time with the zone its TZID names: one defined in the document, else
// one of libical's built-in zones.
icaltimetype withZone(icalcomponent* root, icalproperty* property, icaltimetype t) {
    if (icaltime_is_utc(t) || icaltime_is_date(t) || t.zone != nullptr) {
        return t;
    }
    icalparameter* parameter = icalproperty_get_first_parameter(property, ICAL_TZID_PARAMETER);
    if (parameter == nullptr) {
        return t;
    }
    const char* tzid = icalparameter_get_tzid(parameter);
    if (tzid == nullptr) {
        return t;
    }
    icaltimezone* zone = icalcomponent_get_timezone(root, tzid);
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

std::string text(const char* value) {
    return value == nullptr ? std::string() : std::string(value);
}

struct EventData {
    std::string uid;
    std::string summary;
    std::optional<std::string> url;
    icaltimetype start{};
    bool isAllDay = false;
    // Timed events: the length in seconds. All-day events: the length in days.
    double lengthSeconds = 0.0;
    int lengthDays = 1;
    // Precomputed for fixed times; floating times and dates are read per query.
    std::optional<Instant> fixedStart;
    std::optional<icalrecurrencetype> rule;
    // Occurrences added one by one (RDATE), beside or instead of a rule.
    std::vector<icaltimetype> added;
    std::vector<icaltimetype> excluded;

    bool repeats() const { return rule.has_value() || !added.empty(); }
};

} // namespace

struct IcsCalendarFile::Parsed {
    std::vector<icalcomponent*> roots;
    std::vector<EventData> events;

    ~Parsed() {
        for (auto* root : roots) {
            icalcomponent_free(root);
        }
    }
};

IcsCalendarFile::IcsCalendarFile()
    : parsed_(std::make_unique<Parsed>()) {}

IcsCalendarFile::~IcsCalendarFile() = default;

std::size_t IcsCalendarFile::eventCount() const {
    return parsed_->events.size();
}

bool IcsCalendarFile::addText(std::string_view source) {
    // libical stops the process on some errors unless told otherwise.
    icalerror_set_errors_are_fatal(0);
    const std::string buffer(source);
    icalcomponent* root = icalparser_parse_string(buffer.c_str());
    if (root == nullptr) {
        return false;
    }
    // Garbage still parses into an empty calendar full of error notes: a text with
    // errors and no event is not taken as a calendar.
    if (icalcomponent_isa(root) != ICAL_VCALENDAR_COMPONENT ||
        (icalcomponent_count_components(root, ICAL_VEVENT_COMPONENT) == 0 &&
         icalcomponent_count_errors(root) > 0)) {
        icalcomponent_free(root);
        return false;
    }
    parsed_->roots.push_back(root);

    if (name_.empty()) {
        if (auto* property = icalcomponent_get_first_property(root, ICAL_X_PROPERTY)) {
            for (; property != nullptr;
                 property = icalcomponent_get_next_property(root, ICAL_X_PROPERTY)) {
                const std::string propertyName = text(icalproperty_get_x_name(property));
                if (propertyName == "X-WR-CALNAME" && name_.empty()) {
                    name_ = text(icalproperty_get_value_as_string(property));
                } else if (propertyName == "X-APPLE-CALENDAR-COLOR" && colorText_.empty()) {
                    colorText_ = text(icalproperty_get_value_as_string(property));
                }
            }
        }
    }
    if (auto* color = icalcomponent_get_first_property(root, ICAL_COLOR_PROPERTY)) {
        colorText_ = text(icalproperty_get_color(color));
    }

    std::vector<std::pair<std::string, icaltimetype>> changedOccurrences;
    const std::size_t firstNew = parsed_->events.size();
    for (icalcomponent* event = icalcomponent_get_first_component(root, ICAL_VEVENT_COMPONENT);
         event != nullptr; event = icalcomponent_get_next_component(root, ICAL_VEVENT_COMPONENT)) {
        const icaltimetype start = icalcomponent_get_dtstart(event);
        if (icaltime_is_null_time(start) || !icaltime_is_valid_time(start)) {
            continue;
        }
        EventData data;
        data.uid = text(icalcomponent_get_uid(event));
        data.summary = text(icalcomponent_get_summary(event));
        if (auto* url = icalcomponent_get_first_property(event, ICAL_URL_PROPERTY)) {
            data.url = text(icalproperty_get_url(url));
        }
        data.start = start;
        data.isAllDay = icaltime_is_date(start) != 0;
        const icaltimetype end = icalcomponent_get_dtend(event);
        if (data.isAllDay) {
            if (!icaltime_is_null_time(end) && icaltime_is_date(end)) {
                data.lengthDays = std::max(
                    0, static_cast<int>(std::lround(
                           static_cast<double>(icaltime_as_timet(end) - icaltime_as_timet(start)) /
                           kDaySeconds)));
            }
        } else if (!icaltime_is_null_time(end)) {
            // Both ends as instants, so a start and end in different zones work; a floating
            // pair is measured on its own wall clock.
            if (isFixed(start) && isFixed(end)) {
                data.lengthSeconds = fixedInstant(end) - fixedInstant(start);
            } else {
                data.lengthSeconds =
                    static_cast<double>(icaltime_as_timet(end) - icaltime_as_timet(start));
            }
        }
        if (isFixed(start)) {
            data.fixedStart = fixedInstant(start);
        }
        if (auto* rule = icalcomponent_get_first_property(event, ICAL_RRULE_PROPERTY)) {
            data.rule = icalproperty_get_rrule(rule);
        }
        for (auto* rdate = icalcomponent_get_first_property(event, ICAL_RDATE_PROPERTY);
             rdate != nullptr;
             rdate = icalcomponent_get_next_property(event, ICAL_RDATE_PROPERTY)) {
            // A date, a time or a period; a period's own end is not kept: every occurrence
            // lasts as long as the first.
            const icaldatetimeperiodtype value = icalproperty_get_rdate(rdate);
            const icaltimetype at =
                icaltime_is_null_time(value.time) ? value.period.start : value.time;
            if (!icaltime_is_null_time(at) && icaltime_is_valid_time(at)) {
                data.added.push_back(withZone(root, rdate, at));
            }
        }
        for (auto* exdate = icalcomponent_get_first_property(event, ICAL_EXDATE_PROPERTY);
             exdate != nullptr;
             exdate = icalcomponent_get_next_property(event, ICAL_EXDATE_PROPERTY)) {
            data.excluded.push_back(withZone(root, exdate, icalproperty_get_exdate(exdate)));
        }
        if (auto* recurrenceId =
                icalcomponent_get_first_property(event, ICAL_RECURRENCEID_PROPERTY)) {
            // A changed occurrence stands on its own and replaces the rule's occurrence.
            data.rule.reset();
            data.added.clear();
            changedOccurrences.emplace_back(
                data.uid,
                withZone(root, recurrenceId, icalproperty_get_recurrenceid(recurrenceId)));
        }
        parsed_->events.push_back(std::move(data));
    }
    for (const auto& [uid, replaced] : changedOccurrences) {
        for (std::size_t i = firstNew; i < parsed_->events.size(); ++i) {
            auto& event = parsed_->events[i];
            if (event.repeats() && event.uid == uid) {
                event.excluded.push_back(replaced);
            }
        }
    }
    return true;
}

std::vector<SourceEvent> IcsCalendarFile::occurrences(const DayInterval& day,
                                                      const Calendar& calendar,
                                                      const std::string& calendarId) const {
    std::vector<SourceEvent> result;
    const auto emit = [&](const EventData& event, Instant start, Instant end) {
        if (!day.overlaps(start, std::max(start, end))) {
            return;
        }
        result.push_back(SourceEvent{event.uid, calendarId, event.summary, start, end,
                                     event.isAllDay, event.url});
    };
    const auto endOf = [&](const EventData& event, const icaltimetype& start,
                           Instant startInstant) -> Instant {
        if (!event.isAllDay) {
            return startInstant + event.lengthSeconds;
        }
        icaltimetype end = start;
        icaltime_adjust(&end, event.lengthDays, 0, 0, 0);
        return instantOf(end, calendar).value_or(startInstant + event.lengthDays * kDaySeconds);
    };

    for (const auto& event : parsed_->events) {
        if (!event.repeats()) {
            const auto start =
                event.fixedStart ? event.fixedStart : instantOf(event.start, calendar);
            if (start) {
                emit(event, *start, endOf(event, event.start, *start));
            }
            continue;
        }
        // A span long enough to hold any occurrence that reaches into the day.
        const double reach =
            (event.isAllDay ? event.lengthDays * kDaySeconds : event.lengthSeconds) +
            2 * kDaySeconds;
        std::vector<Instant> excluded;
        for (const auto& time : event.excluded) {
            if (auto instant = instantOf(time, calendar)) {
                excluded.push_back(*instant);
            }
        }
        const auto isExcluded = [&excluded](Instant start) {
            return std::find(excluded.begin(), excluded.end(), start) != excluded.end();
        };
        // The first start and the added dates; the rule's walk below gives the first
        // start too, so without a rule it is added here.
        std::vector<icaltimetype> starts = event.added;
        if (!event.rule) {
            starts.push_back(event.start);
        }
        std::vector<Instant> emitted;
        for (icaltimetype at : starts) {
            if (at.zone == nullptr && !icaltime_is_utc(at) && !icaltime_is_date(at)) {
                at.zone = event.start.zone;
            }
            if (icaltime_is_date(at) != icaltime_is_date(event.start)) {
                // A date added to a timed event starts at the event's time of day.
                at.is_date = event.start.is_date;
                at.hour = event.start.hour;
                at.minute = event.start.minute;
                at.second = event.start.second;
                at.zone = event.start.zone;
            }
            const auto start = instantOf(at, calendar);
            if (start && !isExcluded(*start) &&
                std::find(emitted.begin(), emitted.end(), *start) == emitted.end()) {
                emitted.push_back(*start);
                emit(event, *start, endOf(event, at, *start));
            }
        }
        if (!event.rule) {
            continue;
        }
        icalrecur_iterator* iterator = icalrecur_iterator_new(*event.rule, event.start);
        if (iterator == nullptr) {
            continue;
        }
        const auto firstStart =
            event.fixedStart ? event.fixedStart : instantOf(event.start, calendar);
        if (event.rule->count == 0 && firstStart && day.start - reach > *firstStart) {
            // Jump close to the day instead of walking every occurrence since the first.
            icaltimetype from = icaltime_from_timet_with_zone(
                static_cast<time_t>(day.start.seconds - reach), event.isAllDay ? 1 : 0,
                event.start.zone != nullptr ? const_cast<icaltimezone*>(event.start.zone)
                                            : icaltimezone_get_utc_timezone());
            if (event.start.zone == nullptr && !icaltime_is_utc(event.start)) {
                from.zone = nullptr;
            }
            icalrecur_iterator_set_start(iterator, from);
        }
        for (int step = 0; step < kMaximumRecurrenceSteps; ++step) {
            icaltimetype next = icalrecur_iterator_next(iterator);
            if (icaltime_is_null_time(next)) {
                break;
            }
            if (next.zone == nullptr && !icaltime_is_utc(next)) {
                next.zone = event.start.zone;
            }
            const auto start = instantOf(next, calendar);
            if (!start) {
                continue;
            }
            if (*start >= day.end) {
                break;
            }
            if (isExcluded(*start) ||
                std::find(emitted.begin(), emitted.end(), *start) != emitted.end()) {
                continue;
            }
            emit(event, *start, endOf(event, next, *start));
        }
        icalrecur_iterator_free(iterator);
    }
    return result;
}

} // namespace daywyn
