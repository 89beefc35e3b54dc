#include "calendar/CalendarEventItem.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unordered_set>

#include "base/DoubleText.h"

namespace daywyn {

namespace {

// Seconds from 1970-01-01 to 2001-01-01, the reference date of occurrence keys.
constexpr double kReferenceDateOffset = 978'307'200.0;

int componentByte(double component) {
    if (!std::isfinite(component)) {
        return 0;
    }
    // Truncation, not rounding: 0.999 * 255 = 254.7 gives 254.
    const double scaled = std::clamp(component, 0.0, 1.0) * 255.0;
    return static_cast<int>(scaled);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

std::string formatBytes(int red, int green, int blue) {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X", red, green, blue);
    return buffer;
}

} // namespace

std::string CalendarEventItem::occurrenceId(std::string_view calendarIdentifier,
                                            std::string_view eventIdentifier, Instant start) {
    std::string id;
    id.reserve(calendarIdentifier.size() + eventIdentifier.size() + 16);
    id.append(calendarIdentifier);
    id += '|';
    id.append(eventIdentifier);
    id += '|';
    id += shortestDoubleText(start.seconds - kReferenceDateOffset);
    return id;
}

std::string CalendarEventItem::hexColor(std::optional<RgbColor> color) {
    if (!color) {
        return std::string(kFallbackCalendarColor);
    }
    return formatBytes(componentByte(color->red), componentByte(color->green),
                       componentByte(color->blue));
}

std::string CalendarEventItem::hexColorFromText(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    if (text.empty() || text.front() != '#') {
        return std::string(kFallbackCalendarColor);
    }
    text.remove_prefix(1);
    std::vector<int> digits;
    for (char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0) {
            return std::string(kFallbackCalendarColor);
        }
        digits.push_back(digit);
    }
    // Each component takes a third of the digits; its two leading digits are the byte
    // (a one-digit component is doubled: "#abc" is "#AABBCC").
    if (digits.size() != 3 && digits.size() != 6 && digits.size() != 12) {
        return std::string(kFallbackCalendarColor);
    }
    const std::size_t width = digits.size() / 3;
    int bytes[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const int high = digits[i * width];
        const int low = width == 1 ? high : digits[i * width + 1];
        bytes[i] = high * 16 + low;
    }
    return formatBytes(bytes[0], bytes[1], bytes[2]);
}

std::vector<CalendarEventItem>
CalendarEventItem::deduplicated(std::vector<CalendarEventItem> items) {
    std::stable_sort(
        items.begin(), items.end(),
        [](const CalendarEventItem& a, const CalendarEventItem& b) { return a.start < b.start; });
    std::unordered_set<std::string> seen;
    std::vector<CalendarEventItem> kept;
    kept.reserve(items.size());
    for (auto& item : items) {
        if (seen.insert(item.id).second) {
            kept.push_back(std::move(item));
        }
    }
    return kept;
}

} // namespace daywyn
