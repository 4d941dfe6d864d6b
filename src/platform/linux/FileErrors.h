#pragma once

#include "platform/Files.h"

#include <cerrno>

namespace qorl::platform {

/// The failure that the last call of the system left behind.
inline FileError lastFileError() {
    return {errno};
}

/// The outcome of a call of the system that answers 0 on success.
inline FileError toFileError(int result) {
    return result == 0 ? FileError() : lastFileError();
}

} // namespace qorl::platform
