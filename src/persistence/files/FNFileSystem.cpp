#include "persistence/files/FNFileSystem.h"

#include "foundation/Cast.h"
#include "foundation/Singleton.h"
#include "persistence/files/FFileIterator.h"
#include "persistence/streams/StreamProgress.h"
#include "persistence/urls/FUrl.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace qorl {

namespace {

constinit Singleton<FNFileSystem> fileSystem;

/// Stores the system's number where the caller wants it. Whether the work succeeded.
bool answer(const platform::FileError& error, int32_t* out = nullptr) {
    if (out)
        *out = error.code;
    return !error;
}

platform::FileInfo infoOf(const FPath& path) {
    platform::FileInfo info;
    platform::getFileInfo(path.toUtf8(), info);
    return info;
}

uint32_t accessOf(uint32_t mode) {
    return (mode & FFileStream::readAccess ? platform::openRead : 0u) |
           (mode & FFileStream::writeAccess ? platform::openWrite : 0u) |
           (mode & FFileStream::sequential ? platform::openSequential : 0u);
}

Ref<FFileStream> streamOf(platform::File file, const FPath& path, uint32_t mode) {
    auto stream = make<FFileStream>(std::move(file), mode);
    stream->setUrl(make<FUrl>(path).get());
    return stream;
}

/// A folder's entries, as they were when it was opened.
class FNFileIterator : public FFileIterator {
    QORL_CLASS(FNFileIterator, FFileIterator)

public:
    FNFileIterator(const FPath& folder, std::vector<platform::FolderEntry> entries)
        : folder_(folder.toUtf8()), entries_(std::move(entries)) {
        if (!folder_.ends_with('/'))
            folder_ += '/';
    }

    FPath* next() override {
        if (place_ >= entries_.size()) {
            isAtEntry_ = false;
            return nullptr;
        }
        const auto& entry = entries_[place_++];
        current_.setPath(ConstString(std::string_view(folder_ + entry.name)),
                         entry.kind == platform::FileKind::folder);
        isAtEntry_ = true;
        return &current_;
    }

    FPath* getCurrent() override { return isAtEntry_ ? &current_ : nullptr; }

private:
    std::string folder_;
    std::vector<platform::FolderEntry> entries_;
    size_t place_ = 0;
    FNPath current_;
    bool isAtEntry_ = false;
};

} // namespace

FNFileSystem* FNFileSystem::instance() {
    return fileSystem.get();
}

Ref<FStream> FNFileSystem::createFile(const FPath& path, uint32_t mode, int32_t* error) try {
    const std::string name = path.toUtf8();
    const uint32_t access =
        accessOf(mode | FFileStream::writeAccess) | platform::openCreate | platform::openTruncate;
    platform::File file;
    platform::FileError failure = file.open(name, access);
    if (failure && (mode & FFileStream::createPath) && createParents(path, false))
        failure = file.open(name, access);
    if (!answer(failure, error))
        return nullptr;
    return streamOf(std::move(file), path, mode | FFileStream::writeAccess);
} catch (const std::bad_alloc&) {
    answer(platform::FileError::outOfMemory(), error);
    return nullptr;
}

Ref<FStream> FNFileSystem::openFile(FPath& path, uint32_t mode, int32_t* error) try {
    platform::File file;
    if (!answer(file.open(path.toUtf8(), accessOf(mode)), error))
        return nullptr;
    return streamOf(std::move(file), path, mode);
} catch (const std::bad_alloc&) {
    answer(platform::FileError::outOfMemory(), error);
    return nullptr;
}

bool FNFileSystem::closeFile(Ref<FStream> stream) {
    if (!stream)
        return false;
    if (auto* file = cast<FFileStream>(stream.get()))
        file->close();
    return true;
}

