#include "base/JsonReader.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/Instant.h"

namespace daywyn {
namespace {

using namespace std::string_literals;

// What a caller that only validates does: one value, then nothing but whitespace.
bool wellFormed(std::string_view text) {
    JsonReader reader(text);
    return reader.skipValue() && reader.atEnd();
}

TEST(JsonReaderTest, AcceptsWellFormedDocuments) {
    const std::string accepted[] = {
        // Numbers, literals, containers and whitespace; escapes of every kind; raw 2-, 3-
        // and 4-byte UTF-8 up to U+10FFFF; DEL, which need not be escaped.
        "0",
        "-0",
        "1.5e+3",
        "-12.25E-2",
        "true",
        "null",
        R"("")",
        " \t\r\n[ ] \r\n ",
        "{}",
        R"({"a":{"b":[1,[2,[3,{}]],"c"]},"d":false})",
        "[1,-2,3.5,\"x\",null,true,false,{},[]]",
        "{ \"a\" : 1 , \"b\" : [ 2 , 3 ] }",
        R"("\"\\\/\b\f\n\r\t\u00e9\uD83D\uDE00\u0000")",
        R"("\uDBFF\uDFFF")",
        "\"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\"",
        "\"\xEF\xBF\xBF\xF4\x8F\xBF\xBF\"",
        "\"\x7F\"",
        R"("a string longer than a few sixteen-byte steps, \n with \"escapes\" late in it")"};
    for (const auto& text : accepted) {
        SCOPED_TRACE(text);
        JsonReader reader(text);
        EXPECT_TRUE(reader.skipValue());
        EXPECT_TRUE(reader.atEnd());
        EXPECT_FALSE(reader.hasSyntaxError()) << reader.syntaxError();
    }
}

TEST(JsonReaderTest, RefusesMalformedDocuments) {
    const std::string refused[] = {
        // Structure: empty text, trailing commas, missing colons, garbage after the root,
        // unterminated strings, objects and arrays, mismatched brackets.
        "", "   ", "[1,]", R"({"a":1,})", "[,1]", "{,}", "[1 2]", R"({"a" 1})", R"({"a":})",
        R"({a:1})", R"({'a':1})", "[1] x", "{} {}", "\"open", "[1, 2", R"({"a": 1)", R"({"a")",
        "[\"a\"", "]", "}", "[}", "{]", R"({"a":1]})",
        // Numbers and literals: leading zeros, missing digits, what JavaScript allows.
        "01", "-01", "-", "1.", ".5", "+1", "1e", "1e+", "0x10", "NaN", "Infinity", "nul", "True",
        // Escapes: short or bad \u, unknown letters, lone or misordered surrogates.
        "\"\\u12\"", "\"\\u12G4\"", "\"\\x41\"", "\"\\'\"", "\"\\U0041\"", "\"\\", "\"\\uD800\"",
        "\"\\uD800x\"", "\"\\uD800\\u0041\"", "\"\\uD800\\uD800\"", "\"\\uDC00\"",
        "\"\\uDE00\\uD83D\"",
        // Unescaped control characters, and NUL inside, between and after values.
        "\"a\tb\"", "\"a\nb\"", "\"\x1F\"", "\"a\0b\""s, "[1,\0 2]"s, "1\0"s,
        // UTF-8: overlong forms, surrogates, beyond U+10FFFF, stray and truncated bytes.
        "\"\xC0\xAF\"", "\"\xC1\xBF\"", "\"\xE0\x80\xAF\"", "\"\xE0\x9F\xBF\"",
        "\"\xF0\x80\x80\xAF\"", "\"\xF0\x8F\xBF\xBF\"", "\"\xED\xA0\x80\"", "\"\xED\xBF\xBF\"",
        "\"\xF4\x90\x80\x80\"", "\"\xF5\x80\x80\x80\"", "\"\xFF\"", "\"\x80\"", "\"\xC3\"",
        "\"\xE2\x82\"", "\"\xF0\x9F\x98\"", "\"\xE2\x82", "\"\xC3x\"",
        // Bytes beyond ASCII outside strings; whitespace JSON does not know.
        "\xC3\xA9", "[\xC2\xA0 1]", "1 \xEF\xBB\xBF", "[1,\f2]", "\v1"};
    for (const auto& text : refused) {
        SCOPED_TRACE(testing::PrintToString(text));
        JsonReader reader(text);
        EXPECT_FALSE(reader.skipValue() && reader.atEnd());
        EXPECT_TRUE(reader.hasSyntaxError());
        EXPECT_EQ(reader.syntaxError().rfind("Invalid JSON at byte ", 0), 0u)
            << reader.syntaxError();
    }
}

TEST(JsonReaderTest, SyntaxErrorNamesTheByteAndSticks) {
    JsonReader reader(R"([1, 2, x, "2026-03-04T08:15:00Z", 3])");
    EXPECT_FALSE(reader.skipValue() && reader.atEnd());
    EXPECT_EQ(reader.syntaxError().rfind("Invalid JSON at byte 7: ", 0), 0u)
        << reader.syntaxError();
    // Past the bad byte there is a well-formed date and number, but every read fails.
    reader.rewind(10);
    EXPECT_FALSE(reader.readStringView());
    reader.rewind(34);
    EXPECT_FALSE(reader.readInt64());
    EXPECT_FALSE(reader.readDouble());
    EXPECT_FALSE(reader.skipValue());
    EXPECT_EQ(reader.syntaxError().rfind("Invalid JSON at byte 7: ", 0), 0u);
}

TEST(JsonReaderTest, FixedLengthReadFailsAfterASyntaxError) {
    JsonReader reader(R"(x "2026-03-04T08:15:00Z")");
    EXPECT_FALSE(reader.skipValue());
    reader.rewind(2);
    EXPECT_EQ(reader.readStringAs(kIsoTextLength, parseIsoText), std::nullopt);
}

std::string unescaped(std::string_view json) {
    JsonReader reader(json);
    auto text = reader.readString();
    EXPECT_TRUE(text.has_value()) << json << " " << reader.syntaxError();
    EXPECT_TRUE(reader.atEnd());
    return text.value_or("<refused>");
}

TEST(JsonReaderTest, UnescapesStrings) {
    const struct {
        std::string json;
        std::string text;
    } cases[] = {
        {R"("plain")", "plain"},
        {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
        {R"("caf\u00e9")", "caf\xC3\xA9"},
        {R"("\u00E9\u20AC")", "\xC3\xA9\xE2\x82\xAC"},
        {R"("\uD83D\uDE00!")", "\xF0\x9F\x98\x80!"},
        {R"("a\u0000b")", "a\0b"s},
        {"\"\xE2\x9C\x8E \\\"x\\\" \xF0\x9F\x98\x80\"", "\xE2\x9C\x8E \"x\" \xF0\x9F\x98\x80"},
        {"\"caf\xC3\xA9\"", "caf\xC3\xA9"},
        // Escapes far into a long string, past the sixteen-byte steps.
        {"\"" + std::string(37, 'x') + "\\t" + std::string(20, 'y') + "\\u0041\"",
         std::string(37, 'x') + "\t" + std::string(20, 'y') + "A"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(unescaped(c.json), c.text) << c.json;
    }
}

TEST(JsonReaderTest, StringViewsOfSeveralReadsInARow) {
    JsonReader reader(R"(["a\nb", "plain", "\u0041\u0042"])");
    ASSERT_TRUE(reader.beginArray());
    std::string seen;
    while (reader.nextElement()) {
        const auto text = reader.readStringView();
        ASSERT_TRUE(text);
        seen += std::string(*text) + "|";
    }
    EXPECT_EQ(seen, "a\nb|plain|AB|");
    EXPECT_TRUE(reader.atEnd());
}

TEST(JsonReaderTest, ReadsIntegers) {
    constexpr auto kMin = std::numeric_limits<std::int64_t>::min();
    constexpr auto kMax = std::numeric_limits<std::int64_t>::max();
    const struct {
        std::string_view json;
        std::int64_t value;
    } cases[] = {
        {"0", 0},
        {"-0", 0},
        {"7", 7},
        {"-42", -42},
        {"123456789012345678", 123456789012345678}, // 18 digits
        {"-123456789012345678", -123456789012345678},
        {"999999999999999999", 999999999999999999},
        {"1234567890123456789", 1234567890123456789}, // 19 digits
        {"-1234567890123456789", -1234567890123456789},
        {"9223372036854775807", kMax},
        {"-9223372036854775808", kMin},
    };
    for (const auto& c : cases) {
        JsonReader reader(c.json);
        EXPECT_EQ(reader.readInt64(), std::optional<std::int64_t>(c.value)) << c.json;
        EXPECT_TRUE(reader.atEnd()) << c.json;
    }
    // Inside containers the integer stops at its delimiter.
    JsonReader list("[12345678901234567,-3]");
    ASSERT_TRUE(list.beginArray() && list.nextElement());
    EXPECT_EQ(list.readInt64(), 12345678901234567);
    ASSERT_TRUE(list.nextElement());
    EXPECT_EQ(list.readInt64(), -3);
    EXPECT_FALSE(list.nextElement());
    EXPECT_TRUE(list.atEnd());
}

TEST(JsonReaderTest, NonIntegersAreLeftForReadDouble) {
    const struct {
        std::string_view json;
        double value;
    } cases[] = {
        {"2.5", 2.5},
        {"1e2", 100.0},
        {"1.0", 1.0},
        {"-0.5", -0.5},
        {"1E+2", 100.0},
        {"9223372036854775808", 9223372036854775808.0},   // INT64_MAX + 1
        {"-9223372036854775809", -9223372036854775809.0}, // INT64_MIN - 1
        {"12345678901234567890", 12345678901234567890.0}, // 20 digits
        {"123456789012345678901234", 1.23456789012345678901234e23},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.json);
        JsonReader reader(c.json);
        EXPECT_EQ(reader.readInt64(), std::nullopt);
        EXPECT_FALSE(reader.hasSyntaxError());
        EXPECT_EQ(reader.offset(), 0u);
        EXPECT_EQ(reader.readDouble(), c.value);
        EXPECT_TRUE(reader.atEnd());
    }
    // Neither number read touches a value of another type.
    JsonReader text(R"( "12")");
    EXPECT_EQ(text.readInt64(), std::nullopt);
    EXPECT_EQ(text.readDouble(), std::nullopt);
    EXPECT_FALSE(text.hasSyntaxError());
    EXPECT_EQ(text.readString(), "12");
}

TEST(JsonReaderTest, ReadsDoublesExactly) {
    const struct {
        std::string_view json;
        double value;
    } cases[] = {
        {"0.1", 0.1},
        {"0.30000000000000004", 0.30000000000000004},
        {"2.2250738585072014e-308", 2.2250738585072014e-308}, // smallest normal
        {"4.9406564584124654e-324", 4.9406564584124654e-324}, // smallest subnormal
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"9007199254740993", 9007199254740992.0}, // 2^53 + 1 rounds to even
        {"1793000000.5", 1793000000.5},
        {"1e-400", 0.0},
        {"-1e-400", -0.0},
    };
    for (const auto& c : cases) {
        JsonReader reader(c.json);
        const auto value = reader.readDouble();
        ASSERT_TRUE(value) << c.json << " " << reader.syntaxError();
        EXPECT_EQ(*value, c.value) << c.json;
        EXPECT_EQ(std::signbit(*value), std::signbit(c.value)) << c.json;
    }
}

// Valid JSON that no double can hold: a value of another type, left unread.
TEST(JsonReaderTest, ATooLargeNumberHasNoValue) {
    for (std::string_view json : {"1e400", "-1e400"}) {
        JsonReader reader(json);
        EXPECT_EQ(reader.readDouble(), std::nullopt) << json;
        EXPECT_FALSE(reader.hasSyntaxError()) << json;
        EXPECT_TRUE(reader.skipValue() && reader.atEnd()) << json;
    }
}

TEST(JsonReaderTest, UnderflowAndOverflowDoNotDependOnTheExponentSign) {
    const std::string tinyText = "0." + std::string(400, '0') + "1";
    JsonReader tiny(tinyText);
    EXPECT_EQ(tiny.readDouble(), 0.0);
    EXPECT_FALSE(tiny.hasSyntaxError()) << tiny.syntaxError();
    const std::string largeText = "1" + std::string(400, '0') + "e-5";
    JsonReader large(largeText);
    EXPECT_EQ(large.readDouble(), std::nullopt);
}

TEST(JsonReaderTest, SkipsDeepNestingWithoutRecursion) {
    constexpr std::size_t kDepth = 200000;
    const std::string balanced = std::string(kDepth, '[') + std::string(kDepth, ']');
    EXPECT_TRUE(wellFormed(balanced));
    EXPECT_FALSE(wellFormed(std::string(kDepth, '[') + std::string(kDepth - 1, ']')));
    EXPECT_FALSE(wellFormed(balanced + "]"));

    std::string objects;
    for (std::size_t i = 0; i < kDepth / 2; ++i) {
        objects += R"({"a":[)";
    }
    objects += "1";
    for (std::size_t i = 0; i < kDepth / 2; ++i) {
        objects += "]}";
    }
    EXPECT_TRUE(wellFormed(objects));
    objects[objects.find(']')] = '}'; // a '}' closing an array
    EXPECT_FALSE(wellFormed(objects));
}

TEST(JsonReaderTest, SkipValueLeavesTheReaderAtTheNextMember) {
    JsonReader reader(R"({"skip": {"x": [1, {"y": "]}"}], "z": null}, "keep": 5})");
    ASSERT_TRUE(reader.beginObject());
    std::string_view key;
    ASSERT_TRUE(reader.nextKey(key));
    EXPECT_EQ(key, "skip");
    ASSERT_TRUE(reader.skipValue());
    ASSERT_TRUE(reader.nextKey(key));
    EXPECT_EQ(key, "keep");
    EXPECT_EQ(reader.readInt64(), 5);
    EXPECT_FALSE(reader.nextKey(key));
    EXPECT_TRUE(reader.atEnd());
}

