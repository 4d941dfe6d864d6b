#include "foundation/text/String.h"
#include "persistence/FBinaryStream.h"

#include <cstring>
#include <string>

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
    std::string bytes = toUtf8();
    bytes += '\0';
    if (isWide())
        bytes.append(utf8Mark, sizeof utf8Mark);
    const auto count = static_cast<int32_t>(bytes.size());
    return stream.writeInt32(count) && stream.write(bytes.data(), count) == count;
}

bool String::readFrom(FBinaryStream& stream) {
    int32_t count = 0;
    if (!stream.readInt32(count))
        return false;
    if (count > maxStoredBytes) {
        stream.seek(count, FBinaryStream::fromHere);
        return false;
    }
    if (count < 1) {
        clear(isWide());
        return true;
    }
    std::string bytes(static_cast<size_t>(count), '\0');
    if (stream.read(bytes.data(), count) != count)
        return false;
    const char* text = bytes.data();
    bool isUtf8 = false;
    if (count > markLength && isMark(text + count - markLength)) {
        isUtf8 = true;
        count -= markLength;
    } else if (count > markLength && isMark(text)) {
        isUtf8 = true;
        text += markLength;
        count -= markLength;
    }
    // Never past a zero byte: a text ends there for every reader.
    assign8(text, count, true);
    if (isUtf8)
        toWide(utf8CodePage);
    return true;
}

} // namespace qorl
