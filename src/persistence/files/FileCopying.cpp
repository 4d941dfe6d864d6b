#include "persistence/files/FileCopying.h"

#include "foundation/Cast.h"
#include "foundation/FUID.h"
#include "persistence/files/DurableFiles.h"
#include "persistence/streams/FBufferedStream.h"
#include "persistence/streams/StreamProgress.h"
#include "persistence/urls/FUrl.h"

#include <new>
#include <string>
#include <vector>

namespace qorl::FileCopying {

namespace {

constexpr int32_t copiedAtOnce = 64 * 1024;

bool hasFailed(const FStream& stream) {
    const auto* file = cast<FFileStream>(&stream);
    return !stream.isValid() || (file && file->getLastError() != 0);
}

/// Puts "~" and `mark` in front of a name.
void setNameBeside(FUrl& place, const std::u16string& name, const std::string& mark) {
    const std::u16string beside = u'~' + std::u16string(mark.begin(), mark.end()) + name;
    place.setName(ConstString(std::u16string_view(beside)));
    if (!place.isValid())
        throw std::bad_alloc();
}

/// Gives `place` a name in its folder that no file has.
bool findNameBeside(FFileSystem& files, FUrl& place) {
    const std::u16string name = place.getName().toUtf16();
    place.setIsFolder(false);
    for (int i = 0; i < mostNamesTried; ++i) {
        setNameBeside(place, name, i == 0 ? std::string() : std::to_string(i));
        if (!files.mayExist(place))
            return true;
        if (files.exists(place))
            continue;
        // Nobody can tell, so it takes a name that nobody has.
        FUID drawn;
        if (!drawn.generate())
            return false;
        setNameBeside(place, name, drawn.toPlainString());
        return true;
    }
    return false;
}

} // namespace

void tellName(StreamProgress* progress, const FPath& from) {
    if (!progress)
        return;
    String text("Copying File: ");
    text.append(from.getName());
    progress->setText(text);
}

bool copyBytes(Ref<FStream> source, int64_t size, StreamProgress* progress, const WriteBytes& write) {
    // Asking for the size may have left it elsewhere.
    if (source->tell() > 0)
        return false;
    // Blocks need to know where the end is. What says that it is empty may be made while it is read.
    const Ref<FStream> blocks = size > 0 ? make<FBufferedStream>(source, copiedAtOnce, false) : source;
    const int64_t start = progress ? progress->position() : 0;
    std::vector<uint8_t> bytes(copiedAtOnce);
    for (int64_t done = 0;;) {
        if (progress && progress->isCancelled(bytes.data(), copiedAtOnce))
            return false;
        const int64_t got = blocks->read(bytes.data(), copiedAtOnce);
        if (got < 0 || hasFailed(*blocks) || hasFailed(*source))
            return false;
        if (got == 0)
            return done >= size;
        if (!write(bytes.data(), got))
            return false;
        done += got;
        if (progress)
            progress->setPosition(start + done);
    }
}

bool copyInto(FFileSystem& files, const FUrl& to, Ref<FStream> source, int64_t size,
              StreamProgress* progress) {
    FUrl place(to);
    const bool isReplacing = files.mayExist(to);
    if (!place.isValid() || (isReplacing && !findNameBeside(files, place)))
        return false;
    Ref<FStream> target = files.createFile(place, FFileStream::writeAccess);
    if (!target)
        return false;
    bool isWhole = false;
    try {
        isWhole = copyBytes(std::move(source), size, progress, [&](const uint8_t* bytes, int64_t count) {
            return target->write(bytes, count) == count;
        });
    } catch (const std::bad_alloc&) {
        isWhole = false; // Half a copy goes, whatever cut it.
    }
    isWhole = files.closeFile(std::move(target)) && isWhole;
    if (isWhole && isReplacing)
        isWhole = files.rename(place, to.getName());
    if (!isWhole)
        files.deleteFile(place);
    return isWhole;
}

void takeOverTimes(FFileSystem& source, const FPath& from, FFileSystem& target, const FPath& to) {
    platform::CalendarTime written;
    platform::CalendarTime read;
    if (source.getFileTime(from, nullptr, &written, &read))
        target.setFileTime(to, written, read);
}

} // namespace qorl::FileCopying
