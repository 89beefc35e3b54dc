#include <gtest/gtest.h>

#include "model/RecordJson.h"
#include "support/JsonTree.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

std::string encodePretty(const TaskItem& task) {
    JsonBuffer buffer;
    PrettyJsonWriter writer(buffer);
    useTwoSpaceIndent(writer);
    encodeRecord(writer, task, DateCoding::iso8601);
    return buffer.GetString();
}

Result<TaskItem> decode(std::string_view json) {
    return decodeTaskItem(json, DateCoding::iso8601);
}

Result<DailyTaskSummary> decodeSummary(std::string_view json) {
    return decodeDailyTaskSummary(json);
}

std::string compact(const rapidjson::Document& document) {
    JsonBuffer buffer;
    CompactJsonWriter writer(buffer);
    document.Accept(writer);
    return buffer.GetString();
}

TaskItem fullTask() {
    const Instant t{1772612100.0};
    TaskItem task = TaskBuilder("Write \"report\" ✎")
                        .createdAt(t)
                        .estimate(45)
                        .reminder(t + 60)
                        .startingAt(t + 3600)
                        .endingAt(t + 7200)
                        .completedAt(t + 9000)
                        .session(t, t + 1500)
                        .session(t + 2000, t + 1900)
                        .checklistItem("Outline", true)
                        .checklistItem("Draft")
                        .repeating(TaskRecurrence::weekdays)
                        .pinned(2);
    task.scheduledDay = t;
    task.liveSessionStartedAt = t + 9100;
    task.scheduledBudgetAlerts = {BudgetAlertKind::exceeded, BudgetAlertKind::approaching};
    task.scheduledReminderDate = t + 60;
    task.notifiedOverdueEnd = t + 7200;
    task.nextOccurrenceCreated = false;
    return task;
}

TEST(TaskItemJson, FullAndSparseTasksRoundTrip) {
    const TaskItem sparse = TaskBuilder("Call Ama").createdAt(Instant{1772612100.0});
    TaskItem emptyChecklist = sparse;
    emptyChecklist.checklist.emplace();
    for (const TaskItem& task : {fullTask(), sparse, emptyChecklist}) {
        SCOPED_TRACE(task.title);
        auto back = decode(encodePretty(task));
        ASSERT_TRUE(back.ok()) << back.error();
        EXPECT_EQ(back.value(), task);
    }
}

TEST(TaskItemJson, AbsentValuesAreOmittedAndKeysAreSorted) {
    const TaskItem sparse = TaskBuilder("Call Ama").createdAt(Instant{1772612100.0});
    const std::string json = encodeTaskLine(sparse);
    EXPECT_EQ(json, "{\"createdAt\":\"2026-03-04T08:15:00Z\",\"id\":\"" + sparse.id.text() +
                        "\",\"isComplete\":false,\"scheduledBudgetAlerts\":[],\"sessions\":[],"
                        "\"title\":\"Call Ama\"}");

    const std::string full = encodePretty(fullTask());
    const char* order[] = {"checklist",
                           "completedAt",
                           "createdAt",
                           "estimatedMinutes",
                           "\"id\"",
                           "isComplete",
                           "liveSessionStartedAt",
                           "nextOccurrenceCreated",
                           "notifiedOverdueEnd",
                           "priorityRank",
                           "recurrence",
                           "reminderDate",
                           "scheduledBudgetAlerts",
                           "scheduledDay",
                           "scheduledEnd",
                           "scheduledReminderDate",
                           "scheduledStart",
                           "sessions",
                           "\"title\""};
    std::size_t last = 0;
    for (const char* key : order) {
        SCOPED_TRACE(key);
        const std::string quoted = key[0] == '"' ? key : "\"" + std::string(key) + "\"";
        // Nested records (checklist items, sessions) have keys of their own, so each
        // top-level key is looked for after the previous one.
        const std::size_t at = full.find("\n  " + quoted, last);
        ASSERT_NE(at, std::string::npos);
        EXPECT_GT(at, last);
        last = at;
    }
}

TEST(TaskItemJson, EachRequiredKeyMissingOrMistypedFailsTheRecord) {
    const std::string valid = encodeTaskLine(fullTask());
    ASSERT_TRUE(decode(valid).ok());
    const struct {
        const char* key;
        const char* wrongValue;
    } required[] = {
        {"id", "\"not-a-uuid\""},   {"title", "7"},     {"createdAt", "\"yesterday\""},
        {"isComplete", "\"true\""}, {"sessions", "{}"}, {"scheduledBudgetAlerts", "[\"soon\"]"}};
    for (const auto& r : required) {
        SCOPED_TRACE(r.key);
        auto missing = parseJson(valid).value();
        missing.RemoveMember(r.key);
        EXPECT_FALSE(decode(compact(missing)).ok());

        rapidjson::Document wrong;
        wrong.Parse(r.wrongValue);
        auto replaced = parseJson(valid).value();
        replaced[r.key].CopyFrom(wrong, replaced.GetAllocator());
        EXPECT_FALSE(decode(compact(replaced)).ok());
    }
}

