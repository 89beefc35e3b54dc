#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace daywyn {

// Length of the canonical text of a Uuid.
inline constexpr std::size_t kUuidTextLength = 36;

// A 128-bit identifier. Written as canonical upper-case text with hyphens
// ("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"); read in either case.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    // A fresh random (version 4) identifier from the system's secure source.
    static Uuid random();

    // Parses the canonical 36-character form in either case; anything else is absent.
    static std::optional<Uuid> parse(std::string_view text);

    // Canonical upper-case text.
    std::string text() const;
    // Writes the 36 characters of the canonical upper-case text to out (no terminator).
    void writeText(char* out) const;

    auto operator<=>(const Uuid&) const = default;
};

} // namespace daywyn

template <>
struct std::hash<daywyn::Uuid> {
    std::size_t operator()(const daywyn::Uuid& id) const noexcept {
        std::uint64_t a = 0;
        std::uint64_t b = 0;
        for (int i = 0; i < 8; ++i) {
            a = (a << 8) | id.bytes[static_cast<std::size_t>(i)];
            b = (b << 8) | id.bytes[static_cast<std::size_t>(i + 8)];
        }
        return static_cast<std::size_t>(a ^ (b * 0x9E3779B97F4A7C15ULL));
    }
};
