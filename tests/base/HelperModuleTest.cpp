#include "base/HelperModule.h"

#include <string>

#include <gtest/gtest.h>

namespace daywyn {
namespace {

// The modules beside the app are found from a program elsewhere in the build tree, and
// a module that is not there is a sentence, not a crash.
TEST(HelperModule, FindsTheBuiltModulesAndSaysWhyOneIsMissing) {
    std::string failure;
    void* calendars = openHelperModule("daywyn-calendars.so", failure);
    ASSERT_NE(calendars, nullptr) << failure;
    EXPECT_NE(helperModuleFunction(calendars, "daywynOpenEvolutionCalendars"), nullptr);
    EXPECT_EQ(helperModuleFunction(calendars, "noSuchFunction"), nullptr);
    // Loaded once: a second open hands back the same module.
    EXPECT_EQ(openHelperModule("daywyn-calendars.so", failure), calendars);

    void* speech = openHelperModule("daywyn-speech.so", failure);
    ASSERT_NE(speech, nullptr) << failure;
    EXPECT_NE(helperModuleFunction(speech, "daywynOpenSpeechDecoder"), nullptr);

    failure.clear();
    EXPECT_EQ(openHelperModule("daywyn-nothing.so", failure), nullptr);
    EXPECT_NE(failure.find("daywyn-nothing.so is not installed beside"), std::string::npos)
        << failure;
    EXPECT_EQ(helperModuleFunction(nullptr, "daywynOpenSpeechDecoder"), nullptr);
}

} // namespace
} // namespace daywyn
