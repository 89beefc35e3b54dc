#include "base/Uuid.h"

#include <set>

#include <gtest/gtest.h>

namespace daywyn {
namespace {

TEST(Uuid, RandomIdentifiersAreVersion4AndDistinct) {
    std::set<Uuid> seen;
    for (int i = 0; i < 1000; ++i) {
        const Uuid id = Uuid::random();
        EXPECT_EQ(id.bytes[6] >> 4, 4);
        EXPECT_EQ(id.bytes[8] >> 6, 2);
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 1000u);
}

TEST(Uuid, WritesUpperCaseAndReadsEitherCase) {
    const auto id = Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
    ASSERT_TRUE(id.has_value());
    EXPECT_EQ(id->text(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    EXPECT_EQ(Uuid::parse(id->text()), id);
    const Uuid fresh = Uuid::random();
    EXPECT_EQ(Uuid::parse(fresh.text()), fresh);
}

TEST(Uuid, RejectsAnythingButTheCanonicalForm) {
    const char* rejected[] = {
        "",
        "E621E1F8C36C495A93FC0C247A3E6E5F",
        "{E621E1F8-C36C-495A-93FC-0C247A3E6E5F}",
        "E621E1F8-C36C-495A-93FC-0C247A3E6E5",
        "E621E1F8-C36C-495A-93FC-0C247A3E6E5FF",
        "E621E1F8-C36C-495A-93FC_0C247A3E6E5F",
        "G621E1F8-C36C-495A-93FC-0C247A3E6E5F",
        " E621E1F8-C36C-495A-93FC-0C247A3E6E5",
    };
    for (const char* text : rejected) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(Uuid::parse(text).has_value());
    }
}

} // namespace
} // namespace daywyn
