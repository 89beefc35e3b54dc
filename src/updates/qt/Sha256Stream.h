#pragma once

#include <cstddef>
#include <string>

struct evp_md_ctx_st;

namespace daywyn {

// SHA-256 over data that arrives in pieces, through OpenSSL's libcrypto, which uses the
// processor's SHA instructions where it has them (several times faster than
// QCryptographicHash here, so verifying a download costs little over fetching it).
class Sha256Stream {
public:
    Sha256Stream();
    ~Sha256Stream();
    Sha256Stream(const Sha256Stream&) = delete;
    Sha256Stream& operator=(const Sha256Stream&) = delete;

    // Starts a new digest; until the first one, every digest is empty.
    void reset();
    void addData(const char* data, std::size_t size);
    // 64 lower-case hexadecimal digits; empty when the digest could not be computed, so
    // it matches no checksum.
    std::string hexDigest();

private:
    evp_md_ctx_st* context_ = nullptr;
    bool failed_ = true;
};

} // namespace daywyn