TEST(TaskItemJson, MistypedOptionalValuesFailTheRecord) {
    const std::string head = R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","title":"t",
        "createdAt":"2026-03-04T08:15:00Z","isComplete":false,"sessions":[],
        "scheduledBudgetAlerts":[],)";
    const char* bad[] = {
        R"("recurrence":"yearly"})",
        R"("recurrence":"Daily"})",
        R"("estimatedMinutes":25.5})",
        R"("estimatedMinutes":"25"})",
        R"("priorityRank":1.0})",
        R"("scheduledStart":"2026-03-04T08:15:00.5Z"})",
        R"("checklist":[{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","title":"x"}]})",
        R"("nextOccurrenceCreated":1})",
    };
    for (const char* tail : bad) {
        SCOPED_TRACE(tail);
        EXPECT_FALSE(decode(head + tail).ok());
    }
    EXPECT_TRUE(decode(head + R"("estimatedMinutes":25})").ok());
}

TEST(TaskItemJson, IdentifiersWrittenWithEscapesReadAsTheSameIdentifier) {
    const std::string tail = R"(,"title":"t","createdAt":"2026-03-04T08:15:00Z",)"
                             R"("isComplete":false,"sessions":[],"scheduledBudgetAlerts":[]})";
    const auto plain = decode(R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F")" + tail);
    ASSERT_TRUE(plain.ok()) << plain.error();
    const auto escaped = decode(R"({"id":"\u0045621E1F8-C36C-495A-93FC-0C247A3E6E5\u0046")" + tail);
    ASSERT_TRUE(escaped.ok()) << escaped.error();
    EXPECT_EQ(escaped->id, plain->id);
    // A quote or backslash inside the 36 characters is no identifier.
    EXPECT_FALSE(decode(R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E\"F")" + tail).ok());
    EXPECT_FALSE(decode(R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E\\F")" + tail).ok());
}

TEST(TaskItemJson, DoublesComeBackBitIdentical) {
    rapidjson::Document doc;
    const double values[] = {0.1, 1234.5678901234567, 1e-9, 86399.99999999999,
                             2.2250738585072014e-308};
    for (double v : values) {
        DailyTaskSummary summary{Uuid::random(), "x", true, std::nullopt, v};
        JsonBuffer buffer;
        CompactJsonWriter writer(buffer);
        encodeRecord(writer, summary);
        auto back = decodeSummary(buffer.GetString());
        ASSERT_TRUE(back.ok());
        EXPECT_EQ(back->actualSeconds, v);
    }
}

TEST(TaskItemJson, NumbersReadExactlyWhateverTheyLookLike) {
    const auto actual = [](const std::string& number) -> std::optional<double> {
        // The id holds "-0E4", which once fooled a scan for zeros with exponents.
        auto summary = decodeSummary(R"({"id":"E621E1F8-C36C-495A-0E4C-0C247A3E6E5F","title":"x",)"
                                     R"("wasComplete":true,"actualSeconds":)" +
                                     number + "}");
        return summary ? std::optional(summary->actualSeconds) : std::nullopt;
    };
    const struct {
        const char* text;
        std::optional<double> value;
    } cases[] = {
        {"123456789.12345679", 123456789.12345679},
        {"0e88", 0.0},
        {"-0.000E-400", 0.0},
        {"0.00000000000000000000000000", 0.0},
        {"1e-400", 0.0},
        {"1e400", std::nullopt},
        {"18446744073709551616", 18446744073709551616.0},
        {"2.2250738585072014e-308", 2.2250738585072014e-308},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(actual(c.text), c.value);
    }
}

TEST(TaskItem, RecordedDurationIgnoresBackwardsSessionsAndTheRunningSpan) {
    const Instant t{1772612100.0};
    EXPECT_EQ(TaskBuilder().build().recordedDuration(), 0.0);
    const TaskItem task =
        TaskBuilder().session(t, t + 600).session(t + 900, t + 300).session(t, t + 0.5).running(t);
    EXPECT_EQ(task.recordedDuration(), 600.5);
    EXPECT_TRUE(task.isRunning());
}

} // namespace
} // namespace daywyn