enum Member { kId, kTitle, kRank };
constexpr JsonKeys<3> kKeys{{"id", "title", "rank"}};
constexpr std::uint32_t kRequired = (1u << kId) | (1u << kTitle);

struct Record {
    std::string id;
    std::string title;
    std::int64_t rank = 0;
    int reads = 0;
};

JsonObjectRead readRecord(std::string_view json, Record& record) {
    JsonReader reader(json);
    const JsonObjectRead read = readJsonObject(reader, kKeys, [&](int member) {
        ++record.reads;
        switch (member) {
        case kId:
        case kTitle: {
            const auto text = reader.readString();
            (member == kId ? record.id : record.title) = text.value_or("");
            return text.has_value();
        }
        case kRank: {
            const auto rank = reader.readInt64();
            record.rank = rank.value_or(0);
            return rank.has_value();
        }
        }
        return false;
    });
    if (read.ok()) {
        EXPECT_TRUE(reader.atEnd()) << json;
    }
    return read;
}

TEST(JsonReaderTest, ReadsObjectMembersByName) {
    const struct {
        std::string_view json;
        std::string id;
        std::string title;
        std::int64_t rank;
        int reads;
    } cases[] = {
        {R"({"id":"a","rank":3,"title":"T"})", "a", "T", 3, 3},
        {R"({"title":"T","rank":3,"id":"a"})", "a", "T", 3, 3},
        {R"({"rank":3,"id":"a","title":"T"})", "a", "T", 3, 3},
        // The first of a repeated name counts, even when the repeat has another type.
        {R"({"id":"a","id":"b","title":"T","title":7})", "a", "T", 0, 2},
        {R"({"rank":1,"title":"T","rank":"x","id":"a","rank":2})", "a", "T", 1, 3},
        // Unknown names of any shape are skipped, including ones that start like a known one.
        {R"({"i":1,"idx":[{"id":"no"}],"id":"a","titles":{},"title":"T","ranking":9})", "a", "T", 0,
         2},
        // Escaped names are names like any other.
        {R"({"\u0069d":"a","t\u0069tle":"T","\u0072ank":4})", "a", "T", 4, 3},
        {R"({"i\u0064":"a","id":"b","title":"T"})", "a", "T", 0, 2},
        {R"({"id":"a","\u0069\u0064":"b","title":"T"})", "a", "T", 0, 2},
        {R"({"i\"d":"x","id\u0000":"y","id":"a","title":"T"})", "a", "T", 0, 2},
        {"{ \"id\" :\"a\" ,\n\t\"title\"\r\n: \"T\" }", "a", "T", 0, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.json);
        Record record;
        const JsonObjectRead read = readRecord(c.json, record);
        ASSERT_TRUE(read.ok());
        EXPECT_EQ(read.firstMissing(kRequired), -1);
        EXPECT_EQ(record.id, c.id);
        EXPECT_EQ(record.title, c.title);
        EXPECT_EQ(record.rank, c.rank);
        EXPECT_EQ(record.reads, c.reads);
    }
}

