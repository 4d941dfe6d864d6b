#include "foundation/CmUID.h"

#include "foundation/Cast.h"
#include "foundation/text/StoredText.h"
#include "foundation/text/String.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qorl {

QORL_REGISTER(CmUID, "CmUID", CmObject, 0)

namespace {

constexpr size_t idBytes = 16;
constexpr size_t base32Digits = 26;
constexpr char digitSigns[] = "0123456789ABCDEFGHIJKLMNOPQRSTUV";

uint8_t hexValue(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<uint8_t>(c - '0');
    const char upper = static_cast<char>(c & ~0x20);
    return upper >= 'A' && upper <= 'F' ? static_cast<uint8_t>(upper - 'A' + 10) : 0;
}

uint32_t base32Value(char c) {
    const auto code = static_cast<unsigned char>(c);
    return static_cast<uint32_t>(code > 64 ? code - 55 : code - 48);
}

} // namespace

std::string CmUID::toHexBytes() const {
    std::string text;
    for (size_t i = 0; i < idBytes; ++i) {
        text += digitSigns[uid_.data()[i] >> 4];
        text += digitSigns[uid_.data()[i] & 15];
    }
    return text;
}

bool CmUID::fromHexBytes(std::string_view text) {
    const size_t pairs = std::min(text.size(), 2 * idBytes) / 2;
    for (size_t i = 0; i < pairs; ++i)
        uid_.data()[i] = static_cast<uint8_t>(hexValue(text[2 * i]) << 4 | hexValue(text[2 * i + 1]));
    return true;
}

std::string CmUID::toBase32String() const {
    std::string text;
    for (size_t digit = 0; digit < base32Digits; ++digit) {
        const size_t bit = digit * 5;
        // Five bits reach into the next byte, but for the last digit, which has three.
        uint32_t bits = uid_.data()[bit / 8];
        if (bit / 8 + 1 < idBytes)
            bits |= static_cast<uint32_t>(uid_.data()[bit / 8 + 1]) << 8;
        text += digitSigns[bits >> bit % 8 & 31];
    }
    return text;
}

bool CmUID::fromBase32String(std::string_view text) {
    if (text.size() != base32Digits)
        return false;
    uint8_t bytes[idBytes + 1] = {};
    for (size_t digit = 0; digit < base32Digits; ++digit) {
        const size_t bit = digit * 5;
        const uint32_t bits = (base32Value(text[digit]) & 31) << bit % 8;
        bytes[bit / 8] |= static_cast<uint8_t>(bits);
        bytes[bit / 8 + 1] |= static_cast<uint8_t>(bits >> 8);
    }
    uid_ = FUID(bytes);
    return true;
}

bool CmUID::isEqual(const CmObject* other) const {
    const auto* id = cast<CmUID>(other);
    return id && id->uid_ == uid_;
}

int32_t CmUID::compare(const CmObject* other) const {
    const auto* id = cast<CmUID>(other);
    if (!id)
        return CmObject::compare(other);
    const int order = std::memcmp(uid_.data(), id->uid_.data(), idBytes);
    return (order > 0) - (order < 0);
}

uint32_t CmUID::hashCode(uint32_t size) const {
    return (uid_.word(0) + uid_.word(1) + uid_.word(2) + uid_.word(3)) % size;
}

bool CmUID::readFrom(FObjectArchive* archive) {
    String text;
    return text::readStored(archive->stream(), text) && fromHexBytes(text.toUtf8());
}

bool CmUID::writeTo(FObjectArchive* archive) try {
    const String text(toHexBytes().c_str());
    return !text.isEmpty() && text.writeTo(archive->stream());
} catch (const std::bad_alloc&) {
    return false;
}

bool CmUID::storeAttributes(FAttributes* attributes) {
    char text[FUID::plainLength + 1];
    uid_.toPlainString(text);
    attributes->setString("GUID", ConstString(text));
    return true;
}

bool CmUID::restoreAttributes(FAttributes* attributes) {
    return uid_.fromPlainString(attributes->getString("GUID").toUtf8().c_str());
}

} // namespace qorl
