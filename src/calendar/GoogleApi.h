#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Calendar.h"
#include "base/Result.h"
#include "calendar/CalendarDay.h"
#include "calendar/GoogleAccount.h"
#include "calendar/GoogleCalendarRules.h"
#include "calendar/GoogleHttp.h"
#include "calendar/GoogleReplies.h"

namespace daywyn {

// The result of refreshing one account: the account as it is now (a new access token,
// the loaded calendar list and selection) and the day's events or why they are missing.
struct GoogleAccountRefresh {
    GoogleAccount account;
    // True when the account record changed and should be saved.
    bool accountChanged = false;
    GoogleAccountOutcome outcome;
};

// Google's token, userinfo and Calendar API requests over a GoogleHttp client. Every
// answer goes through one path (`execute`): 200–299 is decoded, 400 and 401 mean the
// access is gone, anything else (or an answer that does not decode) that Google could
// not be loaded. Completions run on the client's thread; the client and the calendar
// must outlive every request under way.
class GoogleApi {
public:
    GoogleApi(GoogleHttp& http, GoogleEndpoints endpoints, Calendar calendar);

    const GoogleEndpoints& endpoints() const { return endpoints_; }

    template <typename Reply>
    void execute(GoogleHttpRequest request, std::function<void(Result<Reply>)> done);

    // The sign-in's code for tokens.
    void exchangeCode(const GoogleClientRegistration& registration, const std::string& code,
                      const std::string& verifier, const std::string& redirectUri,
                      std::function<void(Result<GoogleToken>)> done);
    // A new access token for a refresh token.
    void refreshAccessToken(const GoogleClientRegistration& registration,
                            const std::string& refreshToken,
                            std::function<void(Result<GoogleToken>)> done);
    void profile(const std::string& accessToken, std::function<void(Result<GoogleProfile>)> done);

    // Every item of a Calendar API list (`path` under the API base), page by page.
    template <typename Item>
    void pages(std::string path, std::vector<std::pair<std::string, std::string>> query,
               std::string accessToken, std::function<void(Result<std::vector<Item>>)> done);

    // One account for one day: a usable access token (refreshed when fewer than 60 s
    // remain; `registration` is needed only then), the calendar list, the selection, and
    // the events of every selected calendar, all calendars asked for at once.
    void refreshAccount(GoogleAccount account, DayInterval day, Instant now,
                        std::optional<GoogleClientRegistration> registration,
                        std::function<void(GoogleAccountRefresh)> done);

private:
    void loadAccount(std::shared_ptr<GoogleAccountRefresh> state, DayInterval day,
                     std::function<void(GoogleAccountRefresh)> done);

    GoogleHttp& http_;
    GoogleEndpoints endpoints_;
    Calendar calendar_;
};

// The accounts after a sign-in that gave `token` for `profile` at `now`: the account
// with the profile's id is updated (its calendars and selection kept) or a new one
// added. Without a refresh token in the answer the stored one is kept; with neither
// the sign-in fails with "Google did not provide offline access. …".
Result<std::vector<GoogleAccount>> accountsAfterSignIn(std::vector<GoogleAccount> accounts,
                                                       const GoogleToken& token,
                                                       const GoogleProfile& profile, Instant now);

} // namespace daywyn
