#include "persistence/files/FNFileSystem.h"
#include "persistence/files/FNShortcut.h"
#include "persistence/files/FileErrors.h"
#include "platform/Folders.h"
#include "platform/Trash.h"

#include <iterator>
#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr const char* sizeUnits[] = {"B", "KB", "MB", "GB", "TB"};

constexpr int32_t readAtOnce = 64 * 1024;

bool isFolderAt(const std::string& native) {
    platform::FileInfo info;
    platform::getFileInfo(native, info);
    return info.kind == platform::FileKind::folder && !info.isLink;
}

} // namespace

Ref<FStream> FNFileSystem::createTempFile(FNPath& path) try {
    std::string name;
    if (platform::createTemporaryFile(FNPath::knownFolder(FNPath::temporary), "qorl", name))
        return nullptr;
    FNPath made{std::string_view(name)};
    Ref<FStream> stream = openFile(made, FFileStream::readAccess | FFileStream::writeAccess);
    if (stream)
        path = made;
    if (stream && path.isValid())
        return stream;
    // Nobody could delete a file whose name is lost.
    platform::deleteFile(name);
    return nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

bool FNFileSystem::trash(const FPath& path) try {
    const std::string native = nativeOf(path);
    const bool isFolder = isFolderAt(native);
    if (native.empty() || platform::moveToTrash(native))
        return false;
    notify(isFolder ? folderDeleted : fileDeleted, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::deleteTree(const FPath& path) try {
    const std::string native = nativeOf(path);
    const bool isFolder = isFolderAt(native);
    if (native.empty() || platform::deleteTree(native))
        return false;
    notify(isFolder ? folderDeleted : fileDeleted, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::copyTree(const FPath& from, const FPath& to, platform::FileLinks links) try {
    const std::string source = nativeOf(from);
    const std::string target = nativeOf(to);
    if (source.empty() || target.empty() || platform::copyTree(source, target, links))
        return false;
    notify(folderCreated, to);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

std::vector<FNPath> FNFileSystem::getDrives() try {
    std::vector<FNPath> drives;
    for (const platform::VolumeInfo& volume : platform::listVolumes())
        drives.emplace_back(std::string_view(volume.root), true);
    return drives;
} catch (const std::bad_alloc&) {
    return {};
}

std::vector<String> FNFileSystem::getRootNames() try {
    std::vector<String> names;
    for (const platform::VolumeInfo& volume : platform::listVolumes())
        names.emplace_back(ConstString(std::string_view(volume.name)));
    return names;
} catch (const std::bad_alloc&) {
    return {};
}

int64_t FNFileSystem::getFreeSpace(const FPath& path) {
    FVolumeInfo info;
    return getVolumeInfo(path, info) ? info.freeBytes : -1;
}

void FNFileSystem::formatSize(int64_t bytes, String& text) {
    auto size = static_cast<double>(bytes);
    size_t unit = 0;
    for (; size >= 1024 && unit + 1 < std::size(sizeUnits); ++unit)
        size /= 1024;
    text.printf8("%.3f %s", size, sizeUnits[unit]);
}

bool FNFileSystem::resolveShortcut(FNPath& path) try {
    const std::string target = FNShortcut::targetOf(path.toUtf8());
    platform::FileInfo info;
    if (target.empty() || platform::getFileInfo(target, info) || info.kind == platform::FileKind::none)
        return false;
    FNPath found(std::string_view(target), info.kind == platform::FileKind::folder);
    if (!found.isValid())
        return false;
    path = std::move(found);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::getSystemFile(FNPath& path) try {
    String name;
    path.getPath(name);
    std::vector<std::string> places = platform::getSharedDataFolders();
    places.insert(places.begin(), FNPath::knownFolder(FNPath::system));
    const std::string file = '/' + FNPath(name).toUtf8();
    if (!path.isValid() || !path.isRelative() || (file + '/').find("/../") != std::string::npos)
        return false;
    for (const std::string& place : places) {
        const std::string whole = place + file;
        if (!platform::fileExists(whole))
            continue;
        path = FNPath(std::string_view(whole));
        return path.isValid();
    }
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::setReadOnly(const FPath& path, bool on) try {
    const std::string native = nativeOf(path);
    return !native.empty() && !platform::setReadOnly(native, on);
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::readWholeFile(const FPath& path, std::string& bytes, int64_t limit, int32_t* error) try {
    const Ref<CmObject> place = Ref<CmObject>::adopt(path.clone());
    if (!place)
        throw std::bad_alloc();
    constexpr uint32_t mode =
        FFileStream::readAccess | FFileStream::shareRead | FFileStream::shareWrite | FFileStream::sequential;
    const Ref<FStream> stream = openFile(static_cast<FPath&>(*place), mode, error);
    if (!stream)
        return false;
    // One that shares writing tells of a change when it closes; here nothing changes.
    stream->setUrl(nullptr);
    std::string content;
    std::vector<char> block(readAtOnce);
    for (;;) {
        const int64_t got = stream->read(block.data(), readAtOnce);
        if (got < 0 || !stream->isValid()) {
            tellError(error, std::errc::io_error);
            return false;
        }
        if (got == 0)
            break;
        content.append(block.data(), static_cast<size_t>(got));
        if (static_cast<int64_t>(content.size()) > limit) {
            tellError(error, std::errc::file_too_large);
            return false;
        }
    }
    bytes = std::move(content);
    return true;
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return false;
}

} // namespace qorl
