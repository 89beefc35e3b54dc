#include "base/Instant.h"

#include <string>
#include <vector>

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

TEST(IsoText, EachCharacterIsCheckedWhereverItStands) {
    // Every byte value at every position of a valid text: refused unless it is a digit
    // where a digit stands, or the very separator where one stands. (With only ones in
    // the text, a 0 or 1 anywhere still makes a valid date; other digits may not.)
    const std::string valid = "2111-11-11T11:11:11Z";
    const std::string form = "0000-00-00T00:00:00Z";
    for (std::size_t at = 0; at < valid.size(); ++at) {
        for (int c = 0; c < 256; ++c) {
            std::string text = valid;
            text[at] = static_cast<char>(c);
            SCOPED_TRACE(testing::Message() << text << " (byte " << c << ")");
            if (form[at] != '0') {
                ASSERT_EQ(parseIsoText(text).has_value(), c == form[at]);
            } else if (c == '0' || c == '1') {
                ASSERT_TRUE(parseIsoText(text).has_value());
            } else if (c < '0' || c > '9') {
                ASSERT_FALSE(parseIsoText(text).has_value());
            }
        }
    }
}

TEST(IsoText, DatesOfDifferentMonthsInTurnReadAlike) {
    // Dates of one month read one after another, and in turn with other months, years
    // and centuries, give the same instants as each read alone.
    const char* texts[] = {"2026-03-04T08:15:00Z", "2026-03-31T23:59:59Z", "2026-04-01T00:00:00Z",
                           "1926-03-04T08:15:00Z", "2126-03-04T08:15:00Z", "2026-03-01T00:00:00Z",
                           "2024-02-29T12:00:00Z", "2025-02-28T12:00:00Z", "0000-01-01T00:00:00Z",
                           "9999-12-31T23:59:59Z"};
    std::vector<Instant> alone;
    for (const char* text : texts) {
        const long long day =
            daysFromCivil(std::stoi(std::string(text, 4)),
                          static_cast<unsigned>(std::stoi(std::string(text + 5, 2))),
                          static_cast<unsigned>(std::stoi(std::string(text + 8, 2))));
        const int seconds = std::stoi(std::string(text + 11, 2)) * 3600 +
                            std::stoi(std::string(text + 14, 2)) * 60 +
                            std::stoi(std::string(text + 17, 2));
        alone.push_back(Instant{static_cast<double>(day * 86400 + seconds)});
    }
    for (int round = 0; round < 3; ++round) {
        for (std::size_t i = 0; i < std::size(texts); ++i) {
            const std::size_t at = round == 1 ? std::size(texts) - 1 - i : i;
            SCOPED_TRACE(texts[at]);
            EXPECT_EQ(parseIsoText(texts[at]), alone[at]);
        }
    }
    // A day that does not exist in one month is refused right after a valid one of it.
    EXPECT_TRUE(parseIsoText("2023-02-01T00:00:00Z").has_value());
    EXPECT_FALSE(parseIsoText("2023-02-29T00:00:00Z").has_value());
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
