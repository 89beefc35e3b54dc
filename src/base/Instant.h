#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace daywyn {

// An absolute point in time: seconds since 1970-01-01T00:00:00Z, double precision.
struct Instant {
    double seconds = 0.0;

    static constexpr Instant fromSeconds(double s) { return Instant{s}; }

    constexpr auto operator<=>(const Instant&) const = default;

    constexpr Instant operator+(double s) const { return Instant{seconds + s}; }
    constexpr Instant operator-(double s) const { return Instant{seconds - s}; }
    constexpr double operator-(Instant other) const { return seconds - other.seconds; }
    constexpr Instant& operator+=(double s) {
        seconds += s;
        return *this;
    }
};

// Length of an ISO 8601 internet date-time with whole seconds: "2026-03-04T08:15:00Z".
inline constexpr std::size_t kIsoTextLength = 20;

// Writes the instant as ISO 8601 in UTC with whole seconds (the fraction is dropped,
// rounding towards the past). Years outside 0000-9999 are clamped to that range.
void writeIsoText(Instant at, char* out);
std::string isoText(Instant at);

// Reads exactly "YYYY-MM-DDTHH:MM:SSZ": no fraction, no offset, upper-case T and Z,
// a real calendar date. Anything else is absent.
std::optional<Instant> parseIsoText(std::string_view text);

// Days since 1970-01-01 of a proleptic Gregorian date, and back.
inline long long daysFromCivil(long long year, unsigned month, unsigned day) {
    year -= month <= 2 ? 1 : 0;
    // Unsigned for the usual years, where dividing by 400 compiles to a multiplication.
    const long long era = year >= 0
                              ? static_cast<long long>(static_cast<unsigned long long>(year) / 400)
                              : (year - 399) / 400;
    const auto yoe = static_cast<unsigned>(year - era * 400);
    const unsigned doy = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}
void civilFromDays(long long days, long long& year, unsigned& month, unsigned& day);

} // namespace daywyn
