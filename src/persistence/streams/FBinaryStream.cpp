#include "persistence/streams/FBinaryStream.h"

#include "foundation/containers/CmBuffer.h"
#include "foundation/text/StoredBytes.h"
#include "foundation/text/TextConversion.h"

#include <cstdlib>
#include <limits>

namespace qorl {

namespace {

/// How a text is collected that is read byte by byte.
constexpr int32_t textGrowth = 1024;
/// What of a stored text can matter to a buffer of `size` characters: the mark, three bytes for each unit,
/// and a last character that is cut in two.
int32_t mostBytesFor(int32_t size) {
    const int64_t bytes = static_cast<int64_t>(text::utf8Mark.size()) + int64_t{size} * 3 + 4;
    return static_cast<int32_t>(std::min<int64_t>(bytes, std::numeric_limits<int32_t>::max()));
}

/// What lies before the last character of a text, if that may have been cut in two.
std::string_view withoutLastCharacter(std::string_view utf8) {
    constexpr size_t longest = 4;
    for (size_t length = 1; length <= std::min(longest, utf8.size()); ++length)
        if ((utf8[utf8.size() - length] & 0xC0) != 0x80)
            return utf8.substr(0, utf8.size() - length);
    return utf8;
}

} // namespace

bool FBinaryStream::readBool(bool& value) {
    uint16_t word = 0;
    const bool isRead = readRaw(word);
    value = word != 0;
    return isRead;
}

bool FBinaryStream::writeChars(const char* text, bool withTerminator) {
    const std::string_view bytes(text ? text : "");
    const auto count = static_cast<int64_t>(bytes.size()) + (withTerminator ? 1 : 0);
    return count == 0 || write(bytes.data(), count) == count;
}

int32_t FBinaryStream::readLine(char* buffer, int32_t size) {
    if (!buffer || size < 1)
        return 0;
    int32_t length = 0;
    char byte = 0;
    while (length < size - 1 && byte != '\n' && readByte(byte) && byte != 0)
        buffer[length++] = byte;
    buffer[length] = 0;
    if (length >= 2 && buffer[length - 1] == '\n' && buffer[length - 2] == '\r')
        buffer[length - 2] = 0;
    return static_cast<int32_t>(std::strlen(buffer));
}

bool FBinaryStream::writeCountedChars(const char* text) {
    if (!text)
        return writeInt32(0);
    const size_t count = std::strlen(text) + 1;
    if (count > maxCountedBytes)
        return false;
    return writeInt32(static_cast<int32_t>(count)) && writeChars(text, true);
}

FBinaryStream::CountedChars FBinaryStream::readCountedChars() {
    int32_t count = 0;
    if (!readInt32(count) || count > maxCountedBytes || count < 1)
        return nullptr;
    // A body may lack its terminator.
    CountedChars text(static_cast<char*>(std::malloc(static_cast<size_t>(count) + 1)));
    if (!text || read(text.get(), count) != count)
        return nullptr;
    text.get()[count] = 0;
    return text;
}

bool FBinaryStream::writeTextUtf8(const char16_t* text) {
    const std::u16string_view wide(text ? text : u"");
    if (wide.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max()))
        return false;
    const std::string_view mark = text::isAscii(wide) ? std::string_view() : text::utf8Mark;
    const int64_t count = static_cast<int64_t>(mark.size()) + text::narrowLength(wide) + 1;
    CmBuffer bytes(0, textGrowth);
    if (count > std::numeric_limits<int32_t>::max() || !bytes.setCapacity(static_cast<int32_t>(count)))
        return false;
    std::copy(mark.begin(), mark.end(), bytes.data());
    text::narrow(wide, bytes.data() + mark.size(), text::Surrogates::kept);
    return write(bytes.data(), count) == count;
}

int32_t FBinaryStream::readTextUtf8(char16_t* buffer, int32_t size) try {
    if (!buffer || size < 1)
        return 0;
    buffer[0] = 0;
    const int32_t mostKept = mostBytesFor(size);
    CmBuffer bytes(0, textGrowth);
    bool isWhole = true;
    char byte = 0;
    while (readByte(byte) && byte != 0)
        if (bytes.used() < mostKept)
            isWhole = isWhole && bytes.appendByte(byte);
    if (!isWhole)
        return 0;
    std::string_view text = bytes.bytes();
    if (bytes.used() == mostKept)
        text = withoutLastCharacter(text);
    if (text.starts_with(text::utf8Mark))
        text.remove_prefix(text::utf8Mark.size());
    const std::u16string wide = text::widenStored(text).toUtf16();
    auto length = static_cast<int32_t>(std::min<size_t>(wide.size(), static_cast<size_t>(size) - 1));
    if (static_cast<size_t>(length) < wide.size() && length > 0 && text::isLeadSurrogate(wide[length - 1]) &&
        text::isTrailSurrogate(wide[length]))
        --length;
    std::copy_n(wide.data(), length, buffer);
    buffer[length] = 0;
    return length;
} catch (const std::bad_alloc&) {
    return 0;
}

bool FBinaryStream::skip(int64_t count) {
    char dropped = 0;
    while (count > 0 && readByte(dropped))
        --count;
    return count <= 0;
}

bool FBinaryStream::pad(int64_t count) {
    while (count > 0 && writeInt8(0))
        --count;
    return count <= 0;
}

} // namespace qorl
