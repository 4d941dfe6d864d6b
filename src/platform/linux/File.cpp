#include "platform/linux/FileErrors.h"
#include "platform/linux/FileSharing.h"
#include "platform/linux/NativeFile.h"

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qorl::platform {

namespace {

int flagsOf(uint32_t mode) {
    int flags = O_CLOEXEC;
    const bool isReading = mode & openRead;
    const bool isWriting = mode & openWrite;
    flags |= isReading && isWriting ? O_RDWR : isWriting ? O_WRONLY : O_RDONLY;
    flags |= mode & openCreate ? O_CREAT : 0;
    flags |= mode & openExclusive ? O_EXCL : 0;
    flags |= mode & openRegular ? O_NONBLOCK : 0;
    flags |= mode & openUncached ? O_DIRECT : 0;
    flags |= mode & openWriteThrough ? O_DSYNC : 0;
    // A file that somebody else uses is not cut before the lock is ours.
    flags |= mode & openTruncate && !(mode & openLocked) ? O_TRUNC : 0;
    return flags;
}

/// Whether a transfer that failed may be tried again: one that was interrupted, or that could not go past the
/// caches.
bool canRetry(int descriptor) {
    const int code = errno;
    const int flags = code == EINVAL ? fcntl(descriptor, F_GETFL) : -1;
    if (flags >= 0 && flags & O_DIRECT)
        return fcntl(descriptor, F_SETFL, flags & ~O_DIRECT) == 0;
    errno = code;
    return code == EINTR;
}

} // namespace

std::string FileError::getText() const {
    char buffer[256] = {};
    return code == 0 ? std::string("success") : std::string(strerror_r(code, buffer, sizeof buffer));
}

bool FileError::isNotFound() const {
    return code == ENOENT || code == ENOTDIR;
}

bool FileError::isExisting() const {
    return code == EEXIST || code == ENOTEMPTY;
}

bool FileError::isFull() const {
    return code == ENOSPC || code == EDQUOT;
}

bool FileError::isInUse() const {
    return code == EBUSY;
}

File::File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

File& File::operator=(File&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

FileError File::open(const std::string& path, uint32_t mode) {
    return NativeFile::open(*this, path, mode, 0666);
}

FileError File::open(const std::string& path, uint32_t mode, uint32_t rights) {
    close();
    int flags = flagsOf(mode);
    do {
        descriptor_ = ::open(path.c_str(), flags, rights);
        // Volumes in memory have nothing to go past.
        if (descriptor_ < 0 && errno == EINVAL && flags & O_DIRECT)
            flags &= ~O_DIRECT;
        else if (descriptor_ < 0 && errno != EINTR)
            return lastFileError();
    } while (descriptor_ < 0);

    struct stat status = {};
    FileError error = toFileError(fstat(descriptor_, &status));
    if (!error && S_ISDIR(status.st_mode))
        error.code = EISDIR;
    if (!error && mode & openRegular && !S_ISREG(status.st_mode))
        error.code = ENOTSUP;
    if (!error && mode & openLocked)
        error = shareFile(descriptor_, mode);
    if (!error && mode & openLocked && mode & openTruncate)
        error = setSize(0);
    if (error) {
        close();
        return error;
    }
    if (mode & openSequential)
        posix_fadvise(descriptor_, 0, 0, POSIX_FADV_SEQUENTIAL);
    return {};
}

int64_t File::read(void* buffer, int64_t count, FileError* error) {
    auto* bytes = static_cast<uint8_t*>(buffer);
    int64_t done = 0;
    while (done < count) {
        const ssize_t got = ::read(descriptor_, bytes + done, static_cast<size_t>(count - done));
        if (got == 0)
            break;
        if (got > 0) {
            done += got;
        } else if (!canRetry(descriptor_)) {
            if (error)
                *error = lastFileError();
            return done > 0 ? done : -1;
        }
    }
    return done;
}

int64_t File::write(const void* buffer, int64_t count, FileError* error) {
    const auto* bytes = static_cast<const uint8_t*>(buffer);
    int64_t done = 0;
    while (done < count) {
        const ssize_t put = ::write(descriptor_, bytes + done, static_cast<size_t>(count - done));
        if (put >= 0) {
            done += put;
        } else if (!canRetry(descriptor_)) {
            if (error)
                *error = lastFileError();
            return done > 0 ? done : -1;
        }
    }
    return done;
}

int64_t File::seek(int64_t offset, SeekOrigin origin, FileError* error) {
    static constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    const int64_t place = lseek(descriptor_, offset, origins[static_cast<int>(origin)]);
    if (place < 0 && error)
        *error = lastFileError();
    return place;
}

int64_t File::getSize(FileError* error) const {
    struct stat status = {};
    if (fstat(descriptor_, &status) == 0)
        return status.st_size;
    if (error)
        *error = lastFileError();
    return -1;
}

FileError File::setSize(int64_t size) {
    return toFileError(ftruncate(descriptor_, size));
}

FileError File::flushToDisk() {
    return toFileError(fsync(descriptor_));
}

FileError File::close() {
    if (descriptor_ < 0)
        return {};
    const FileError error = toFileError(::close(std::exchange(descriptor_, -1)));
    // The descriptor is gone even then, and nothing was lost.
    return error.code == EINTR ? FileError() : error;
}

} // namespace qorl::platform
