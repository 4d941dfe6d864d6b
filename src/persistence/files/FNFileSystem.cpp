#include "persistence/files/FNFileSystem.h"

#include "foundation/Cast.h"
#include "foundation/Singleton.h"
#include "foundation/StartupHook.h"
#include "foundation/text/TextConversion.h"
#include "persistence/files/FNFileIterator.h"
#include "persistence/files/FileErrors.h"
#include "persistence/files/PathText.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/mounts/FVFileSystem.h"
#include "persistence/mounts/MountedStream.h"
#include "persistence/urls/FUrl.h"
#include "persistence/urls/UrlMetaHandler.h"
#include "platform/FileTimes.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constinit Singleton<FNFileSystem> fileSystem;

const StartupHook fileSystemHook{"FNFileSystem", StartupHook::ready,
                                 [] { return FNFileSystem::instance() != nullptr; }};

/// What programs of western languages wrote names in before UTF-8.
constexpr uint32_t earlierCodePage = 1252;

/// Stores the system's number where the caller wants it. Whether the work succeeded.
bool succeeded(const platform::FileError& error, int32_t* out = nullptr) {
    tellError(out, error);
    return !error;
}

platform::FileInfo infoAt(const std::string& native) {
    platform::FileInfo info;
    platform::getFileInfo(native, info);
    return info;
}

platform::FileInfo infoOf(const FPath& path) {
    return infoAt(FNFileSystem::nativeOf(path));
}

struct AccessRow {
    uint32_t mode;
    uint32_t access;
};

constexpr AccessRow accesses[] = {
    {FFileStream::readAccess, platform::openRead},       {FFileStream::writeAccess, platform::openWrite},
    {FFileStream::shareRead, platform::openSharesRead},  {FFileStream::shareWrite, platform::openSharesWrite},
    {FFileStream::sequential, platform::openSequential},
};

uint32_t accessOf(uint32_t mode) {
    uint32_t access = platform::openLocked | platform::openRegular;
    for (const AccessRow& row : accesses)
        access |= mode & row.mode ? row.access : 0u;
    return access;
}

Ref<FUrl> urlOf(const FPath& path) {
    auto url = make<FUrl>(path);
    if (!url->isValid())
        throw std::bad_alloc();
    return url;
}

void tellWritten(const FUrl& file) {
    if (auto* files = FNFileSystem::instance())
        files->notify(FFileSystem::fileWritten, file);
}

Ref<FFileStream> streamOf(platform::File file, FUrl& url, uint32_t mode, int32_t sectorSize) {
    auto stream = make<FFileStream>(std::move(file), mode, sectorSize, &tellWritten);
    stream->setUrl(&url);
    return stream;
}

void cutFinalSeparators(std::string& native) {
    while (native.size() > 1 && native.ends_with('/'))
        native.pop_back();
}

/// Whether a path leads into a file as if that were a folder.
bool isBelowFile(std::string native) {
    cutFinalSeparators(native);
    if (native.size() > FMountTable::maxPathLength || infoAt(native).kind != platform::FileKind::none)
        return false;
    for (;;) {
        const size_t cut = native.find_last_of('/');
        if (cut == std::string::npos || cut == 0)
            return false;
        native.resize(cut);
        cutFinalSeparators(native);
        const platform::FileKind kind = infoAt(native).kind;
        if (kind != platform::FileKind::none)
            return kind == platform::FileKind::file;
    }
}

/// Also a plain path whose text has a scheme.
bool isUrl(const FPath& path) {
    if (cast<FUrl>(&path))
        return true;
    return !cast<FNPath>(&path) && PathText::beginsAsUrl(path.getFolder());
}

/// Gives a path, which may be the text of a URL, a plain name.
void setPlainName(FPath& path, const ConstString& name) {
    // A folder without a name behind it bears its own one.
    if (path.getName().isEmpty())
        path.setPath(String(path.getFolder()), true);
    if (cast<FUrl>(&path) || !isUrl(path)) {
        path.setName(name);
        return;
    }
    FUrl url(path);
    url.setName(name);
    String text;
    url.getFullPath(text);
    path.setPath(text, path.isFolder());
}

