#pragma once

#include "platform/Files.h"

namespace qorl::platform {

/// Moves a file, a link or a folder with all that is in it to the user's bin, from which the desktop can
/// bring it back: that of the volume where it can have one, else the one in the user's home. Throws nothing
/// but std::bad_alloc. What can't be moved there stays where it is.
///
/// Follows the Desktop Trash Can Specification 1.0 of freedesktop.org.
FileError moveToTrash(const std::string& path);

} // namespace qorl::platform
