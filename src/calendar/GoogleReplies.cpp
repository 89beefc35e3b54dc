#include "calendar/GoogleReplies.h"

#include <cmath>
#include <simdjson.h>

namespace daywyn {

namespace {

namespace od = simdjson::ondemand;

constexpr std::string_view kNotJson = "Google sent an answer that is not valid JSON.";
constexpr std::string_view kUnexpected = "Google sent an answer Daywyn could not read.";

// Reads one reply through simdjson On-Demand. Any problem makes the whole reply
// unreadable: a half-read page must not pass for a whole one.
class ReplyReader {
public:
    explicit ReplyReader(std::string_view json)
        : padded_(json) {}

    // The root object, or nothing (with the error set).
    bool root(od::object& object) {
        if (parser_.iterate(padded_).get(document_)) {
            error_ = kNotJson;
            return false;
        }
        if (document_.get_object().get(object)) {
            return fail();
        }
        return true;
    }

    // The document must end after the root object.
    bool finish() {
        if (error_) {
            return false;
        }
        const char* location = nullptr;
        if (document_.current_location().get(location) != simdjson::OUT_OF_BOUNDS) {
            return fail();
        }
        return true;
    }

    bool fail() {
        if (!error_) {
            error_ = kUnexpected;
        }
        return false;
    }

    std::string_view error() const { return error_ ? *error_ : kUnexpected; }

    static bool isNull(od::value& value) {
        bool null = false;
        return !value.is_null().get(null) && null;
    }

    bool text(od::value value, std::string& out) {
        std::string_view view;
        if (value.get_string().get(view)) {
            return fail();
        }
        out.assign(view);
        return true;
    }

    bool optionalText(od::value value, std::optional<std::string>& out) {
        if (isNull(value)) {
            out.reset();
            return true;
        }
        std::string t;
        if (!text(value, t)) {
            return false;
        }
        out = std::move(t);
        return true;
    }

    // A field loop over an object: each(key, value) returns false to stop.
    template <typename Each>
    bool fields(od::object& object, Each each) {
        for (auto field : object) {
            std::string_view key;
            if (field.unescaped_key().get(key)) {
                return fail();
            }
            od::value value;
            if (field.value().get(value)) {
                return fail();
            }
            if (!each(key, value)) {
                return false;
            }
        }
        return !error_;
    }

    template <typename Each>
    bool objectFields(od::value value, Each each) {
        od::object object;
        if (value.get_object().get(object)) {
            return fail();
        }
        return fields(object, each);
    }

    bool item(od::value value, GoogleCalendarChoice& out) {
        bool hasId = false;
        const bool ok = objectFields(value, [&](std::string_view key, od::value v) {
            if (key == "id") {
                hasId = true;
                return text(v, out.id);
            }
            if (key == "summary") {
                return optionalText(v, out.summary);
            }
            if (key == "backgroundColor") {
                return optionalText(v, out.backgroundColor);
            }
            return true;
        });
        return ok && (hasId || fail());
    }

    bool moment(od::value value, std::optional<GoogleMoment>& out) {
        if (isNull(value)) {
            out.reset();
            return true;
        }
        GoogleMoment m;
        const bool ok = objectFields(value, [&](std::string_view key, od::value v) {
            if (key == "dateTime") {
                return optionalText(v, m.dateTime);
            }
            if (key == "date") {
                return optionalText(v, m.date);
            }
            return true;
        });
        if (ok) {
            out = std::move(m);
        }
        return ok;
    }

    bool item(od::value value, GoogleEventPayload& out) {
        bool hasId = false;
        const bool ok = objectFields(value, [&](std::string_view key, od::value v) {
            if (key == "id") {
                hasId = true;
                return text(v, out.id);
            }
            if (key == "summary") {
                return optionalText(v, out.summary);
            }
            if (key == "status") {
                return optionalText(v, out.status);
            }
            if (key == "start") {
                return moment(v, out.start);
            }
            if (key == "end") {
                return moment(v, out.end);
            }
            if (key == "htmlLink") {
                return optionalText(v, out.htmlLink);
            }
            return true;
        });
        return ok && (hasId || fail());
    }

private:
    simdjson::padded_string padded_;
    od::parser parser_;
    od::document document_;
    std::optional<std::string_view> error_;
};

bool readDigits(std::string_view text, std::size_t at, std::size_t count, int& out) {
    if (at + count > text.size()) {
        return false;
    }
    int value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
        value = value * 10 + (text[i] - '0');
    }
    out = value;
    return true;
}

bool validDate(int year, int month, int day) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12 || day < 1) {
        return false;
    }
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= (month == 2 && leap ? 29 : kDays[month - 1]);
}

} // namespace

