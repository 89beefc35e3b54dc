#pragma once

#include <functional>
#include <optional>
#include <string>

namespace daywyn {

// One request to Google: an authorized GET, or a form POST to the token endpoint.
struct GoogleHttpRequest {
    std::string url;
    // "Bearer " and this token go into the Authorization header when present.
    std::optional<std::string> bearerToken;
    // When present the request is a POST of this application/x-www-form-urlencoded body.
    std::optional<std::string> formBody;
};

// What came back: the HTTP status and body, or status 0 when there was no HTTP answer
// (no connection, a TLS failure, a timeout, a redirect to another host).
struct GoogleHttpResponse {
    int status = 0;
    std::string body;
};

// The HTTP client of the Google side. A request completes later, once, on the thread
// that sent it; several may be in flight together.
class GoogleHttp {
public:
    using Completion = std::function<void(GoogleHttpResponse)>;
    virtual ~GoogleHttp() = default;
    virtual void send(GoogleHttpRequest request, Completion done) = 0;
};

// Where Google's endpoints are: the real ones by default, a local server in tests.
struct GoogleEndpoints {
    std::string authorization = "https://accounts.google.com/o/oauth2/v2/auth";
    std::string token = "https://oauth2.googleapis.com/token";
    std::string userinfo = "https://www.googleapis.com/oauth2/v2/userinfo";
    // The Calendar API v3 base, ending in "/".
    std::string calendarApi = "https://www.googleapis.com/calendar/v3/";

    // Every endpoint under one origin ("https://127.0.0.1:4443"), at Google's paths.
    static GoogleEndpoints under(const std::string& origin);
};

} // namespace daywyn
