#include "persistence/defaults/Md5.h"

#include <cstdint>
#include <nettle/md5.h>

namespace qorl {

std::string md5Digits(const void* bytes, size_t size) {
    md5_ctx context;
    uint8_t digest[MD5_DIGEST_SIZE];
    md5_init(&context);
    md5_update(&context, size, static_cast<const uint8_t*>(bytes));
    md5_digest(&context, sizeof digest, digest);
    std::string text;
    for (const uint8_t byte : digest) {
        text += "0123456789ABCDEF"[byte >> 4];
        text += "0123456789ABCDEF"[byte & 15];
    }
    return text;
}

} // namespace qorl
