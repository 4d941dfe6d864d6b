#include "persistence/files/FFileSystem.h"

#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/UpdateHandler.h"
#include "persistence/files/FPath.h"
#include "persistence/files/PathText.h"
#include "persistence/mounts/FMountTable.h"
#include "persistence/streams/StreamPlace.h"

#include <new>
#include <string_view>

namespace qorl {

QORL_REGISTER_ABSTRACT(FFileSystem, "FFileSystem", CmObject, 0)

namespace {

constexpr int32_t maxLegalLength = 260;
constexpr std::u16string_view illegalCharacters = u"\\*?/:<>|\"\t\n\r";

/// Null without memory.
Ref<CmObject> copyOf(const FPath& path) {
    Ref<CmObject> copy = Ref<CmObject>::adopt(path.clone());
    return copy && static_cast<const FPath&>(*copy).isValid() ? copy : nullptr;
}

} // namespace

bool FFileSystem::makeLegalName(String& text, char16_t replacement) try {
    // Bytes that are no text become characters that stand for them, as in a path.
    if (!text.toWide())
        text = ConstString(std::u16string_view(PathText::fromNative(text.view8())));
    bool isChanged = text.size() > maxLegalLength;
    if (isChanged)
        text.remove(PathText::wholeLength(text.view16(), maxLegalLength));
    if (text.size() > maxLegalLength)
        return false;
    char16_t* units = text.buffer16();
    for (int32_t i = 0; units && i < text.size(); ++i) {
        if (illegalCharacters.find(units[i]) == std::u16string_view::npos)
            continue;
        units[i] = replacement;
        isChanged = true;
    }
    return isChanged;
} catch (const std::bad_alloc&) {
    return false;
}

int64_t FFileSystem::getFileSize(FStream& stream) {
    int64_t size = -1;
    if (const Ref<ISizeableStream> sizeable = sizeableOf(&stream))
        return sizeable->getStreamSize(size) == Result::ok ? size : -1;
    const int64_t place = stream.tell();
    size = stream.seek(0, FStream::fromEnd);
    return stream.seek(place, FStream::fromStart) == place ? size : -1;
}

bool FFileSystem::setFileTime(const FPath&, const platform::CalendarTime&, const platform::CalendarTime&) {
    return false;
}

bool FFileSystem::mayExist(const FPath& path) {
    return exists(path);
}

bool FFileSystem::namesFolder(const FPath& path) {
    const Ref<CmObject> folder = Ref<CmObject>::adopt(path.clone());
    if (path.isFolder() || !folder)
        return path.isFolder();
    static_cast<FPath&>(*folder).setIsFolder(true);
    return exists(static_cast<FPath&>(*folder));
}

void FFileSystem::notify(int32_t kind, const FPath& path, FInterface* data) try {
    auto* earlier = cast<FPath>(data);
    if (kind != fileWritten && kind != folderCreated) {
        FMountTable::forget(path);
        if (earlier)
            FMountTable::forget(*earlier);
    }
    auto* handler = UpdateHandler::current();
    const Ref<FMessage> message = FMessage::named(kind == folderRenamed ? "PathChanged" : "FileSystemChange");
    // Who keeps the message has it longer than the caller has its paths.
    const Ref<CmObject> copy = copyOf(path);
    const Ref<CmObject> earlierCopy = earlier ? copyOf(*earlier) : nullptr;
    if (!handler || !message || !copy || (earlier && !earlierCopy))
        return;
    if (earlier)
        data = earlierCopy.get();
    if (message->setObject8("Path", copy.get()) != Result::ok ||
        message->setInt8("Kind", kind) != Result::ok ||
        (data && message->setObject8("Data", data) != Result::ok))
        return;
    handler->tellMessage(this, *message);
} catch (const std::bad_alloc&) {
    return; // Nobody is told without memory for it.
}

} // namespace qorl
