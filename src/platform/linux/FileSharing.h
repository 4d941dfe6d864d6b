#pragma once

#include "platform/Files.h"

namespace qorl::platform {

/// Keeps the file of an open descriptor, until that is closed, from what the `openShares...` bits of `mode`
/// do not allow others. The code of "Device or resource busy" when somebody else uses it in a way that does
/// not go with this one; no error, and no locks, on volumes without them.
FileError shareFile(int descriptor, uint32_t mode);

/// Whether somebody else has the file of an open descriptor open for writing, by what `shareFile` keeps. Only
/// looks, so that it is in nobody's way.
bool isBeingWritten(int descriptor);

} // namespace qorl::platform
