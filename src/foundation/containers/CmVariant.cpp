#include "foundation/containers/CmVariant.h"

#include "foundation/containers/DeepRelease.h"
#include "foundation/text/StoredText.h"
#include "foundation/text/String.h"
#include "foundation/text/TextConversion.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <qorl/Ref.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string>

namespace qorl {

QORL_REGISTER(CmVariant, "CmVariant", CmObject, 0)

CmVariant::CmVariant(const FAttributeVariant& value) {
    switch (value.bareKind()) {
    case FAttributeVariant::integer: setInteger(value.integerValue); break;
    case FAttributeVariant::real: setReal(value.realValue); break;
    case FAttributeVariant::text8: setText8(value.text8Value); break;
    case FAttributeVariant::text16: setText16(value.text16Value); break;
    case FAttributeVariant::object: setObject(castToCmObject(value.objectValue)); break;
    default: break;
    }
}

CmVariant::CmVariant(const CmVariant& other) : CmObject(other) {
    *this = other;
}

CmVariant& CmVariant::operator=(const CmVariant& other) {
    if (this == &other)
        return *this;
    const Hold hold = other.isOwned() ? Hold::keep : Hold::view;
    switch (other.bareType()) {
    case text8: setText8(other.value_.text8, hold); break;
    case text16: setText16(other.value_.text16, hold); break;
    case object: setObject(other.value_.object, hold); break;
    default: {
        // The other one may go with what this one holds.
        const uint16_t type = other.type_;
        const auto value = other.value_;
        clear();
        type_ = type;
        value_ = value;
    }
    }
    return *this;
}

CmObject* CmVariant::clone() const {
    Ref<CmVariant> copy = Ref<CmVariant>::adopt(new (std::nothrow) CmVariant(*this));
    return copy && copy->type_ == type_ ? copy.detach() : nullptr;
}

void CmVariant::clear() {
    const uint16_t kind = isOwned() ? bareType() : uint16_t{none};
    const auto old = value_;
    type_ = none;
    value_.integer = 0;
    if (kind == text8)
        std::free(old.text8);
    else if (kind == text16)
        std::free(old.text16);
    else if (kind == object && old.object)
        releaseDeep(old.object);
}

void CmVariant::setInteger(int64_t value) {
    clear();
    type_ = integer;
    value_.integer = value;
}

void CmVariant::setReal(double value) {
    clear();
    type_ = real;
    value_.real = value;
}

template <typename Char>
bool CmVariant::setChars(const Char* text, int32_t length, Hold hold, Type type) {
    auto* chars = const_cast<Char*>(text);
    if (text && hold == Hold::keep) {
        const auto count = static_cast<size_t>(length < 0 ? std::char_traits<Char>::length(text) : length);
        chars = static_cast<Char*>(std::malloc((count + 1) * sizeof(Char)));
        if (chars) {
            std::memcpy(chars, text, count * sizeof(Char));
            chars[count] = 0;
        }
    }
    // Only now: the text may be a part of the present one.
    clear();
    if (!chars)
        return false;
    type_ = static_cast<uint16_t>(type | (hold == Hold::view ? none : ownedFlag));
    if constexpr (sizeof(Char) == 1)
        value_.text8 = chars;
    else
        value_.text16 = chars;
    return true;
}

bool CmVariant::setText8(const char* text, Hold hold) {
    return setChars(text, ConstString::all, hold, text8);
}

bool CmVariant::setText16(const char16_t* text, Hold hold) {
    return setChars(text, ConstString::all, hold, text16);
}

bool CmVariant::setText(const ConstString& text) {
    // An empty text may have no characters to point to.
    if (text.isWide())
        return setChars(text.isEmpty() ? u"" : text.view16().data(), text.size(), Hold::keep, text16);
    return setChars(text.isEmpty() ? "" : text.view8().data(), text.size(), Hold::keep, text8);
}

void CmVariant::setObject(CmObject* given, Hold hold) {
    if (given && hold == Hold::keep)
        given->addRef();
    clear();
    if (!given)
        return;
    type_ = static_cast<uint16_t>(object | (hold == Hold::view ? none : ownedFlag));
    value_.object = given;
}

int64_t CmVariant::getInteger() const {
    if (bareType() == integer)
        return value_.integer;
    if (bareType() != real || value_.real != value_.real)
        return 0;
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (value_.real >= limit)
        return std::numeric_limits<int64_t>::max();
    return value_.real < -limit ? std::numeric_limits<int64_t>::min() : static_cast<int64_t>(value_.real);
}

double CmVariant::getReal() const {
    if (bareType() == real)
        return value_.real;
    return bareType() == integer ? static_cast<double>(value_.integer) : 0;
}

ConstString CmVariant::getText() const {
    if (bareType() == text8)
        return ConstString(value_.text8);
    return bareType() == text16 ? ConstString(value_.text16) : ConstString();
}

FAttributeVariant CmVariant::toRecord() const {
    FAttributeVariant record{};
    switch (bareType()) {
    case integer:
        record.kind = FAttributeVariant::integer;
        record.integerValue = value_.integer;
        break;
    case real:
        record.kind = FAttributeVariant::real;
        record.realValue = value_.real;
        break;
    case text8:
        record.kind = FAttributeVariant::text8;
        record.text8Value = value_.text8;
        break;
    case text16:
        record.kind = FAttributeVariant::text16;
        record.text16Value = value_.text16;
        break;
    case object:
        record.kind = FAttributeVariant::object;
        record.objectValue = static_cast<FDependent*>(value_.object);
        break;
    default: break;
    }
    return record;
}

bool CmVariant::writeTo(FObjectArchive* archive) {
    FStream& stream = archive->stream();
    if (!stream.writeUInt16(type_))
        return false;
    switch (bareType()) {
    case integer: return stream.writeInt64(value_.integer);
    case real: return stream.writeDouble(value_.real);
    case text8:
    case text16: {
        const String copy(getText());
        return copy.size() == getText().size() && copy.writeTo(stream);
    }
    case object: return archive->writeObject(value_.object);
    default: return true;
    }
}

bool CmVariant::readFrom(FObjectArchive* archive) {
    FStream& stream = archive->stream();
    uint16_t type = none;
    if (!stream.readUInt16(type))
        return false;
    switch (type & kinds) {
    case none: clear(); return true;
    case integer: {
        int64_t value = 0;
        if (!stream.readInt64(value))
            return false;
        setInteger(value);
        return true;
    }
    case real: {
        double value = 0;
        if (!stream.readDouble(value))
            return false;
        setReal(value);
        return true;
    }
    case text8:
    case text16: {
        String text;
        if (!text::readStored(stream, text))
            return false;
        if (type & text16 && !text.isWide() && text::wideLength(text.view8()) == text::invalid)
            return false;
        if (!(type & text16 ? text.toWide() : text.toNarrow()) || !setText(text))
            throw std::bad_alloc();
        return true;
    }
    case object: {
        CmObject* read = archive->readObject(nullptr);
        if (!read && archive->lastError() != 0)
            return false;
        setObject(read, Hold::adopt);
        return true;
    }
    default: archive->report(FObjectArchive::malformed, nullptr); return false;
    }
}

bool CmVariant::storeAttributes(FAttributes* attributes) {
    attributes->setInteger("type", type_);
    switch (bareType()) {
    case integer: attributes->setInteger("lValue", value_.integer); break;
    case real: attributes->setFloat("fValue", value_.real); break;
    case object: attributes->setObject("obj", value_.object, FAttributes::Hold::retain); break;
    case text8:
    case text16: attributes->setString("str", getText()); break;
    default: break;
    }
    return true;
}

bool CmVariant::restoreAttributes(FAttributes* attributes) {
    switch (const int64_t kind = attributes->getInteger("type") & kinds) {
    case none: clear(); return true;
    case integer: setInteger(attributes->getInteger("lValue")); return true;
    case real: setReal(attributes->getFloat("fValue")); return true;
    case object: setObject(attributes->getObject("obj").detach(), Hold::adopt); return true;
    case text8:
    case text16: {
        // The stored form may have turned an ASCII text into the other width.
        const ConstString stored = attributes->getString("str");
        if (kind == text16 && !stored.isWide() && text::wideLength(stored.view8()) == text::invalid)
            return false;
        const String text(stored);
        if (text.size() != stored.size() || !(kind == text16 ? text.toWide() : text.toNarrow()) ||
            !setText(text))
            throw std::bad_alloc();
        return true;
    }
    default: return false;
    }
}

} // namespace qorl