std::optional<Instant> parseInternetDateTime(std::string_view text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (text.size() < 20 || !readDigits(text, 0, 4, year) || text[4] != '-' ||
        !readDigits(text, 5, 2, month) || text[7] != '-' || !readDigits(text, 8, 2, day) ||
        (text[10] != 'T' && text[10] != 't') || !readDigits(text, 11, 2, hour) || text[13] != ':' ||
        !readDigits(text, 14, 2, minute) || text[16] != ':' || !readDigits(text, 17, 2, second)) {
        return std::nullopt;
    }
    if (!validDate(year, month, day) || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    std::size_t at = 19;
    double fraction = 0.0;
    if (text[at] == '.') {
        ++at;
        const std::size_t digits = at;
        double scale = 0.1;
        while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
            fraction += (text[at] - '0') * scale;
            scale /= 10.0;
            ++at;
        }
        if (at == digits) {
            return std::nullopt;
        }
    }
    if (at >= text.size()) {
        return std::nullopt;
    }
    int offset = 0;
    if (text[at] == 'Z' || text[at] == 'z') {
        ++at;
    } else if (text[at] == '+' || text[at] == '-') {
        int offsetHours = 0, offsetMinutes = 0;
        if (!readDigits(text, at + 1, 2, offsetHours) || at + 3 >= text.size() ||
            text[at + 3] != ':' || !readDigits(text, at + 4, 2, offsetMinutes) ||
            offsetHours > 23 || offsetMinutes > 59) {
            return std::nullopt;
        }
        offset = (offsetHours * 60 + offsetMinutes) * 60 * (text[at] == '-' ? -1 : 1);
        at += 6;
    } else {
        return std::nullopt;
    }
    if (at != text.size()) {
        return std::nullopt;
    }
    const long long days =
        daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
    const double seconds =
        static_cast<double>(days) * 86400.0 + hour * 3600.0 + minute * 60.0 + second - offset;
    return Instant{seconds + fraction};
}

std::optional<Instant> GoogleMoment::parsed(const Calendar& calendar) const {
    if (dateTime) {
        return parseInternetDateTime(*dateTime);
    }
    if (date) {
        int year = 0, month = 0, day = 0;
        const std::string_view text = *date;
        if (text.size() != 10 || !readDigits(text, 0, 4, year) || text[4] != '-' ||
            !readDigits(text, 5, 2, month) || text[7] != '-' || !readDigits(text, 8, 2, day) ||
            !validDate(year, month, day)) {
            return std::nullopt;
        }
        return calendar.date(year, month, day);
    }
    return std::nullopt;
}

std::optional<CalendarEventItem> GoogleEventPayload::item(std::string_view accountID,
                                                          const GoogleCalendarChoice& calendar,
                                                          const Calendar& localCalendar) const {
    if (status && *status == "cancelled") {
        return std::nullopt;
    }
    if (!start || !end) {
        return std::nullopt;
    }
    const auto startAt = start->parsed(localCalendar);
    const auto endAt = end->parsed(localCalendar);
    if (!startAt || !endAt) {
        return std::nullopt;
    }
    CalendarEventItem event;
    event.calendarIdentifier = "google:";
    event.calendarIdentifier.append(accountID);
    event.calendarIdentifier += ':';
    event.calendarIdentifier += calendar.id;
    event.id = CalendarEventItem::occurrenceId(event.calendarIdentifier, id, *startAt);
    event.eventIdentifier = id;
    event.calendarTitle = calendar.summary.value_or(calendar.id);
    event.colorHex = calendar.backgroundColor
                         ? CalendarEventItem::hexColorFromText(*calendar.backgroundColor)
                         : std::string(kGoogleDefaultColor);
    event.title = summary ? *summary : std::string(kUntitledEventTitle);
    event.start = *startAt;
    event.end = *endAt;
    event.isAllDay = !start->dateTime.has_value() && start->date.has_value();
    if (htmlLink && htmlLink->starts_with("https://")) {
        event.url = htmlLink;
    }
    return event;
}

