#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace daywyn {

// One calendar the user can choose to show in the drawer.
struct CalendarChoice {
    // The calendar identifier.
    std::string id;
    std::string title;
    // Title of the calendar's account or source ("On This Computer", an online account).
    std::string sourceTitle;
    // "#" and six upper-case hexadecimal digits.
    std::string colorHex;

    bool operator==(const CalendarChoice&) const = default;

    // Sorts by source title, then by title, each compared the way the locale sorts
    // words and ignoring case ("personal" sits with "Personal"); ties keep their order.
    // An empty locale means the process's.
    static void sort(std::vector<CalendarChoice>& choices, std::string_view locale = {});
};

} // namespace daywyn
