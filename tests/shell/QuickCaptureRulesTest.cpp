#include <gtest/gtest.h>

#include "base/Calendar.h"
#include "cli/CommandLine.h"
#include "shell/QuickAddPlacement.h"
#include "shell/QuickCaptureShortcutStatus.h"

namespace daywyn {
namespace {

using Outcome = ShortcutRegistration::Outcome;

TEST(QuickCaptureShortcutStatus, EachRegistrationOutcomeGetsTheSentenceTheUserCanActOn) {
    struct Case {
        ShortcutRegistration registration;
        QuickCaptureShortcutStatus::Kind kind;
        std::string text;
    };
    const Case cases[] = {
        {{Outcome::registered, 0}, QuickCaptureShortcutStatus::Kind::active, ""},
        {{Outcome::refused, 10},
         QuickCaptureShortcutStatus::Kind::unavailable,
         "Ctrl+Alt+Space is unavailable (error 10). Another app may already use it."},
        {{Outcome::failed, 2},
         QuickCaptureShortcutStatus::Kind::unavailable,
         "Daywyn couldn\u2019t listen for the global shortcut (error 2)."},
        {{Outcome::unsupported, 0},
         QuickCaptureShortcutStatus::Kind::unavailable,
         "This session has no global shortcuts for Daywyn. Bind the command \u201Cdaywyn "
         "quick-add\u201D to a keyboard shortcut in your desktop\u2019s settings."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const QuickCaptureShortcutStatus status = QuickCaptureShortcutStatus::after(c.registration);
        EXPECT_EQ(status.kind, c.kind);
        EXPECT_EQ(status.text(), c.text);
    }
}

TEST(QuickAddPlacement, CentresThePanelInTheUpperPartOfTheVisibleFrame) {
    struct Case {
        const char* name;
        ScreenRect frame, panel;
    };
    const Case cases[] = {
        {"1920 x 1080 with a 32 px top bar", {0, 32, 1920, 1048}, {680, 250, 560, 176}},
        {"a second screen to the right", {1920, 0, 1280, 1024}, {2280, 212, 560, 176}},
        {"too small: the margins stay", {0, 0, 400, 150}, {12, 12, 376, 126}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(QuickAddPlacement::frame(c.frame), c.panel);
    }
}

TEST(CommandLine, QuickAddIsListedAndTakesNoWords) {
    const Calendar calendar;
    const Instant now{1779440400.0};
    const auto help = checkWithoutStore({"--help"}, now, calendar);
    ASSERT_TRUE(help);
    EXPECT_NE(help->out.find("quick-add"), std::string::npos);
    const auto extra = checkWithoutStore({"quick-add", "Buy milk"}, now, calendar);
    ASSERT_TRUE(extra);
    EXPECT_EQ(extra->status, 2);
    // Reaching the check with no words means the verb goes on to the app over D-Bus.
    EXPECT_FALSE(checkWithoutStore({"quick-add"}, now, calendar));
}

} // namespace
} // namespace daywyn
