#pragma once

#include "platform/Files.h"

namespace qorl::platform {

/// "." for a name without a folder, "/" for what stands below the root.
std::string parentOf(const std::string& path);
/// Without separators at its end, but for the root's own.
std::string withoutEnd(const std::string& path);
std::string lastPart(const std::string& path);
std::string joinPath(const std::string& folder, const std::string& name);

/// What a symbolic link holds; an error for anything else.
FileError readLink(const std::string& path, std::string& target);

/// A hidden name in the folder of `path` that nothing has now; `attempt` tells apart those of one moment.
std::string nameBeside(const std::string& path, int attempt = 0);

/// Whether `path` is `folder` or lies in it, whatever links lead to either.
bool isInside(const std::string& path, const std::string& folder);

} // namespace qorl::platform
