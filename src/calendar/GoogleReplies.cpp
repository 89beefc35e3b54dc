#include "calendar/GoogleReplies.h"

#include <cmath>

#include "base/JsonFields.h"

namespace daywyn {

namespace {

constexpr std::string_view kNotJson = "Google sent an answer that is not valid JSON.";
constexpr std::string_view kUnexpected = "Google sent an answer Daywyn could not read.";

// A desktop registration file holds its client under "installed".
struct InstalledRegistration {
    GoogleClientRegistration installed;
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

template <>
struct JsonRecord<GoogleClientRegistration> {
    static constexpr std::string_view noun = "client registration";
    static constexpr auto fields = std::tuple(
        jsonField("client_id", &GoogleClientRegistration::clientId, FieldRule::required),
        jsonField("client_secret", &GoogleClientRegistration::clientSecret, FieldRule::required));
};

template <>
struct JsonRecord<InstalledRegistration> {
    static constexpr std::string_view noun = "registration file";
    static constexpr auto fields =
        std::tuple(jsonField("installed", &InstalledRegistration::installed, FieldRule::required));
};

template <>
struct JsonRecord<GoogleToken> {
    static constexpr std::string_view noun = "token";
    static constexpr auto fields =
        std::tuple(jsonField("access_token", &GoogleToken::accessToken, FieldRule::required),
                   jsonField("expires_in", &GoogleToken::expiresIn, FieldRule::required),
                   jsonField("refresh_token", &GoogleToken::refreshToken, FieldRule::optional));
};

template <>
struct JsonRecord<GoogleProfile> {
    static constexpr std::string_view noun = "profile";
    static constexpr auto fields =
        std::tuple(jsonField("email", &GoogleProfile::email, FieldRule::required),
                   jsonField("id", &GoogleProfile::id, FieldRule::required));
};

template <>
struct JsonRecord<GoogleCalendarChoice> {
    static constexpr std::string_view noun = "calendar";
    static constexpr auto fields = std::tuple(
        jsonField("backgroundColor", &GoogleCalendarChoice::backgroundColor, FieldRule::optional),
        jsonField("id", &GoogleCalendarChoice::id, FieldRule::required),
        jsonField("summary", &GoogleCalendarChoice::summary, FieldRule::optional));
};

template <>
struct JsonRecord<GoogleMoment> {
    static constexpr std::string_view noun = "event time";
    static constexpr auto fields =
        std::tuple(jsonField("date", &GoogleMoment::date, FieldRule::optional),
                   jsonField("dateTime", &GoogleMoment::dateTime, FieldRule::optional));
};

template <>
struct JsonRecord<GoogleEventPayload> {
    static constexpr std::string_view noun = "event";
    static constexpr auto fields =
        std::tuple(jsonField("end", &GoogleEventPayload::end, FieldRule::optional),
                   jsonField("htmlLink", &GoogleEventPayload::htmlLink, FieldRule::optional),
                   jsonField("id", &GoogleEventPayload::id, FieldRule::required),
                   jsonField("start", &GoogleEventPayload::start, FieldRule::optional),
                   jsonField("status", &GoogleEventPayload::status, FieldRule::optional),
                   jsonField("summary", &GoogleEventPayload::summary, FieldRule::optional));
};

template <typename Item>
struct JsonRecord<GooglePage<Item>> {
    static constexpr std::string_view noun = "page";
    static constexpr auto fields = std::tuple(
        jsonField("items", &GooglePage<Item>::items, FieldRule::lenient),
        jsonField("nextPageToken", &GooglePage<Item>::nextPageToken, FieldRule::optional));
};

namespace {

// Reads one whole reply. Any problem makes all of it unreadable, so a half-read page
// never passes for a whole one; the user is told only whether it was JSON at all.
template <typename Reply>
Result<Reply> decodeReply(std::string_view json) {
    JsonInput input(json);
    JsonDecoder d;
    simdjson::ondemand::document document;
    JsonValue value;
    Reply reply{};
    if (!input.iterate(d, document) || !d.checkSyntax(document.get_value().get(value))) {
        return Result<Reply>::failure(std::string(kNotJson));
    }
    if (!decodeFields(d, value, reply) || !jsonAtEnd(document)) {
        return Result<Reply>::failure(std::string(d.hasSyntaxError() ? kNotJson : kUnexpected));
    }
    return reply;
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
    auto file = decodeReply<InstalledRegistration>(json);
    if (!file.ok() || file->installed.clientId.empty()) {
        return Result<GoogleClientRegistration>::failure("not a Google desktop registration");
    }
    return std::move(file->installed);
}

Result<GoogleToken> GoogleToken::decode(std::string_view json) {
    auto token = decodeReply<GoogleToken>(json);
    if (token.ok() && !std::isfinite(token->expiresIn)) {
        return Result<GoogleToken>::failure(std::string(kUnexpected));
    }
    return token;
}

Result<GoogleProfile> GoogleProfile::decode(std::string_view json) {
    return decodeReply<GoogleProfile>(json);
}

template <typename Item>
Result<GooglePage<Item>> GooglePage<Item>::decode(std::string_view json) {
    return decodeReply<GooglePage<Item>>(json);
}

template struct GooglePage<GoogleCalendarChoice>;
template struct GooglePage<GoogleEventPayload>;

} // namespace daywyn
