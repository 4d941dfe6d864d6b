#include "foundation/text/String.h"
#include "foundation/text/TextConversion.h"
#include "persistence/streams/FBinaryStream.h"

#include <cstring>
#include <limits>

namespace qorl {

namespace {

constexpr char utf8Mark[] = {'\xEF', '\xBB', '\xBF'};
constexpr int32_t markLength = sizeof utf8Mark;

bool isMark(const char* bytes) {
    return std::memcmp(bytes, utf8Mark, sizeof utf8Mark) == 0;
}

} // namespace

bool String::writeTo(FBinaryStream& stream) const {
    if (isEmpty())
        return stream.writeInt32(0);
    if (!isWide()) {
        const int32_t count = size() + 1;
        return stream.writeInt32(count) && stream.write(buffer_, count) == count;
    }
    const int64_t length = text::narrowLength(view16());
    const int64_t count = length + 1 + markLength;
    text::Scratch<char, 256> scratch;
    char* bytes = count > std::numeric_limits<int32_t>::max() ? nullptr : scratch.room(count);
    if (!bytes)
        return false;
    text::narrow(view16(), bytes);
    bytes[length] = 0;
    std::memcpy(bytes + length + 1, utf8Mark, sizeof utf8Mark);
    return stream.writeInt32(static_cast<int32_t>(count)) && stream.write(bytes, count) == count;
}

bool String::readFrom(FBinaryStream& stream) {
    int32_t count = 0;
    if (!stream.readInt32(count))
        return false;
    if (count < 1) {
        clear(isWide());
        return true;
    }
    String read;
    if (count > maxStoredBytes || !read.resize(count, false)) {
        stream.seek(count, FBinaryStream::fromHere);
        return false;
    }
    char* text = read.buffer8();
    if (stream.read(text, count) != count)
        return false;
    const bool isMarkedBehind = count > markLength && isMark(text + count - markLength);
    const bool isMarkedInFront = count > markLength && !isMarkedBehind && isMark(text);
    if (isMarkedBehind || isMarkedInFront)
        count -= markLength;
    if (isMarkedInFront)
        std::memmove(text, text + markLength, static_cast<size_t>(count));
    if (text[count - 1] == 0)
        --count;
    text[count] = 0;
    read.setLength(count);
    const bool isUtf8 = isMarkedBehind || isMarkedInFront;
    if (isUtf8 && !read.toWide(utf8CodePage) && text::wideLength(read.view8()) != text::invalid)
        return false; // memory ran out
    adopt(read);
    return true;
}

} // namespace qorl
