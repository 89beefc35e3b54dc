#include "base/Uuid.h"

#include <cerrno>
#include <random>
#include <sys/random.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace daywyn {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

#if !defined(__SSE2__)
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
#endif

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
#if defined(__SSE2__)
    // A state file holds tens of thousands of identifiers, so the 32 digits are decoded
    // sixteen at a time. The hyphens are dropped by loading at shifted offsets: the
    // first sixteen digits are text[0..8) text[9..13) text[14..18), the last sixteen
    // text[19..23) text[24..36).
    auto load = [p](int offset) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + offset));
    };
    auto bytesIn = [](int from, int to) {
        alignas(16) std::uint8_t mask[16] = {};
        for (int i = from; i < to; ++i) {
            mask[i] = 0xFF;
        }
        return _mm_load_si128(reinterpret_cast<const __m128i*>(mask));
    };
    const __m128i first = _mm_or_si128(
        _mm_or_si128(_mm_and_si128(load(0), bytesIn(0, 8)), _mm_and_si128(load(1), bytesIn(8, 12))),
        _mm_and_si128(load(2), bytesIn(12, 16)));
    const __m128i second = _mm_or_si128(_mm_and_si128(load(19), bytesIn(0, 4)),
                                        _mm_and_si128(load(20), bytesIn(4, 16)));
    // Each digit's value, and whether every byte is a digit.
    bool valid = true;
    auto nibbles = [&valid](__m128i v) {
        const __m128i isDigit = _mm_and_si128(_mm_cmpgt_epi8(v, _mm_set1_epi8('0' - 1)),
                                              _mm_cmplt_epi8(v, _mm_set1_epi8('9' + 1)));
        const __m128i lower = _mm_or_si128(v, _mm_set1_epi8(0x20));
        const __m128i isLetter = _mm_and_si128(_mm_cmpgt_epi8(lower, _mm_set1_epi8('a' - 1)),
                                               _mm_cmplt_epi8(lower, _mm_set1_epi8('f' + 1)));
        valid = valid && _mm_movemask_epi8(_mm_or_si128(isDigit, isLetter)) == 0xFFFF;
        return _mm_add_epi8(_mm_and_si128(v, _mm_set1_epi8(0x0F)),
                            _mm_and_si128(isLetter, _mm_set1_epi8(9)));
    };
    // Two digits per 16-bit lane, the first in the low byte: (first << 4) | second.
    auto pairs = [](__m128i n) {
        return _mm_or_si128(_mm_and_si128(_mm_slli_epi16(n, 4), _mm_set1_epi16(0x00F0)),
                            _mm_srli_epi16(n, 8));
    };
    const __m128i packed = _mm_packus_epi16(pairs(nibbles(first)), pairs(nibbles(second)));
    if (!valid) {
        return std::nullopt;
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(id.bytes.data()), packed);
#else
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
#endif
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
