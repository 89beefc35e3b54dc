#include "base/JsonFields.h"

#include <gtest/gtest.h>

namespace daywyn {

// A record exercising every rule, declared here so the engine is tested apart from
// the real records.
struct Sample {
    std::string name;
    std::optional<long long> count;
    int level = 3;
    bool enabled = false;
    std::vector<std::string> tags;
    std::optional<Instant> when;
    bool operator==(const Sample&) const = default;
};

template <>
struct JsonRecord<Sample> {
    static constexpr std::string_view noun = "sample";
    static constexpr auto fields =
        std::tuple(jsonField("count", &Sample::count, FieldRule::optional),
                   jsonField("enabled", &Sample::enabled, FieldRule::lenient),
                   jsonField("isOn", &Sample::enabled, FieldRule::older),
                   jsonField("level", &Sample::level, FieldRule::lenient),
                   jsonField("name", &Sample::name, FieldRule::required),
                   jsonField("tags", &Sample::tags, FieldRule::lenient),
                   jsonField("when", &Sample::when, FieldRule::optional));
};

namespace {

Result<Sample> decode(std::string_view json) {
    return decodeJsonRecord<Sample>(json, DateCoding::iso8601);
}

std::string encode(const Sample& sample, DateCoding dates = DateCoding::iso8601) {
    JsonBuffer buffer;
    CompactJsonWriter writer(buffer);
    encodeFields(writer, sample, dates);
    return std::string(buffer.GetString(), buffer.GetSize());
}

TEST(JsonFields, WritesTheTableInOrderAndReadsItBack) {
    Sample sample{"n", 7, 2, true, {"a", "b"}, Instant{1772611200.0}};
    EXPECT_EQ(encode(sample), R"({"count":7,"enabled":true,"level":2,"name":"n","tags":["a","b"],)"
                              R"("when":"2026-03-04T08:00:00Z"})");
    EXPECT_EQ(decode(encode(sample)).value(), sample);
    // No value, nothing written; the older name is never written.
    const Sample bare{"n", std::nullopt, 3, false, {}, std::nullopt};
    EXPECT_EQ(encode(bare), R"({"enabled":false,"level":3,"name":"n","tags":[]})");
    EXPECT_EQ(decode(encode(bare)).value(), bare);
    // Reference-second dates are numbers.
    EXPECT_NE(encode(sample, DateCoding::referenceSeconds).find(R"("when":794304000.0)"),
              std::string::npos);
}

TEST(JsonFields, EachRuleTreatsMissingNullAndWrongValuesItsOwnWay) {
    // Any order, escaped keys, unknown members of any shape.
    const auto shuffled = decode(
        R"({"tags": ["x"], "z": {"deep": [1, {"a": null}]}, "n\u0061me": "m", "count": null})");
    ASSERT_TRUE(shuffled.ok()) << shuffled.error();
    EXPECT_EQ(shuffled->name, "m");
    EXPECT_EQ(shuffled->tags, std::vector<std::string>{"x"});
    EXPECT_EQ(shuffled->count, std::nullopt);
    EXPECT_EQ(shuffled->level, 3);

    // Lenient: null keeps the default; required: missing or null fails, named.
    EXPECT_EQ(decode(R"({"name": "n", "level": null})")->level, 3);
    EXPECT_EQ(decode(R"({"level": 1})").error(), "The sample has no \"name\".");
    EXPECT_EQ(decode(R"({"name": null})").error(), "The sample's \"name\" is not valid.");
    EXPECT_EQ(decode(R"({"name": "n", "level": "1"})").error(),
              "The sample's \"level\" is not valid.");
    EXPECT_EQ(decode(R"({"name": "n", "when": "today"})").error(),
              "The sample's \"when\" is not valid.");
    EXPECT_EQ(decode("[]").error(), "The sample is not a JSON object.");
    // An int takes integers in its range only.
    EXPECT_FALSE(decode(R"({"name": "n", "level": 2147483648})").ok());
    EXPECT_FALSE(decode(R"({"name": "n", "level": 2.0})").ok());
    EXPECT_EQ(decode(R"({"name": "n", "level": -2147483648})")->level, -2147483647 - 1);

    // The older name counts only when the newer one gives no value, wherever it stands.
    EXPECT_TRUE(decode(R"({"name": "n", "isOn": true})")->enabled);
    EXPECT_FALSE(decode(R"({"name": "n", "isOn": true, "enabled": false})")->enabled);
    EXPECT_FALSE(decode(R"({"name": "n", "enabled": false, "isOn": true})")->enabled);
    EXPECT_TRUE(decode(R"({"name": "n", "enabled": null, "isOn": true})")->enabled);
    EXPECT_FALSE(decode(R"({"name": "n", "enabled": true, "isOn": 1})").ok());

    // Of a repeated key the first counts, even when a later one would not decode.
    EXPECT_EQ(decode(R"({"name": "a", "name": 5})")->name, "a");
    // Text after the record is a fault.
    EXPECT_FALSE(decode(R"({"name": "a"} 1)").ok());
}

TEST(JsonFields, TextsAndKeysReadExactlyWhereverTheirEscapesStand) {
    // An escape at every offset of a text, across the eight-byte words it is scanned
    // in, and right at its end: the text read is the text meant.
    for (const auto& [escape, meant] : {std::pair<std::string, std::string>{R"(\")", "\""},
                                        {R"(\\)", "\\"},
                                        {R"(\u00e9)", "\xC3\xA9"},
                                        {R"(\n)", "\n"}}) {
        for (std::size_t at = 0; at <= 17; ++at) {
            const std::string before(at, 'a');
            const std::string json = R"({"name": ")" + before + escape + R"("})";
            SCOPED_TRACE(json);
            const auto read = decode(json);
            ASSERT_TRUE(read.ok()) << read.error();
            EXPECT_EQ(read->name, before + meant);
        }
    }
    // Keys that start like a field's key, or that it starts like, are other keys.
    const auto near = decode(R"({"nam": 1, "names": 2, "name": "n", "namex": 3, "levels": "x"})");
    ASSERT_TRUE(near.ok()) << near.error();
    EXPECT_EQ(near->name, "n");
    EXPECT_EQ(near->level, 3);
    // Fields in reverse order, and a document that ends right after a short key.
    const auto reversed = decode(R"({"when":"2026-03-04T08:00:00Z","level":1,"name":"n"})");
    ASSERT_TRUE(reversed.ok()) << reversed.error();
    EXPECT_EQ(reversed->when, Instant{1772611200.0});
    EXPECT_EQ(reversed->level, 1);
    EXPECT_EQ(decode(R"({"a":1})").error(), "The sample has no \"name\".");
    // A date written with escapes is the same date; one broken inside is refused.
    EXPECT_EQ(decode(R"({"name":"n","when":"2026-03-04T08:00:00\u005a"})")->when,
              Instant{1772611200.0});
    EXPECT_FALSE(decode(R"({"name":"n","when":"2026-03-04T08:00:0\"Z"})").ok());
}

} // namespace
} // namespace daywyn
