#include "cli/CommandLine.h"

#include <gtest/gtest.h>

#include "support/FakeRepository.h"
#include "support/JsonTree.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

// A store without a repository: the verbs' own behaviour, no files.
class CommandLineTest : public ::testing::Test {
protected:
    Calendar calendar = test::berlin();
    Instant now = at(calendar, 2026, 3, 4, 8, 15);
    TodayTaskStore store{nullptr, now, calendar};

    CommandOutput run(std::vector<std::string> args) {
        return runCommand(store, args, now, calendar);
    }
    Uuid add(const std::string& text) {
        EXPECT_EQ(run({"add", text}).status, 0);
        return store.tasks().back().id;
    }
};

TEST_F(CommandLineTest, AddTakesDayTimeAndEstimateOutOfTheText) {
    const auto out = run({"add", "Call", "Ama", "tomorrow", "at", "10", "for", "20", "minutes"});
    EXPECT_EQ(out.status, 0);
    EXPECT_EQ(out.out, "Added Call Ama to Daywyn.\n"
                       "Recognised day tomorrow, start 10:00 and estimate 20 min.\n");
    ASSERT_EQ(store.tasks().size(), 1u);
    const TaskItem& task = store.tasks().back();
    EXPECT_EQ(task.scheduledStart, at(calendar, 2026, 3, 5, 10));
    EXPECT_EQ(task.estimatedMinutes, 20);

    // A word that merely starts with "-" is text, not an unknown option.
    for (const char* text : {"-5 push-ups", "- buy oat milk"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(run({"add", text}).status, 0);
        EXPECT_EQ(store.tasks().back().title, text);
    }
}

TEST_F(CommandLineTest, AddRefusesAnEmptyTitleAndDryRunSavesNothing) {
    const auto empty = run({"add", "tomorrow at 9"});
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.err, "Give the task a title.\n");

    const auto dry = run({"add", "--dry-run", "--json", "Stretch at 7:30pm"});
    EXPECT_EQ(dry.status, 0);
    EXPECT_TRUE(store.tasks().empty());
    auto document = parseJson(dry.out);
    ASSERT_TRUE(document.ok()) << dry.out;
    EXPECT_STREQ(document.value()["title"].GetString(), "Stretch");
    EXPECT_STREQ(document.value()["scheduledStart"].GetString(), "2026-03-04T18:30:00Z");
    EXPECT_TRUE(Uuid::parse(document.value()["id"].GetString()).has_value());
}

