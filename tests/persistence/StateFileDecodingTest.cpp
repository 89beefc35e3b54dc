#include "persistence/StateFileDecoding.h"

#include <cmath>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "base/JsonRead.h"
#include "model/RecordJson.h"

namespace daywyn {
namespace {

constexpr double kBase = 1793000000.0; // November 2026

Uuid seededUuid(std::mt19937_64& rng) {
    Uuid id;
    for (auto& b : id.bytes) {
        b = static_cast<std::uint8_t>(rng());
    }
    return id;
}

// A state shaped like a few years of real use; task i is titled "Task i+1" so that a
// test can find it in the text.
PersistedState bigState(int taskCount, int reportCount) {
    std::mt19937_64 rng(20261122);
    PersistedState state;
    state.preferences.dailyReviewHour = 19;
    state.preferences.taskRemindersEnabled = true;
    for (int i = 0; i < taskCount; ++i) {
        TaskItem t;
        t.id = seededUuid(rng);
        t.title = "Task " + std::to_string(i + 1);
        t.createdAt = Instant{kBase - 86400.0 * (i % 60) + i % 977};
        if (i % 2 == 0) {
            t.estimatedMinutes = 15 + i % 8 * 5;
        }
        if (i % 3 == 0) {
            t.scheduledStart = Instant{kBase + 3600.0 * (i % 48)};
            t.scheduledEnd = Instant{kBase + 3600.0 * (i % 48) + 1800.0};
        } else if (i % 3 == 1) {
            t.scheduledDay = Instant{kBase + 86400.0 * (i % 5)};
        }
        if (i % 4 == 0) {
            t.isComplete = true;
            t.completedAt = Instant{kBase - 3600.0 * (i % 30)};
        }
        for (int s = 0; s < 3; ++s) {
            const double start = kBase - 86400.0 * (i % 30) + 3600.0 * s;
            t.sessions.push_back(
                WorkSession{seededUuid(rng), Instant{start}, Instant{start + 600.0 + i % 1200}});
        }
        if (i % 3 == 2) {
            t.checklist.emplace();
            for (int c = 0; c < 3; ++c) {
                t.checklist->push_back(
                    ChecklistItem{seededUuid(rng), "Step " + std::to_string(c), c == 0});
            }
        }
        if (i % 7 == 0) {
            t.recurrence = TaskRecurrence::daily;
            t.nextOccurrenceCreated = t.isComplete;
        }
        if (i % 11 == 0) {
            t.liveSessionStartedAt = Instant{kBase + i};
            t.scheduledBudgetAlerts.insert(BudgetAlertKind::approaching);
        }
        state.tasks.push_back(std::move(t));
    }
    for (int r = 0; r < reportCount; ++r) {
        DailyReport report;
        report.id = seededUuid(rng);
        report.day = Instant{kBase - 86400.0 * (r + 1)};
        report.generatedAt = Instant{kBase - 86400.0 * r - 3600.0};
        for (int line = 0; line < 6; ++line) {
            report.tasks.push_back(DailyTaskSummary{seededUuid(rng),
                                                    "Summary " + std::to_string(line),
                                                    line % 2 == 0, 25, 1234.5 + line});
        }
        state.reports.push_back(std::move(report));
    }
    return state;
}

void replaceOnce(std::string& text, std::string_view from, std::string_view to) {
    const auto at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
}

void expectDecodesTo(const std::string& text, const PersistedState& expected) {
    const auto decoded = decodeStateFile(text);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    ASSERT_TRUE(std::holds_alternative<PersistedState>(decoded.value()));
    const auto& state = std::get<PersistedState>(decoded.value());
    EXPECT_EQ(state.tasks.size(), expected.tasks.size());
    EXPECT_TRUE(state == expected);
}

class StateFileDecodingTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        state_ = new PersistedState(bigState(4000, 40));
        text_ = new std::string(encodeStateFile(*state_));
    }
    static void TearDownTestSuite() {
        delete state_;
        delete text_;
    }
    static const PersistedState& state() { return *state_; }
    static const std::string& text() { return *text_; }

private:
    static inline PersistedState* state_ = nullptr;
    static inline std::string* text_ = nullptr;
};

TEST_F(StateFileDecodingTest, BigStateDecodesEqualToTheOriginal) {
    ASSERT_GE(text().size(), 1'000'000u);
    expectDecodesTo(text(), state());
    for (int count : {0, 1, 2001}) {
        PersistedState smaller = state();
        smaller.tasks.resize(count);
        expectDecodesTo(encodeStateFile(smaller), smaller);
    }
}

