#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <xcb/xcb.h>

namespace daywyn {

// The X server's atom for `name` (interned when missing), or XCB_ATOM_NONE when the
// server does not answer.
inline xcb_atom_t internAtom(xcb_connection_t* connection, const char* name) {
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t found = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return found;
}

} // namespace daywyn