/// What lies on no disk can be read where somebody knows its scheme.
Ref<FStream> openAway(const FPath& path, uint32_t mode, int32_t* error) {
    tellError(error, std::errc::not_supported);
    auto* urls = UrlMetaHandler::instance();
    const bool isRead = mode & FFileStream::readAccess && !(mode & FFileStream::writeAccess);
    return urls && isRead ? urls->openUrl(FUrl(path), error) : nullptr;
}

/// The last part of a path in the bytes of the earlier code page; empty when it has no such form, or the
/// same.
std::string earlierSpelling(const std::string& native) {
    const std::u16string name = PathText::fromNative(PathText::nameOfNative(native));
    std::string bytes;
    std::u16string back;
    const bool isSpelt = !text::isAscii(name) && text::encode(earlierCodePage, name, bytes) &&
                         text::decode(earlierCodePage, bytes, back) && back == name;
    // What is valid UTF-8 as well would be another file's name.
    return isSpelt && text::wideLength(bytes) == text::invalid ? bytes : std::string();
}

} // namespace

FNFileSystem* FNFileSystem::instance() {
    return fileSystem.get();
}

std::string FNFileSystem::nativeOf(const FPath& path) {
    if (!isUrl(path))
        return path.toUtf8();
    FNPath native;
    return FUrl(path).getNativePath(native) ? native.toUtf8() : std::string();
}

/// The file system of what lies in a file that is open as a folder, in an archive, or at a service; null for
/// the rest.
Ref<FFileSystem> FNFileSystem::awayAt(const FPath& path) {
    auto* mounts = FMountTable::instance();
    const std::string native = nativeOf(path);
    const bool leadsAway = native.empty() || isBelowFile(native);
    Ref<FFileSystem> found = mounts && leadsAway ? mounts->findInside(path) : nullptr;
    auto* services = FVFileSystem::instance();
    if (!found && native.empty() && services && services->isInCharge(FUrl(path)))
        found = retain<FFileSystem>(services);
    return found;
}

/// What a file is opened as that the path itself names; null when it can't be opened as a folder.
Ref<FFileSystem> FNFileSystem::mountAt(const FPath& path) {
    auto* mounts = infoOf(path).kind != platform::FileKind::folder ? FMountTable::instance() : nullptr;
    Ref<FFileSystem> found = mounts ? mounts->findMount(path) : nullptr;
    return found && found != awayAt(path) ? found : nullptr;
}

Ref<FStream> FNFileSystem::createFile(const FPath& path, uint32_t mode, int32_t* error) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->createFile(path, mode, error);
    const std::string native = nativeOf(path);
    if (native.empty()) {
        tellError(error, std::errc::not_supported);
        return nullptr;
    }
    const uint32_t access = accessOf(mode | FFileStream::writeAccess) | platform::openCreate;
    constexpr uint32_t makesPath = FFileStream::writeAccess | FFileStream::createPath;
    const Ref<FUrl> url = urlOf(path);
    platform::File file;
    const auto open = [&] { return file.open(native, access); };
    platform::FileError failure = FMountTable::replacing(path, open);
    if (failure && (mode & makesPath) == makesPath && createParents(path, false))
        failure = open();
    if (!succeeded(failure, error))
        return nullptr;
    const int32_t sectorSize = mode & FFileStream::unbuffered ? platform::getSectorSize(native) : 0;
    Ref<FFileStream> stream = streamOf(std::move(file), *url, mode | FFileStream::writeAccess, sectorSize);
    // Last, since nothing brings the earlier contents back.
    if (stream->setLength(0)) {
        FMountTable::forget(path);
        return stream;
    }
    tellError(error, platform::FileError{stream->getLastError()});
    return nullptr;
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return nullptr;
}

