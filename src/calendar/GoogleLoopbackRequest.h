#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace daywyn {

// The largest request head the sign-in callback accepts. A browser's redirect with a
// code and a state fits in a small fraction of it.
inline constexpr std::size_t kLoopbackMaxHeadBytes = 8192;

// Reading of the request head a browser sends to the sign-in callback, as the bytes
// arrive. Only "GET <target> HTTP/1.x" with a head ended by an empty line is taken;
// the headers are not looked at.
struct LoopbackRequestHead {
    enum class State {
        // The empty line has not arrived yet and the head is still within bounds.
        incomplete,
        // A whole request line was read: `target` holds its request target.
        complete,
        // Not an HTTP/1 GET, or the head exceeds kLoopbackMaxHeadBytes.
        malformed,
    };
    State state = State::incomplete;
    std::string target;

    // Reads what has arrived so far on one connection.
    static LoopbackRequestHead parse(std::string_view received);
};

// The whole answer on the callback connection: "200 OK" with "Return to Daywyn to
// finish connecting. You can close this tab." when the code was accepted, otherwise
// "400 Bad Request" with "This sign-in callback was not accepted. Return to Daywyn.".
std::string loopbackReply(bool accepted);

} // namespace daywyn
