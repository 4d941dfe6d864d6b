#include "persistence/streams/FBinaryStream.h"

#include "foundation/text/String.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace qorl {

namespace {

constexpr int32_t maxCountedBytes = 0x40000;
constexpr char utf8Mark[] = "\xEF\xBB\xBF";
constexpr int64_t markLength = 3;
/// The mark and a last character that is cut in two.
constexpr size_t longestSequence = markLength + 4;

} // namespace

bool FBinaryStream::readBool(bool& value) {
    uint16_t word = 0;
    const bool isRead = readRaw(word);
    value = word != 0;
    return isRead;
}

bool FBinaryStream::writeChars(const char* text, bool withTerminator) {
    const auto count = static_cast<int64_t>(text ? std::strlen(text) : 0);
    if (!text)
        return !withTerminator || writeInt8(0);
    return write(text, count + (withTerminator ? 1 : 0)) == count + (withTerminator ? 1 : 0);
}

int32_t FBinaryStream::readLine(char* buffer, int32_t size) {
    if (!buffer || size < 1)
        return 0;
    int32_t length = 0;
    while (length < size - 1) {
        char byte = 0;
        if (read(&byte, 1) != 1 || byte == 0)
            break;
        buffer[length++] = byte;
        if (byte == '\n')
            break;
    }
    buffer[length] = 0;
    if (length >= 2 && buffer[length - 1] == '\n' && buffer[length - 2] == '\r')
        buffer[length - 2] = 0;
    return static_cast<int32_t>(std::strlen(buffer));
}

bool FBinaryStream::writeCountedChars(const char* text) {
    if (!text)
        return writeInt32(0);
    const auto count = static_cast<int32_t>(std::strlen(text) + 1);
    return writeInt32(count) && write(text, count) == count;
}

char* FBinaryStream::readCountedChars() {
    int32_t count = 0;
    if (!readInt32(count) || count > maxCountedBytes || count < 1)
        return nullptr;
    auto* text = static_cast<char*>(std::malloc(static_cast<size_t>(count)));
    if (!text)
        return nullptr;
    if (read(text, count) != count) {
        std::free(text);
        return nullptr;
    }
    text[count - 1] = 0;
    return text;
}

bool FBinaryStream::writeTextUtf8(const char16_t* text) {
    const ConstString wide(text);
    std::string bytes = wide.isAscii() ? "" : utf8Mark;
    bytes += wide.toUtf8();
    const auto count = static_cast<int64_t>(bytes.size()) + 1;
    return write(bytes.c_str(), count) == count;
}

int32_t FBinaryStream::readTextUtf8(char16_t* buffer, int32_t size) {
    if (!buffer || size < 1)
        return 0;
    // What lies beyond is read, but could only be cut off: a unit takes at most three bytes.
    const size_t mostKept = static_cast<size_t>(size) * 3 + longestSequence;
    std::string bytes;
    char byte = 0;
    while (read(&byte, 1) == 1 && byte != 0)
        if (bytes.size() < mostKept)
            bytes += byte;
    std::string_view text = bytes;
    if (text.size() > 2 && text.starts_with(utf8Mark))
        text.remove_prefix(markLength);
    const std::u16string wide = ConstString(text).toUtf16();
    const auto length = std::min(static_cast<int32_t>(wide.size()), size - 1);
    std::copy_n(wide.data(), length, buffer);
    buffer[length] = 0;
    return length;
}

bool FBinaryStream::skip(int64_t count) {
    char dropped[1024];
    while (count > 0) {
        const int64_t piece = std::min<int64_t>(count, sizeof dropped);
        if (read(dropped, piece) != piece)
            return false;
        count -= piece;
    }
    return true;
}

bool FBinaryStream::pad(int64_t count) {
    constexpr char zeros[1024] = {};
    while (count > 0) {
        const int64_t piece = std::min<int64_t>(count, sizeof zeros);
        if (write(zeros, piece) != piece)
            return false;
        count -= piece;
    }
    return true;
}

} // namespace qorl
