#include "updates/qt/Sha256Stream.h"

#include <openssl/evp.h>

namespace daywyn {

// The context, and with it libcrypto's digest providers, comes with the first download:
// loading the providers costs the idle app about 2 MB.
Sha256Stream::Sha256Stream() = default;

Sha256Stream::~Sha256Stream() {
    EVP_MD_CTX_free(context_);
}

void Sha256Stream::reset() {
    if (context_ == nullptr) {
        context_ = EVP_MD_CTX_new();
    }
    failed_ = context_ == nullptr || EVP_DigestInit_ex(context_, EVP_sha256(), nullptr) != 1;
}

void Sha256Stream::addData(const char* data, std::size_t size) {
    if (!failed_ && EVP_DigestUpdate(context_, data, size) != 1) {
        failed_ = true;
    }
}

std::string Sha256Stream::hexDigest() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (failed_ || EVP_DigestFinal_ex(context_, digest, &length) != 1 || length != 32) {
        failed_ = true;
        return {};
    }
    static constexpr char hex[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * length);
    for (unsigned int index = 0; index < length; ++index) {
        text.push_back(hex[digest[index] >> 4]);
        text.push_back(hex[digest[index] & 0x0f]);
    }
    // Finishing consumed the context; a further digest starts afresh.
    failed_ = true;
    return text;
}

} // namespace daywyn
