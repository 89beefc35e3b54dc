#include "voice/PauseMarkers.h"

#include <gtest/gtest.h>

#include "voice/AudioLevel.h"

namespace daywyn {
namespace {

TEST(PauseMarkers, ALongSilenceBetweenWordsBecomesATaskBoundary) {
    struct Case {
        const char* name;
        double secondStart;
        const char* expected;
    };
    // The first word runs from 0.5 s for 0.4 s, so it ends at 0.9 s.
    const Case cases[] = {
        {"no gap", 0.9, "buy milk"},
        {"just under the pause", 0.9 + 1.14, "buy milk"},
        {"exactly the pause", 0.9 + 1.15, "buy | milk"},
        {"longer than the pause", 0.9 + 3.0, "buy | milk"},
        // Times made of frame counts: 205 frames at 100 a second.
        {"frame arithmetic landing on 1.15", 2.05, "buy | milk"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const TranscriptSegment segments[] = {{"buy", 0.5, 0.4}, {"milk", c.secondStart, 0.3}};
        EXPECT_EQ(transcriptWithPauseMarkers(segments), c.expected);
    }
}

TEST(PauseMarkers, JoinsSeveralTasksAndSkipsEmptySegments) {
    const TranscriptSegment segments[] = {
        {"call", 0.0, 0.3}, {"the", 0.3, 0.1},  {"dentist", 0.4, 0.5}, {"", 1.0, 0.2},
        {"buy", 2.5, 0.3},  {"milk", 2.8, 0.3}, {"water", 4.5, 0.4},   {"plants", 4.9, 0.5},
    };
    EXPECT_EQ(transcriptWithPauseMarkers(segments), "call the dentist | buy milk | water plants");
    EXPECT_EQ(transcriptWithPauseMarkers({}), "");
}

TEST(AudioLevel, OnlyAPeakOfAtLeastTwoThousandthsCountsAsSound) {
    // 0.002 of full scale is 65.536 samples: 65 is below it, 66 reaches it.
    const std::int16_t quiet[] = {0, 65, -65, 12};
    const std::int16_t audible[] = {0, 3, -66, 1};
    const std::int16_t loudest[] = {-32768, 32767};
    EXPECT_FALSE(containsAudibleSound(quiet));
    EXPECT_TRUE(containsAudibleSound(audible));
    EXPECT_DOUBLE_EQ(peakLevel(loudest), 1.0);
    EXPECT_FALSE(containsAudibleSound({}));
}

} // namespace
} // namespace daywyn
