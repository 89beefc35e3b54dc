#include "cli/bus/SystemCalendars.h"

#include <dlfcn.h>
#include <string>

#include "cli/bus/CommandLineClient.h"

namespace daywyn {

CalendarSnapshot SystemCalendars::readCalendars(const CalendarQuery& query) {
    using Read = void (*)(const CalendarQuery&, const Calendar&, CalendarSnapshot&);
    CalendarSnapshot snapshot;
    // Beside daywyn-app: in the build tree and in the installed libexec folder.
    const std::string module = helperProgramPath("daywyn-calendars.so");
    // Never closed: GLib's types cannot be unloaded.
    void* handle = module.empty() ? nullptr : ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    auto read = handle == nullptr
                    ? nullptr
                    : reinterpret_cast<Read>(::dlsym(handle, "daywynReadSystemCalendars"));
    if (read == nullptr) {
        const char* why = ::dlerror();
        snapshot.status = CalendarAccessStatus::unavailable;
        snapshot.errorMessage =
            "Daywyn could not load its calendar reader (" +
            (why != nullptr ? std::string(why) : std::string("daywyn-calendars.so")) + ").";
        return snapshot;
    }
    read(query, calendar_, snapshot);
    return snapshot;
}

} // namespace daywyn
