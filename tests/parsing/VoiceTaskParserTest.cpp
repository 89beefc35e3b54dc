#include "parsing/VoiceTaskParser.h"

#include <set>

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

std::vector<std::string> titles(const std::vector<VoiceTaskCandidate>& candidates) {
    std::vector<std::string> out;
    for (const VoiceTaskCandidate& candidate : candidates) {
        out.push_back(candidate.title);
    }
    return out;
}

TEST(VoiceTaskParser, SplitsASpokenListIntoCleanTitles) {
    struct Row {
        const char* transcript;
        std::vector<std::string> titles;
    };
    const Row rows[] = {
        {"buy milk next task call mom tomorrow at 5pm", {"Buy milk", "Call mom"}},
        {"First, water plants; then email Sam", {"Water plants", "Email Sam"}},
        {"pay rent\nwater plants\r\nand then call Ana", {"Pay rent", "Water plants", "Call Ana"}},
        {"feed cat ANOTHER   ITEM, walk dog new-task wash car",
         {"Feed cat", "Walk dog", "Wash car"}},
        {"New items: A, B", {"A, B"}},
        {"Second-hand shop visit", {"Hand shop visit"}},
        {"renewed items", {"Renewed items"}},
        {"«buy bread.» | ¿call the bank?", {"Buy bread", "Call the bank"}},
        {"élan vital next item ßig deal", {"Élan vital", "SSig deal"}},
        {"first call Sam tomorrow at 9 for 20 minutes", {"Call Sam for 20 minutes"}},
        {"sort   the \t mail", {"Sort the mail"}},
        // The ordinal is looked for after the time is cut out: "then " alone is dropped.
        {"call Sam; then at 9", {"Call Sam"}},
        {"Next task", {}},
        {"tomorrow at 9", {}},
        {"?! … — ¿¡ ;; \n", {}},
        {"", {}},
    };
    const Calendar newYork = test::newYork();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.transcript);
        const auto candidates =
            VoiceTaskParser::candidates(row.transcript, at(newYork, 2026, 3, 4, 15, 20), newYork);
        EXPECT_EQ(titles(candidates), row.titles);
    }
}

TEST(VoiceTaskParser, EachCandidateKeepsItsOwnDayAndStart) {
    for (const Calendar& calendar : {test::newYork(), test::berlin()}) {
        SCOPED_TRACE(calendar.zoneId());
        const Instant now = at(calendar, 2026, 3, 28, 18, 45);

        const auto candidates = VoiceTaskParser::candidates(
            "buy milk next task call mom tomorrow at 5pm; bake at 2:30", now, calendar);

        ASSERT_EQ(candidates.size(), 3u);
        EXPECT_EQ(candidates[0].scheduledDay, std::nullopt);
        EXPECT_EQ(candidates[0].scheduledStart, std::nullopt);
        EXPECT_EQ(candidates[1].scheduledDay, at(calendar, 2026, 3, 29));
        EXPECT_EQ(candidates[1].scheduledStart, at(calendar, 2026, 3, 29, 17));
        EXPECT_EQ(candidates[2].scheduledDay, std::nullopt);
        EXPECT_EQ(candidates[2].scheduledStart, at(calendar, 2026, 3, 28, 2, 30));
    }
}

TEST(VoiceTaskParser, EveryCandidateGetsAFreshId) {
    const Calendar berlin = test::berlin();
    const Instant now = at(berlin, 2026, 3, 4, 9);
    std::set<Uuid> ids;
    for (int run = 0; run < 2; ++run) {
        for (const auto& candidate : VoiceTaskParser::candidates("a; b; c", now, berlin)) {
            ids.insert(candidate.id);
        }
    }
    EXPECT_EQ(ids.size(), 6u);
}

} // namespace
} // namespace daywyn
