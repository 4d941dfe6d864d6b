#include "platform/Folders.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/FileNames.h"
#include "platform/linux/SystemText.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace qorl::platform {

namespace {

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

FileKind toKind(mode_t mode) {
    if (S_ISREG(mode))
        return FileKind::file;
    return S_ISDIR(mode) ? FileKind::folder : FileKind::other;
}

/// Some file systems keep any number of seconds.
int64_t toMilliseconds(const statx_timestamp& time) {
    constexpr int64_t farthest = std::numeric_limits<int64_t>::max() / 1000 - 1;
    return std::clamp<int64_t>(time.tv_sec, -farthest, farthest) * 1000 + time.tv_nsec / 1'000'000;
}

constexpr mode_t ownerRights = 0600;
constexpr std::chrono::milliseconds lockPollPeriod(10);
constexpr mode_t allWrite = S_IWUSR | S_IWGRP | S_IWOTH;
// As the system itself follows.
constexpr int mostLinks = 40;
// No place has a longer one, and the way up from there takes time.
constexpr size_t longestPath = 32767;

bool isDots(std::string_view name) {
    return name == "." || name == "..";
}

/// Whether a folder lies where programs keep things of a user, or on the way there.
bool isOfUserAlone(const std::string& path) {
    const std::string folder = joinPath(path, "");
    for (const SystemFolder kind : {SystemFolder::settings, SystemFolder::data, SystemFolder::cache}) {
        const std::string base = joinPath(getSystemFolder(kind), "");
        if (base.starts_with(folder) || folder.starts_with(base))
            return true;
    }
    return false;
}

bool isHiddenName(std::string_view name) {
    return name.starts_with('.') && !isDots(name);
}

} // namespace

FileError getFileInfo(const std::string& path, FileInfo& info) {
    info = {};
    struct statx status = {};
    constexpr unsigned wanted = STATX_BASIC_STATS | STATX_BTIME;
    struct stat link = {};
    const bool isLink = lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode);
    if (statx(AT_FDCWD, path.c_str(), 0, wanted, &status) != 0) {
        const FileError error = lastFileError();
        return error.isNotFound() ? FileError() : error;
    }
    info.kind = toKind(status.stx_mode);
    info.size = static_cast<int64_t>(status.stx_size);
    info.created = status.stx_mask & STATX_BTIME ? toMilliseconds(status.stx_btime) : 0;
    info.written = toMilliseconds(status.stx_mtime);
    info.read = toMilliseconds(status.stx_atime);
    // The system's administrator may write what nobody may.
    info.isReadOnly = (status.stx_mode & allWrite) == 0 || access(path.c_str(), W_OK) != 0;
    info.isHidden = isHiddenName(lastPart(path));
    info.isLink = isLink;
    info.volume = uint64_t{status.stx_dev_major} << 32 | status.stx_dev_minor;
    info.serial = status.stx_ino;
    return {};
}

bool fileExists(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool folderExists(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

FileError deleteFile(const std::string& path) {
    return toFileError(unlink(path.c_str()));
}

FileError createFolder(const std::string& path) {
    return toFileError(mkdir(path.c_str(), isOfUserAlone(path) ? 0700 : 0777));
}

FileError createFolders(const std::string& path) {
    for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string part = path.substr(0, end);
        const FileError error = createFolder(part);
        if (error && !folderExists(part))
            return error;
        if (end == std::string::npos)
            return {};
    }
}

FileError deleteFolder(const std::string& path) {
    return toFileError(rmdir(path.c_str()));
}

FileError setReadOnly(const std::string& path, bool on) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return lastFileError();
    const mode_t mode = on ? status.st_mode & ~allWrite : status.st_mode | S_IWUSR;
    return toFileError(chmod(path.c_str(), mode & 07777));
}

