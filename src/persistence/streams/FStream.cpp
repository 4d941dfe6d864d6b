#include "persistence/streams/FStream.h"

#include "persistence/urls/FUrl.h"

#include <algorithm>
#include <cstring>

namespace qorl {

QORL_REGISTER_ABSTRACT(FStream, "FStream", CmObject, 0)

namespace {

constexpr int64_t stackPiece = 1024;
constexpr size_t longestLine = size_t{64} << 20;

/// Moves `count` bytes, or all there are for a negative `count`. True when none was missing.
bool transfer(FStream& from, FStream& to, int64_t count) {
    char piece[stackPiece];
    for (int64_t left = count; left != 0;) {
        const int64_t wanted = left < 0 ? stackPiece : std::min(left, stackPiece);
        const int64_t got = from.read(piece, wanted);
        if (got < 0 || (got > 0 && to.write(piece, got) != got))
            return false;
        if (got < wanted)
            return count < 0;
        if (left > 0)
            left -= got;
    }
    return true;
}

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}
bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

} // namespace

FStream::FStream() = default;
FStream::FStream(const FStream& other) = default;
FStream::~FStream() = default;

void FStream::flush() {}
bool FStream::isValid() const {
    return true;
}
bool FStream::copyFrom(FStream& source, int64_t count) {
    return count < 1 || transfer(source, *this, count);
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

bool FStream::copyTo(FStream& destination, int64_t count) {
    return count < 1 || transfer(*this, destination, count);
}

bool FStream::copyAll(FStream& source) {
    if (source.tell() != 0)
        source.rewind();
    return transfer(source, *this, -1);
}

bool FStream::contentEquals(FStream& other) {
    if (tell() != 0)
        rewind();
    if (other.tell() != 0)
        other.rewind();
    char mine[stackPiece];
    char theirs[stackPiece];
    while (true) {
        const int64_t got = read(mine, stackPiece);
        if (other.read(theirs, stackPiece) != got || got < 0)
            return false;
        if (std::memcmp(mine, theirs, static_cast<size_t>(got)) != 0)
            return false;
        if (got < stackPiece)
            return true;
    }
}

bool FStream::writeWideText(const char16_t* text, bool withTerminator) {
    const ConstString wide(text);
    const bool isWritten = writeArray(wide.text16(), wide.size());
    return isWritten && (!withTerminator || writeUInt16(0));
}

bool FStream::readTextLine(std::string& line, int32_t trimMode) {
    line.clear();
    char byte = 0;
    if (read(&byte, 1) != 1)
        return false;
    bool isMore = true;
    while (isMore && !isLineEnd(byte)) {
        if (line.size() == longestLine) {
            line.clear();
            return false;
        }
        line += byte;
        isMore = read(&byte, 1) == 1;
    }
    while (isMore && isLineEnd(byte))
        isMore = read(&byte, 1) == 1;
    if (isMore)
        seek(-1, fromHere);
    if (trimMode == dropBlanks) {
        line.erase(line.begin(), std::find_if_not(line.begin(), line.end(), isBlank));
        line.erase(std::find_if_not(line.rbegin(), line.rend(), isBlank).base(), line.end());
    }
    return true;
}

FStream& StreamFace::self() {
    return static_cast<FStream&>(*this);
}

Result StreamFace::read(void* buffer, int64_t count, int64_t* got) {
    const int64_t bytes = self().read(buffer, count);
    if (got)
        *got = bytes;
    return bytes < 1 ? Result::no : Result::ok;
}

Result StreamFace::write(const void* buffer, int64_t count, int64_t* got) {
    const int64_t bytes = self().write(buffer, count);
    if (got)
        *got = bytes;
    return bytes < 0 || bytes < count ? Result::no : Result::ok;
}

Result StreamFace::seek(int64_t offset, int32_t mode, int64_t* result) {
    const int64_t position = self().seek(offset, mode);
    if (result)
        *result = position;
    return position < 0 ? Result::no : Result::ok;
}

Result StreamFace::tell(int64_t* position) {
    if (!position)
        return Result::invalidArgument;
    *position = self().tell();
    return Result::ok;
}

} // namespace qorl
