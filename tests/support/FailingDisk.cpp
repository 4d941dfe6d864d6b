#include "support/FailingDisk.h"

#include "support/TestPaths.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

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
int __real_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
int __real_unlink(const char* path);
int __real_unlinkat(int folder, const char* path, int flags);
int __real_mkdir(const char* path, mode_t rights);
int __real_rmdir(const char* path);
}

namespace {

using qorl::DiskFault;
namespace FailingDisk = qorl::FailingDisk;

// What a child ends with: that it crashed, what it answered, or that a test failed in it.
constexpr int crashed = 32;
constexpr int answered = 40;
constexpr int withLoss = 1;
constexpr int withFault = 2;
constexpr int withSuccess = 4;
constexpr int failed = 50;

bool hasLinks = true;
bool isFlushing = true;

struct Armed {
    int32_t left = 0; ///< 0: no fault is to come
    DiskFault fault = DiskFault::error;
    size_t kept = 0;
    FailingDisk::Loss loss = FailingDisk::Loss::allLater;
    bool isMet = false;
    bool isFull = false;
};
Armed armed;

/// Descriptors that something was written with.
std::set<int> written;

/// Files that hold bytes which the disk does not know, by descriptors of their own.
std::map<ino_t, int> unflushed;

/// A name in a folder that is open here, so that it is found wherever that folder is moved.
struct Name {
    int folder = -1;
    std::string last; ///< empty for no name
};
/// A change of a folder's names that the disk does not know.
struct NameChange {
    Name name;
    Name origin;  ///< where what has the name was before
    Name earlier; ///< where that is now which had the name before
};
std::vector<NameChange> unflushedNames;

/// What goes is moved to this folder until it is flushed away: it may have to come back.
int limbo = -1;

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

Name nextInLimbo() {
    static int number = 0;
    return {limbo, std::to_string(++number)};
}

Name nameOf(int folder, const char* path) {
    static std::map<ino_t, int> known;
    std::filesystem::path whole(path);
    if (!whole.has_filename())
        whole = whole.parent_path();
    const std::string parent = whole.has_parent_path() ? whole.parent_path().string() : ".";
    const int opened = __real_openat(folder, parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    const auto [place, isNew] = known.emplace(serialOf(opened), opened);
    if (!isNew)
        __real_close(opened);
    return {place->second, whole.filename().string()};
}

bool find(const Name& name, struct stat& status) {
    return fstatat(name.folder, name.last.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool move(const Name& from, const Name& to) {
    const int error = errno;
    const bool isMoved = __real_renameat(from.folder, from.last.c_str(), to.folder, to.last.c_str()) == 0;
    errno = error;
    return isMoved;
}

void takeBack(const NameChange& change) {
    if (!change.origin.last.empty())
        move(change.name, change.origin);
    if (!change.earlier.last.empty())
        move(change.earlier, change.name);
}

/// What is lost when the power goes now: the contents of files, and changes of names. Whether any of these
/// was lost.
bool loseUnflushed() {
    armed.left = 0;
    for (const auto& [serial, file] : unflushed)
        [[maybe_unused]] const int result = __real_ftruncate(file, 0);
    const size_t count = unflushedNames.size();
    if (armed.loss == FailingDisk::Loss::nextAlone) {
        // Of the last one there is nothing later that could stay.
        const bool isAnyLost = armed.kept + 1 < count;
        if (isAnyLost)
            takeBack(unflushedNames[armed.kept]);
        return isAnyLost;
    }
    for (size_t i = count; i > armed.kept; --i)
        takeBack(unflushedNames[i - 1]);
    return count > armed.kept;
}

/// The fault's turn is now. What befalls the bytes of a write is counted in writes.
bool isStruck(bool isWrite = false) {
    const bool isOfWrites = armed.fault == DiskFault::cutShort || armed.fault == DiskFault::tornWrite;
    if (armed.left == 0 || (isOfWrites && !isWrite) || --armed.left > 0)
        return false;
    armed.isMet = true;
    if (armed.fault == DiskFault::crash)
        _exit(crashed);
    if (armed.fault == DiskFault::powerCut)
        _exit(crashed + (loseUnflushed() ? withLoss : 0));
    return true;
}

int flush(int file) {
    const ino_t flushed = serialOf(file);
    std::erase_if(unflushedNames,
                  [flushed](const auto& change) { return serialOf(change.name.folder) == flushed; });
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
    errno = EIO;
    return -1;
}

/// The same for one that makes what has no name yet. To open what has one changes nothing.
template <typename Call>
auto making(int folder, const char* path, Call call) -> decltype(call()) {
    if (faccessat(folder, path, F_OK, AT_SYMLINK_NOFOLLOW) == 0)
        return call();
    const Name name = isCutToCome() ? nameOf(folder, path) : Name();
    const auto result = guarded(call);
    if (isCutToCome() && result >= 0)
        unflushedNames.push_back({name, nextInLimbo(), {}});
    return result;
}

enum class Replaced { goes, stays };

template <typename Call>
int renaming(int fromFolder, const char* from, int toFolder, const char* to, Call call,
             Replaced replaced = Replaced::goes) {
    return guarded([&] {
        if (!isCutToCome())
            return call();
        NameChange change{nameOf(toFolder, to), nameOf(fromFolder, from), {}};
        struct stat source = {};
        struct stat target = {};
        const bool isSource = find(change.origin, source);
        const bool isTarget = find(change.name, target);
        // Two names of one file stay as they are.
        if (isSource && isTarget && source.st_ino == target.st_ino)
            return call();
        const bool isReplaced =
            replaced == Replaced::goes && isSource && isTarget && !S_ISDIR(target.st_mode);
        if (const Name kept = nextInLimbo(); isReplaced && move(change.name, kept))
            change.earlier = kept;
        const int result = call();
        if (result == 0)
            unflushedNames.push_back(std::move(change));
        else if (!change.earlier.last.empty())
            move(change.earlier, change.name);
        return result;
    });
}

/// Takes a name away, of a file or of an empty folder.
template <typename Call>
int removing(int folder, const char* path, int flags, Call call) {
    return guarded([&] {
        if (!isCutToCome())
            return call();
        struct stat status = {};
        NameChange change{nameOf(folder, path), {}, nextInLimbo()};
        if (!find(change.name, status))
            return call();
        const bool isFolder = S_ISDIR(status.st_mode);
        const auto inside = "/proc/self/fd/" + std::to_string(change.name.folder) + '/' + change.name.last;
        if (isFolder != ((flags & AT_REMOVEDIR) != 0) || (isFolder && !std::filesystem::is_empty(inside)) ||
            !move(change.name, change.earlier))
            return call();
        unflushedNames.push_back(std::move(change));
        return 0;
    });
}

} // namespace

extern "C" {
int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t rights = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const auto call = [&] { return __real_open(path, flags, rights); };
    return flags & O_CREAT ? making(AT_FDCWD, path, call) : call();
}
int __wrap_openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t rights = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const auto call = [&] { return __real_openat(folder, path, flags, rights); };
    return flags & O_CREAT ? making(folder, path, call) : call();
}

ssize_t __wrap_write(int file, const void* bytes, size_t size) {
    const bool isNow = isStruck(true);
    if (armed.left > 0)
        written.insert(file);
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
    // Threads may close files at once; where no fault is to come, none of them changes the set.
    if (written.empty() || written.erase(file) == 0)
        return __real_close(file);
    // The descriptor goes all the same, as the system does it.
    return guarded([] { return 0; }) == 0 ? __real_close(file) : (__real_close(file), errno = EIO, -1);
}
int __wrap_link(const char* from, const char* to) {
    if (!hasLinks) {
        errno = EPERM;
        return -1;
    }
    return making(AT_FDCWD, to, [&] { return __real_link(from, to); });
}
int __wrap_symlink(const char* target, const char* path) {
    return making(AT_FDCWD, path, [&] { return __real_symlink(target, path); });
}
int __wrap_rename(const char* from, const char* to) {
    return renaming(AT_FDCWD, from, AT_FDCWD, to, [&] { return __real_rename(from, to); });
}
int __wrap_renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    return renaming(fromFolder, from, toFolder, to,
                    [&] { return __real_renameat(fromFolder, from, toFolder, to); });
}
int __wrap_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    const auto replaced = flags == 0 ? Replaced::goes : Replaced::stays;
    return renaming(
        fromFolder, from, toFolder, to,
        [&] { return __real_renameat2(fromFolder, from, toFolder, to, flags); }, replaced);
}
int __wrap_unlink(const char* path) {
    return removing(AT_FDCWD, path, 0, [&] { return __real_unlink(path); });
}
int __wrap_unlinkat(int folder, const char* path, int flags) {
    return removing(folder, path, flags, [&] { return __real_unlinkat(folder, path, flags); });
}
int __wrap_mkdir(const char* path, mode_t rights) {
    return making(AT_FDCWD, path, [&] { return __real_mkdir(path, rights); });
}
int __wrap_rmdir(const char* path) {
    return removing(AT_FDCWD, path, AT_REMOVEDIR, [&] { return __real_rmdir(path); });
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace qorl {

namespace {

/// The status of a child that has run `work`, which ends the child; -1 when it did not end by itself.
template <typename Work>
int inChild(const Work& work) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(failed);
    }
    int status = 0;
    const bool hasEnded = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
    return hasEnded ? WEXITSTATUS(status) : -1;
}

} // namespace