TEST_F(CommandLineTest, TaskIdsMayBeShortenedWhileTheyStayUnambiguous) {
    const Uuid first = add("Write report");
    add("Pay rent");
    const std::string prefix = first.text().substr(0, 6);
    std::string lower = prefix;
    for (auto& c : lower) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    EXPECT_EQ(run({"done", lower}).out, "Done: Write report.\n");
    EXPECT_TRUE(store.task(first)->isComplete);

    const auto unknown = run({"done", "zzzz"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.err, "No task has an id starting with \"zzzz\".\n");
    EXPECT_EQ(run({"done"}).status, 2);
}

TEST_F(CommandLineTest, AmbiguousPrefixesAreRefused) {
    // Sixteen tasks share at least one leading hex digit by the pigeonhole principle.
    for (int i = 0; i < 17; ++i) {
        add("Task " + std::to_string(i));
    }
    std::map<char, int> firstDigits;
    for (const auto& t : store.tasks()) {
        ++firstDigits[t.id.text()[0]];
    }
    const auto shared = std::find_if(firstDigits.begin(), firstDigits.end(),
                                     [](const auto& entry) { return entry.second > 1; });
    ASSERT_NE(shared, firstDigits.end());
    const auto out = run({"delete", std::string(1, shared->first)});
    EXPECT_EQ(out.status, 1);
    EXPECT_NE(out.err.find("type more of it"), std::string::npos);
    EXPECT_EQ(store.tasks().size(), 17u);
}

TEST_F(CommandLineTest, StartingATimerStopsTheOtherOne) {
    const Uuid a = add("Draft");
    const Uuid b = add("Review");
    EXPECT_EQ(run({"start", a.text()}).out, "Started Draft.\n");
    now = now + 600;
    EXPECT_EQ(run({"start", b.text()}).out, "Stopped Draft. Started Review.\n");
    EXPECT_FALSE(store.task(a)->isRunning());
    EXPECT_EQ(store.task(a)->recordedDuration(), 600.0);
    now = now + 60;
    EXPECT_EQ(run({"stop"}).out, "Stopped Review.\n");
    EXPECT_EQ(run({"stop"}).out, "No timer is running.\n");
}

TEST_F(CommandLineTest, PinningAFourthPriorityIsRefused) {
    std::vector<Uuid> ids;
    for (const char* title : {"One", "Two", "Three", "Four"}) {
        ids.push_back(add(title));
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(run({"pin", ids[static_cast<std::size_t>(i)].text()}).status, 0);
    }
    const auto fourth = run({"pin", ids[3].text()});
    EXPECT_EQ(fourth.status, 1);
    EXPECT_EQ(fourth.err, "You can pin up to three priorities. Unpin one first.\n");
    EXPECT_EQ(run({"pin", ids[1].text()}).out, "Unpinned Two.\n");
    EXPECT_EQ(run({"pin", ids[3].text()}).out, "Pinned Four as priority 2.\n");
    run({"done", ids[1].text()});
    EXPECT_EQ(run({"pin", ids[1].text()}).err, "Two is completed; reopen it before pinning it.\n");
}

TEST_F(CommandLineTest, ASaveThatFailsLikeTheOneBeforeIsStillReported) {
    // Given a disk that is full from the start-up save on
    auto repository = test::FakeRepository::make();
    repository->failNextSaves(2);
    TodayTaskStore failing{std::move(repository), now, calendar};
    ASSERT_TRUE(failing.persistenceError().has_value());

    // When a verb's own save fails for the same reason
    const auto done =
        runCommand(failing, {"done", failing.tasks().front().id.text()}, now, calendar);

    // Then it is a failure, not "Done"
    EXPECT_EQ(done.status, 1);
    EXPECT_EQ(done.out, "");
    EXPECT_EQ(done.err, "Daywyn could not save changes: No space left on device\n");
}

TEST_F(CommandLineTest, TodayListsTheSectionsAsJsonWithSortedKeys) {
    add("Today's thing");
    add("Later thing tomorrow");
    const auto out = run({"today", "--json"});
    ASSERT_EQ(out.status, 0);
    EXPECT_EQ(
        out.out.find("{\"carryOver\":[],\"completedToday\":[],\"events\":[],\"priorities\":[],"),
        0u);
    auto document = parseJson(out.out);
    ASSERT_TRUE(document.ok());
    EXPECT_EQ(document.value()["today"].Size(), 1u);
    EXPECT_EQ(document.value()["upcoming"].Size(), 1u);

    const auto text = run({"today"});
    EXPECT_NE(text.out.find("Wednesday 4 March · 2 open"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("Upcoming (1)"), std::string::npos) << text.out;
}

TEST_F(CommandLineTest, SplitShowsWhatVoiceCaptureWouldMake) {
    const auto out = run({"split", "--json", "buy milk next task call mom tomorrow at 5pm"});
    EXPECT_EQ(out.out, "[{\"scheduledDay\":null,\"scheduledStart\":null,\"title\":\"Buy milk\"},"
                       "{\"scheduledDay\":\"2026-03-04T23:00:00Z\",\"scheduledStart\":"
                       "\"2026-03-05T16:00:00Z\",\"title\":\"Call mom\"}]\n");
    EXPECT_TRUE(store.tasks().empty());
}

TEST_F(CommandLineTest, UnknownVerbsAndOptionsAreUsageErrors) {
    EXPECT_EQ(run({"frobnicate"}).status, 2);
    EXPECT_EQ(run({"add", "--loud", "x"}).status, 2);
    EXPECT_EQ(run({"export", "--json"}).status, 2);
    const auto help = run({"add", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.find("Usage: daywyn add"), 0u);
    EXPECT_EQ(verbAccess({"today"}), VerbAccess::reading);
    EXPECT_EQ(verbAccess({"report", "--list"}), VerbAccess::reading);
    EXPECT_EQ(verbAccess({"report"}), VerbAccess::writing);
    EXPECT_EQ(verbAccess({"frobnicate"}), VerbAccess::reading);
    EXPECT_EQ(verbAccess({"delete", "--help"}), VerbAccess::reading);
    EXPECT_EQ(verbAccess({"add", "--", "--help"}), VerbAccess::writing);
}

TEST_F(CommandLineTest, ReportSaysWhenNothingIsDue) {
    EXPECT_EQ(run({"report"}).out, "No report is due.\n");
    EXPECT_EQ(run({"report", "--list", "--json"}).out, "[]\n");
}

// The app's windows as the verbs see them, recording what they were asked.
class RecordingWindows : public AppWindows {
public:
    std::vector<std::string> calls;
    void showDrawer() override { calls.push_back("show"); }
    void hideDrawer() override { calls.push_back("hide"); }
    void toggleDrawer() override { calls.push_back("toggle"); }
    void showQuickAdd() override { calls.push_back("quick-add"); }
};

TEST_F(CommandLineTest, WindowVerbsDriveTheAppAndAreRefusedWithoutIt) {
    RecordingWindows windows;
    for (const char* verb : {"show", "toggle", "hide", "quick-add"}) {
        EXPECT_EQ(runCommand(store, {verb}, now, calendar, &windows), (CommandOutput{0, "", ""}));
    }
    EXPECT_EQ(windows.calls, (std::vector<std::string>{"show", "toggle", "hide", "quick-add"}));
    EXPECT_EQ(verbAccess({"quick-add"}), VerbAccess::window);

    const auto outside = run({"quick-add"});
    EXPECT_EQ(outside.status, 1);
    EXPECT_EQ(outside.err,
              "'daywyn quick-add' acts on the desktop app, which is not running here.\n");
    EXPECT_EQ(run({"show", "now"}).status, 2);
}

TEST_F(CommandLineTest, LiteralAddKeepsTheTextAsTheTitleAndTakesAStartTime) {
    const auto out = run({"add", "--literal", "--at", "2026-03-04T18:30:00Z", "Call Ama at 10"});
    EXPECT_EQ(out, (CommandOutput{0, "Added Call Ama at 10 to Daywyn.\n", ""}));
    EXPECT_EQ(store.tasks().back().scheduledStart, at(calendar, 2026, 3, 4, 19, 30));

    for (const char* start : {"tomorrow", "2026-03-04T18:30:00.5Z", ""}) {
        SCOPED_TRACE(start);
        const auto refused = run({"add", "--at", start, "Later"});
        EXPECT_EQ(refused.status, 2);
        EXPECT_EQ(refused.err, "daywyn add: The start time must look like "
                               "2026-03-04T08:15:00Z.\n");
    }
    EXPECT_EQ(run({"add", "Later", "--at"}).err,
              "daywyn add: Give TIME after --at. Run 'daywyn add --help' for usage.\n");
    // After "--" an option's name is text.
    EXPECT_EQ(run({"add", "--literal", "--", "--at", "noon"}).out, "Added --at noon to Daywyn.\n");
    EXPECT_EQ(store.tasks().size(), 2u);
}

TEST_F(CommandLineTest, WordsAreCountedPerVerb) {
    EXPECT_EQ(run({"today", "extra"}).err,
              "daywyn today: It takes no words. Run 'daywyn today --help' for usage.\n");
    EXPECT_EQ(run({"stop", "ab", "cd"}).err,
              "daywyn stop: It takes one task id. Run 'daywyn stop --help' for usage.\n");
    EXPECT_EQ(run({"export", "--json", "a", "b"}).status, 2);
    EXPECT_EQ(run({"export", "--json", "--csv", "a"}).status, 2);
    // Help wins over everything else before "--", and names the verb's options.
    const auto help = run({"export", "--frobnicate", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.find("Usage: daywyn export (--json|--csv) PATH\n"), 0u);
    EXPECT_NE(help.out.find("  --csv"), std::string::npos);
    EXPECT_EQ(run({"help", "today"}).out.find("Usage: daywyn today [--json]"), 0u);
}

TEST(ValidUtf8, ReplacesOnlyWhatIsNotUtf8) {
    EXPECT_EQ(validUtf8("Caf\xC3\xA9 \xF0\x9F\x8C\xB1"), "Caf\xC3\xA9 \xF0\x9F\x8C\xB1");
    EXPECT_EQ(validUtf8("a\xFF"
                        "b"),
              "a\xEF\xBF\xBD"
              "b");
    // A truncated sequence at the end and an encoded surrogate.
    EXPECT_EQ(validUtf8("x\xE2\x82"), "x\xEF\xBF\xBD");
    EXPECT_EQ(validUtf8("\xED\xA0\x80").find("\xED\xA0\x80"), std::string::npos);
    EXPECT_EQ(validUtf8(""), "");
}

} // namespace
} // namespace daywyn
