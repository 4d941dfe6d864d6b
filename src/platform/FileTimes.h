#pragma once

#include "platform/Files.h"

namespace qorl::platform {

/// When a file was written and read last, in milliseconds since 1970 UTC. Follows links.
FileError setFileTimes(const std::string& path, int64_t written, int64_t read);

} // namespace qorl::platform
