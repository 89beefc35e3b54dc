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

TEST(Uuid, EachCharacterIsCheckedWhereverItStands) {
    // Every byte value at every position of a valid text: read only when it is a hex
    // digit of either case where a digit stands, or the hyphen where a hyphen stands.
    const std::string valid = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";
    const auto hexValue = [](int c) {
        if (c >= '0' && c <= '9') {
            return c - '0';
        }
        if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f') {
            return (c | 0x20) - 'a' + 10;
        }
        return -1;
    };
    for (std::size_t at = 0; at < valid.size(); ++at) {
        const bool hyphen = at == 8 || at == 13 || at == 18 || at == 23;
        for (int c = 0; c < 256; ++c) {
            std::string text = valid;
            text[at] = static_cast<char>(c);
            const auto id = Uuid::parse(text);
            SCOPED_TRACE(testing::Message() << "position " << at << ", byte " << c);
            ASSERT_EQ(id.has_value(), hyphen ? c == '-' : hexValue(c) >= 0);
            if (id && !hyphen) {
                // The digit lands in its own half of its own byte.
                const std::size_t digit = at - (at > 8) - (at > 13) - (at > 18) - (at > 23);
                const int half =
                    digit % 2 == 0 ? id->bytes[digit / 2] >> 4 : id->bytes[digit / 2] & 0x0F;
                ASSERT_EQ(half, hexValue(c));
            }
        }
    }
}

} // namespace
} // namespace daywyn