// Layouts other than the encoder's, and members a newer version may add, read as the
// same state.
TEST_F(StateFileDecodingTest, MisleadingTextsDecodeAsTheyRead) {
    // The reports after the tasks, and most of the text: the guess lands on a report.
    const PersistedState manyReports = bigState(600, 3000);
    std::string reportsLast = encodeStateFile(manyReports);
    {
        const auto reports = reportsLast.find("\n  \"reports\": [");
        const auto tasks = reportsLast.find("\n  \"tasks\": [");
        ASSERT_LT(reports, tasks);
        const std::string member = reportsLast.substr(reports, tasks - reports);
        reportsLast.erase(reports, member.size());
        replaceOnce(reportsLast, "\n  \"version\"", member + "\n  \"version\"");
        ASSERT_GT(reportsLast.size() / 2, reportsLast.find("\n  \"reports\": ["));
    }

    // The first task introduced like the sessions inside each task: the guess lands on
    // a session.
    std::string deepFirst = text();
    replaceOnce(deepFirst, "\"tasks\": [\n    {", "\"tasks\": [\n        {");

    // The first task right after the bracket: the guess lands inside a title.
    PersistedState commaTitles = state();
    for (std::size_t i = commaTitles.tasks.size() / 3; i < commaTitles.tasks.size(); i += 5) {
        commaTitles.tasks[i].title += ",{\"title\": \"x\"},{";
    }
    std::string titles = encodeStateFile(commaTitles);
    replaceOnce(titles, "\"tasks\": [\n    {", "\"tasks\": [{");

    // Later tasks introduced differently from the first: no guess, or one past the middle.
    std::string reindented = text();
    for (auto at = reindented.find("},\n    {", reindented.size() / 3); at != std::string::npos;
         at = reindented.find("},\n    {", at + 4)) {
        reindented.replace(at, 8, "}, {");
    }
    std::string mixed = text();
    for (auto at = mixed.find("},\n    {", mixed.size() / 2); at != std::string::npos;
         at = mixed.find("},\n    {", at + 40000)) {
        mixed.replace(at, 8, "},\n\n    {");
    }

    // A newer version's member, unknown here, holding task-like objects laid out like
    // the list and spanning the middle: the guess lands on one of them and reading on
    // from there succeeds, but it is not where this reading goes.
    const PersistedState fewTasks = bigState(300, 10);
    std::string nested = encodeStateFile(fewTasks);
    {
        const std::string lead = "\n  \"tasks\": [\n    ";
        const auto first = nested.find(lead) + lead.size();
        const auto next = nested.find("},\n    {", first);
        const std::string element = nested.substr(first, next + 1 - first);
        std::string subtasks = "\n      \"subtasks\": [" + element;
        for (int i = 0; i < 600; ++i) {
            subtasks += ",\n    " + element;
        }
        nested.insert(first + 1, subtasks + "],");
        ASSERT_LT(first + 1, nested.size() / 2);
        ASSERT_GT(first + subtasks.size(), nested.size() / 2);
    }

    const struct {
        const char* what;
        const std::string& text;
        const PersistedState& expected;
    } cases[] = {
        {"reports after tasks", reportsLast, manyReports},
        {"task-like objects nested in a task", nested, fewTasks},
        {"first task deeper", deepFirst, state()},
        {"titles holding JSON punctuation", titles, commaTitles},
        {"later tasks on one line", reindented, state()},
        {"some later tasks after a blank line", mixed, state()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        expectDecodesTo(c.text, c.expected);
    }
}

// The state file's task list read on its own.
Status decodeTasksOf(const std::string& text, std::vector<TaskItem>& out) {
    JsonInput input(text);
    JsonDecoder d;
    simdjson::ondemand::document document;
    simdjson::ondemand::array list;
    std::string_view listText;
    if (!input.iterate(d, document) || document["tasks"].get_array().get(list) ||
        list.raw_json().get(listText)) {
        return Error{"no list of tasks"};
    }
    return decodeTaskList(listText, DateCoding::iso8601, out);
}

TEST(StateFileDecodingFaultTest, AFaultyTaskIsNamedWhereverItIs) {
    const PersistedState state = bigState(400, 10);
    const std::string text = encodeStateFile(state);
    const int count = static_cast<int>(state.tasks.size());
    for (int n : {1, 17, count / 2, count - 1, count}) {
        for (std::string_view fault : {"17", "\"\\uD800\"", "tru"}) {
            SCOPED_TRACE(testing::Message() << "task " << n << " titled " << fault);
            std::string broken = text;
            replaceOnce(broken, "\"Task " + std::to_string(n) + "\"", fault);
            std::vector<TaskItem> tasks;
            const Status status = decodeTasksOf(broken, tasks);
            ASSERT_FALSE(status.ok());
            EXPECT_EQ(status.error().rfind("Task " + std::to_string(n) + ": ", 0), 0u)
                << status.error();
            EXPECT_FALSE(decodeStateFile(broken).ok());
        }
    }
    // Untouched, the same reading succeeds.
    std::vector<TaskItem> tasks;
    ASSERT_TRUE(decodeTasksOf(text, tasks).ok());
    EXPECT_TRUE(tasks == state.tasks);
}

// From some megabytes on, the task list is counted before it is read. A file read that
// way decodes to the same state, and its faults are refused all the same.
TEST(StateFileDecodingFaultTest, ALargeFileReadsAndFailsAsASmallOne) {
    const PersistedState state = bigState(400, 10);
    std::string text = encodeStateFile(state);
    // Made large by a member this version does not know.
    replaceOnce(text, "\n  \"version\"",
                "\n  \"later\": \"" + std::string(9 << 20, 'x') + "\",\n  \"version\"");
    expectDecodesTo(text, state);
    std::vector<std::string> broken;
    for (std::string_view fault : {"17", "tru", "[1 2]", "\"\\uD800\""}) {
        broken.push_back(text);
        replaceOnce(broken.back(), "\"Task 399\"", fault);
    }
    // A comma missing between two tasks: the count itself stops there.
    const auto tasksAt = text.find("\n  \"tasks\": [");
    ASSERT_NE(tasksAt, std::string::npos);
    const auto between = text.find("\n    },\n    {", tasksAt);
    ASSERT_NE(between, std::string::npos);
    broken.push_back(text);
    broken.back().erase(between + 6, 1);
    for (const auto& bytes : broken) {
        EXPECT_FALSE(decodeStateFile(bytes).ok());
    }
}

// The earlier format of a long-used install: its list of tasks is first tried in the
// current format and then read again in its own.
TEST(StateFileDecodingLegacyTest, BigOldFormatStillDecodes) {
    LegacyPersistedState expected;
    expected.preferences.dailyReviewHour = 20;
    expected.preferences.taskRemindersEnabled = true;
    std::string text = "{\n  \"preferences\": {\n    \"dailyReviewHour\": 20,\n"
                       "    \"dueNotificationsEnabled\": true\n  },\n  \"tasks\": [";
    std::mt19937_64 rng(7);
    for (int i = 0; i < 3000; ++i) {
        LegacyTaskItem task;
        task.id = seededUuid(rng);
        task.title = "Old task " + std::to_string(i);
        task.estimatedMinutes = 5 + i % 60;
        task.elapsedBeforeCurrentRun = i % 13 == 0 ? -5.0 : 30.5 * (i % 100);
        task.isComplete = i % 4 == 0;
        if (i % 3 == 0) {
            task.dueDate = Instant{kBase + 3600.0 * (i % 48)};
            task.scheduledDueDate = task.dueDate;
        }
        if (i % 5 == 0) {
            task.startedAt = Instant{kBase - 60.0 * i};
            task.scheduledBudgetAlerts = {BudgetAlertKind::approaching, BudgetAlertKind::exceeded};
        }
        text += i == 0 ? "\n    {" : ",\n    {";
        if (task.dueDate) {
            text += "\n      \"dueDate\": \"" + isoText(*task.dueDate) + "\",";
        }
        text +=
            "\n      \"elapsedBeforeCurrentRun\": " + std::to_string(task.elapsedBeforeCurrentRun) +
            ",\n      \"estimatedMinutes\": " + std::to_string(task.estimatedMinutes) +
            ",\n      \"id\": \"" + task.id.text() +
            "\",\n      \"isComplete\": " + (task.isComplete ? "true" : "false") +
            ",\n      \"scheduledBudgetAlerts\": [" +
            (i % 5 == 0 ? "\"exceeded\", \"approaching\"" : "") + "],";
        if (task.scheduledDueDate) {
            text += "\n      \"scheduledDueDate\": \"" + isoText(*task.scheduledDueDate) + "\",";
        }
        if (task.startedAt) {
            text += "\n      \"startedAt\": \"" + isoText(*task.startedAt) + "\",";
        }
        text += "\n      \"title\": \"" + task.title + "\"\n    }";
        expected.tasks.push_back(task);
    }
    text += "\n  ],\n  \"version\": 1\n}\n";
    const auto decoded = decodeStateFile(text);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    ASSERT_TRUE(std::holds_alternative<LegacyPersistedState>(decoded.value()));
    EXPECT_TRUE(std::get<LegacyPersistedState>(decoded.value()) == expected);
}

} // namespace
} // namespace daywyn

