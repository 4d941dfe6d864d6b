#include "support/FailingDisk.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// The programs are linked with --wrap for these, as for `malloc`. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_openat(int folder, const char* path, int flags, ...);
ssize_t __real_write(int file, const void* bytes, size_t size);
ssize_t __real_pwrite(int file, const void* bytes, size_t size, off_t place);
int __real_fsync(int file);
int __real_fdatasync(int file);
int __real_ftruncate(int file, off_t size);
int __real_close(int file);
int __real_link(const char* from, const char* to);
int __real_symlink(const char* target, const char* path);
int __real_rename(const char* from, const char* to);
int __real_renameat(int fromFolder, const char* from, int toFolder, const char* to);
int __real_unlink(const char* path);
int __real_unlinkat(int folder, const char* path, int flags);
int __real_mkdir(const char* path, mode_t rights);
int __real_rmdir(const char* path);
}

namespace {

using qorl::DiskFault;

// What a child ends with: that it crashed, or what it answered.
constexpr int crashed = 32;
constexpr int answered = 40;
constexpr int withFault = 1;
constexpr int withSuccess = 2;

bool hasLinks = true;
bool isFlushing = true;

struct Armed {
    int32_t left = 0; ///< 0: no fault is to come
    DiskFault fault = DiskFault::error;
    bool isMet = false;
    bool isFull = false;
};
Armed armed;

/// Files that hold bytes which the disk does not know, by descriptors of their own.
std::map<ino_t, int> unflushed;
/// Folders that the disk does not know, with the serials of those that they are in.
std::map<std::filesystem::path, ino_t> unflushedFolders;

bool isCutToCome() {
    return armed.fault == DiskFault::powerCut && armed.left > 0;
}

ino_t serialOf(int file) {
    struct stat status = {};
    return fstat(file, &status) == 0 ? status.st_ino : 0;
}

bool isPlainFile(int file) {
    struct stat status = {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

void noteFolder(const std::filesystem::path& path) {
    struct stat status = {};
    const auto parent = path.has_filename() ? path.parent_path() : path.parent_path().parent_path();
    if (stat(parent.c_str(), &status) == 0)
        unflushedFolders[path] = status.st_ino;
}

/// What is lost when the power goes now.
void loseUnflushed() {
    armed.left = 0;
    for (const auto& [serial, file] : unflushed)
        [[maybe_unused]] const int result = __real_ftruncate(file, 0);
    std::error_code error;
    for (const auto& [folder, parent] : unflushedFolders)
        std::filesystem::remove_all(folder, error);
}

/// The fault's turn is now.
bool isStruck() {
    if (armed.left == 0 || --armed.left > 0)
        return false;
    armed.isMet = true;
    if (armed.fault == DiskFault::crash)
        _exit(crashed);
    if (armed.fault == DiskFault::powerCut) {
        loseUnflushed();
        _exit(crashed);
    }
    return true;
}

int flush(int file) {
    const ino_t flushed = serialOf(file);
    std::erase_if(unflushedFolders, [flushed](const auto& folder) { return folder.second == flushed; });
    if (const auto found = unflushed.find(flushed); found != unflushed.end()) {
        __real_close(found->second);
        unflushed.erase(found);
    }
    return isFlushing ? __real_fsync(file) : 0;
}

/// A call that changes everything or nothing: with a fault it changes nothing.
template <typename Call>
auto guarded(Call call) -> decltype(call()) {
    if (!isStruck())
        return call();
    if (armed.fault == DiskFault::tornWrite)
        _exit(crashed);
    errno = EIO;
    return -1;
}

} // namespace

extern "C" {
int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t rights = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const auto call = [&] { return __real_open(path, flags, rights); };
    return flags & O_CREAT ? guarded(call) : call();
}
int __wrap_openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t rights = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const auto call = [&] { return __real_openat(folder, path, flags, rights); };
    return flags & O_CREAT ? guarded(call) : call();
}

ssize_t __wrap_write(int file, const void* bytes, size_t size) {
    const bool isNow = isStruck();
    if (armed.isFull || (isNow && armed.fault == DiskFault::error)) {
        errno = ENOSPC;
        return -1;
    }
    const ino_t serial = isCutToCome() && isPlainFile(file) ? serialOf(file) : 0;
    if (serial != 0 && !unflushed.contains(serial))
        unflushed[serial] = dup(file);
    if (!isNow)
        return __real_write(file, bytes, size);
    const ssize_t written = __real_write(file, bytes, size / 2);
    if (armed.fault == DiskFault::tornWrite)
        _exit(crashed);
    armed.isFull = true;
    return written;
}
ssize_t __wrap_pwrite(int file, const void* bytes, size_t size, off_t place) {
    return guarded([&] { return __real_pwrite(file, bytes, size, place); });
}
int __wrap_fsync(int file) {
    return guarded([&] { return flush(file); });
}
int __wrap_fdatasync(int file) {
    return guarded([&] { return flush(file); });
}
int __wrap_ftruncate(int file, off_t size) {
    return guarded([&] { return __real_ftruncate(file, size); });
}
int __wrap_close(int file) {
    // The descriptor goes all the same, as the system does it.
    return guarded([] { return 0; }) == 0 ? __real_close(file) : (__real_close(file), errno = EIO, -1);
}
int __wrap_link(const char* from, const char* to) {
    if (!hasLinks) {
        errno = EPERM;
        return -1;
    }
    return guarded([&] { return __real_link(from, to); });
}
int __wrap_symlink(const char* target, const char* path) {
    return guarded([&] { return __real_symlink(target, path); });
}
int __wrap_rename(const char* from, const char* to) {
    return guarded([&] { return __real_rename(from, to); });
}
int __wrap_renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    return guarded([&] { return __real_renameat(fromFolder, from, toFolder, to); });
}
int __wrap_unlink(const char* path) {
    return guarded([&] { return __real_unlink(path); });
}
int __wrap_unlinkat(int folder, const char* path, int flags) {
    return guarded([&] { return __real_unlinkat(folder, path, flags); });
}
int __wrap_mkdir(const char* path, mode_t rights) {
    const int result = guarded([&] { return __real_mkdir(path, rights); });
    if (result == 0 && isCutToCome())
        noteFolder(path);
    return result;
}
int __wrap_rmdir(const char* path) {
    return guarded([&] { return __real_rmdir(path); });
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace qorl {

FailingDisk::Outcome FailingDisk::run(int32_t nth, DiskFault fault, const std::function<bool()>& operation) {
    const pid_t child = fork();
    if (child == 0) {
        armed = {nth, fault, false, false};
        const bool answer = operation();
        _exit(answered + (armed.isMet ? withFault : 0) + (answer ? withSuccess : 0));
    }
    int status = 0;
    const bool hasEnded = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
    const int code = hasEnded ? WEXITSTATUS(status) : -1;
    if (code == crashed)
        return {true, true, false};
    EXPECT_EQ(code & ~(withFault | withSuccess), answered)
        << "the child ended with status " << status << " instead of an answer";
    return {(code & withFault) != 0, false, (code & withSuccess) != 0};
}

FailingDisk::Outcome FailingDisk::runToPowerCut(const std::function<bool()>& operation) {
    return run(std::numeric_limits<int32_t>::max(), DiskFault::powerCut, [&] {
        const bool answer = operation();
        loseUnflushed();
        return answer;
    });
}

FailingDisk::WithoutFlushing::WithoutFlushing() {
    isFlushing = false;
}

FailingDisk::WithoutFlushing::~WithoutFlushing() {
    isFlushing = true;
}

FailingDisk::WithoutLinks::WithoutLinks() {
    hasLinks = false;
}

FailingDisk::WithoutLinks::~WithoutLinks() {
    hasLinks = true;
}

} // namespace qorl
