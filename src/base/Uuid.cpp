#include "base/Uuid.h"

#include <bit>
#include <cerrno>
#include <cstring>
#include <random>
#include <sys/random.h>

namespace daywyn {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

// Words are read from text with the first character in the lowest byte.
static_assert(std::endian::native == std::endian::little);

template <typename Word>
Word load(const char* p) {
    Word word = 0;
    std::memcpy(&word, p, sizeof word);
    return word;
}

// Eight hexadecimal digits (the first in the lowest byte) as four bytes, the first in the
// lowest; false when any is not a digit of either case. One word at a time: a branchy
// or table decoder costs several times more on files of tens of thousands of ids.
inline bool hexBytes(std::uint64_t text, std::uint8_t* out) {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    constexpr std::uint64_t highs = ones * 0x80;
    if ((text & highs) != 0) {
        return false;
    }
    // With every byte below 0x80, adding below 0x80 to each never carries into the next.
    const std::uint64_t digit = (text + ones * (0x80 - '0')) & ~(text + ones * (0x80 - '9' - 1));
    const std::uint64_t lower = text | ones * 0x20;
    const std::uint64_t letter = (lower + ones * (0x80 - 'a')) & ~(lower + ones * (0x80 - 'f' - 1));
    if (((digit | letter) & highs) != highs) {
        return false;
    }
    // '0'-'9' keep their low four bits; 'A'-'F' and 'a'-'f' (bit 6 set) add nine to them.
    const std::uint64_t nibbles = (text & ones * 0x0F) + 9 * ((text >> 6) & ones);
    // Each pair of digits into the low byte of its 16 bits, then those four bytes together.
    std::uint64_t pairs = ((nibbles << 4) | (nibbles >> 8)) & 0x00FF00FF00FF00FFu;
    pairs = (pairs | pairs >> 8) & 0x0000FFFF0000FFFFu;
    pairs = (pairs | pairs >> 16) & 0xFFFFFFFFu;
    const auto bytes = static_cast<std::uint32_t>(pairs);
    std::memcpy(out, &bytes, sizeof bytes);
    return true;
}

bool fillRandom(std::uint8_t* out, std::size_t count) {
    std::size_t done = 0;
    while (done < count) {
        ssize_t got = getrandom(out + done, count - done, 0);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        done += static_cast<std::size_t>(got);
    }
    return true;
}

} // namespace

Uuid Uuid::random() {
    Uuid id;
    if (!fillRandom(id.bytes.data(), id.bytes.size())) {
        // getrandom only fails on kernels older than 3.17 or under seccomp rules;
        // an identifier must still be produced, so fall back to the library source.
        std::random_device device;
        for (auto& b : id.bytes) {
            b = static_cast<std::uint8_t>(device());
        }
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != kUuidTextLength || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
        text[23] != '-') {
        return std::nullopt;
    }
    // The 32 digits as four words of eight: 8, 4+4, 4+4 and 8 of the 8-4-4-4-12 groups.
    const char* p = text.data();
    const auto join = [](std::uint32_t low, std::uint32_t high) {
        return std::uint64_t{low} | std::uint64_t{high} << 32;
    };
    Uuid id;
    if (!hexBytes(load<std::uint64_t>(p), id.bytes.data()) ||
        !hexBytes(join(load<std::uint32_t>(p + 9), load<std::uint32_t>(p + 14)),
                  id.bytes.data() + 4) ||
        !hexBytes(join(load<std::uint32_t>(p + 19), load<std::uint32_t>(p + 24)),
                  id.bytes.data() + 8) ||
        !hexBytes(load<std::uint64_t>(p + 28), id.bytes.data() + 12)) {
        return std::nullopt;
    }
    return id;
}

void Uuid::writeText(char* out) const {
    std::size_t pos = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            out[pos++] = '-';
        }
        out[pos++] = kHexDigits[bytes[i] >> 4];
        out[pos++] = kHexDigits[bytes[i] & 0x0F];
    }
}

std::string Uuid::text() const {
    std::string s(36, '\0');
    writeText(s.data());
    return s;
}

} // namespace daywyn