TEST(JsonReaderTest, ReportsMissingInvalidAndMalformedMembers) {
    Record record;
    JsonObjectRead read = readRecord(R"({"rank":1,"title":"T"})", record);
    EXPECT_TRUE(read.ok());
    EXPECT_EQ(read.firstMissing(kRequired), kId);
    read = readRecord(R"({"id":"a","rank":1})", record);
    EXPECT_EQ(read.firstMissing(kRequired), kTitle);
    EXPECT_EQ(readRecord("{}", record).firstMissing(kRequired), kId);

    read = readRecord(R"({"id":"a","rank":1.5,"title":"T"})", record);
    EXPECT_EQ(read.outcome, JsonObjectRead::Outcome::invalidMember);
    EXPECT_EQ(read.invalid, kRank);
    EXPECT_EQ(readRecord(R"(["id","a"])", record).outcome, JsonObjectRead::Outcome::notAnObject);

    for (std::string_view bad : {R"({"id":"a",})", R"({"id":"a" "title":"T"})", R"({"id" "a"})",
                                 R"({"x":[1,}], "id":"a"})", R"({"id":"a")", R"({"\uD800":1})"}) {
        EXPECT_EQ(readRecord(bad, record).outcome, JsonObjectRead::Outcome::syntaxError) << bad;
    }
}

