#include "shell/qt/QuickCaptureFocusX11.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include <QGuiApplication>
#include <QWindow>
#include <QtGui/qguiapplication_platform.h>
#include <xcb/xcb.h>

#include "shell/qt/XcbAtom.h"

namespace daywyn {
namespace {

xcb_connection_t* qtConnection() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

xcb_window_t rootWindow(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

// The first 32-bit value of a window's property, or 0.
std::uint32_t cardinalProperty(xcb_connection_t* connection, xcb_window_t window,
                               xcb_atom_t property, xcb_atom_t type) {
    xcb_get_property_reply_t* reply = xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, property, type, 0, 1), nullptr);
    std::uint32_t value = 0;
    if (reply && reply->format == 32 && xcb_get_property_value_length(reply) >= 4) {
        std::memcpy(&value, xcb_get_property_value(reply), sizeof value);
    }
    std::free(reply);
    return value;
}

} // namespace

std::uint32_t QuickCaptureFocusX11::activeWindow() {
    xcb_connection_t* connection = qtConnection();
    if (!connection) {
        return 0;
    }
    return cardinalProperty(connection, rootWindow(connection),
                            internAtom(connection, "_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
}

bool QuickCaptureFocusX11::isOwnWindow(std::uint32_t window) {
    if (window == 0) {
        return false;
    }
    for (const QWindow* own : QGuiApplication::allWindows()) {
        if (own->handle() && own->winId() == window) {
            return true;
        }
    }
    // A window of ours that Qt does not list (a dialog's native helper) still carries
    // our process id.
    xcb_connection_t* connection = qtConnection();
    return connection &&
           cardinalProperty(connection, window, internAtom(connection, "_NET_WM_PID"),
                            XCB_ATOM_CARDINAL) == static_cast<std::uint32_t>(getpid());
}

void QuickCaptureFocusX11::activate(std::uint32_t window) {
    xcb_connection_t* connection = qtConnection();
    if (!connection || window == 0) {
        return;
    }
    xcb_client_message_event_t event;
    std::memset(&event, 0, sizeof event);
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = internAtom(connection, "_NET_ACTIVE_WINDOW");
    // Source 2 (a pager): the user asked for this window, so focus-stealing prevention
    // must not hold it back; no timestamp to compare.
    event.data.data32[0] = 2;
    event.data.data32[1] = XCB_CURRENT_TIME;
    event.data.data32[2] = 0;
    xcb_send_event(connection, 0, rootWindow(connection),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection);
}

} // namespace daywyn