FailingDisk::Outcome FailingDisk::run(int32_t nth, DiskFault fault, const std::function<bool()>& operation,
                                      const std::function<void()>& prepare, size_t kept, Loss loss) {
    std::optional<testing::TemporaryFolder> gone;
    if (fault == DiskFault::powerCut)
        gone.emplace();
    const int code = inChild([&] {
        if (prepare)
            prepare();
        if (::testing::Test::HasFailure())
            _exit(failed);
        limbo = gone ? __real_open(gone->path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC) : -1;
        armed = {nth, fault, kept, loss, false, false};
        const bool answer = operation();
        const bool isLost = fault == DiskFault::powerCut && loseUnflushed();
        _exit(answered + (isLost ? withLoss : 0) + (armed.isMet ? withFault : 0) +
              (answer ? withSuccess : 0));
    });
    if ((code & ~withLoss) == crashed)
        return {true, true, (code & withLoss) != 0, false};
    EXPECT_EQ(code & ~(withLoss | withFault | withSuccess), answered)
        << "the child ended in another way than with an answer";
    return {(code & withFault) != 0, false, (code & withLoss) != 0, (code & withSuccess) != 0};
}

void FailingDisk::runAfresh(const std::function<void()>& check) {
    const int code = inChild([&] {
        check();
        std::fflush(stdout);
        _exit(::testing::Test::HasFailure() ? failed : 0);
    });
    EXPECT_EQ(code, 0) << "a fresh process found otherwise";
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
