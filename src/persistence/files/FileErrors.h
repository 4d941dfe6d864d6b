#pragma once

#include "platform/Files.h"

#include <system_error>

namespace qorl {

/// Stores the system's number of a failure where the caller of an operation wants it; 0 for none.
inline void tellError(int32_t* error, const platform::FileError& failure) {
    if (error)
        *error = failure.code;
}
inline void tellError(int32_t* error, std::errc reason) {
    tellError(error, platform::FileError{static_cast<int32_t>(reason)});
}

} // namespace qorl
