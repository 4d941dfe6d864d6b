// Files and whole folders that are copied, deleted and put into the bin.
#include "persistence/files/FNFileSystem.h"
#include "persistence/files/FileCopying.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/streams/StreamProgress.h"
#include "persistence/urls/FUrl.h"
#include "platform/FileReplacement.h"
#include "platform/Trash.h"

#include <new>

namespace qorl {

namespace {

bool copyOnDisk(const std::string& from, const std::string& to, StreamProgress* progress) {
    platform::CopyStep step;
    if (progress)
        step = [progress, start = progress->position()](std::span<const uint8_t> block, int64_t done) {
            progress->setPosition(start + done);
            return !progress->isCancelled(block.data(), static_cast<int64_t>(block.size()));
        };
    return !FMountTable::replacing(FNPath(to), [&] { return platform::copyFile(from, to, step); });
}

bool copyToDisk(Ref<FStream> source, int64_t size, const std::string& to, StreamProgress* progress) {
    platform::FileReplacement target;
    if (FMountTable::replacing(FNPath(to), [&] { return target.open(to); }))
        return false;
    const auto write = [&target](const uint8_t* bytes, int64_t count) {
        return target.file().write(bytes, count) == count;
    };
    return FileCopying::copyBytes(std::move(source), size, progress, write) && !target.putInPlace();
}

bool isFolderAt(const std::string& native) {
    platform::FileInfo info;
    platform::getFileInfo(native, info);
    return info.kind == platform::FileKind::folder && !info.isLink;
}

} // namespace

bool FNFileSystem::copy(const FPath& from, const FPath& to, StreamProgress* progress) try {
    const Ref<FFileSystem> awayFrom = awayAt(from);
    const Ref<FFileSystem> awayTo = awayAt(to);
    const std::string source = nativeOf(from);
    const std::string target = nativeOf(to);
    FileCopying::tellName(progress, from);
    if (awayFrom && awayFrom == awayTo)
        return awayFrom->copy(from, to, progress);
    if (!awayTo && target.empty())
        return false;
    bool isCopied = false;
    if (!awayFrom && !awayTo && !source.empty()) {
        isCopied = copyOnDisk(source, target, progress);
    } else {
        const Ref<CmObject> place = Ref<CmObject>::adopt(from.clone());
        Ref<FStream> stream =
            place ? openFile(static_cast<FPath&>(*place),
                             FFileStream::readAccess | FFileStream::shareRead | FFileStream::sequential)
                  : nullptr;
        if (!stream)
            return false;
        const int64_t size = getFileSize(*stream);
        isCopied = awayTo ? FileCopying::copyInto(*awayTo, FUrl(to), std::move(stream), size, progress)
                          : copyToDisk(std::move(stream), size, target, progress);
        if (isCopied)
            FileCopying::takeOverTimes(*this, from, *this, to);
    }
    if (isCopied)
        notify(fileWritten, to);
    return isCopied;
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

} // namespace qorl