FileError listFolder(const std::string& path, std::vector<FolderEntry>& entries) {
    entries.clear();
    const OpenFolder folder(opendir(path.c_str()));
    if (!folder)
        return lastFileError();
    errno = 0;
    while (const dirent* entry = readdir(folder.get())) {
        if (isDots(entry->d_name))
            continue;
        FolderEntry found{entry->d_name, FileKind::other, isHiddenName(entry->d_name)};
        struct stat status = {};
        if (fstatat(dirfd(folder.get()), entry->d_name, &status, 0) == 0)
            found.kind = toKind(status.st_mode);
        entries.push_back(std::move(found));
        errno = 0;
    }
    if (errno != 0)
        return lastFileError();
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
    return {};
}

FileError readWholeFile(const std::string& path, std::vector<uint8_t>& bytes, int64_t limit) {
    bytes.clear();
    File file;
    if (FileError error = file.open(path, openRead | openSequential | openRegular))
        return error;
    // The size is a hint only: files of the system's own machinery say 0, others grow while they are read.
    const int64_t size = std::max<int64_t>(file.getSize(), 0);
    if (size > limit)
        return {EFBIG};
    bytes.resize(static_cast<size_t>(size));
    int64_t done = 0;
    for (;;) {
        if (done == static_cast<int64_t>(bytes.size()))
            bytes.resize(bytes.size() + 4096);
        FileError error;
        const int64_t room = static_cast<int64_t>(bytes.size()) - done;
        const int64_t got = file.read(bytes.data() + done, room, &error);
        if (got < 0) {
            bytes.clear();
            return error;
        }
        done += got;
        if (done > limit) {
            bytes.clear();
            return {EFBIG};
        }
        if (got < room)
            break;
    }
    bytes.resize(static_cast<size_t>(done));
    return {};
}

FileLock::FileLock(const std::string& path, std::chrono::milliseconds limit)
    : descriptor_(open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, ownerRights)) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + limit;
    while (descriptor_ >= 0) {
        if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0) {
            state_ = State::held;
            return;
        }
        if (errno != EWOULDBLOCK && errno != EINTR)
            return;
        if (Clock::now() >= end) {
            state_ = State::busy;
            return;
        }
        // The system has no wait for locks that ends.
        std::this_thread::sleep_for(lockPollPeriod);
    }
}

FileLock::~FileLock() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

FileError flushFolder(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return lastFileError();
    FileError error = toFileError(fsync(descriptor));
    close(descriptor);
    // Some file systems have nothing to flush for a folder and say so.
    return error.code == EINVAL || error.code == EROFS ? FileError() : error;
}

FileError createTemporaryFile(const std::string& folder, std::string_view prefix, std::string& path) {
    std::string name = joinPath(folder, std::string(prefix) + "XXXXXX");
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0)
        return lastFileError();
    close(descriptor);
    path = std::move(name);
    return {};
}

std::string getCanonicalPath(const std::string& path) {
    if (path.size() > longestPath)
        return path;
    std::string existing = path.empty() ? "." : withoutEnd(path);
    std::vector<std::string> missing;
    for (int linksLeft = mostLinks;;) {
        if (const SystemText resolved{realpath(existing.c_str(), nullptr)}) {
            std::string whole = resolved.get();
            for (size_t i = missing.size(); i-- > 0;)
                whole = missing[i] == ".." ? parentOf(whole) : joinPath(whole, missing[i]);
            return whole;
        }
        // A link whose target is missing leads on all the same.
        std::string target;
        if (linksLeft > 0 && !readLink(existing, target)) {
            existing = withoutEnd(target.starts_with('/') ? target : joinPath(parentOf(existing), target));
            --linksLeft;
            continue;
        }
        std::string part = lastPart(existing);
        const std::string parent = parentOf(existing);
        if (parent == existing || existing == ".")
            return path;
        if (!part.empty() && part != ".")
            missing.push_back(std::move(part));
        existing = withoutEnd(parent);
    }
}

FileError setCurrentFolder(const std::string& path) {
    return toFileError(chdir(path.c_str()));
}

std::string getCurrentFolder() {
    const SystemText folder{getcwd(nullptr, 0)};
    return folder ? folder.get() : "";
}

} // namespace qorl::platform
