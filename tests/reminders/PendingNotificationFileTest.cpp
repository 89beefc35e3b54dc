#include "reminders/PendingNotificationFile.h"

#include <gtest/gtest.h>

namespace daywyn {
namespace {

const Uuid kTask = *Uuid::parse("0B5E3C1A-6F2D-4C8E-9A77-1D2E3F405162");

TEST(PendingNotificationFile, RoundTripsAndReadsTheEarlierLayout) {
    PendingNotificationFile file;
    file.pending.push_back({"daywyn.task.1", "Call \"the\" bank", "Starts in 5 minutes", "task",
                            1772611200.25, kTask});
    file.pending.push_back(
        {"daywyn.review.1", "Your daily rhythm", "", std::nullopt, 1772650000.0, std::nullopt});
    file.shown.push_back({17.0, "daywyn.task.0", ":1.42", kTask});
    const auto back = PendingNotificationFile::decode(file.encode());
    ASSERT_TRUE(back.ok()) << back.error();
    EXPECT_EQ(back.value(), file);

    // As the earlier writer laid it out: integral numbers without a fraction.
    const auto earlier = PendingNotificationFile::decode(R"({
    "pending": [
        {
            "body": "b",
            "fireAt": 1772611200,
            "identifier": "daywyn.task.1",
            "taskID": "0B5E3C1A-6F2D-4C8E-9A77-1D2E3F405162",
            "title": "t"
        }
    ],
    "shown": [
        {
            "id": 3,
            "identifier": "daywyn.task.0",
            "server": ":1.42"
        }
    ]
}
)");
    ASSERT_TRUE(earlier.ok()) << earlier.error();
    ASSERT_EQ(earlier->pending.size(), 1u);
    EXPECT_EQ(earlier->pending[0].fireAt, 1772611200.0);
    EXPECT_EQ(earlier->pending[0].taskId, kTask);
    ASSERT_EQ(earlier->shown.size(), 1u);
    EXPECT_EQ(earlier->shown[0].id, 3.0);
}

TEST(PendingNotificationFile, DropsBadEntriesButRefusesBrokenText) {
    const auto mixed = PendingNotificationFile::decode(
        R"({"pending": [{"identifier": 5, "fireAt": 1}, {"fireAt": 2},
                        {"identifier": "kept", "fireAt": 3, "title": "t"}],
            "shown": [{"id": "x", "server": "s"}, {"id": 4, "server": "s", "identifier": "i"}],
            "future": {"a": [1]}})");
    ASSERT_TRUE(mixed.ok()) << mixed.error();
    ASSERT_EQ(mixed->pending.size(), 1u);
    EXPECT_EQ(mixed->pending[0].identifier, "kept");
    EXPECT_EQ(mixed->pending[0].fireAt, 3.0);
    ASSERT_EQ(mixed->shown.size(), 1u);
    EXPECT_EQ(mixed->shown[0].identifier, "i");

    for (const char* text : {"", "{\"pending\": [", "[]", "{} {}",
                             "{\"pending\": [{\"identifier\": \"a\", \"fireAt\": 1,}]}"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(PendingNotificationFile::decode(text).ok());
    }
}

} // namespace
} // namespace daywyn
