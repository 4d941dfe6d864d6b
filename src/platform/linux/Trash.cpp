#include "platform/Trash.h"

#include "platform/Clock.h"
#include "platform/Folders.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/FileNames.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qorl::platform {

namespace {

/// A bin, and how the way back is written in it: from the root, or from the volume's top folder.
struct Bin {
    std::string folder;
    std::string top;
};

// With ".trashinfo" and a number behind it a name still fits into 255 bytes.
constexpr size_t longestName = 230;
constexpr size_t longestExtension = longestName / 2;
constexpr int mostOfOneName = 10'000;

/// Whether a path ends in the name of an entry, which the root and dots are not.
bool hasName(const std::string& path) {
    const std::string name = lastPart(path.substr(0, path.find_last_not_of('/') + 1));
    return !name.empty() && name != "." && name != "..";
}

bool isTopOfVolume(const std::string& path, const struct stat& status) {
    struct stat above = {};
    return S_ISDIR(status.st_mode) && stat(parentOf(path).c_str(), &above) == 0 &&
           above.st_dev != status.st_dev;
}

/// The path of the entry itself: links above it are resolved, its own is not.
std::string placeOf(const std::string& path) {
    const std::string whole = path.substr(0, path.find_last_not_of('/') + 1);
    return joinPath(getCanonicalPath(parentOf(whole)), lastPart(whole));
}

/// The highest folder above `path` on its volume.
std::string topOf(const std::string& path, dev_t volume) {
    std::string top = parentOf(path);
    for (;;) {
        const std::string above = parentOf(top);
        struct stat status = {};
        if (above == top || stat(above.c_str(), &status) != 0 || status.st_dev != volume)
            return top;
        top = above;
    }
}

/// A folder that is no link and belongs to this user.
bool isOwnPlainFolder(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

/// One that several users share has to keep them from each other's files.
bool isSharedBin(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_mode & S_ISVTX;
}

bool makePrivate(const std::string& folder) {
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

bool makeParts(const std::string& folder) {
    return makePrivate(folder) && isOwnPlainFolder(folder) && makePrivate(folder + "/info") &&
           makePrivate(folder + "/files") && isOwnPlainFolder(folder + "/info") &&
           isOwnPlainFolder(folder + "/files");
}

bool makeHomeBin(Bin& bin) {
    const std::string data = getSystemFolder(SystemFolder::data);
    bin = {joinPath(data, "Trash"), {}};
    return !createFolders(data) && makeParts(bin.folder);
}

bool makeVolumeBin(const std::string& path, dev_t volume, Bin& bin) {
    const std::string top = topOf(path, volume);
    const std::string user = std::to_string(geteuid());
    const std::string shared = joinPath(top, ".Trash");
    bin = {shared + '/' + user, top};
    if (isSharedBin(shared) && makeParts(bin.folder))
        return true;
    bin.folder = joinPath(top, ".Trash-" + user);
    return makeParts(bin.folder);
}

FileError findBin(const std::string& path, dev_t volume, Bin& bin) {
    struct stat status = {};
    const bool hasHome = makeHomeBin(bin);
    if (hasHome && stat(bin.folder.c_str(), &status) == 0 && status.st_dev == volume)
        return {};
    Bin ofVolume;
    if (makeVolumeBin(path, volume, ofVolume)) {
        bin = ofVolume;
        return {};
    }
    return {hasHome ? 0 : EACCES};
}

std::string percentEncoded(const std::string& path) {
    std::string encoded;
    for (const char c : path) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (isLetter || (c >= '0' && c <= '9') ||
            std::string_view("-_.!~*'()/").find(c) != std::string::npos) {
            encoded += c;
            continue;
        }
        char digits[4];
        std::snprintf(digits, sizeof digits, "%%%02X", static_cast<uint8_t>(c));
        encoded += digits;
    }
    return encoded;
}

std::string infoOf(const std::string& path, const Bin& bin) {
    const size_t cut = bin.top.empty() ? 0 : joinPath(bin.top, "").size();
    const CalendarTime now = toLocalTime(getWallClockMilliseconds());
    char date[64];
    std::snprintf(date, sizeof date, "%04d-%02d-%02dT%02d:%02d:%02d", now.year, now.month, now.day, now.hour,
                  now.minute, now.second);
    return "[Trash Info]\nPath=" + percentEncoded(path.substr(cut)) + "\nDeletionDate=" + date + '\n';
}

/// The name in the bin: that of the file, and the second one of a name has a number before its extension.
std::string nameInBin(const std::string& path, int number) {
    std::string name = lastPart(path);
    std::string extension;
    if (const size_t dot = name.rfind('.'); number > 1 && dot != std::string::npos && dot > 0) {
        extension = name.substr(dot);
        name.resize(dot);
    }
    if (extension.size() > longestExtension)
        name += std::exchange(extension, {});
    size_t end = longestName - extension.size();
    if (name.size() > end) {
        while (end > 0 && (name[end] & 0xC0) == 0x80)
            --end;
        name.resize(end);
    }
    return number > 1 ? name + '.' + std::to_string(number) + extension : name;
}

/// Reserves the name: what lies in the bin belongs to the entry that describes it.
FileError writeInfo(const std::string& place, const std::string& text) {
    File file;
    if (FileError error = file.open(place, openWrite | openCreate | openExclusive))
        return error;
    FileError error;
    file.write(text.data(), static_cast<int64_t>(text.size()), &error);
    if (!error)
        error = file.flushToDisk();
    if (!error)
        error = file.close();
    if (!error)
        error = flushFolder(parentOf(place));
    if (error)
        deleteFile(place);
    return error;
}

FileError moveInto(const std::string& path, const std::string& place) {
    // A leftover without a description is nobody's, but it is not lost either.
    struct stat status = {};
    if (lstat(place.c_str(), &status) == 0)
        return {EEXIST};
    return moveFile(path, place);
}

} // namespace

FileError moveToTrash(const std::string& path) {
    if (!hasName(path))
        return {EINVAL};
    struct stat status = {};
    const std::string place = placeOf(path);
    if (lstat(place.c_str(), &status) != 0)
        return lastFileError();
    if (isTopOfVolume(place, status))
        return {EBUSY};
    Bin bin;
    if (FileError error = findBin(place, status.st_dev, bin))
        return error;
    // Neither a bin itself nor what lies in it goes to the bin. In a link lies nothing.
    const bool holdsBin = !S_ISLNK(status.st_mode) && isInside(bin.folder, place);
    if (holdsBin || isInside(parentOf(place), bin.folder))
        return {EINVAL};
    const std::string text = infoOf(place, bin);
    for (int number = 1; number <= mostOfOneName; ++number) {
        const std::string name = nameInBin(place, number);
        const std::string info = bin.folder + "/info/" + name + ".trashinfo";
        FileError error = writeInfo(info, text);
        if (!error) {
            error = moveInto(place, bin.folder + "/files/" + name);
            if (error)
                deleteFile(info);
        }
        if (!error.isExisting())
            return error;
    }
    return {EEXIST};
}

} // namespace qorl::platform
