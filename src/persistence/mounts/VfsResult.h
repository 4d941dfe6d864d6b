#pragma once

#include <cstdint>
#include <system_error>

namespace qorl {

/// What an operation of a virtual file system ends with: a number, 0 for success, and its text.
///
/// `message()` of the result gives the text, `category().name()` is "system". Compare by the category object,
/// not by that name, which the numbers of the operating system bear as well. `default_error_condition()` is
/// what comes nearest to it among those.
using VfsResult = std::error_code;

enum class VfsError : int32_t {
    internal = 1,       ///< "internal filesystem returned error"
    readOnly = 2,       ///< "filesystem is readonly"
    noArchive = 3,      ///< "no archive registered for this uri"
    noFileSystem = 4,   ///< "no filesystem registered to handle URI"
    notImplemented = 5, ///< "not implemented"
    unknown = 6,        ///< "unknown error", and so is any other number
};

const std::error_category& vfsCategory() noexcept;
/// Lets a `VfsError` stand for a `VfsResult`.
std::error_code make_error_code(VfsError error) noexcept;

} // namespace qorl

template <>
struct std::is_error_code_enum<qorl::VfsError> : std::true_type {};
