#include "base/Instant.h"

#include <cmath>

namespace daywyn {

// Plain integer arithmetic instead of a formatter object: a state file holds tens
// of thousands of dates and a formatter per date would dominate every save.

long long daysFromCivil(long long year, unsigned month, unsigned day) {
    year -= month <= 2 ? 1 : 0;
    const long long era = (year >= 0 ? year : year - 399) / 400;
    const auto yoe = static_cast<unsigned>(year - era * 400);
    const unsigned doy = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

void civilFromDays(long long days, long long& year, unsigned& month, unsigned& day) {
    days += 719468;
    const long long era = (days >= 0 ? days : days - 146096) / 146097;
    const auto doe = static_cast<unsigned>(days - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    day = doy - (153 * mp + 2) / 5 + 1;
    month = mp < 10 ? mp + 3 : mp - 9;
    year = static_cast<long long>(yoe) + era * 400 + (month <= 2 ? 1 : 0);
}

namespace {

constexpr long long kMinSeconds = -62167219200LL; // 0000-01-01T00:00:00Z
constexpr long long kMaxSeconds = 253402300799LL; // 9999-12-31T23:59:59Z

inline void put2(char* out, unsigned v) {
    out[0] = static_cast<char>('0' + v / 10);
    out[1] = static_cast<char>('0' + v % 10);
}

inline int digit(char c) {
    return (c >= '0' && c <= '9') ? c - '0' : -1;
}

inline int number(std::string_view s, std::size_t pos, std::size_t len) {
    int v = 0;
    for (std::size_t i = 0; i < len; ++i) {
        const int d = digit(s[pos + i]);
        if (d < 0) {
            return -1;
        }
        v = v * 10 + d;
    }
    return v;
}

bool isLeap(long long y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

unsigned daysInMonth(long long y, unsigned m) {
    static constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && isLeap(y) ? 29 : kDays[m - 1];
}

} // namespace

void writeIsoText(Instant at, char* out) {
    double s = std::floor(at.seconds);
    long long whole = 0;
    if (std::isnan(s) || s < static_cast<double>(kMinSeconds)) {
        whole = kMinSeconds;
    } else if (s > static_cast<double>(kMaxSeconds)) {
        whole = kMaxSeconds;
    } else {
        whole = static_cast<long long>(s);
    }
    long long days = whole / 86400;
    long long rem = whole % 86400;
    if (rem < 0) {
        rem += 86400;
        days -= 1;
    }
    long long year = 0;
    unsigned month = 0;
    unsigned day = 0;
    civilFromDays(days, year, month, day);
    const auto y = static_cast<unsigned>(year);
    put2(out, y / 100);
    put2(out + 2, y % 100);
    out[4] = '-';
    put2(out + 5, month);
    out[7] = '-';
    put2(out + 8, day);
    out[10] = 'T';
    put2(out + 11, static_cast<unsigned>(rem / 3600));
    out[13] = ':';
    put2(out + 14, static_cast<unsigned>(rem / 60 % 60));
    out[16] = ':';
    put2(out + 17, static_cast<unsigned>(rem % 60));
    out[19] = 'Z';
}

std::string isoText(Instant at) {
    std::string s(kIsoTextLength, '\0');
    writeIsoText(at, s.data());
    return s;
}

std::optional<Instant> parseIsoText(std::string_view s) {
    if (s.size() != kIsoTextLength || s[4] != '-' || s[7] != '-' || s[10] != 'T' || s[13] != ':' ||
        s[16] != ':' || s[19] != 'Z') {
        return std::nullopt;
    }
    const int year = number(s, 0, 4);
    const int month = number(s, 5, 2);
    const int day = number(s, 8, 2);
    const int hour = number(s, 11, 2);
    const int minute = number(s, 14, 2);
    const int second = number(s, 17, 2);
    if (year < 0 || month < 1 || month > 12 || day < 1 || hour < 0 || hour > 23 || minute < 0 ||
        minute > 59 || second < 0 || second > 59) {
        return std::nullopt;
    }
    if (static_cast<unsigned>(day) > daysInMonth(year, static_cast<unsigned>(month))) {
        return std::nullopt;
    }
    const long long days =
        daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
    return Instant{static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second)};
}

} // namespace daywyn
