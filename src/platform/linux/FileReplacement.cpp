#include "platform/FileReplacement.h"

#include "platform/System.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/FileNames.h"
#include "platform/linux/FileSharing.h"
#include "platform/linux/NativeFile.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qorl::platform {

namespace {

constexpr mode_t privateRights = 0600;
constexpr mode_t newRights = 0666;
constexpr mode_t allRights = 07777;
// As many programs and threads can store one file at the same moment.
constexpr int mostWriters = 64;
constexpr size_t comparedBlock = size_t{32} * 1024;

/// The names are few and known, so that what a crash left under them is found without a search.
std::string nameOfNew(const std::string& target, int writer) {
    char suffix[24] = ".new";
    if (writer > 0)
        std::snprintf(suffix, sizeof suffix, ".%d.new", writer);
    // The limit of a name is 255 bytes.
    return joinPath(parentOf(target), '.' + lastPart(target).substr(0, 200) + suffix);
}

/// What stands at a path, links followed.
FileError findEarlier(const std::string& path, struct stat& status, bool& exists) {
    exists = stat(path.c_str(), &status) == 0;
    const FileError error = exists ? FileError() : lastFileError();
    if (exists && !S_ISREG(status.st_mode))
        return {S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP};
    return error.code == ENOENT ? FileError() : error;
}

/// Owner and rights of the file that goes. A volume that keeps neither is no reason to keep the old bytes.
void takeOverRights(int descriptor, const struct stat& earlier) {
    mode_t rights = earlier.st_mode & allRights;
    // Where the owners can't stay, what was for the old group is not for the new one.
    if (fchown(descriptor, earlier.st_uid, earlier.st_gid) != 0)
        rights = (rights & 0707) | (rights & 07) << 3;
    [[maybe_unused]] const int result = fchmod(descriptor, rights);
}

/// False when another program took the new file for a leftover. A volume without locks has nobody who could.
bool lockNew(int descriptor) {
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return false;
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

/// A new file that nobody holds locked has lost its writer. Whether it is gone.
bool removeIfLeft(const std::string& name) {
    const int descriptor = open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    struct stat own = {};
    struct stat named = {};
    // Who removed it meanwhile may have made another one under its name.
    const bool isLeft = flock(descriptor, LOCK_EX | LOCK_NB) == 0 && fstat(descriptor, &own) == 0 &&
                        lstat(name.c_str(), &named) == 0 && S_ISREG(own.st_mode) &&
                        own.st_ino == named.st_ino && own.st_dev == named.st_dev;
    const bool isGone = isLeft && unlink(name.c_str()) == 0;
    close(descriptor);
    return isGone;
}

} // namespace

FileReplacement::~FileReplacement() {
    if (!name_.empty())
        unlink(name_.c_str());
}

FileError FileReplacement::open(const std::string& path, Rights rights) {
    target_ = getCanonicalPath(path);
    folder_ = parentOf(target_);
    struct stat earlier = {};
    if (FileError error = findEarlier(target_, earlier, hasEarlier_))
        return error;
    // Whoever writes the earlier file would go on writing what nobody finds any more.
    File inUse;
    if (hasEarlier_ && !inUse.open(target_, openRead | openRegular) &&
        isBeingWritten(NativeFile::descriptorOf(inUse)))
        return {EBUSY};
    // Others may not read meanwhile what they may not read in the end.
    const bool isOpenToOthers = rights == Rights::asBefore && !hasEarlier_;
    if (FileError error = makeBeside(isOpenToOthers ? newRights : privateRights))
        return error;
    if (hasEarlier_ && rights == Rights::asBefore)
        takeOverRights(NativeFile::descriptorOf(file_), earlier);
    return {};
}

FileError FileReplacement::makeBeside(uint32_t rights) {
    constexpr uint32_t mode = openRead | openWrite | openCreate | openExclusive;
    for (int writer = 0; writer < mostWriters; ++writer) {
        std::string name = nameOfNew(target_, writer);
        FileError error = NativeFile::open(file_, name, mode, rights);
        if (error.isExisting() && removeIfLeft(name))
            error = NativeFile::open(file_, name, mode, rights);
        if (error.isExisting())
            continue;
        if (error)
            return error;
        if (lockNew(NativeFile::descriptorOf(file_))) {
            name_ = std::move(name);
            return {};
        }
        file_.close();
    }
    return {EBUSY};
}

bool FileReplacement::holdsSameBytes() {
    File earlier;
    const int64_t size = file_.getSize();
    if (!hasEarlier_ || earlier.open(target_, openRead | openSequential | openRegular) ||
        earlier.getSize() != size || file_.seek(0, SeekOrigin::start) != 0)
        return false;
    std::array<char, comparedBlock> ours;
    std::array<char, comparedBlock> theirs;
    for (int64_t done = 0; done < size;) {
        const int64_t got = file_.read(ours.data(), comparedBlock);
        if (got < 1 || earlier.read(theirs.data(), got) != got ||
            std::memcmp(ours.data(), theirs.data(), static_cast<size_t>(got)) != 0)
            return false;
        done += got;
    }
    return true;
}

/// Closes it, since some volumes tell only then what they could not store. A second descriptor keeps the
/// lock.
FileError FileReplacement::finishWriting(int& lock) {
    if (FileError error = file_.flushToDisk())
        return error;
    lock = fcntl(NativeFile::descriptorOf(file_), F_DUPFD_CLOEXEC, 0);
    if (lock < 0)
        return lastFileError();
    return file_.close();
}

FileError FileReplacement::keepEarlier(const std::string& keptAs, Kept& kept) {
    if (link(target_.c_str(), keptAs.c_str()) == 0) {
        kept = Kept::linked;
        return {};
    }
    switch (errno) {
    // An interrupted save left one. Which of the two is good is not known here, so both stay until the new
    // one stands. Under too long a name nothing can be kept.
    case EEXIST:
    case ENAMETOOLONG: return {};
    // Another writer replaced the file between its look-up and the link. What that wrote is whole.
    case ENOENT: return {};
    // A volume without links, or with too many; or the file of somebody else.
    case EPERM:
    case ENOTSUP:
    case ENOSYS:
    case EMLINK: break;
    default: return lastFileError();
    }
    const FileError error = toFileError(rename(target_.c_str(), keptAs.c_str()));
    // Here another writer has moved it, and puts its own in place as we do.
    if (error.code == ENOENT)
        return {};
    if (!error)
        kept = Kept::moved;
    return error;
}

/// False when the new file stays in its place.
bool FileReplacement::takeBack(const std::string& keptAs, Kept kept) {
    const bool isInPlace = name_.empty();
    if (kept == Kept::linked && !isInPlace)
        unlink(keptAs.c_str());
    else if (kept != Kept::no)
        return rename(keptAs.c_str(), target_.c_str()) == 0 || !isInPlace;
    else if (isInPlace)
        return !hasEarlier_ && unlink(target_.c_str()) == 0;
    return true;
}

FileError FileReplacement::swap(const std::string& keptAs) {
    Kept kept = Kept::no;
    FileError error;
    if (hasEarlier_ && !keptAs.empty())
        error = keepEarlier(keptAs, kept);
    if (!error)
        error = toFileError(rename(name_.c_str(), target_.c_str()));
    if (!error) {
        name_.clear();
        error = flushFolder(folder_);
    }
    if (error && takeBack(keptAs, kept))
        return error;
    if (error)
        debugOutput(target_ + ": may have its earlier contents after a power cut: " + error.getText());
    // One that stays does no harm: the file itself is whole.
    else if (!keptAs.empty())
        unlink(keptAs.c_str());
    return {};
}

FileError FileReplacement::putInPlace(const std::string& keptAs) {
    int lock = -1;
    FileError error = finishWriting(lock);
    if (!error)
        error = swap(keptAs);
    if (lock >= 0)
        close(lock);
    return error;
}

FileError FileReplacement::putBack(const std::string& keptAs, const std::string& path) {
    if (renameat2(AT_FDCWD, keptAs.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0)
        return {};
    // A volume that can't do this in one step.
    if (errno != EINVAL && errno != ENOSYS)
        return lastFileError();
    return access(path.c_str(), F_OK) == 0 ? FileError{EEXIST}
                                           : toFileError(rename(keptAs.c_str(), path.c_str()));
}

void FileReplacement::removeLeftovers(const std::string& path) {
    const std::string target = getCanonicalPath(path);
    for (int writer = 0; writer < mostWriters; ++writer) {
        const std::string name = nameOfNew(target, writer);
        if (!removeIfLeft(name) && access(name.c_str(), F_OK) != 0)
            return;
    }
}

} // namespace qorl::platform
