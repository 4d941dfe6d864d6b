#include "persistence/files/FNFileSystem.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/streams/FBufferedStream.h"
#include "persistence/streams/StreamProgress.h"
#include "platform/FileReplacement.h"

#include <new>
#include <vector>

namespace qorl {

namespace {

constexpr int32_t copiedAtOnce = 64 * 1024;

void tellWhatIsCopied(StreamProgress& progress, const FPath& from) {
    String text("Copying File: ");
    text.append(from.getName());
    progress.setText(text);
}

bool copyOnDisk(const std::string& from, const std::string& to, StreamProgress* progress) {
    platform::CopyStep step;
    if (progress)
        step = [progress, start = progress->position()](std::span<const uint8_t> block, int64_t done) {
            progress->setPosition(start + done);
            return !progress->isCancelled(block.data(), static_cast<int64_t>(block.size()));
        };
    return !platform::copyFile(from, to, step);
}

/// Hands all of `source` to `write`, block by block.
template <typename Write>
bool copyBlocks(Ref<FStream> source, StreamProgress* progress, Write write) {
    if (progress)
        source->setProgress(progress);
    FBufferedStream blocks(std::move(source), copiedAtOnce, false);
    std::vector<uint8_t> bytes(copiedAtOnce);
    for (;;) {
        const int64_t got = blocks.read(bytes.data(), copiedAtOnce);
        if (got < 0 || !blocks.isValid())
            return false;
        if (got == 0)
            return true;
        if (!write(bytes.data(), got))
            return false;
    }
}

bool copyToDisk(Ref<FStream> source, const std::string& to, StreamProgress* progress) {
    platform::FileReplacement target;
    if (target.open(to))
        return false;
    const auto write = [&target](const uint8_t* bytes, int64_t count) {
        return target.file().write(bytes, count) == count;
    };
    return copyBlocks(std::move(source), progress, write) && !target.putInPlace();
}

bool copyToMount(Ref<FStream> source, FFileSystem& mounted, const FPath& to, StreamProgress* progress) {
    Ref<FStream> target = mounted.createFile(to, FFileStream::writeAccess);
    if (!target)
        return false;
    const auto write = [&target](const uint8_t* bytes, int64_t count) {
        return target->write(bytes, count) == count;
    };
    const bool isCopied = copyBlocks(std::move(source), progress, write);
    const bool isClosed = mounted.closeFile(std::move(target));
    if (!isCopied || !isClosed)
        mounted.deleteFile(to);
    return isCopied && isClosed;
}

} // namespace

bool FNFileSystem::copy(const FPath& from, const FPath& to, StreamProgress* progress) try {
    const Ref<FFileSystem> mountedFrom = mountedAt(from);
    const Ref<FFileSystem> mountedTo = mountedAt(to);
    const std::string source = nativeOf(from);
    const std::string target = nativeOf(to);
    if (progress)
        tellWhatIsCopied(*progress, from);
    if (mountedFrom && mountedFrom == mountedTo)
        return mountedFrom->copy(from, to, progress);
    if (!mountedTo && target.empty())
        return false;
    bool isCopied = false;
    if (!mountedFrom && !mountedTo && !source.empty()) {
        isCopied = copyOnDisk(source, target, progress);
    } else {
        const Ref<CmObject> place = Ref<CmObject>::adopt(from.clone());
        Ref<FStream> stream =
            place ? openFile(static_cast<FPath&>(*place),
                             FFileStream::readAccess | FFileStream::shareRead | FFileStream::sequential)
                  : nullptr;
        if (!stream)
            return false;
        isCopied = mountedTo ? copyToMount(std::move(stream), *mountedTo, to, progress)
                             : copyToDisk(std::move(stream), target, progress);
    }
    if (isCopied)
        notify(fileWritten, to);
    return isCopied;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
