#pragma once

#include <cstddef>
#include <string>

namespace qorl {

/// The MD5 digest (RFC 1321) of `size` bytes, in 32 upper-case hexadecimal digits: good for names of files,
/// not for secrets.
std::string md5Digits(const void* bytes, size_t size);

} // namespace qorl
