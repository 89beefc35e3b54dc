#include "calendar/GoogleLoopbackRequest.h"

namespace daywyn {

namespace {

constexpr std::string_view kAcceptedBody =
    "Return to Daywyn to finish connecting. You can close this tab.";
constexpr std::string_view kRefusedBody =
    "This sign-in callback was not accepted. Return to Daywyn.";

bool tokenCharacter(char c) {
    return c > 0x20 && c < 0x7F;
}

} // namespace

LoopbackRequestHead LoopbackRequestHead::parse(std::string_view received) {
    LoopbackRequestHead head;
    const auto end = received.find("\r\n\r\n");
    if (end == std::string_view::npos) {
        // Give up early on what can never become a GET request line, so a client that
        // sends garbage slowly is answered at once rather than at the size bound.
        constexpr std::string_view kMethod = "GET ";
        const std::string_view start = received.substr(0, kMethod.size());
        if (start != kMethod.substr(0, start.size()) || received.size() >= kLoopbackMaxHeadBytes) {
            head.state = State::malformed;
        }
        return head;
    }
    if (end + 4 > kLoopbackMaxHeadBytes) {
        head.state = State::malformed;
        return head;
    }
    head.state = State::malformed;
    const std::string_view line = received.substr(0, received.find("\r\n"));
    if (line.substr(0, 4) != "GET ") {
        return head;
    }
    const std::string_view rest = line.substr(4);
    const auto space = rest.find(' ');
    if (space == std::string_view::npos || space == 0) {
        return head;
    }
    const std::string_view target = rest.substr(0, space);
    const std::string_view version = rest.substr(space + 1);
    if (version != "HTTP/1.1" && version != "HTTP/1.0") {
        return head;
    }
    for (char c : target) {
        if (!tokenCharacter(c)) {
            return head;
        }
    }
    head.state = State::complete;
    head.target = std::string(target);
    return head;
}

std::string loopbackReply(bool accepted) {
    const std::string_view body = accepted ? kAcceptedBody : kRefusedBody;
    std::string reply = "HTTP/1.1 ";
    reply += accepted ? "200 OK" : "400 Bad Request";
    reply += "\r\nContent-Type: text/plain; charset=utf-8\r\nCache-Control: no-store\r\n"
             "Content-Length: ";
    reply += std::to_string(body.size());
    reply += "\r\nConnection: close\r\n\r\n";
    reply += body;
    return reply;
}

} // namespace daywyn
