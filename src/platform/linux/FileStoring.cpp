#include "platform/linux/FileErrors.h"
#include "platform/linux/FileNames.h"
#include "platform/linux/NativeFile.h"

#include <sys/stat.h>
#include <unistd.h>

namespace qorl::platform {

namespace {

constexpr mode_t privateRights = 0600;
constexpr mode_t plainRights = 0777;
constexpr mode_t allRights = 07777;
constexpr size_t copyBlock = size_t{256} * 1024;

/// A new file beside the one that it will take the place of. It goes again unless it was put there.
class FileBeside {
public:
    FileBeside() = default;
    FileBeside(const FileBeside&) = delete;
    ~FileBeside() {
        if (!name_.empty())
            deleteFile(name_);
    }

    /// Until it is whole it has no more than `rights`.
    FileError open(const std::string& target, mode_t rights) {
        target_ = target;
        FileError error;
        for (int attempt = 0; attempt < 100; ++attempt) {
            const std::string name = nameBeside(target, attempt);
            error = NativeFile::open(file_, name, openWrite | openCreate | openExclusive, rights);
            if (!error)
                name_ = name;
            if (!error.isExisting())
                break;
        }
        return error;
    }

    File& file() { return file_; }
    int descriptor() const { return NativeFile::descriptorOf(file_); }

    /// Flushes it to the disk, puts it in the place of its target and flushes the folder.
    FileError putInPlace() {
        FileError error = file_.flushToDisk();
        if (!error)
            error = file_.close();
        if (!error)
            error = toFileError(rename(name_.c_str(), target_.c_str()));
        if (error)
            return error;
        name_.clear();
        return flushFolder(parentOf(target_));
    }

private:
    File file_;
    std::string name_;
    std::string target_;
};

/// What stands at a path, links followed. `kind` none when nothing does.
FileError statusOf(const std::string& path, struct stat& status, bool& exists) {
    exists = stat(path.c_str(), &status) == 0;
    const FileError error = exists ? FileError() : lastFileError();
    return error.code == ENOENT ? FileError() : error;
}

/// Owner and rights of the file that goes. A volume that keeps neither is no reason to keep the old bytes.
void takeOver(int descriptor, const struct stat& earlier) {
    mode_t rights = earlier.st_mode & allRights;
    // Where the owners can't stay, what was for the old group is not for the new one.
    if (fchown(descriptor, earlier.st_uid, earlier.st_gid) != 0)
        rights = (rights & 0707) | (rights & 07) << 3;
    [[maybe_unused]] const int result = fchmod(descriptor, rights);
}

FileError copyContents(File& from, File& to, const CopyStep& step) {
    std::vector<uint8_t> block(copyBlock);
    int64_t done = 0;
    for (;;) {
        FileError error;
        if (step && !step(block, done))
            return {ECANCELED};
        const int64_t got = from.read(block.data(), static_cast<int64_t>(block.size()), &error);
        if (error || got == 0)
            return error;
        if (to.write(block.data(), got, &error) < 0)
            return error;
        done += got;
    }
}

} // namespace

FileError replaceFile(const std::string& path, std::span<const uint8_t> bytes) {
    const std::string target = getCanonicalPath(path);
    struct stat earlier = {};
    bool exists = false;
    if (FileError error = statusOf(target, earlier, exists))
        return error;
    if (exists && !S_ISREG(earlier.st_mode))
        return {S_ISDIR(earlier.st_mode) ? EISDIR : ENOTSUP};
    FileBeside beside;
    // Others may not read meanwhile what they may not read in the end.
    if (FileError error = beside.open(target, exists ? privateRights : 0666))
        return error;
    FileError error;
    if (beside.file().write(bytes.data(), static_cast<int64_t>(bytes.size()), &error) < 0)
        return error;
    if (exists)
        takeOver(beside.descriptor(), earlier);
    return beside.putInPlace();
}

FileError copyFile(const std::string& from, const std::string& to, const CopyStep& step) {
    File source;
    if (FileError error = source.open(from, openRead | openSequential | openRegular))
        return error;
    struct stat status = {};
    if (fstat(NativeFile::descriptorOf(source), &status) != 0)
        return lastFileError();
    const std::string target = getCanonicalPath(to);
    struct stat earlier = {};
    bool exists = false;
    if (FileError error = statusOf(target, earlier, exists))
        return error;
    if (exists && earlier.st_ino == status.st_ino && earlier.st_dev == status.st_dev)
        return {EEXIST};
    if (exists && !S_ISREG(earlier.st_mode))
        return {S_ISDIR(earlier.st_mode) ? EISDIR : ENOTSUP};
    FileBeside beside;
    if (FileError error = beside.open(target, privateRights))
        return error;
    if (FileError error = copyContents(source, beside.file(), step))
        return error;
    // The copy is whole also where the volume keeps no rights or times.
    const timespec times[2] = {status.st_atim, status.st_mtim};
    [[maybe_unused]] int result = fchmod(beside.descriptor(), status.st_mode & plainRights);
    result = futimens(beside.descriptor(), times);
    return beside.putInPlace();
}

} // namespace qorl::platform
