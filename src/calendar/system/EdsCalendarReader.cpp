#include "calendar/system/EdsCalendarReader.h"

#include <algorithm>
#include <libecal/libecal.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace daywyn {

namespace {

std::string text(const char* value) {
    return value == nullptr ? std::string() : std::string(value);
}

} // namespace

struct EdsCalendarReader::Impl {
    struct Client {
        ECalClient* client = nullptr;
        ECalClientView* view = nullptr;
    };

    Calendar calendar;
    bool watch = false;
    std::uint32_t connectWait = kWaitForever;
    GCancellable* cancellable = g_cancellable_new();
    ESourceRegistry* registry = nullptr;
    std::map<std::string, Client> clients;
    std::function<void()> onChange;

    ~Impl() {
        for (auto& [uid, client] : clients) {
            release(client);
        }
        if (registry != nullptr) {
            g_signal_handlers_disconnect_by_data(registry, this);
            g_object_unref(registry);
        }
        g_object_unref(cancellable);
    }

    void release(Client& client) {
        if (client.view != nullptr) {
            g_signal_handlers_disconnect_by_data(client.view, this);
            e_cal_client_view_stop(client.view, nullptr);
            g_object_unref(client.view);
        }
        if (client.client != nullptr) {
            g_object_unref(client.client);
        }
        client = {};
    }

    static void changed(gpointer, gpointer data) {
        auto* impl = static_cast<Impl*>(data);
        if (impl->onChange) {
            impl->onChange();
        }
    }
    static void changedWithPayload(gpointer instance, gpointer, gpointer data) {
        changed(instance, data);
    }

    std::optional<Instant> instantOf(ICalTime* time) const {
        if (time == nullptr) {
            return std::nullopt;
        }
        int year = 0;
        int month = 0;
        int day = 0;
        i_cal_time_get_date(time, &year, &month, &day);
        if (i_cal_time_is_date(time)) {
            return calendar.date(year, month, day);
        }
        ICalTimezone* zone = i_cal_time_is_utc(time) ? i_cal_timezone_get_utc_timezone()
                                                     : i_cal_time_get_timezone(time);
        if (zone == nullptr) {
            int hour = 0;
            int minute = 0;
            int second = 0;
            i_cal_time_get_time(time, &hour, &minute, &second);
            return calendar.date(year, month, day, hour, minute, second);
        }
        return Instant{static_cast<double>(i_cal_time_as_timet_with_zone(time, zone))};
    }

    struct Gathering {
        const Impl* impl;
        std::string calendarId;
        std::vector<SourceEvent>* events;
    };

    static gboolean instance(ICalComponent* component, ICalTime* start, ICalTime* end,
                             gpointer data, GCancellable*, GError**) {
        auto* gathering = static_cast<Gathering*>(data);
        const auto from = gathering->impl->instantOf(start);
        if (!from) {
            return TRUE;
        }
        SourceEvent event;
        event.eventIdentifier = text(i_cal_component_get_uid(component));
        event.calendarIdentifier = gathering->calendarId;
        event.title = text(i_cal_component_get_summary(component));
        event.start = *from;
        event.end = gathering->impl->instantOf(end).value_or(*from);
        event.isAllDay = start != nullptr && i_cal_time_is_date(start);
        if (ICalProperty* url = i_cal_component_get_first_property(component, I_CAL_URL_PROPERTY)) {
            event.url = text(i_cal_property_get_url(url));
            g_object_unref(url);
        }
        gathering->events->push_back(std::move(event));
        return TRUE;
    }

    ECalClient* clientFor(ESource* source, std::string& error);
    CalendarSnapshot read(const CalendarQuery& query);
};

ECalClient* EdsCalendarReader::Impl::clientFor(ESource* source, std::string& error) {
    const std::string uid = text(e_source_get_uid(source));
    if (auto found = clients.find(uid); found != clients.end()) {
        return found->second.client;
    }
    GError* failure = nullptr;
    EClient* client = e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS,
                                                connectWait, cancellable, &failure);
    if (client == nullptr) {
        error = "Daywyn could not open the calendar \xE2\x80\x9C" +
                text(e_source_get_display_name(source)) + "\xE2\x80\x9D: " +
                (failure != nullptr ? text(failure->message) : std::string("unknown error"));
        g_clear_error(&failure);
        return nullptr;
    }
    Client entry;
    entry.client = E_CAL_CLIENT(client);
    const std::string zoneId = calendar.zoneId();
    if (ICalTimezone* zone = i_cal_timezone_get_builtin_timezone(zoneId.c_str())) {
        e_cal_client_set_default_timezone(entry.client, zone);
    }
    // A view over every event tells when any of them changes.
    if (watch &&
        e_cal_client_get_view_sync(entry.client, "#t", &entry.view, cancellable, &failure)) {
        e_cal_client_view_set_flags(entry.view, E_CAL_CLIENT_VIEW_FLAGS_NONE, nullptr);
        for (const char* signal : {"objects-added", "objects-modified", "objects-removed"}) {
            g_signal_connect(entry.view, signal, reinterpret_cast<GCallback>(&changedWithPayload),
                             this);
        }
        e_cal_client_view_start(entry.view, nullptr);
    }
    g_clear_error(&failure);
    clients.emplace(uid, entry);
    return entry.client;
}

