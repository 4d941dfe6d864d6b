#pragma once

namespace qorl {

/// Version of the library as "major.minor.patch". Valid for the life of the program; any thread.
const char* libraryVersion();

} // namespace qorl
