#include "sync/TaskCoding.h"

#include <openssl/sha.h>

namespace daywyn::sync {

Uuid taskIdForUid(std::string_view uid) {
    if (const auto id = Uuid::parse(uid)) {
        return *id;
    }
    // A name-based identifier (version 5 layout, SHA-1 of the text), so that every
    // machine derives the same task id from the same UID.
    unsigned char digest[SHA_DIGEST_LENGTH];
    SHA1(reinterpret_cast<const unsigned char*>(uid.data()), uid.size(), digest);
    Uuid id;
    for (std::size_t i = 0; i < id.bytes.size(); ++i) {
        id.bytes[i] = digest[i];
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x50);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

} // namespace daywyn::sync
