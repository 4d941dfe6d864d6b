#include "platform/linux/FileErrors.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
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

int64_t toMilliseconds(const statx_timestamp& time) {
    return time.tv_sec * 1000 + time.tv_nsec / 1'000'000;
}

timespec toTimespec(int64_t milliseconds) {
    const int64_t seconds = milliseconds >= 0 ? milliseconds / 1000 : (milliseconds - 999) / 1000;
    return {static_cast<time_t>(seconds), static_cast<long>((milliseconds - seconds * 1000) * 1'000'000)};
}

bool isDots(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

std::string parentOf(const std::string& path) {
    const size_t last = path.find_last_not_of('/');
    const size_t cut = last == std::string::npos ? std::string::npos : path.find_last_of('/', last);
    if (cut == std::string::npos)
        return ".";
    return cut == 0 ? "/" : path.substr(0, cut);
}

std::string lastPart(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

FileError copyContents(File& from, File& to) {
    std::vector<uint8_t> block(256 * 1024);
    for (;;) {
        FileError error;
        const int64_t got = from.read(block.data(), static_cast<int64_t>(block.size()), &error);
        if (got <= 0)
            return error;
        if (to.write(block.data(), got, &error) < 0)
            return error;
    }
}

FileError moveByCopy(const std::string& from, const std::string& to) {
    FileInfo info;
    if (FileError error = getFileInfo(from, info))
        return error;
    if (info.kind != FileKind::folder) {
        const FileError error = copyFile(from, to);
        return error ? error : deleteFile(from);
    }
    std::vector<FolderEntry> entries;
    FileError error = createFolder(to);
    if (!error)
        error = listFolder(from, entries);
    for (size_t i = 0; !error && i < entries.size(); ++i)
        error = moveByCopy(from + "/" + entries[i].name, to + "/" + entries[i].name);
    return error ? error : deleteFolder(from);
}

/// Opens a new file beside `path` under a name that nobody else has.
FileError openBeside(const std::string& path, File& file, std::string& name) {
    const std::string prefix = parentOf(path) + "/." + lastPart(path).substr(0, 200) + ".";
    FileError error;
    for (int attempt = 0; attempt < 100; ++attempt) {
        char suffix[32];
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        std::snprintf(suffix, sizeof suffix, "%x-%lx-%x.new", static_cast<unsigned>(getpid()), now.tv_nsec,
                      static_cast<unsigned>(attempt));
        name = prefix + suffix;
        error = file.open(name, openWrite | openCreate | openExclusive);
        if (!error.isExisting())
            break;
    }
    return error;
}

FileError writeAndFlush(File& file, std::span<const uint8_t> bytes) {
    FileError error;
    if (file.write(bytes.data(), static_cast<int64_t>(bytes.size()), &error) < 0)
        return error;
    error = file.flushToDisk();
    return error ? error : file.close();
}

FileError deleteTreeAt(int parent, const char* name) {
    if (unlinkat(parent, name, 0) == 0)
        return {};
    if (errno != EISDIR && errno != EPERM)
        return lastFileError();
    const int descriptor = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return lastFileError();
    const OpenFolder folder(fdopendir(descriptor));
    if (!folder) {
        close(descriptor);
        return lastFileError();
    }
    while (const dirent* entry = readdir(folder.get())) {
        if (isDots(entry->d_name))
            continue;
        if (FileError error = deleteTreeAt(descriptor, entry->d_name))
            return error;
    }
    return toFileError(unlinkat(parent, name, AT_REMOVEDIR));
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
    info.isReadOnly = access(path.c_str(), W_OK) != 0;
    info.isHidden = lastPart(path).starts_with('.');
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

FileError moveFile(const std::string& from, const std::string& to) {
    const FileError error = toFileError(rename(from.c_str(), to.c_str()));
    return error.code == EXDEV ? moveByCopy(from, to) : error;
}

FileError copyFile(const std::string& from, const std::string& to) {
    File source;
    if (FileError error = source.open(from, openRead | openSequential))
        return error;
    struct stat status = {};
    if (stat(from.c_str(), &status) != 0)
        return lastFileError();
    FileInfo earlier;
    getFileInfo(to, earlier);
    FileInfo own;
    getFileInfo(from, own);
    if (earlier.kind != FileKind::none && earlier.serial == own.serial && earlier.volume == own.volume)
        return {EEXIST};
    File target;
    if (FileError error = target.open(to, openWrite | openCreate | openTruncate))
        return error;
    FileError error = copyContents(source, target);
    if (!error)
        error = target.close();
    if (!error)
        error = toFileError(chmod(to.c_str(), status.st_mode & 07777));
    if (!error) {
        const timespec times[2] = {status.st_atim, status.st_mtim};
        error = toFileError(utimensat(AT_FDCWD, to.c_str(), times, 0));
    }
    if (error)
        deleteFile(to);
    return error;
}

FileError createFolder(const std::string& path) {
    return toFileError(mkdir(path.c_str(), 0777));
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

FileError deleteTree(const std::string& path) {
    return deleteTreeAt(AT_FDCWD, path.c_str());
}

FileError setReadOnly(const std::string& path, bool on) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return lastFileError();
    constexpr mode_t allWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = on ? status.st_mode & ~allWrite : status.st_mode | S_IWUSR;
    return toFileError(chmod(path.c_str(), mode & 07777));
}

FileError setFileTimes(const std::string& path, int64_t written, int64_t read) {
    const timespec times[2] = {toTimespec(read), toTimespec(written)};
    return toFileError(utimensat(AT_FDCWD, path.c_str(), times, 0));
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
        FolderEntry found{entry->d_name, FileKind::other};
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
    if (FileError error = file.open(path, openRead | openSequential))
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

FileError flushFolder(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return lastFileError();
    FileError error = toFileError(fsync(descriptor));
    close(descriptor);
    // Some file systems have nothing to flush for a folder and say so.
    return error.code == EINVAL || error.code == EROFS ? FileError() : error;
}

FileError replaceFile(const std::string& path, std::span<const uint8_t> bytes) {
    const std::string target = getCanonicalPath(path);
    struct stat earlier = {};
    const bool exists = stat(target.c_str(), &earlier) == 0;
    if (exists && S_ISDIR(earlier.st_mode))
        return {EISDIR};
    File file;
    std::string beside;
    if (FileError error = openBeside(target, file, beside))
        return error;
    FileError error = writeAndFlush(file, bytes);
    if (!error && exists)
        error = toFileError(chmod(beside.c_str(), earlier.st_mode & 07777));
    if (!error)
        error = toFileError(rename(beside.c_str(), target.c_str()));
    if (error) {
        deleteFile(beside);
        return error;
    }
    return flushFolder(parentOf(target));
}

FileError createTemporaryFile(const std::string& folder, std::string_view prefix, std::string& path) {
    std::string name = folder + "/" + std::string(prefix) + "XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0)
        return lastFileError();
    close(descriptor);
    path = std::move(name);
    return {};
}

std::string getCanonicalPath(const std::string& path) {
    std::string existing = path.empty() ? "." : path;
    std::vector<std::string> missing;
    for (;;) {
        if (char* resolved = realpath(existing.c_str(), nullptr)) {
            std::string whole = resolved;
            std::free(resolved);
            for (size_t i = missing.size(); i-- > 0;)
                whole += (whole.back() == '/' ? "" : "/") + missing[i];
            return whole;
        }
        std::string part = lastPart(existing);
        const std::string parent = parentOf(existing);
        if (parent == existing || existing == ".")
            return path;
        if (!part.empty() && part != ".")
            missing.push_back(std::move(part));
        existing = parent;
    }
}

FileError setCurrentFolder(const std::string& path) {
    return toFileError(chdir(path.c_str()));
}

std::string getCurrentFolder() {
    char* text = getcwd(nullptr, 0);
    std::string folder = text ? text : "";
    std::free(text);
    return folder;
}

} // namespace qorl::platform
