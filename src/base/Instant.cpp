#include "base/Instant.h"

#include <cmath>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace daywyn {

// Plain integer arithmetic instead of a formatter object: a state file holds tens
// of thousands of dates and a formatter per date would dominate every save.

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
    if (s.size() != kIsoTextLength || s[16] != ':' || s[19] != 'Z') {
        return std::nullopt;
    }
    unsigned year;
    unsigned month;
    unsigned day;
    unsigned hour;
    unsigned minute;
#if defined(__SSE2__)
    // A state file holds tens of thousands of dates: the first sixteen characters
    // ("YYYY-MM-DDTHH:MM") are checked and read in one step.
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.data()));
    const __m128i digits = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    const __m128i isDigit = _mm_cmpeq_epi8(_mm_min_epu8(digits, _mm_set1_epi8(9)), digits);
    const __m128i separators =
        _mm_setr_epi8(0, 0, 0, 0, '-', 0, 0, '-', 0, 0, 'T', 0, 0, ':', 0, 0);
    const __m128i isSeparator = _mm_cmpeq_epi8(text, separators);
    constexpr int kSeparatorBits = (1 << 4) | (1 << 7) | (1 << 10) | (1 << 13);
    constexpr int kDigitBits = 0xFFFF & ~kSeparatorBits;
    if ((_mm_movemask_epi8(isDigit) & kDigitBits) != kDigitBits ||
        (_mm_movemask_epi8(isSeparator) & kSeparatorBits) != kSeparatorBits) {
        return std::nullopt;
    }
    // Two-digit numbers from adjacent digits, per 16-bit lane: first * 10 + second.
    auto pairs = [](__m128i d) {
        return _mm_add_epi16(
            _mm_mullo_epi16(_mm_and_si128(d, _mm_set1_epi16(0x00FF)), _mm_set1_epi16(10)),
            _mm_srli_epi16(d, 8));
    };
    const __m128i even = pairs(digits);                   // pairs at 0, 2, 8, 14
    const __m128i odd = pairs(_mm_srli_si128(digits, 1)); // pairs at 5, 11
    year = static_cast<unsigned>(_mm_extract_epi16(even, 0)) * 100 +
           static_cast<unsigned>(_mm_extract_epi16(even, 1));
    month = static_cast<unsigned>(_mm_extract_epi16(odd, 2));
    day = static_cast<unsigned>(_mm_extract_epi16(even, 4));
    hour = static_cast<unsigned>(_mm_extract_epi16(odd, 5));
    minute = static_cast<unsigned>(_mm_extract_epi16(even, 7));
#else
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
#endif
    const unsigned tens = static_cast<unsigned char>(s[17]) - unsigned{'0'};
    const unsigned units = static_cast<unsigned char>(s[18]) - unsigned{'0'};
    const unsigned second = tens * 10 + units;
    if (tens > 9 || units > 9 || month < 1 || month > 12 || day < 1 || hour > 23 || minute > 59 ||
        second > 59 || day > daysInMonth(year, month)) {
        return std::nullopt;
    }
    const long long days = daysFromCivil(year, month, day);
    return Instant{static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second)};
}

} // namespace daywyn
