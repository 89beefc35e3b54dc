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

// Days since 1970-01-01 of a proleptic Gregorian date, and back (years -32767 to
// 32767, the range of std::chrono::year).
long long daysFromCivil(long long year, unsigned month, unsigned day);
void civilFromDays(long long days, long long& year, unsigned& month, unsigned& day);

} // namespace daywyn