namespace daywyn {
namespace {

// A small state whose one report line's "actualSeconds" and first task's title are
// easy to replace in the text.
std::string smallStateText(PersistedState& state) {
    state = bigState(3, 1);
    state.tasks[0].title = "TITLE";
    state.reports[0].tasks[0].actualSeconds = 4321.5;
    return encodeStateFile(state);
}

TEST(StateFileHostileInputTest, EdgeNumbersAndRepeatedKeysReadAsBefore) {
    PersistedState state;
    const std::string text = smallStateText(state);
    const auto actualSeconds = [&](std::string_view number) -> std::optional<double> {
        std::string edited = text;
        replaceOnce(edited, "4321.5", number);
        const auto decoded = decodeStateFile(edited);
        if (!decoded) {
            return std::nullopt;
        }
        return std::get<PersistedState>(decoded.value()).reports[0].tasks[0].actualSeconds;
    };
    const auto minusZero = actualSeconds("-0");
    ASSERT_TRUE(minusZero);
    EXPECT_TRUE(std::signbit(*minusZero));
    EXPECT_EQ(actualSeconds("0e88"), 0.0);
    EXPECT_EQ(actualSeconds("12345678901234567890"), 12345678901234567890.0);
    EXPECT_EQ(actualSeconds("0.30000000000000004"), 0.30000000000000004);
    EXPECT_EQ(actualSeconds("1e999"), std::nullopt);

    // An integer field takes integers of 64 bits only.
    std::string longEstimate = text;
    replaceOnce(longEstimate, "\"estimatedMinutes\": 15",
                "\"estimatedMinutes\": 12345678901234567890");
    EXPECT_FALSE(decodeStateFile(longEstimate).ok());

    // Of a repeated key the first counts, in a record and at the top.
    std::string repeated = text;
    replaceOnce(repeated, "\"title\": \"TITLE\"", "\"title\": \"TITLE\", \"title\": 7");
    replaceOnce(repeated, "\n  \"version\": 2",
                "\n  \"tasks\": 5,\n  \"version\": 2,\n  \"version\": 1");
    expectDecodesTo(repeated, state);

    // An escaped NUL is a character like any other.
    std::string escapedNul = text;
    replaceOnce(escapedNul, "\"TITLE\"", "\"A\\u0000B\"");
    PersistedState withNul = state;
    withNul.tasks[0].title = std::string("A\0B", 3);
    expectDecodesTo(escapedNul, withNul);
}

TEST(StateFileHostileInputTest, BrokenTextIsRefusedNeverHalfRead) {
    PersistedState state;
    const std::string text = smallStateText(state);
    std::vector<std::pair<std::string, std::string>> cases;
    for (std::size_t length : {std::size_t{1}, text.size() / 3, text.size() / 2, text.size() - 1}) {
        cases.emplace_back("truncated to " + std::to_string(length), text.substr(0, length));
    }
    const auto edited = [&](std::string_view from, std::string_view to) {
        std::string copy = text;
        replaceOnce(copy, from, to);
        return copy;
    };
    cases.emplace_back("a raw NUL in a string", edited("TITLE", std::string("TI\0LE", 5)));
    cases.emplace_back("invalid UTF-8", edited("TITLE", "TI\xC3\x28LE"));
    cases.emplace_back("a lone surrogate escape", edited("TITLE", "TI\\uDC00LE"));
    cases.emplace_back("a missing comma",
                       edited("\"title\": \"TITLE\"\n", "\"x\": 1 \"title\": \"TITLE\"\n"));
    cases.emplace_back("text after the object", text + " {}");
    // Members this version does not know are still checked, however they nest.
    cases.emplace_back("a broken unknown member",
                       edited("\n  \"version\"", "\n  \"later\": [1, 2 3],\n  \"version\""));
    cases.emplace_back("a malformed number in an unknown member",
                       edited("\n  \"version\"", "\n  \"later\": [01],\n  \"version\""));
    cases.emplace_back("10,000 nested arrays",
                       edited("\n  \"version\"", "\n  \"later\": " + std::string(10000, '[') +
                                                     std::string(10000, ']') + ",\n  \"version\""));
    for (const auto& [what, bytes] : cases) {
        SCOPED_TRACE(what);
        EXPECT_FALSE(decodeStateFile(bytes).ok());
    }
    // Unknown members of valid JSON are read past.
    expectDecodesTo(
        edited("\n  \"version\"",
               "\n  \"later\": [[{\"a\": [null, true, -1.5e3, \"\\u00e9\"]}]],\n  \"version\""),
        state);
}

} // namespace
} // namespace daywyn
