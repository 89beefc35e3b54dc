#include "shell/QuickCaptureShortcutStatus.h"

namespace daywyn {

QuickCaptureShortcutStatus
QuickCaptureShortcutStatus::after(const ShortcutRegistration& registration) {
    const std::string code = std::to_string(registration.errorCode);
    switch (registration.outcome) {
    case ShortcutRegistration::Outcome::registered:
        return active();
    case ShortcutRegistration::Outcome::refused:
        return unavailable(std::string(quickCaptureShortcutText) + " is unavailable (error " +
                           code + "). Another app may already use it.");
    case ShortcutRegistration::Outcome::failed:
        return unavailable("Daywyn couldn\u2019t listen for the global shortcut (error " + code +
                           ").");
    case ShortcutRegistration::Outcome::unsupported:
        break;
    }
    return unavailable("This session has no global shortcuts for Daywyn. Bind the command "
                       "\u201Cdaywyn quick-add\u201D to a keyboard shortcut in your "
                       "desktop\u2019s settings.");
}

std::string QuickCaptureShortcutStatus::text() const {
    switch (kind) {
    case Kind::unavailable:
        return message;
    case Kind::disabled:
        return "Global quick capture is off.";
    case Kind::inactive:
        return "Global quick capture is not running.";
    case Kind::active:
        break;
    }
    return {};
}

} // namespace daywyn
