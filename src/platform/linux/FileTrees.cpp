#include "platform/System.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/FileNames.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qorl::platform {

namespace {

/// An open folder.
class Folder {
public:
    Folder() = default;
    Folder(const Folder&) = delete;
    ~Folder() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }

    /// `name` counts from the folder `base`; a link is refused.
    FileError open(int base, const char* name) {
        const int opened = openat(base, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (opened < 0)
            return lastFileError();
        if (descriptor_ >= 0)
            close(descriptor_);
        descriptor_ = opened;
        return {};
    }

    int descriptor() const { return descriptor_; }
    int detach() { return std::exchange(descriptor_, -1); }

    bool isSame(dev_t volume, ino_t serial) const {
        struct stat status = {};
        return fstat(descriptor_, &status) == 0 && status.st_dev == volume && status.st_ino == serial;
    }

private:
    int descriptor_ = -1;
};

struct Closer {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// Removes what is no folder, until the first folder, which `child` names; empty at the end.
FileError removeEntries(const Folder& folder, std::string& child) {
    child.clear();
    Folder own;
    if (FileError error = own.open(folder.descriptor(), "."))
        return error;
    const std::unique_ptr<DIR, Closer> entries(fdopendir(own.descriptor()));
    if (!entries)
        return lastFileError();
    own.detach();
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(entries.get());
        if (!entry)
            return errno == 0 ? FileError() : lastFileError();
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        if (unlinkat(folder.descriptor(), name, 0) == 0)
            continue;
        const FileError error = lastFileError();
        struct stat status = {};
        if (fstatat(folder.descriptor(), name, &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISDIR(status.st_mode))
            return error;
        child = name;
        return {};
    }
}

/// A folder on the way down from the top of a tree to the one that is open.
struct Level {
    std::string child; ///< the next one's name
    dev_t volume = 0;
    ino_t serial = 0;
};

/// Keeps one folder open however deep the tree is, and goes up again only to where it came from.
FileError removeContents(Folder& folder) {
    std::vector<Level> way;
    for (;;) {
        std::string child;
        if (FileError error = removeEntries(folder, child))
            return error;
        if (!child.empty()) {
            struct stat status = {};
            if (fstat(folder.descriptor(), &status) != 0)
                return lastFileError();
            if (FileError error = folder.open(folder.descriptor(), child.c_str()))
                return error;
            way.push_back({child, status.st_dev, status.st_ino});
            continue;
        }
        if (way.empty())
            return {};
        const Level above = std::move(way.back());
        way.pop_back();
        if (FileError error = folder.open(folder.descriptor(), ".."))
            return error;
        if (!folder.isSame(above.volume, above.serial))
            return {ESTALE};
        if (unlinkat(folder.descriptor(), above.child.c_str(), AT_REMOVEDIR) != 0)
            return lastFileError();
    }
}

FileError recreateLink(const std::string& from, const std::string& to) {
    std::string target;
    if (FileError error = readLink(from, target))
        return error;
    const std::string beside = nameBeside(to);
    if (symlink(target.c_str(), beside.c_str()) != 0)
        return lastFileError();
    const FileError error = toFileError(rename(beside.c_str(), to.c_str()));
    if (error)
        deleteFile(beside);
    return error;
}

FileError copyEntry(const std::string& from, const std::string& to, FileLinks links);

FileError copyFolder(const std::string& from, const std::string& to, FileLinks links) {
    struct stat status = {};
    if (stat(from.c_str(), &status) != 0)
        return lastFileError();
    FileError error = toFileError(mkdir(to.c_str(), 0700));
    const bool isMade = !error;
    if (!isMade && !folderExists(to))
        return error;
    std::vector<FolderEntry> entries;
    error = listFolder(from, entries);
    for (size_t i = 0; !error && i < entries.size(); ++i)
        error = copyEntry(joinPath(from, entries[i].name), joinPath(to, entries[i].name), links);
    Folder made;
    if (!error && isMade && !made.open(AT_FDCWD, to.c_str())) {
        const timespec times[2] = {status.st_atim, status.st_mtim};
        [[maybe_unused]] int result = fchmod(made.descriptor(), status.st_mode & 07777);
        result = futimens(made.descriptor(), times);
    }
    return error;
}

FileError copyEntry(const std::string& from, const std::string& to, FileLinks links) {
    struct stat status = {};
    if (lstat(from.c_str(), &status) != 0)
        return lastFileError();
    if (S_ISDIR(status.st_mode))
        return copyFolder(from, to, links);
    if (!S_ISLNK(status.st_mode))
        return copyFile(from, to);
    const bool isRead = links == FileLinks::copyContents && fileExists(from);
    return isRead ? copyFile(from, to) : recreateLink(from, to);
}

FileError moveByCopy(const std::string& from, const std::string& to) {
    struct stat status = {};
    if (lstat(from.c_str(), &status) != 0)
        return lastFileError();
    if (!S_ISLNK(status.st_mode) && isInside(to, from))
        return {EINVAL};
    // Nothing goes from a folder, or a volume, that can't be written.
    if (access(parentOf(from).c_str(), W_OK | X_OK) != 0)
        return lastFileError();
    const std::string beside = nameBeside(to);
    FileError error = copyEntry(from, beside, FileLinks::keep);
    if (!error)
        error = toFileError(rename(beside.c_str(), to.c_str()));
    if (error) {
        deleteTree(beside);
        return error;
    }
    if (FileError failure = flushFolder(parentOf(to)))
        return failure;
    // In one step, so that what can't be deleted is no half of what was there.
    const std::string leaving = nameBeside(from);
    if (rename(withoutEnd(from).c_str(), leaving.c_str()) != 0)
        return lastFileError();
    if (const FileError left = deleteTree(leaving))
        debugOutput(leaving + ": is left of what was moved: " + left.getText());
    return {};
}

} // namespace

FileError moveFile(const std::string& from, const std::string& to) {
    const FileError error = toFileError(rename(from.c_str(), to.c_str()));
    return error.code == EXDEV ? moveByCopy(from, to) : error;
}

FileError copyTree(const std::string& from, const std::string& to, FileLinks links) {
    if (!folderExists(from))
        return {fileExists(from) ? ENOTDIR : ENOENT};
    if (isInside(to, from))
        return {EINVAL};
    if (FileError error = createFolders(parentOf(to)))
        return error;
    return copyFolder(from, to, links);
}

FileError deleteTree(const std::string& givenPath) {
    // Behind a separator the system follows a link.
    const std::string path = withoutEnd(givenPath);
    if (unlink(path.c_str()) == 0)
        return {};
    const FileError error = lastFileError();
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return error;
    Folder folder;
    if (FileError failure = folder.open(AT_FDCWD, path.c_str()))
        return failure;
    if (FileError failure = removeContents(folder))
        return failure;
    return deleteFolder(path);
}

} // namespace qorl::platform