Result<GoogleClientRegistration> GoogleClientRegistration::decode(std::string_view json) {
    ReplyReader reader(json);
    od::object object;
    GoogleClientRegistration registration;
    bool hasInstalled = false, hasId = false, hasSecret = false;
    const bool ok =
        reader.root(object) &&
        reader.fields(object,
                      [&](std::string_view key, od::value v) {
                          if (key != "installed") {
                              return true;
                          }
                          hasInstalled = true;
                          return reader.objectFields(v, [&](std::string_view k, od::value inner) {
                              if (k == "client_id") {
                                  hasId = true;
                                  return reader.text(inner, registration.clientId);
                              }
                              if (k == "client_secret") {
                                  hasSecret = true;
                                  return reader.text(inner, registration.clientSecret);
                              }
                              return true;
                          });
                      }) &&
        reader.finish();
    if (!ok || !hasInstalled || !hasId || !hasSecret || registration.clientId.empty()) {
        return Result<GoogleClientRegistration>::failure("not a Google desktop registration");
    }
    return registration;
}

Result<GoogleToken> GoogleToken::decode(std::string_view json) {
    ReplyReader reader(json);
    od::object object;
    GoogleToken token;
    bool hasAccess = false, hasExpiry = false;
    const bool ok =
        reader.root(object) &&
        reader.fields(object,
                      [&](std::string_view key, od::value v) {
                          if (key == "access_token") {
                              hasAccess = true;
                              return reader.text(v, token.accessToken);
                          }
                          if (key == "refresh_token") {
                              return reader.optionalText(v, token.refreshToken);
                          }
                          if (key == "expires_in") {
                              hasExpiry = true;
                              return !v.get_double().get(token.expiresIn) || reader.fail();
                          }
                          return true;
                      }) &&
        reader.finish();
    if (!ok || !hasAccess || !hasExpiry || !std::isfinite(token.expiresIn)) {
        reader.fail();
        return Result<GoogleToken>::failure(std::string(reader.error()));
    }
    return token;
}

Result<GoogleProfile> GoogleProfile::decode(std::string_view json) {
    ReplyReader reader(json);
    od::object object;
    GoogleProfile profile;
    bool hasId = false, hasEmail = false;
    const bool ok = reader.root(object) &&
                    reader.fields(object,
                                  [&](std::string_view key, od::value v) {
                                      if (key == "id") {
                                          hasId = true;
                                          return reader.text(v, profile.id);
                                      }
                                      if (key == "email") {
                                          hasEmail = true;
                                          return reader.text(v, profile.email);
                                      }
                                      return true;
                                  }) &&
                    reader.finish();
    if (!ok || !hasId || !hasEmail) {
        reader.fail();
        return Result<GoogleProfile>::failure(std::string(reader.error()));
    }
    return profile;
}

template <typename Item>
Result<GooglePage<Item>> GooglePage<Item>::decode(std::string_view json) {
    ReplyReader reader(json);
    od::object object;
    GooglePage page;
    const bool ok = reader.root(object) &&
                    reader.fields(object,
                                  [&](std::string_view key, od::value v) {
                                      if (key == "nextPageToken") {
                                          return reader.optionalText(v, page.nextPageToken);
                                      }
                                      if (key == "items") {
                                          if (ReplyReader::isNull(v)) {
                                              return true;
                                          }
                                          od::array array;
                                          if (v.get_array().get(array)) {
                                              return reader.fail();
                                          }
                                          for (auto element : array) {
                                              od::value value;
                                              if (element.get(value)) {
                                                  return reader.fail();
                                              }
                                              Item item;
                                              if (!reader.item(value, item)) {
                                                  return false;
                                              }
                                              page.items.push_back(std::move(item));
                                          }
                                      }
                                      return true;
                                  }) &&
                    reader.finish();
    if (!ok) {
        return Result<GooglePage>::failure(std::string(reader.error()));
    }
    return page;
}

template struct GooglePage<GoogleCalendarChoice>;
template struct GooglePage<GoogleEventPayload>;

} // namespace daywyn