TEST(JsonReaderTest, FixedLengthStringsCannotBeMisread) {
    const Instant date = *parseIsoText("2026-03-04T08:15:00Z");
    // Each document is an array; the element at `index` is read as a date.
    const struct {
        std::string_view json;
        int index;
        std::optional<Instant> expected;
    } cases[] = {
        {R"(["2026-03-04T08:15:00Z"])", 0, date},
        {R"(["ab","2026-03-04T08:15:00Z"])", 0, std::nullopt},
        {R"(["ab","2026-03-04T08:15:00Z"])", 1, date},
        // A quote sits where the closing one of a date would be.
        {R"(["2026-03-04T08:15:0","Z"])", 0, std::nullopt},
        {R"(["2026-03-04T08:15:00Z","Z"])", 0, date},
        // Escaped but equal texts are the same date.
        {R"(["2026-03-04T08:15:00\u005A"])", 0, date},
        {R"(["\u0032026-03-04T08:15:00Z"])", 0, date},
        {R"(["2026-03-04T08:15:00\u007a"])", 0, std::nullopt}, // a lower-case z
        // Too long or too short, whatever follows.
        {R"(["2026-03-04T08:15:00Z0"])", 0, std::nullopt},
        {R"(["2026-03-04T08:15:00ZZ","x"])", 0, std::nullopt},
        {R"(["2026-03-04T08:15:00Z\""])", 0, std::nullopt},
        {R"(["2026-03-04T08:15:00"])", 0, std::nullopt},
        {R"([" 2026-03-04T08:15:00Z"])", 0, std::nullopt},
        {R"([2026])", 0, std::nullopt},
        {R"([null])", 0, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.json << " #" << c.index);
        JsonReader reader(c.json);
        ASSERT_TRUE(reader.beginArray());
        for (int i = 0; i < c.index; ++i) {
            ASSERT_TRUE(reader.nextElement() && reader.skipValue());
        }
        ASSERT_TRUE(reader.nextElement());
        const auto read = reader.readStringAs(kIsoTextLength, parseIsoText);
        EXPECT_EQ(read, c.expected);
        EXPECT_FALSE(reader.hasSyntaxError());
        if (read) {
            // The whole string was consumed: the array goes on or ends right after it.
            while (reader.nextElement()) {
                ASSERT_TRUE(reader.skipValue());
            }
            EXPECT_TRUE(reader.atEnd()) << reader.syntaxError();
        }
    }
}

} // namespace
} // namespace daywyn
