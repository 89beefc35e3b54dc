#include "base/Instant.h"

#include <chrono>
#include <cmath>

namespace daywyn {

// Plain integer arithmetic instead of a formatter object: a state file holds tens
// of thousands of dates and a formatter per date would dominate every save.

long long daysFromCivil(long long year, unsigned month, unsigned day) {
    const std::chrono::year_month_day date{std::chrono::year{static_cast<int>(year)},
                                           std::chrono::month{month}, std::chrono::day{day}};
    return std::chrono::sys_days{date}.time_since_epoch().count();
}

void civilFromDays(long long days, long long& year, unsigned& month, unsigned& day) {
    const std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{static_cast<int>(days)}}};
    year = static_cast<int>(date.year());
    month = static_cast<unsigned>(date.month());
    day = static_cast<unsigned>(date.day());
}

namespace {

constexpr long long kMinSeconds = -62167219200LL; // 0000-01-01T00:00:00Z
constexpr long long kMaxSeconds = 253402300799LL; // 9999-12-31T23:59:59Z

inline void put2(char* out, unsigned v) {
    out[0] = static_cast<char>('0' + v / 10);
    out[1] = static_cast<char>('0' + v % 10);
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
    if (s.size() != kIsoTextLength || s[16] != ':' || s[19] != 'Z') {
        return std::nullopt;
    }
    unsigned year;
    unsigned month;
    unsigned day;
    unsigned hour;
    unsigned minute;
    if (s[4] != '-' || s[7] != '-' || s[10] != 'T' || s[13] != ':') {
        return std::nullopt;
    }
    unsigned notDigit = 0;
    auto d = [&s, &notDigit](std::size_t i) {
        const unsigned v = static_cast<unsigned char>(s[i]) - unsigned{'0'};
        notDigit |= v > 9 ? 1u : 0u;
        return v;
    };
    year = d(0) * 1000 + d(1) * 100 + d(2) * 10 + d(3);
    month = d(5) * 10 + d(6);
    day = d(8) * 10 + d(9);
    hour = d(11) * 10 + d(12);
    minute = d(14) * 10 + d(15);
    if (notDigit != 0) {
        return std::nullopt;
    }
    const unsigned tens = static_cast<unsigned char>(s[17]) - unsigned{'0'};
    const unsigned units = static_cast<unsigned char>(s[18]) - unsigned{'0'};
    const unsigned second = tens * 10 + units;
    if (tens > 9 || units > 9 || month < 1 || month > 12 || day < 1 || hour > 23 || minute > 59 ||
        second > 59) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{static_cast<int>(year)},
                                           std::chrono::month{month}, std::chrono::day{day}};
    if (!date.ok()) {
        return std::nullopt;
    }
    const long long days = std::chrono::sys_days{date}.time_since_epoch().count();
    return Instant{static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second)};
}

} // namespace daywyn
