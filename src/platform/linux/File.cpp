#include "platform/linux/FileErrors.h"
#include "platform/linux/NativeFile.h"

#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qorl::platform {

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

FileError FileError::outOfMemory() {
    return {ENOMEM};
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
    int flags = O_CLOEXEC;
    const bool isReading = mode & openRead;
    const bool isWriting = mode & openWrite;
    flags |= isReading && isWriting ? O_RDWR : isWriting ? O_WRONLY : O_RDONLY;
    flags |= mode & openCreate ? O_CREAT : 0;
    flags |= mode & openExclusive ? O_EXCL : 0;
    flags |= mode & openRegular ? O_NONBLOCK : 0;
    // A file that another program holds is not cut before the lock is ours.
    flags |= mode & openTruncate && !(mode & openLocked) ? O_TRUNC : 0;
    do {
        descriptor_ = ::open(path.c_str(), flags, rights);
    } while (descriptor_ < 0 && errno == EINTR);
    if (descriptor_ < 0)
        return lastFileError();

    struct stat status = {};
    FileError error = toFileError(fstat(descriptor_, &status));
    if (!error && S_ISDIR(status.st_mode))
        error.code = EISDIR;
    if (!error && mode & openRegular && !S_ISREG(status.st_mode))
        error.code = ENOTSUP;
    if (!error && mode & openLocked)
        error = toFileError(flock(descriptor_, LOCK_EX | LOCK_NB));
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
        } else if (errno != EINTR) {
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
        } else if (errno != EINTR) {
            if (error)
                *error = lastFileError();
            return -1;
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

int64_t File::getSize() const {
    struct stat status = {};
    return fstat(descriptor_, &status) == 0 ? status.st_size : -1;
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
