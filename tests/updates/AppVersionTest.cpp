#include "updates/AppVersion.h"

#include <gtest/gtest.h>

namespace daywyn {
namespace {

struct Case {
    const char* a;
    const char* b;
    VersionOrder expected;
};

const char* name(VersionOrder order) {
    switch (order) {
    case VersionOrder::less:
        return "less";
    case VersionOrder::equal:
        return "equal";
    case VersionOrder::greater:
        return "greater";
    }
    return "?";
}

void expectAll(const std::initializer_list<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.a) + " vs " + c.b);
        EXPECT_STREQ(name(AppVersion::compare(c.a, c.b)), name(c.expected));
        // The order is antisymmetric: swapping the sides flips the answer.
        const VersionOrder flipped = c.expected == VersionOrder::less      ? VersionOrder::greater
                                     : c.expected == VersionOrder::greater ? VersionOrder::less
                                                                           : VersionOrder::equal;
        EXPECT_STREQ(name(AppVersion::compare(c.b, c.a)), name(flipped));
    }
}

TEST(AppVersion, ComparesNumberPartsNumericallyWithMissingPiecesAsZero) {
    expectAll({
        {"1.10", "1.9", VersionOrder::greater},
        {"1.2", "1.2.0", VersionOrder::equal},
        {"1.2.x", "1.2.0", VersionOrder::equal},
        {"2", "1.99.99", VersionOrder::greater},
        {"1..2", "1.2", VersionOrder::equal},
        {"0.1.0", "0.1.0", VersionOrder::equal},
        {"1.02", "1.2", VersionOrder::equal},
        {"99999999999999999999999", "1", VersionOrder::greater},
    });
}

TEST(AppVersion, AReleaseIsNewerThanItsPreReleases) {
    expectAll({
        {"1.2.0-rc1", "1.2.0", VersionOrder::less},
        {"1.2.0-beta", "1.1.9", VersionOrder::greater},
        {"1.2-", "1.2", VersionOrder::equal},
        // A leading dash vanishes: the number part "beta" reads as 0, no pre-release.
        {"-beta", "0", VersionOrder::equal},
        {"-beta", "0-alpha", VersionOrder::greater},
    });
}

TEST(AppVersion, PreReleaseTextsOrderDigitRunsByValue) {
    expectAll({
        {"1.0-beta.2", "1.0-beta.10", VersionOrder::less},
        {"1.0-rc1", "1.0-rc1", VersionOrder::equal},
        {"1.0-alpha", "1.0-beta", VersionOrder::less},
        {"1.0-beta", "1.0-beta.1", VersionOrder::less},
        {"1.0-rc9", "1.0-rc10", VersionOrder::less},
        // Only the first dash splits: the rest belongs to the pre-release text.
        {"1.0-rc-2", "1.0-rc-10", VersionOrder::less},
    });
}

} // namespace
} // namespace daywyn
