#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <nettle/sha2.h>
#include <string>
#include <string_view>

namespace daywyn {

// SHA-1 and SHA-256 through Nettle, which uses the processor's SHA instructions where it
// has them and, unlike OpenSSL's libcrypto (about 7 ms of set-up in every process that
// links it), costs a process next to nothing to load.
std::array<std::uint8_t, 20> sha1(std::string_view data);
std::array<std::uint8_t, 32> sha256(std::string_view data);

// SHA-256 over data that arrives in pieces, such as a download being verified.
class Sha256Stream {
public:
    Sha256Stream();

    // Starts a new digest.
    void reset();
    void addData(const char* data, std::size_t size);
    // 64 lower-case hexadecimal digits of what was added since the last reset; the
    // stream then starts afresh.
    std::string hexDigest();

private:
    sha256_ctx context_;
};

} // namespace daywyn
