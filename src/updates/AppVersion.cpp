#include "updates/AppVersion.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace daywyn {
namespace {

struct SplitVersion {
    std::string_view numbers;
    std::optional<std::string_view> preRelease;
};

// Splits once at the first "-" and drops empty pieces, so "-beta" has the number part
// "beta" and no pre-release, and "1.2-" has no pre-release either.
SplitVersion split(std::string_view version) {
    const auto dash = version.find('-');
    if (dash == std::string_view::npos) {
        return {version, std::nullopt};
    }
    const std::string_view head = version.substr(0, dash);
    const std::string_view tail = version.substr(dash + 1);
    if (head.empty()) {
        return {tail, std::nullopt};
    }
    if (tail.empty()) {
        return {head, std::nullopt};
    }
    return {head, tail};
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// A whole piece of decimal digits (an optional sign, as integer parsing allows), else 0.
// Values beyond 64 bits saturate instead of wrapping, so a huge component stays huge.
std::int64_t componentValue(std::string_view piece) {
    bool negative = false;
    if (!piece.empty() && (piece.front() == '+' || piece.front() == '-')) {
        negative = piece.front() == '-';
        piece.remove_prefix(1);
    }
    if (piece.empty()) {
        return 0;
    }
    std::int64_t value = 0;
    for (char c : piece) {
        if (!isDigit(c)) {
            return 0;
        }
        if (value > (INT64_MAX - (c - '0')) / 10) {
            value = INT64_MAX;
        } else {
            value = value * 10 + (c - '0');
        }
    }
    return negative ? -value : value;
}

std::vector<std::int64_t> components(std::string_view numbers) {
    std::vector<std::int64_t> result;
    std::size_t start = 0;
    while (start <= numbers.size()) {
        const auto dot = numbers.find('.', start);
        const auto end = dot == std::string_view::npos ? numbers.size() : dot;
        if (end > start) {
            result.push_back(componentValue(numbers.substr(start, end - start)));
        }
        if (dot == std::string_view::npos) {
            break;
        }
        start = dot + 1;
    }
    return result;
}

// Text order with runs of digits compared by their numeric value, byte by byte
// otherwise (no locale). Leading zeros make a run longer but not larger.
VersionOrder compareNumerically(std::string_view a, std::string_view b) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            std::size_t runA = i;
            std::size_t runB = j;
            while (runA < a.size() && a[runA] == '0') {
                ++runA;
            }
            while (runB < b.size() && b[runB] == '0') {
                ++runB;
            }
            std::size_t endA = runA;
            std::size_t endB = runB;
            while (endA < a.size() && isDigit(a[endA])) {
                ++endA;
            }
            while (endB < b.size() && isDigit(b[endB])) {
                ++endB;
            }
            const std::size_t lengthA = endA - runA;
            const std::size_t lengthB = endB - runB;
            if (lengthA != lengthB) {
                return lengthA < lengthB ? VersionOrder::less : VersionOrder::greater;
            }
            if (const int order = a.substr(runA, lengthA).compare(b.substr(runB, lengthB));
                order != 0) {
                return order < 0 ? VersionOrder::less : VersionOrder::greater;
            }
            i = endA;
            j = endB;
            continue;
        }
        const auto ca = static_cast<unsigned char>(a[i]);
        const auto cb = static_cast<unsigned char>(b[j]);
        if (ca != cb) {
            return ca < cb ? VersionOrder::less : VersionOrder::greater;
        }
        ++i;
        ++j;
    }
    if (i < a.size()) {
        return VersionOrder::greater;
    }
    if (j < b.size()) {
        return VersionOrder::less;
    }
    // Equal by value but written differently ("rc01" and "rc1"): keep the order total.
    if (const int order = a.compare(b); order != 0) {
        return order < 0 ? VersionOrder::less : VersionOrder::greater;
    }
    return VersionOrder::equal;
}

} // namespace

VersionOrder AppVersion::compare(std::string_view a, std::string_view b) {
    const SplitVersion left = split(a);
    const SplitVersion right = split(b);
    const auto leftNumbers = components(left.numbers);
    const auto rightNumbers = components(right.numbers);
    const std::size_t count = std::max(leftNumbers.size(), rightNumbers.size());
    for (std::size_t index = 0; index < count; ++index) {
        const std::int64_t x = index < leftNumbers.size() ? leftNumbers[index] : 0;
        const std::int64_t y = index < rightNumbers.size() ? rightNumbers[index] : 0;
        if (x != y) {
            return x < y ? VersionOrder::less : VersionOrder::greater;
        }
    }
    if (!left.preRelease && !right.preRelease) {
        return VersionOrder::equal;
    }
    if (!left.preRelease) {
        return VersionOrder::greater;
    }
    if (!right.preRelease) {
        return VersionOrder::less;
    }
    return compareNumerically(*left.preRelease, *right.preRelease);
}

} // namespace daywyn
