#include "shell/qt/GlobalShortcutX11.h"

#include <array>
#include <cstdlib>
#include <vector>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QtGui/qguiapplication_platform.h>
#include <xcb/xcb.h>

namespace daywyn {
namespace {

constexpr xcb_keysym_t spaceKeysym = 0x20;
constexpr std::uint16_t shortcutModifiers = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;
// Num Lock sits on Mod2 under every stock XKB layout; Caps Lock is Lock.
constexpr std::array<std::uint16_t, 4> lockCombinations = {0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                                                           XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};
// Modifiers that make a press something else (Ctrl+Alt+Shift+Space is not ours).
constexpr std::uint16_t significantModifiers =
    XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;

xcb_connection_t* qtConnection() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

// The first keycode whose unshifted symbol is Space under the current keyboard map.
std::uint8_t spaceKeycode(xcb_connection_t* connection) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const int count = setup->max_keycode - setup->min_keycode + 1;
    xcb_get_keyboard_mapping_reply_t* reply = xcb_get_keyboard_mapping_reply(
        connection,
        xcb_get_keyboard_mapping(connection, setup->min_keycode, static_cast<std::uint8_t>(count)),
        nullptr);
    if (!reply) {
        return 0;
    }
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(reply);
    std::uint8_t found = 0;
    for (int i = 0; i < count && !found; ++i) {
        if (symbols[i * reply->keysyms_per_keycode] == spaceKeysym) {
            found = static_cast<std::uint8_t>(setup->min_keycode + i);
        }
    }
    std::free(reply);
    return found;
}

} // namespace

GlobalShortcutX11::GlobalShortcutX11(QObject* parent)
    : GlobalShortcut(parent) {}

GlobalShortcutX11::~GlobalShortcutX11() {
    release();
}

ShortcutRegistration GlobalShortcutX11::grab() {
    release();
    xcb_connection_t* connection = qtConnection();
    if (!connection || xcb_connection_has_error(connection)) {
        return {ShortcutRegistration::Outcome::unsupported, 0};
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    keycode_ = spaceKeycode(connection);
    if (keycode_ == 0) {
        // No Space key in the keyboard map: X's BadValue is the closest description.
        return {ShortcutRegistration::Outcome::failed, XCB_VALUE};
    }
    std::vector<xcb_void_cookie_t> cookies;
    for (const std::uint16_t locks : lockCombinations) {
        cookies.push_back(xcb_grab_key_checked(connection, 0, root_, shortcutModifiers | locks,
                                               keycode_, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    int errorCode = 0;
    for (const xcb_void_cookie_t cookie : cookies) {
        if (xcb_generic_error_t* error = xcb_request_check(connection, cookie)) {
            if (errorCode == 0) {
                errorCode = error->error_code;
            }
            std::free(error);
        }
    }
    if (errorCode != 0) {
        // Ungrabbing a combination someone else holds does nothing, so all four may go.
        for (const std::uint16_t locks : lockCombinations) {
            xcb_ungrab_key(connection, keycode_, root_, shortcutModifiers | locks);
        }
        xcb_flush(connection);
        return {errorCode == XCB_ACCESS ? ShortcutRegistration::Outcome::refused
                                        : ShortcutRegistration::Outcome::failed,
                errorCode};
    }
    grabbed_ = true;
    QCoreApplication::instance()->installNativeEventFilter(this);
    return {ShortcutRegistration::Outcome::registered, 0};
}

void GlobalShortcutX11::release() {
    if (!grabbed_) {
        return;
    }
    grabbed_ = false;
    if (QCoreApplication::instance()) {
        QCoreApplication::instance()->removeNativeEventFilter(this);
    }
    if (xcb_connection_t* connection = qtConnection()) {
        for (const std::uint16_t locks : lockCombinations) {
            xcb_ungrab_key(connection, keycode_, root_, shortcutModifiers | locks);
        }
        xcb_flush(connection);
    }
}

bool GlobalShortcutX11::nativeEventFilter(const QByteArray& eventType, void* message,
                                          qintptr* /*result*/) {
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != XCB_KEY_PRESS) {
        return false;
    }
    const auto* press = static_cast<const xcb_key_press_event_t*>(message);
    if (press->detail != keycode_ || press->event != root_ ||
        (press->state & significantModifiers) != shortcutModifiers) {
        return false;
    }
    Q_EMIT pressed();
    return true;
}

} // namespace daywyn
