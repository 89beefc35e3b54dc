#include "base/Instant.h"

#include <gtest/gtest.h>

#include "base/DoubleText.h"

namespace daywyn {
namespace {

TEST(IsoText, WritesWholeSecondsInUtc) {
    const struct {
        double seconds;
        const char* text;
    } cases[] = {
        {0.0, "1970-01-01T00:00:00Z"},
        {1772612100.0, "2026-03-04T08:15:00Z"},
        {1772612100.999, "2026-03-04T08:15:00Z"}, // fraction dropped, never rounded up
        {-0.5, "1969-12-31T23:59:59Z"},           // towards the past before 1970 too
        {951782400.0, "2000-02-29T00:00:00Z"},
        {253402300799.0, "9999-12-31T23:59:59Z"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(isoText(Instant{c.seconds}), c.text);
    }
}

TEST(IsoText, ReadsOnlyTheExactInternetForm) {
    EXPECT_EQ(parseIsoText("2026-03-04T08:15:00Z"), Instant{1772612100.0});
    EXPECT_EQ(parseIsoText("2024-02-29T23:59:59Z"), Instant{1709251199.0});
    const char* rejected[] = {
        "2026-03-04T08:15:00.5Z",   "2026-03-04T08:15:00+01:00",
        "2026-03-04t08:15:00Z",     "2026-03-04T08:15:00z",
        "2026-03-04 08:15:00Z",     "2026-3-04T08:15:00Z",
        "2026-02-29T00:00:00Z",     "2026-13-01T00:00:00Z",
        "2026-04-31T00:00:00Z",     "2026-03-04T24:00:00Z",
        "2026-03-04T08:60:00Z",     "2026-03-04T08:15:60Z",
        "2026-03-04T08:15:00",      "",
        "２０２６-03-04T08:15:00Z",
    };
    for (const char* text : rejected) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(parseIsoText(text).has_value());
    }
}

TEST(IsoText, EveryDayOfFourCenturiesRoundTrips) {
    // Walks day by day from 1900 to 2300, so every leap-year rule is crossed.
    const long long first = daysFromCivil(1900, 1, 1);
    const long long last = daysFromCivil(2300, 1, 1);
    for (long long day = first; day < last; ++day) {
        const Instant at{static_cast<double>(day * 86400 + 45296)};
        const auto back = parseIsoText(isoText(at));
        ASSERT_TRUE(back.has_value()) << isoText(at);
        ASSERT_EQ(*back, at);
    }
}

TEST(ShortestDoubleText, AlwaysShowsAFractionAndReadsBackExactly) {
    EXPECT_EQ(shortestDoubleText(784111800.0), "784111800.0");
    EXPECT_EQ(shortestDoubleText(1500.0), "1500.0");
    EXPECT_EQ(shortestDoubleText(0.1), "0.1");
    EXPECT_EQ(shortestDoubleText(-2.5), "-2.5");
    EXPECT_EQ(shortestDoubleText(1772612100.25), "1772612100.25");
    for (double v : {0.1 + 0.2, 1e-7, 123456789.123456789, 1e22}) {
        EXPECT_EQ(std::stod(shortestDoubleText(v)), v);
    }
}

} // namespace
} // namespace daywyn
