#include "foundation/text/StoredText.h"
#include "foundation/text/String.h"
#include "persistence/streams/FBinaryStream.h"

#include <cstring>
#include <new>

namespace qorl {

static_assert(text::utf8Mark.size() == text::StoredText::markLength);

void text::StoredText::copyTo(char* out) const {
    const std::string_view bytes = copy_.view();
    if (bytes.empty())
        return;
    std::memcpy(out, bytes.data(), bytes.size());
    out[bytes.size()] = 0;
    if (bytesBehind_ > 1)
        std::memcpy(out + bytes.size() + 1, utf8Mark.data(), utf8Mark.size());
}

text::LoadedText text::loadedText(std::string_view bytes) {
    const bool hasRoom = bytes.size() > utf8Mark.size();
    const bool isMarkedBehind = hasRoom && bytes.ends_with(utf8Mark);
    const bool isMarkedInFront = hasRoom && !isMarkedBehind && bytes.starts_with(utf8Mark);
    if (isMarkedBehind)
        bytes.remove_suffix(utf8Mark.size());
    if (isMarkedInFront)
        bytes.remove_prefix(utf8Mark.size());
    if (bytes.ends_with('\0'))
        bytes.remove_suffix(1);
    return {bytes, isMarkedBehind || isMarkedInFront};
}

bool text::LoadedText::assignTo(String& text) const {
    const int32_t length = isMarked ? wideLength(bytes, Surrogates::kept) : invalid;
    if (length == invalid)
        return text.assign8(bytes.data(), static_cast<int32_t>(bytes.size()));
    Scratch<char16_t, 128> scratch;
    char16_t* wide = scratch.room(length);
    if (!wide)
        return false;
    widen(bytes, wide);
    return text.assign16(wide, length, true);
}

bool String::writeTo(FBinaryStream& stream) const {
    const text::StoredText stored(*this);
    if (!stored.isValid() || stored.isTooLong())
        return false;
    const auto count = static_cast<int32_t>(stored.count());
    text::Scratch<char, 256> scratch;
    char* bytes = scratch.room(count);
    if (!bytes)
        return false;
    stored.copyTo(bytes);
    return stream.writeInt32(count) && (count == 0 || stream.write(bytes, count) == count);
}

bool text::readStored(FBinaryStream& stream, String& text) {
    int32_t count = 0;
    if (!stream.readInt32(count))
        return false;
    if (count < 1) {
        text.clear(text.isWide());
        return true;
    }
    Scratch<char, 256> scratch;
    char* bytes = count > String::maxStoredBytes ? nullptr : scratch.room(count);
    if (!bytes) {
        stream.seek(count, FBinaryStream::fromHere);
        if (count <= String::maxStoredBytes)
            throw std::bad_alloc();
        return false;
    }
    if (stream.read(bytes, count) != count)
        return false;
    if (!loadedText({bytes, static_cast<size_t>(count)}).assignTo(text))
        throw std::bad_alloc();
    return true;
}

bool String::readFrom(FBinaryStream& stream) try {
    return text::readStored(stream, *this);
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
