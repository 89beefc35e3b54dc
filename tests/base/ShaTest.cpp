#include "base/Sha.h"

#include <string>

#include <gtest/gtest.h>

namespace daywyn {
namespace {

std::string hex(const auto& digest) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const auto byte : digest) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 0x0f]);
    }
    return text;
}

TEST(Sha, DigestsMatchTheStandardsVectors) {
    EXPECT_EQ(hex(sha1("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hex(sha256("abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hex(sha256("")), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(Sha, AStreamInPiecesEqualsTheWholeAndStartsAfreshAfterEachDigest) {
    const std::string text(100'003, 'q');
    Sha256Stream stream;
    // A download arrives in uneven chunks; the digest must not depend on them.
    for (std::size_t at = 0; at < text.size(); at += 4'093) {
        stream.addData(text.data() + at, std::min<std::size_t>(4'093, text.size() - at));
    }
    EXPECT_EQ(stream.hexDigest(), hex(sha256(text)));
    stream.addData("abc", 3);
    EXPECT_EQ(stream.hexDigest(), hex(sha256("abc")));
    stream.addData("half of a download that failed", 30);
    stream.reset();
    EXPECT_EQ(stream.hexDigest(), hex(sha256("")));
}

} // namespace
} // namespace daywyn
