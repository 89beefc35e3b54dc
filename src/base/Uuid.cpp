#include "base/Uuid.h"

#include <cerrno>
#include <random>
#include <sys/random.h>

namespace daywyn {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

// 256-entry table: a branchy decoder costs several times more on files that
// hold tens of thousands of identifiers.
struct HexTable {
    std::array<std::int8_t, 256> value{};
    constexpr HexTable() {
        for (auto& v : value) {
            v = -1;
        }
        for (int i = 0; i < 10; ++i) {
            value[static_cast<std::size_t>('0' + i)] = static_cast<std::int8_t>(i);
        }
        for (int i = 0; i < 6; ++i) {
            value[static_cast<std::size_t>('a' + i)] = static_cast<std::int8_t>(10 + i);
            value[static_cast<std::size_t>('A' + i)] = static_cast<std::int8_t>(10 + i);
        }
    }
};
constexpr HexTable kHex;

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
    const char* p = text.data();
    Uuid id;
    // Where each byte's two digits start; one test for all of them at the end.
    static constexpr std::uint8_t kStarts[16] = {0,  2,  4,  6,  9,  11, 14, 16,
                                                 19, 21, 24, 26, 28, 30, 32, 34};
    int invalid = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        const int hi = kHex.value[static_cast<unsigned char>(p[kStarts[i]])];
        const int lo = kHex.value[static_cast<unsigned char>(p[kStarts[i] + 1])];
        invalid |= hi | lo;
        id.bytes[i] = static_cast<std::uint8_t>((hi << 4) | lo);
    }
    if (invalid < 0) {
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
