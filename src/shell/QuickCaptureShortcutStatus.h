#pragma once

#include <string>

namespace daywyn {

// What registering the global shortcut with the window system gave: registered, refused
// because another program holds the key combination, failed with another window-system
// error, or impossible because the session offers no global key grabs (Wayland without
// XWayland, no X connection).
struct ShortcutRegistration {
    enum class Outcome { registered, refused, failed, unsupported };
    Outcome outcome = Outcome::registered;
    // The window system's error code for refused and failed.
    int errorCode = 0;
    bool operator==(const ShortcutRegistration&) const = default;
};

// How the global quick-capture shortcut stands, as the settings page shows it:
// unavailable with a sentence saying why, switched off, not running (the process may not
// register system hooks), or listening.
struct QuickCaptureShortcutStatus {
    enum class Kind { unavailable, disabled, inactive, active };
    Kind kind = Kind::inactive;
    // The sentence for unavailable; empty otherwise.
    std::string message;
    bool operator==(const QuickCaptureShortcutStatus&) const = default;

    static QuickCaptureShortcutStatus unavailable(std::string message) {
        return {Kind::unavailable, std::move(message)};
    }
    static QuickCaptureShortcutStatus disabled() { return {Kind::disabled, {}}; }
    static QuickCaptureShortcutStatus inactive() { return {Kind::inactive, {}}; }
    static QuickCaptureShortcutStatus active() { return {Kind::active, {}}; }

    // The status after a registration attempt: each failure gets the sentence a user can
    // act on ("Ctrl+Alt+Space is unavailable (error 10). Another app may already use it.").
    static QuickCaptureShortcutStatus after(const ShortcutRegistration& registration);

    // The line under the settings switch: "Global quick capture is off.", "Global quick
    // capture is not running.", the unavailable sentence, or empty while listening.
    std::string text() const;
};

// The key combination as Linux desktops write it.
inline constexpr const char* quickCaptureShortcutText = "Ctrl+Alt+Space";

} // namespace daywyn