Ref<FStream> FNFileSystem::openFile(FPath& path, uint32_t mode, int32_t* error) try {
    constexpr uint32_t writesThrough = FFileStream::writeAccess | FFileStream::unbuffered;
    if (const Ref<FFileSystem> away = awayAt(path)) {
        if ((mode & writesThrough) != writesThrough)
            return away->openFile(path, mode, error);
        tellError(error, std::errc::not_supported);
        return nullptr;
    }
    const std::string native = nativeOf(path);
    if (native.empty())
        return openAway(path, mode, error);
    uint32_t access = accessOf(mode);
    int32_t sectorSize = 0;
    if ((mode & writesThrough) == writesThrough)
        access |= platform::openWriteThrough;
    else if (mode & FFileStream::unbuffered)
        sectorSize = platform::getSectorSize(native);
    access |= sectorSize != 0 ? platform::openUncached : 0u;
    platform::File file;
    platform::FileError failure = file.open(native, access);
    if (const std::string name = failure.isNotFound() ? earlierSpelling(native) : std::string();
        !name.empty()) {
        const std::string other = PathText::folderOfNative(native) + name;
        if (!file.open(other, access)) {
            failure = {};
            setPlainName(path, ConstString(std::string_view(name)));
            if (!path.isValid())
                throw std::bad_alloc();
        }
    }
    if (!succeeded(failure, error))
        return nullptr;
    return streamOf(std::move(file), *urlOf(path), mode, sectorSize);
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return nullptr;
}

bool FNFileSystem::closeFile(Ref<FStream> stream) {
    if (!stream)
        return false;
    if (auto* mounted = cast<MountedStream>(stream.get()))
        return mounted->mount()->closeFile(std::move(stream));
    auto* file = cast<FFileStream>(stream.get());
    if (!file) {
        stream->flush();
        return stream->isValid();
    }
    file->close();
    return file->getLastError() == 0;
}

