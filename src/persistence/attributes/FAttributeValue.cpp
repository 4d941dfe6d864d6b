#include "persistence/attributes/FAttributeValue.h"

#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "foundation/text/StoredBytes.h"
#include "foundation/text/TextConversion.h"

#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(FAttributeValue, "FAttributeValue", CmObject, 0)
QORL_REGISTER(FStringIDAttribute, "FStringIDAttribute", FAttributeValue, 0)
QORL_REGISTER(FIntIDAttribute, "FIntIDAttribute", FAttributeValue, 0)

namespace {

template <typename T>
int64_t toWord(T* pointer) {
    return reinterpret_cast<int64_t>(pointer);
}

uint16_t holdFlag(FAttributeValue::Hold hold) {
    return hold == FAttributeValue::Hold::retain  ? FAttributeValue::referenced
           : hold == FAttributeValue::Hold::adopt ? FAttributeValue::adopted
                                                  : 0;
}

int64_t truncated(double value) {
    constexpr double limit = 9223372036854775808.0;
    if (std::isnan(value))
        return 0;
    if (value >= limit)
        return std::numeric_limits<int64_t>::max();
    return value < -limit ? std::numeric_limits<int64_t>::min() : static_cast<int64_t>(value);
}

/// A text that would not come back the same from the other width, and the nearest one in that.
class TextInBothWidths final : public CmString {
    QORL_CLASS(TextInBothWidths, CmString)

public:
    TextInBothWidths(String&& text, String&& other) : CmString(std::move(text)), other_(std::move(other)) {}

    const String& other() const { return other_; }

private:
    String other_;
};

// Converted in place. A text that there was no memory for must not be taken for an empty one.
const char* inBytes(const CmString& text) {
    const char* bytes = text.text8();
    if (text.string().isWide())
        throw std::bad_alloc();
    return bytes;
}

const char16_t* inUnits(const CmString& text) {
    const char16_t* units = text.text16();
    if (!text.string().isWide() && text::wideLength(text.string().view8()) != text::invalid)
        throw std::bad_alloc();
    return units;
}

bool hasLoneSurrogate(std::u16string_view wide) {
    const auto length = static_cast<int32_t>(wide.size());
    for (int32_t at = 0; at < length;)
        if (text::isSurrogate(text::nextPoint(wide, at)))
            return true;
    return false;
}

} // namespace

/// Gives back what a value of these flags holds.
void FAttributeValue::releaseHeld(uint16_t flags, int64_t value) {
    const bool isCounted = flags & (referenced | adopted);
    if (flags & object) {
        if (isCounted && value)
            reinterpret_cast<CmObject*>(value)->release();
    } else if (flags & interfacePointer) {
        if (isCounted && value)
            reinterpret_cast<FInterface*>(value)->release();
    } else if ((flags & string) && !(flags & referenced)) {
        reinterpret_cast<CmString*>(value)->release();
    }
}

FAttributeValue::FAttributeValue(const FAttributeValue& other) : CmObject(other) {
    *this = other;
}

FAttributeValue& FAttributeValue::operator=(const FAttributeValue& other) {
    setValue(other);
    flags_ = static_cast<uint16_t>((flags_ & ~keptMask) | (other.flags_ & (keptMask | foreign)));
    return *this;
}

void FAttributeValue::setValue(const FAttributeValue& other) {
    if (this == &other)
        return;
    if (other.isString()) {
        setString(other.getString());
        return;
    }
    const bool isCounted = other.value_ && (other.flags_ & (referenced | adopted));
    if (isCounted && other.isObject())
        other.pointer<CmObject>()->addRef();
    else if (isCounted && (other.flags_ & interfacePointer))
        other.pointer<FInterface>()->addRef();
    replace(other.flags_ & static_cast<uint16_t>(~(keptMask | foreign)), other.value_);
}

FAttributeValue& FAttributeValue::operator=(FAttributeValue&& other) noexcept {
    std::swap(flags_, other.flags_);
    std::swap(value_, other.value_);
    return *this;
}

String FAttributeValue::copyOf(const ConstString& text) {
    String copy(text);
    if (copy.isEmpty() != text.isEmpty())
        throw std::bad_alloc();
    return copy;
}

void FAttributeValue::own(String&& text) const {
    auto* owned = ownedString();
    if (!owned || cast<TextInBothWidths>(owned)) {
        replace(string, toWord(new CmString(std::move(text))));
        return;
    }
    owned->string() = std::move(text);
    flags_ = static_cast<uint16_t>((flags_ & keptMask) | string);
}

/// A text of somebody else's becomes our own, to be converted. It is the same value, so it stays hidden.
void FAttributeValue::ownReferred() const {
    const auto hidden = static_cast<uint16_t>(flags_ & foreign);
    own(copyOf(getString()));
    flags_ |= hidden;
}

