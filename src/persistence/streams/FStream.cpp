#include "persistence/streams/FStream.h"

#include "foundation/containers/CmBuffer.h"
#include "persistence/urls/FUrl.h"

#include <algorithm>
#include <cstring>

namespace qorl {

QORL_REGISTER_ABSTRACT(FStream, "FStream", CmObject, 0)

namespace {

constexpr int64_t stackPiece = 1024;
constexpr int32_t longestLine = 64 << 20;

/// Moves `count` bytes. True when none was missing.
bool transfer(FStream& from, FStream& to, int64_t count) {
    char piece[stackPiece];
    while (count > 0) {
        const int64_t got = from.read(piece, std::min(count, stackPiece));
        if (got < 1 || to.write(piece, got) != got)
            return false;
        count -= got;
    }
    return true;
}

/// Reads until `count` bytes are there. Fewer at the end; -1 when the stream failed.
int64_t readWhole(FStream& stream, char* buffer, int64_t count) {
    int64_t done = 0;
    while (done < count) {
        const int64_t got = stream.read(buffer + done, count - done);
        if (got < 0 || (got == 0 && !stream.isValid()))
            return -1;
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

/// False when it stays where it is. One that can't tell its place is taken at its word.
bool goToStart(FStream& stream) {
    if (stream.tell() != 0)
        stream.rewind();
    return stream.tell() <= 0;
}

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}
bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/// Drops blanks and tabs at both ends.
void trim(CmBuffer& line) {
    std::string_view kept = line.bytes();
    while (!kept.empty() && isBlank(kept.front()))
        kept.remove_prefix(1);
    while (!kept.empty() && isBlank(kept.back()))
        kept.remove_suffix(1);
    if (!kept.empty())
        std::memmove(line.data(), kept.data(), kept.size());
    line.setUsedSize(static_cast<int32_t>(kept.size()));
}

} // namespace

FStream::FStream() = default;
FStream::FStream(const FStream& other) = default;
FStream::FStream(Memory& memory) : FBinaryStream(memory) {}
FStream::FStream(const FStream& other, Memory& memory)
    : CmObject(other), FBinaryStream(other, memory), StreamFace(other), url_(other.url_) {}
FStream::~FStream() = default;

void FStream::flush() {}
bool FStream::isValid() const {
    return true;
}
bool FStream::copyFrom(FStream& source, int64_t count) {
    return transfer(source, *this, count);
}
bool FStream::writeTo(FStream& destination) {
    return destination.copyAll(*this);
}
void FStream::setProgress(StreamProgress*) {}

FUrl* FStream::url() const {
    return url_.get();
}
void FStream::setUrl(FUrl* url) {
    url_ = retain(url);
}

void FStream::takeOver(const FStream& wrapped) {
    url_ = wrapped.url_;
    setByteOrder(wrapped.byteOrder());
}

bool FStream::copyTo(FStream& destination, int64_t count) {
    return transfer(*this, destination, count);
}

bool FStream::copyAll(FStream& source) {
    if (!goToStart(source))
        return false;
    char piece[stackPiece];
    for (;;) {
        const int64_t got = source.read(piece, stackPiece);
        if (got < 1)
            return got == 0 && source.isValid();
        if (write(piece, got) != got)
            return false;
    }
}

bool FStream::contentEquals(FStream& other) {
    if (!goToStart(*this) || !goToStart(other))
        return false;
    char mine[stackPiece];
    char theirs[stackPiece];
    while (true) {
        const int64_t got = readWhole(*this, mine, stackPiece);
        if (got < 0 || readWhole(other, theirs, stackPiece) != got)
            return false;
        if (std::memcmp(mine, theirs, static_cast<size_t>(got)) != 0)
            return false;
        if (got < stackPiece)
            return true;
    }
}

bool FStream::writeWideText(const char16_t* text, bool withTerminator) {
    const std::u16string_view units(text ? text : u"");
    const auto count = static_cast<int64_t>((units.size() + (withTerminator ? 1 : 0)) * sizeof(char16_t));
    return count == 0 || write(units.data(), count) == count;
}

bool FStream::readTextLine(CmBuffer& line, int32_t trimMode) {
    line.clear();
    int64_t place = tell();
    const bool isPlaceKnown = place >= 0;
    char byte = 0;
    const auto next = [&] {
        const bool isRead = readByte(byte);
        place += isRead ? 1 : 0;
        return isRead;
    };
    if (!next())
        return false;
    bool isMore = true;
    bool isWhole = true;
    for (; isMore && isWhole && !isLineEnd(byte); isMore = next())
        isWhole = line.used() < longestLine && line.appendByte(byte);
    while (isMore && isWhole && isLineEnd(byte))
        isMore = next();
    if (isMore && isWhole) {
        const int64_t back = seek(-1, fromHere);
        isWhole = isPlaceKnown ? back == place - 1 : back >= 0;
    }
    // A stream that begins anew once it was asked at its end would give its lines for ever.
    if (!isMore && isPlaceKnown && tell() != place)
        seek(place, fromStart);
    if (isWhole && trimMode == dropBlanks)
        trim(line);
    if (isWhole && line.appendByte('\0'))
        return line.setUsedSize(line.used() - 1);
    line.clear();
    return false;
}

} // namespace qorl
