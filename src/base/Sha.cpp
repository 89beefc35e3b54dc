#include "base/Sha.h"

#include <nettle/sha1.h>

namespace daywyn {

std::array<std::uint8_t, 20> sha1(std::string_view data) {
    sha1_ctx context;
    sha1_init(&context);
    sha1_update(&context, data.size(), reinterpret_cast<const std::uint8_t*>(data.data()));
    std::array<std::uint8_t, 20> digest{};
    sha1_digest(&context, digest.size(), digest.data());
    return digest;
}

std::array<std::uint8_t, 32> sha256(std::string_view data) {
    sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, data.size(), reinterpret_cast<const std::uint8_t*>(data.data()));
    std::array<std::uint8_t, 32> digest{};
    sha256_digest(&context, digest.size(), digest.data());
    return digest;
}

Sha256Stream::Sha256Stream() {
    reset();
}

void Sha256Stream::reset() {
    sha256_init(&context_);
}

void Sha256Stream::addData(const char* data, std::size_t size) {
    sha256_update(&context_, size, reinterpret_cast<const std::uint8_t*>(data));
}

std::string Sha256Stream::hexDigest() {
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    // Nettle starts the context afresh once the digest is taken.
    sha256_digest(&context_, digest.size(), digest.data());
    static constexpr char hex[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * digest.size());
    for (const std::uint8_t byte : digest) {
        text.push_back(hex[byte >> 4]);
        text.push_back(hex[byte & 0x0f]);
    }
    return text;
}

} // namespace daywyn
