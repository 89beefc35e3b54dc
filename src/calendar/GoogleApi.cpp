#include "calendar/GoogleApi.h"

#include <memory>

#include "calendar/GoogleOAuthUtilities.h"

namespace daywyn {

GoogleEndpoints GoogleEndpoints::under(const std::string& origin) {
    GoogleEndpoints endpoints;
    endpoints.authorization = origin + "/o/oauth2/v2/auth";
    endpoints.token = origin + "/token";
    endpoints.userinfo = origin + "/oauth2/v2/userinfo";
    endpoints.calendarApi = origin + "/calendar/v3/";
    return endpoints;
}

GoogleApi::GoogleApi(GoogleHttp& http, GoogleEndpoints endpoints, Calendar calendar)
    : http_(http)
    , endpoints_(std::move(endpoints))
    , calendar_(std::move(calendar)) {}

template <typename Reply>
void GoogleApi::execute(GoogleHttpRequest request, std::function<void(Result<Reply>)> done) {
    http_.send(std::move(request), [done = std::move(done)](GoogleHttpResponse response) {
        if (const auto error = googleStatusError(response.status)) {
            done(Result<Reply>::failure(std::string(*error)));
            return;
        }
        auto decoded = Reply::decode(response.body);
        if (!decoded.ok()) {
            // The decoder's reason helps nobody who reads settings; the sentence does.
            done(Result<Reply>::failure(std::string(kGoogleCouldNotLoad)));
            return;
        }
        done(std::move(decoded));
    });
}

void GoogleApi::exchangeCode(const GoogleClientRegistration& registration, const std::string& code,
                             const std::string& verifier, const std::string& redirectUri,
                             std::function<void(Result<GoogleToken>)> done) {
    GoogleHttpRequest request;
    request.url = endpoints_.token;
    request.formBody = GoogleOAuthUtilities::form({{"client_id", registration.clientId},
                                                   {"client_secret", registration.clientSecret},
                                                   {"code", code},
                                                   {"code_verifier", verifier},
                                                   {"redirect_uri", redirectUri},
                                                   {"grant_type", "authorization_code"}});
    execute<GoogleToken>(std::move(request), std::move(done));
}

void GoogleApi::refreshAccessToken(const GoogleClientRegistration& registration,
                                   const std::string& refreshToken,
                                   std::function<void(Result<GoogleToken>)> done) {
    GoogleHttpRequest request;
    request.url = endpoints_.token;
    request.formBody = GoogleOAuthUtilities::form({{"client_id", registration.clientId},
                                                   {"client_secret", registration.clientSecret},
                                                   {"refresh_token", refreshToken},
                                                   {"grant_type", "refresh_token"}});
    execute<GoogleToken>(std::move(request), std::move(done));
}

void GoogleApi::profile(const std::string& accessToken,
                        std::function<void(Result<GoogleProfile>)> done) {
    execute<GoogleProfile>(GoogleHttpRequest{endpoints_.userinfo, accessToken, std::nullopt},
                           std::move(done));
}

template <typename Item>
void GoogleApi::pages(std::string path, std::vector<std::pair<std::string, std::string>> query,
                      std::string accessToken,
                      std::function<void(Result<std::vector<Item>>)> done) {
    struct Walk {
        GooglePaging paging;
        std::vector<Item> items;
        std::string url;
        std::vector<std::pair<std::string, std::string>> query;
        std::string token;
        std::function<void(Result<std::vector<Item>>)> done;
        std::function<void()> next;
    };
    auto walk = std::make_shared<Walk>();
    walk->url = endpoints_.calendarApi + path;
    walk->query = std::move(query);
    walk->token = std::move(accessToken);
    walk->done = std::move(done);
    // The step holds the walk weakly; each request's completion holds it strongly.
    walk->next = [this, weak = std::weak_ptr<Walk>(walk)] {
        auto self = weak.lock();
        GoogleHttpRequest request{self->url + "?" +
                                      googleListQuery(self->query, self->paging.pageToken()),
                                  self->token, std::nullopt};
        execute<GooglePage<Item>>(std::move(request), [self](Result<GooglePage<Item>> page) {
            if (!page.ok()) {
                self->done(Result<std::vector<Item>>::failure(page.error()));
                return;
            }
            auto& items = page.value().items;
            self->items.insert(self->items.end(), std::make_move_iterator(items.begin()),
                               std::make_move_iterator(items.end()));
            switch (self->paging.accept(page.value().nextPageToken)) {
            case GooglePaging::Step::nextPage:
                self->next();
                return;
            case GooglePaging::Step::done:
                self->done(std::move(self->items));
                return;
            case GooglePaging::Step::repeatedToken:
                self->done(Result<std::vector<Item>>::failure(std::string(kGoogleIncompletePage)));
                return;
            }
        });
    };
    walk->next();
}

void GoogleApi::refreshAccount(GoogleAccount account, DayInterval day, Instant now,
                               std::optional<GoogleClientRegistration> registration,
                               std::function<void(GoogleAccountRefresh)> done) {
    auto state = std::make_shared<GoogleAccountRefresh>();
    state->outcome.accountID = account.id;
    state->outcome.email = account.email;
    state->account = std::move(account);
    if (googleTokenIsUsable(state->account, now)) {
        loadAccount(std::move(state), day, std::move(done));
        return;
    }
    if (!registration) {
        state->outcome.error = kGoogleRegistrationMissing;
        done(std::move(*state));
        return;
    }
    refreshAccessToken(*registration, state->account.refreshToken,
                       [this, state, day, now, done](Result<GoogleToken> token) mutable {
                           if (!token.ok()) {
                               state->outcome.error = token.error();
                               done(std::move(*state));
                               return;
                           }
                           state->account.accessToken = token->accessToken;
                           state->account.expiresAt = now + token->expiresIn;
                           if (token->refreshToken) {
                               state->account.refreshToken = *token->refreshToken;
                           }
                           state->accountChanged = true;
                           loadAccount(std::move(state), day, std::move(done));
                       });
}

void GoogleApi::loadAccount(std::shared_ptr<GoogleAccountRefresh> state, DayInterval day,
                            std::function<void(GoogleAccountRefresh)> done) {
    const std::string token = state->account.accessToken;
    pages<GoogleCalendarChoice>(
        "users/me/calendarList", {}, token,
        [this, state, day, token, done](Result<std::vector<GoogleCalendarChoice>> list) {
            if (!list.ok()) {
                state->outcome.error = list.error();
                done(std::move(*state));
                return;
            }
            GoogleAccount& account = state->account;
            const bool first = account.didLoadCalendars != true;
            account.selected = selectionAfterLoad(first, account.selected, list.value());
            account.calendars = std::move(list.value());
            account.didLoadCalendars = true;
            state->accountChanged = true;

            struct Gather {
                std::vector<std::vector<CalendarEventItem>> perCalendar;
                std::size_t waiting = 0;
                std::optional<std::string> error;
            };
            auto gather = std::make_shared<Gather>();
            std::vector<const GoogleCalendarChoice*> wanted;
            for (const GoogleCalendarChoice& calendar : account.calendars) {
                if (account.selected.contains(calendar.id)) {
                    wanted.push_back(&calendar);
                }
            }
            gather->perCalendar.resize(wanted.size());
            gather->waiting = wanted.size();
            if (wanted.empty()) {
                state->outcome.events.emplace();
                done(std::move(*state));
                return;
            }
            for (std::size_t index = 0; index < wanted.size(); ++index) {
                const GoogleCalendarChoice calendar = *wanted[index];
                pages<GoogleEventPayload>(
                    googleEventsPath(calendar.id), googleDayQuery(day), token,
                    [this, state, gather, index, calendar,
                     done](Result<std::vector<GoogleEventPayload>> events) {
                        if (!events.ok()) {
                            if (!gather->error) {
                                gather->error = events.error();
                            }
                        } else {
                            for (const GoogleEventPayload& payload : events.value()) {
                                if (auto item =
                                        payload.item(state->account.id, calendar, calendar_)) {
                                    gather->perCalendar[index].push_back(std::move(*item));
                                }
                            }
                        }
                        if (--gather->waiting > 0) {
                            return;
                        }
                        if (gather->error) {
                            state->outcome.error = *gather->error;
                        } else {
                            std::vector<CalendarEventItem> all;
                            for (auto& found : gather->perCalendar) {
                                all.insert(all.end(), std::make_move_iterator(found.begin()),
                                           std::make_move_iterator(found.end()));
                            }
                            state->outcome.events = std::move(all);
                        }
                        done(std::move(*state));
                    });
            }
        });
}

Result<std::vector<GoogleAccount>> accountsAfterSignIn(std::vector<GoogleAccount> accounts,
                                                       const GoogleToken& token,
                                                       const GoogleProfile& profile, Instant now) {
    GoogleAccount* existing = nullptr;
    for (GoogleAccount& account : accounts) {
        if (account.id == profile.id) {
            existing = &account;
            break;
        }
    }
    std::string refreshToken;
    if (token.refreshToken) {
        refreshToken = *token.refreshToken;
    } else if (existing) {
        refreshToken = existing->refreshToken;
    } else {
        return Result<std::vector<GoogleAccount>>::failure(std::string(kGoogleNoOfflineAccess));
    }
    if (!existing) {
        accounts.emplace_back();
        existing = &accounts.back();
        existing->id = profile.id;
    }
    existing->email = profile.email;
    existing->accessToken = token.accessToken;
    existing->refreshToken = std::move(refreshToken);
    existing->expiresAt = now + token.expiresIn;
    return accounts;
}

template void GoogleApi::execute<GoogleToken>(GoogleHttpRequest,
                                              std::function<void(Result<GoogleToken>)>);
template void GoogleApi::pages<GoogleCalendarChoice>(
    std::string, std::vector<std::pair<std::string, std::string>>, std::string,
    std::function<void(Result<std::vector<GoogleCalendarChoice>>)>);
template void GoogleApi::pages<GoogleEventPayload>(
    std::string, std::vector<std::pair<std::string, std::string>>, std::string,
    std::function<void(Result<std::vector<GoogleEventPayload>>)>);

} // namespace daywyn
