#include "platform/FileTimes.h"

#include "platform/linux/FileErrors.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace qorl::platform {

namespace {

timespec toTimespec(int64_t milliseconds) {
    const int64_t rest = (milliseconds % 1000 + 1000) % 1000;
    return {.tv_sec = (milliseconds - rest) / 1000, .tv_nsec = rest * 1'000'000};
}

} // namespace

FileError setFileTimes(const std::string& path, int64_t written, int64_t read) {
    const timespec times[2] = {toTimespec(read), toTimespec(written)};
    return toFileError(utimensat(AT_FDCWD, path.c_str(), times, 0));
}

} // namespace qorl::platform
