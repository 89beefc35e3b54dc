#include "calendar/qt/EdsCalendarSource.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

std::size_t threadCount() {
    const auto tasks = std::filesystem::directory_iterator("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

bool mapped(const std::string& library) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(library) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// Start-up pays nothing for Evolution: the source starts its thread and loads the
// calendar module on its first read, and goes cleanly whether it read or not.
TEST(EdsCalendarSource, StartsItsThreadAndLoadsTheModuleOnTheFirstRead) {
    const Calendar calendar = test::berlin();
    { EdsCalendarSource unused(calendar); }

    const std::size_t before = threadCount();
    EdsCalendarSource source(calendar);
    EXPECT_EQ(threadCount(), before);

    // No calendars asked for: only the list, whatever this machine's service has.
    const CalendarSnapshot snapshot = source.readNow(CalendarQuery{});
    EXPECT_TRUE(mapped("daywyn-calendars.so"));
    EXPECT_TRUE(mapped("libecal"));
    EXPECT_GT(threadCount(), before);
    EXPECT_FALSE(snapshot.errorMessage &&
                 snapshot.errorMessage->find("could not load") != std::string::npos)
        << *snapshot.errorMessage;
}

} // namespace
} // namespace daywyn