bool FNFileSystem::deleteFile(const FPath& path) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->deleteFile(path);
    if (!succeeded(platform::deleteFile(nativeOf(path))))
        return false;
    notify(fileDeleted, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::exists(const FPath& path) try {
    if (path.isFolder() && mountAt(path))
        return true;
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->exists(path);
    const platform::FileKind kind = infoOf(path).kind;
    return path.isFolder() ? kind == platform::FileKind::folder : kind != platform::FileKind::none;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::moveTo(const std::string& from, const std::string& to) {
    const bool isFolder = infoAt(from).kind == platform::FileKind::folder;
    FNPath earlier(from, isFolder);
    if (!succeeded(platform::moveFile(from, to)))
        return false;
    notify(isFolder ? folderRenamed : fileRenamed, FNPath(to, isFolder), &earlier);
    return true;
}

bool FNFileSystem::rename(FPath& path, const ConstString& newName) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->rename(path, newName);
    const std::string native = nativeOf(path);
    const std::string name = PathText::toNative(newName);
    if (native.empty() || !PathText::isOnePart(newName) ||
        !moveTo(native, PathText::folderOfNative(native) + name))
        return false;
    setPlainName(path, newName);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::move(FPath& path, const FPath& newFolder) try {
    const std::string native = nativeOf(path);
    std::string target = nativeOf(newFolder);
    const std::string name = PathText::nameOfNative(native);
    const Ref<FFileSystem> away = awayAt(path);
    if (away && (awayAt(newFolder) == away || mountAt(newFolder) == away))
        return away->move(path, newFolder);
    if (away || !PathText::isOnePart(ConstString(std::string_view(name))) || target.empty())
        return false;
    target += target.ends_with('/') ? name : '/' + name;
    if (!moveTo(native, target))
        return false;
    const bool isFolder = path.isFolder();
    // A relative target counts from the current folder, whatever the path counted from.
    if (auto* located = cast<FNPath>(&path))
        located->setLocation(FNPath::noKind);
    path.setNative(ConstString(std::string_view(target)));
    path.setIsFolder(isFolder);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::createFolder(const FPath& path) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->createFolder(path);
    if (!succeeded(platform::createFolder(nativeOf(path))))
        return false;
    notify(folderCreated, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::setCurrentFolder(const FPath& path) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->setCurrentFolder(path);
    return succeeded(platform::setCurrentFolder(nativeOf(path)));
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::getVolumeInfo(const FPath& path, FVolumeInfo& info) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->getVolumeInfo(path, info);
    const std::string native = nativeOf(path);
    platform::VolumeInfo volume;
    if (native.empty() || !succeeded(platform::getVolumeInfo(native, volume)))
        return false;
    info.name = ConstString(std::string_view(volume.name));
    info.kind = volume.kind;
    info.freeBytes = volume.freeBytes;
    info.totalBytes = volume.totalBytes;
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::deleteFolder(const FPath& path) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->deleteFolder(path);
    if (!succeeded(platform::deleteFolder(nativeOf(path))))
        return false;
    notify(folderDeleted, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::getFileTime(const FPath& path, platform::CalendarTime* created,
                               platform::CalendarTime* written, platform::CalendarTime* read) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->getFileTime(path, created, written, read);
    const platform::FileInfo info = infoOf(path);
    if (info.kind == platform::FileKind::none)
        return false;
    if (created)
        *created =
            platform::toLocalTime(info.created != 0 ? info.created : std::min(info.written, info.read));
    if (written)
        *written = platform::toLocalTime(info.written);
    if (read)
        *read = platform::toLocalTime(info.read);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::setFileTime(const FPath& path, const platform::CalendarTime& written,
                               const platform::CalendarTime& read) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->setFileTime(path, written, read);
    return succeeded(platform::setFileTimes(nativeOf(path), platform::fromLocalTime(written),
                                            platform::fromLocalTime(read)));
} catch (const std::bad_alloc&) {
    return false;
}

int64_t FNFileSystem::getFileSizeOf(const FPath& path) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->getFileSizeOf(path);
    const platform::FileInfo info = infoOf(path);
    return info.kind == platform::FileKind::file ? info.size : -1;
} catch (const std::bad_alloc&) {
    return -1;
}

bool FNFileSystem::isReadOnly(const FPath& path) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->isReadOnly(path);
    return infoOf(path).isReadOnly;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::isWriteProtected(const FPath& path) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->isWriteProtected(path);
    const std::string native = nativeOf(path);
    platform::VolumeInfo volume;
    if (native.empty() || platform::getVolumeInfo(native, volume))
        return true;
    return volume.isReadOnly || isReadOnly(path);
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::setReadOnly(const FPath& path, bool on) try {
    const std::string native = nativeOf(path);
    return !native.empty() && !platform::setReadOnly(native, on);
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::createParents(const FPath& path, bool isFolder) try {
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->createParents(path, isFolder);
    std::string folder = nativeOf(path);
    if (folder.empty())
        return false;
    if (!isFolder)
        folder = PathText::folderOfNative(folder);
    for (size_t end = 0; end < folder.size();) {
        end = std::min(folder.find('/', end + 1), folder.size());
        const std::string part = folder.substr(0, end);
        if (platform::folderExists(part))
            continue;
        const platform::FileError error = platform::createFolder(part);
        if (!error)
            notify(folderCreated, FNPath(part, true));
        else if (!platform::folderExists(part))
            return false;
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

Ref<FFileIterator> FNFileSystem::getIterator(const FPath& path, int32_t mode) try {
    // A file that is open as a folder is walked as one.
    if (const Ref<FFileSystem> mounted = mountAt(path))
        return mounted->getIterator(path, mode);
    if (const Ref<FFileSystem> away = awayAt(path))
        return away->getIterator(path, mode);
    return FNFileIterator::open(path, mode);
} catch (const std::bad_alloc&) {
    return nullptr;
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
    constexpr int32_t readAtOnce = 64 * 1024;
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

void FNFileSystem::notify(int32_t kind, const FPath& path, FInterface* data) try {
    const std::string native = isUrl(path) ? nativeOf(path) : std::string();
    if (native.empty())
        FFileSystem::notify(kind, path, data);
    else
        FFileSystem::notify(kind, FNPath(native, path.isFolder()), data);
} catch (const std::bad_alloc&) {
    return; // Nobody is told without memory for it.
}

} // namespace qorl