CalendarSnapshot EdsCalendarReader::Impl::read(const CalendarQuery& query) {
    CalendarSnapshot snapshot;
    if (g_cancellable_is_cancelled(cancellable)) {
        return snapshot;
    }
    if (registry == nullptr) {
        GError* failure = nullptr;
        registry = e_source_registry_new_sync(cancellable, &failure);
        g_clear_error(&failure);
        if (registry == nullptr) {
            // No calendar service on the bus: the screens explain the unavailable status.
            snapshot.status = CalendarAccessStatus::unavailable;
            return snapshot;
        }
        for (const char* signal : {"source-added", "source-removed", "source-changed",
                                   "source-enabled", "source-disabled"}) {
            g_signal_connect(registry, signal, reinterpret_cast<GCallback>(&changedWithPayload),
                             this);
        }
    }
    snapshot.status = CalendarAccessStatus::fullAccess;
    GList* sources = e_source_registry_list_enabled(registry, E_SOURCE_EXTENSION_CALENDAR);
    std::vector<std::string> present;
    std::vector<std::string> errors;
    for (GList* link = sources; link != nullptr; link = link->next) {
        auto* source = E_SOURCE(link->data);
        SourceCalendar entry;
        entry.id = text(e_source_get_uid(source));
        entry.title = text(e_source_get_display_name(source));
        if (const char* parentUid = e_source_get_parent(source)) {
            if (ESource* parent = e_source_registry_ref_source(registry, parentUid)) {
                entry.sourceTitle = text(e_source_get_display_name(parent));
                g_object_unref(parent);
            }
        }
        auto* selectable = static_cast<ESourceSelectable*>(
            e_source_get_extension(source, E_SOURCE_EXTENSION_CALENDAR));
        gchar* color = e_source_selectable_dup_color(selectable);
        entry.colorText = text(color);
        g_free(color);
        present.push_back(entry.id);
        if (std::find(query.calendarIdentifiers.begin(), query.calendarIdentifiers.end(),
                      entry.id) != query.calendarIdentifiers.end()) {
            std::string error;
            if (ECalClient* client = clientFor(source, error)) {
                Gathering gathering{this, entry.id, &snapshot.events};
                e_cal_client_generate_instances_sync(client,
                                                     static_cast<time_t>(query.day.start.seconds),
                                                     static_cast<time_t>(query.day.end.seconds),
                                                     cancellable, &Impl::instance, &gathering);
            } else {
                errors.push_back(std::move(error));
            }
        }
        snapshot.calendars.push_back(std::move(entry));
    }
    g_list_free_full(sources, g_object_unref);
    // A calendar that went away takes its connection with it.
    for (auto it = clients.begin(); it != clients.end();) {
        if (std::find(present.begin(), present.end(), it->first) == present.end()) {
            release(it->second);
            it = clients.erase(it);
        } else {
            ++it;
        }
    }
    if (!errors.empty()) {
        std::string message;
        for (const auto& error : errors) {
            message += message.empty() ? error : " " + error;
        }
        if (message.back() != '.') {
            message += '.';
        }
        snapshot.errorMessage = message;
    }
    return snapshot;
}

EdsCalendarReader::EdsCalendarReader(Calendar calendar, bool watch,
                                     std::uint32_t connectWaitSeconds)
    : impl_(std::make_unique<Impl>()) {
    impl_->calendar = std::move(calendar);
    impl_->watch = watch;
    impl_->connectWait = connectWaitSeconds;
}

EdsCalendarReader::~EdsCalendarReader() = default;

CalendarSnapshot EdsCalendarReader::read(const CalendarQuery& query) {
    return impl_->read(query);
}

void EdsCalendarReader::setChangeHandler(std::function<void()> onChange) {
    impl_->onChange = std::move(onChange);
}

void EdsCalendarReader::cancel() {
    g_cancellable_cancel(impl_->cancellable);
}

} // namespace daywyn