/// The text in the width that it isn't stored in, when its conversion could not be undone; else null.
const String* FAttributeValue::inOtherWidth(const CmString& owned) const {
    if (const auto* both = cast<TextInBothWidths>(&owned))
        return &both->other();
    const String& text = owned.string();
    const bool comesBack =
        text.isWide() ? !hasLoneSurrogate(text.view16()) : text::wideLength(text.view8()) != text::invalid;
    if (comesBack)
        return nullptr;
    String other = text.isWide() ? String(std::string_view(text::narrow(text.view16())))
                                 : text::widenStored(text.view8());
    if (other.isEmpty())
        throw std::bad_alloc();
    const auto* both = new TextInBothWidths(copyOf(text), std::move(other));
    replace(static_cast<uint16_t>(string | (flags_ & foreign)), toWord(both));
    return &both->other();
}

CmString* FAttributeValue::ownedString() const {
    return isString() && !(flags_ & referenced) ? pointer<CmString>() : nullptr;
}

bool FAttributeValue::isTextWide() const {
    const CmString* owned = ownedString();
    return owned ? owned->string().isWide() : flags_ & wide;
}

void FAttributeValue::setString(const ConstString& text) {
    own(copyOf(text));
}

void FAttributeValue::takeString(String&& text) {
    own(std::move(text));
}

void FAttributeValue::referToText(const char* text) {
    replace(string | referenced, toWord(text));
}
void FAttributeValue::referToText(const char16_t* text) {
    replace(string | referenced | wide, toWord(text));
}

void FAttributeValue::setObject(CmObject* value, Hold hold) {
    if (value && hold == Hold::retain)
        value->addRef();
    replace(object | holdFlag(hold), toWord(value));
}

void FAttributeValue::replaceObject(CmObject* value, Hold hold) {
    if (value && hold == Hold::retain)
        value->addRef();
    replace(static_cast<uint16_t>(object | holdFlag(hold) | (flags_ & foreign)), toWord(value));
}

void FAttributeValue::setInterface(FInterface* value, Hold hold) {
    if (value && hold == Hold::retain)
        value->addRef();
    replace(interfacePointer | holdFlag(hold), toWord(value));
}

void FAttributeValue::clear() {
    replace(0, 0);
}

int64_t FAttributeValue::getInteger() const {
    if (isInteger())
        return value_;
    if (isFloat())
        return truncated(getFloat());
    int64_t number = 0;
    getString().toInt64(number);
    return number;
}

double FAttributeValue::getFloat() const {
    if (isFloat())
        return std::bit_cast<double>(value_);
    if (isInteger())
        return static_cast<double>(value_);
    double number = 0;
    getString().toDouble(number);
    return number;
}

const char* FAttributeValue::getText8() const {
    if (isString()) {
        if ((flags_ & (referenced | wide)) == (referenced | wide))
            ownReferred();
        const CmString* owned = ownedString();
        if (!owned)
            return pointer<const char>();
        const String* other = owned->string().isWide() ? inOtherWidth(*owned) : nullptr;
        return other ? other->text8() : inBytes(*owned);
    }
    const auto* text = cast<CmString>(getObject());
    return text ? inBytes(*text) : nullptr;
}

const char16_t* FAttributeValue::getText16() const {
    if (isString()) {
        if ((flags_ & (referenced | wide)) == referenced)
            ownReferred();
        const CmString* owned = ownedString();
        if (!owned)
            return pointer<const char16_t>();
        const String* other = owned->string().isWide() ? nullptr : inOtherWidth(*owned);
        return other ? other->text16() : inUnits(*owned);
    }
    const auto* text = cast<CmString>(getObject());
    return text ? inUnits(*text) : nullptr;
}

ConstString FAttributeValue::getString() const {
    if (isString()) {
        if (const CmString* owned = ownedString())
            return owned->string();
        return flags_ & wide ? ConstString(pointer<const char16_t>()) : ConstString(pointer<const char>());
    }
    const auto* text = cast<CmString>(getObject());
    return text ? ConstString(text->string()) : ConstString();
}

CmObject* FAttributeValue::getObject() const {
    return isObject() ? pointer<CmObject>() : nullptr;
}

FInterface* FAttributeValue::getInterface() const {
    return flags_ & interfacePointer ? pointer<FInterface>() : nullptr;
}

bool FStringIDAttribute::isEqual(const CmObject* other) const {
    const auto* entry = cast<FStringIDAttribute>(other);
    return entry && key_ == entry->key_;
}

uint32_t FStringIDAttribute::hashCode(uint32_t size) const {
    return static_cast<uint32_t>(std::hash<std::string>()(key_) % size);
}

int32_t FStringIDAttribute::compare(const CmObject* other) const {
    const auto* entry = cast<FStringIDAttribute>(other);
    if (!entry)
        return CmObject::compare(other);
    const int order = key_.compare(entry->key_);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

FIntIDAttribute::FIntIDAttribute(uint32_t key, uint32_t constructionFlags) : key_(key) {
    setEntryFlags(entryFlags(constructionFlags));
}

bool FIntIDAttribute::isEqual(const CmObject* other) const {
    const auto* entry = cast<FIntIDAttribute>(other);
    return entry && key_ == entry->key_;
}

uint32_t FIntIDAttribute::hashCode(uint32_t size) const {
    return key_ % size;
}

int32_t FIntIDAttribute::compare(const CmObject* other) const {
    const auto* entry = cast<FIntIDAttribute>(other);
    if (!entry)
        return CmObject::compare(other);
    return key_ < entry->key_ ? -1 : key_ > entry->key_ ? 1 : 0;
}

} // namespace qorl