bool FNFileSystem::deleteFile(const FPath& path) try {
    if (!answer(platform::deleteFile(path.toUtf8())))
        return false;
    notify(fileDeleted, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::exists(const FPath& path) try {
    const platform::FileKind kind = infoOf(path).kind;
    return path.isFolder() ? kind == platform::FileKind::folder : kind != platform::FileKind::none;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::moveTo(FPath& path, const FNPath& target) {
    FNPath earlier(path.toUtf8(), path.isFolder());
    if (!answer(platform::moveFile(earlier.toUtf8(), target.toUtf8())))
        return false;
    path.setPath(ConstString(std::string_view(target.toUtf8())), path.isFolder());
    notify(path.isFolder() ? folderRenamed : fileRenamed, path, &earlier);
    return true;
}

bool FNFileSystem::rename(FPath& path, const ConstString& newName) try {
    FNPath target(path.toUtf8(), path.isFolder());
    target.setName(newName);
    return moveTo(path, target);
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::move(FPath& path, const FPath& newFolder) try {
    FNPath target(newFolder.toUtf8(), true);
    target.addFolder(path.getName(), path.isFolder());
    return moveTo(path, target);
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::copy(const FPath& from, const FPath& to, StreamProgress* progress) try {
    platform::CopyStep step;
    if (progress)
        step = [progress, start = progress->position()](std::span<const uint8_t> block, int64_t done) {
            progress->setPosition(start + done);
            return !progress->isCancelled(block.data(), static_cast<int64_t>(block.size()));
        };
    if (!answer(platform::copyFile(from.toUtf8(), to.toUtf8(), step)))
        return false;
    notify(fileWritten, to);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::createFolder(const FPath& path) try {
    if (!answer(platform::createFolder(path.toUtf8())))
        return false;
    notify(folderCreated, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}
bool FNFileSystem::setCurrentFolder(const FPath& path) try {
    return answer(platform::setCurrentFolder(path.toUtf8()));
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::getVolumeInfo(const FPath& path, FVolumeInfo& info) try {
    platform::VolumeInfo volume;
    if (!answer(platform::getVolumeInfo(path.toUtf8(), volume)))
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
    if (!answer(platform::deleteFolder(path.toUtf8())))
        return false;
    notify(folderDeleted, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::getFileTime(const FPath& path, platform::CalendarTime* created,
                               platform::CalendarTime* written, platform::CalendarTime* read) try {
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

int64_t FNFileSystem::getFileSize(FStream& stream) {
    int64_t size = -1;
    Ref<ISizeableStream> sizeable;
    if (stream.queryInterface(ISizeableStream::iid, sizeable.out()) == Result::ok)
        sizeable->getStreamSize(size);
    return size;
}

int64_t FNFileSystem::getFileSizeOf(const FPath& path) try {
    const platform::FileInfo info = infoOf(path);
    return info.kind == platform::FileKind::file ? info.size : -1;
} catch (const std::bad_alloc&) {
    return -1;
}

bool FNFileSystem::isReadOnly(const FPath& path) try {
    return infoOf(path).isReadOnly;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::isWriteProtected(const FPath& path) try {
    platform::VolumeInfo volume;
    platform::getVolumeInfo(path.toUtf8(), volume);
    return volume.isReadOnly || isReadOnly(path);
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::createParents(const FPath& path, bool isFolder) try {
    return FNPath(path.toUtf8(), isFolder)
        .createFolders(isFolder ? FNPath::Folders::withName : FNPath::Folders::above);
} catch (const std::bad_alloc&) {
    return false;
}

Ref<FFileIterator> FNFileSystem::getIterator(const FPath& path, int32_t) try {
    std::vector<platform::FolderEntry> entries;
    if (!answer(platform::listFolder(path.toUtf8(), entries)))
        return nullptr;
    return make<FNFileIterator>(path, std::move(entries));
} catch (const std::bad_alloc&) {
    return nullptr;
}

Ref<FStream> FNFileSystem::createTempFile(FNPath& path) try {
    std::string name;
    if (!answer(platform::createTemporaryFile(FNPath::knownFolder(FNPath::temporary), "qorl", name)))
        return nullptr;
    path.setPath(ConstString(std::string_view(name)), false);
    return openFile(path, FFileStream::readAccess | FFileStream::writeAccess);
} catch (const std::bad_alloc&) {
    return nullptr;
}

bool FNFileSystem::deleteTree(const FPath& path) try {
    if (!answer(platform::deleteTree(path.toUtf8())))
        return false;
    notify(path.isFolder() ? folderDeleted : fileDeleted, path);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

bool FNFileSystem::copyTree(const FPath& from, const FPath& to, platform::FileLinks links) try {
    if (!answer(platform::copyTree(from.toUtf8(), to.toUtf8(), links)))
        return false;
    notify(folderCreated, to);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

int64_t FNFileSystem::getFreeSpace(const FPath& path) {
    FVolumeInfo info;
    return getVolumeInfo(path, info) ? info.freeBytes : -1;
}

void FNFileSystem::formatSize(int64_t bytes, String& text) {
    constexpr const char* units[] = {"B", "KB", "MB", "GB", "TB"};
    auto size = static_cast<double>(bytes);
    size_t unit = 0;
    for (; size >= 1024 && unit + 1 < std::size(units); ++unit)
        size /= 1024;
    text.printf8("%.3f %s", size, units[unit]);
}

bool FNFileSystem::readWholeFile(const FPath& path, std::string& bytes, int64_t limit, int32_t* error) try {
    std::vector<uint8_t> content;
    if (!answer(platform::readWholeFile(path.toUtf8(), content, limit), error))
        return false;
    bytes.assign(content.begin(), content.end());
    return true;
} catch (const std::bad_alloc&) {
    answer(platform::FileError::outOfMemory(), error);
    return false;
}

} // namespace qorl
