#include "base/Instant.h"

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>

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

namespace {

// Words are read from text with the first character in the lowest byte.
static_assert(std::endian::native == std::endian::little);

// Eight (or four) characters as one little-endian word, the first in the lowest byte.
template <typename Word, std::size_t N>
constexpr Word packed(const char (&text)[N]) {
    static_assert(N - 1 == sizeof(Word));
    Word word = 0;
    for (std::size_t i = N - 1; i-- > 0;) {
        word = static_cast<Word>((word << 8) | static_cast<unsigned char>(text[i]));
    }
    return word;
}

// The bytes of `x` that stand for digits (as their values, the template's '0' taken
// away) are at most 9, and those that stand for separators are zero.
template <typename Word>
constexpr bool digitsAndSeparators(Word x, Word separators) {
    constexpr Word lows = static_cast<Word>(~Word{0} / 0xFF * 0x7F);
    constexpr Word highs = static_cast<Word>(~Word{0} / 0xFF * 0x80);
    constexpr Word limit = static_cast<Word>(~Word{0} / 0xFF * (0x80 - 10));
    return ((((x & lows) + limit) | x) & highs) == 0 && (x & separators) == 0;
}

template <typename Word>
constexpr unsigned digitAt(Word x, unsigned at) {
    return static_cast<unsigned>(x >> (8 * at)) & 0xFF;
}

} // namespace

// "YYYY-MM-DDTHH:MM:SSZ" read as three words, every character checked at once: a state
// file holds several dates for each task.
std::optional<Instant> parseIsoText(std::string_view s) {
    if (s.size() != kIsoTextLength) {
        return std::nullopt;
    }
    std::uint64_t head = 0;
    std::uint64_t middle = 0;
    std::uint32_t tail = 0;
    std::memcpy(&head, s.data(), sizeof head);
    std::memcpy(&middle, s.data() + 8, sizeof middle);
    std::memcpy(&tail, s.data() + 16, sizeof tail);
    head ^= packed<std::uint64_t>("0000-00-");
    middle ^= packed<std::uint64_t>("00T00:00");
    tail ^= packed<std::uint32_t>(":00Z");
    if (!digitsAndSeparators(head, packed<std::uint64_t>("\0\0\0\0\xFF\0\0\xFF")) ||
        !digitsAndSeparators(middle, packed<std::uint64_t>("\0\0\xFF\0\0\xFF\0\0")) ||
        !digitsAndSeparators(tail, packed<std::uint32_t>("\xFF\0\0\xFF"))) {
        return std::nullopt;
    }
    const unsigned year =
        digitAt(head, 0) * 1000 + digitAt(head, 1) * 100 + digitAt(head, 2) * 10 + digitAt(head, 3);
    const unsigned month = digitAt(head, 5) * 10 + digitAt(head, 6);
    const unsigned day = digitAt(middle, 0) * 10 + digitAt(middle, 1);
    const unsigned hour = digitAt(middle, 3) * 10 + digitAt(middle, 4);
    const unsigned minute = digitAt(middle, 6) * 10 + digitAt(middle, 7);
    const unsigned second = digitAt(tail, 1) * 10 + digitAt(tail, 2);
    if (month < 1 || month > 12 || day < 1 || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{static_cast<int>(year)},
                                           std::chrono::month{month}, std::chrono::day{day}};
    // Every month has 28 days; only later days need the calendar's word.
    if (day > 28 && !date.ok()) {
        return std::nullopt;
    }
    // The dates of one file fall in a few months, so the first day of the last month met
    // is kept: the conversion to days divides, and that was most of the cost of a date.
    struct MonthStart {
        unsigned month = 0; // year * 16 + month, never 0 for a valid month
        long long days = 0;
    };
    thread_local MonthStart last;
    if (const unsigned key = year * 16 + month; key != last.month) {
        last.month = key;
        last.days =
            std::chrono::sys_days{date.year() / date.month() / 1}.time_since_epoch().count();
    }
    const long long days = last.days + day - 1;
    return Instant{static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second)};
}

} // namespace daywyn
