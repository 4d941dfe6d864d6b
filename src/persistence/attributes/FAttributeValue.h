#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/ConstString.h"

#include <bit>
#include <string>
#include <string_view>
#include <utility>

namespace qorl {

class CmString;
class String;

/// One value of an attribute list: a number, a text or an object.
///
/// Reading converts: a number is parsed out of a text, a text comes in the asked width. Setting a value
/// releases the one before. 24 bytes; numbers allocate nothing.
class FAttributeValue : public CmObject {
    QORL_CLASS(FAttributeValue, CmObject)
    QORL_CLONE(FAttributeValue)
    QORL_RECORD(FAttributeValue)

public:
    enum Flag : uint16_t {
        integer = 0x0001,
        object = 0x0002,
        real = 0x0004,
        string = 0x0008,
        /// An object that is retained; a text that somebody else owns.
        referenced = 0x0010,
        /// An object whose reference was taken over.
        adopted = 0x0020,
        /// Entry flags stay when the value changes; the first hides the entry from conversions.
        entryFlag1 = 0x0040,
        entryFlag2 = 0x0080,
        interfacePointer = 0x0100,
        foreign = 0x0200,
        wide = 0x0400,
        untracked = 0x0800,

        kindMask = 0x030F,
        keptMask = 0x08C0,
    };
    /// How `setObject` holds its object.
    enum class Hold : int32_t { plain = 0, adopt = 1, retain = 2 };
    /// What an entry is made with.
    enum ConstructionFlag : uint32_t { firstFlag = 1, secondFlag = 2, untrackedFlag = 8 };

    FAttributeValue() = default;
    FAttributeValue(const FAttributeValue& other);
    FAttributeValue(FAttributeValue&& other) noexcept
        : flags_(std::exchange(other.flags_, 0)), value_(std::exchange(other.value_, 0)) {}
    FAttributeValue& operator=(const FAttributeValue& other);
    FAttributeValue& operator=(FAttributeValue&& other) noexcept;
    ~FAttributeValue() override {
        if (flags_ & heldMask)
            releaseHeld(flags_, value_);
    }

    uint16_t flags() const { return static_cast<uint16_t>(flags_ | (isWide() ? wide : 0)); }
    uint16_t kind() const { return flags_ & kindMask; }
    bool isInteger() const { return flags_ & integer; }
    bool isFloat() const { return flags_ & real; }
    bool isString() const { return flags_ & string; }
    bool isObject() const { return flags_ & object; }
    /// Whether the text is stored in 16 bits.
    bool isWide() const { return isString() && isTextWide(); }
    void setEntryFlags(uint16_t flags) {
        flags_ = static_cast<uint16_t>((flags_ & ~keptMask) | (flags & keptMask));
    }
    void setForeign() { flags_ |= foreign; }
    /// Whether conversions leave the entry out.
    bool isHidden() const { return flags_ & (entryFlag1 | foreign); }
    /// Construction flags as those of an entry.
    static constexpr uint16_t entryFlags(uint32_t constructionFlags) {
        return static_cast<uint16_t>((constructionFlags & firstFlag ? entryFlag1 : 0) |
                                     (constructionFlags & secondFlag ? entryFlag2 : 0) |
                                     (constructionFlags & untrackedFlag ? untracked : 0));
    }

    /// The value of `other`, held as it holds it; our own entry flags stay.
    void setValue(const FAttributeValue& other);
    void setInteger(int64_t value) { replace(integer, value); }
    void setFloat(double value) { replace(real, std::bit_cast<int64_t>(value)); }
    /// Copies the text, keeping its width.
    void setString(const ConstString& text);
    void takeString(String&& text);
    /// A whole copy; `std::bad_alloc` when there is no memory for one, since an empty text in its place would
    /// be stored as such.
    static String copyOf(const ConstString& text);
    /// Refers to a terminated text that must outlive the value, and is no null pointer.
    void referToText(const char* text);
    void referToText(const char16_t* text);
    void setObject(CmObject* value, Hold hold);
    /// Another object that stands for the one that is held: it is the same value, so it stays foreign.
    void replaceObject(CmObject* value, Hold hold);
    void setInterface(FInterface* value, Hold hold);
    void clear();

    /// A number of the other kind is converted, a text parsed; 0 without either.
    int64_t getInteger() const;
    double getFloat() const;
    /// Null when there is no text. Throws std::bad_alloc where there is no memory to convert it. An owned
    /// text is converted in place, unless it would not come back the same: wide text with lone surrogates,
    /// which stand as U+FFFD in 8 bits, and bytes that are no UTF-8, which are read as Windows-1252. These
    /// stay as they are, and are stored so.
    const char* getText8() const;
    const char16_t* getText16() const;
    /// A view of the text in its stored width, also of an object that is a `CmString`; empty without one.
    ConstString getString() const;
    /// Null for other kinds.
    CmObject* getObject() const;
    FInterface* getInterface() const;

private:
    static constexpr uint16_t heldMask = object | string | interfacePointer;

    static void releaseHeld(uint16_t flags, int64_t value);
    /// What was held before is released last: its end may lead back to this value.
    void replace(uint16_t newFlags, int64_t newValue) const {
        const uint16_t oldFlags =
            std::exchange(flags_, static_cast<uint16_t>((flags_ & keptMask) | newFlags));
        const int64_t oldValue = std::exchange(value_, newValue);
        if (oldFlags & heldMask)
            releaseHeld(oldFlags, oldValue);
    }
    bool isTextWide() const;
    void own(String&& text) const;
    void ownReferred() const;
    CmString* ownedString() const;
    const String* inOtherWidth(const CmString& owned) const;
    template <typename T>
    T* pointer() const {
        return reinterpret_cast<T*>(value_);
    }

    // A text that somebody else owns becomes one of our own when it is asked for in the other width.
    mutable uint16_t flags_ = 0;
    mutable int64_t value_ = 0;
};

/// An entry whose key is a text, kept where a short one takes no allocation. The key stays as long as the
/// entry, so entries aren't assigned to each other.
class FStringIDAttribute final : public FAttributeValue {
    QORL_CLASS(FStringIDAttribute, FAttributeValue)
    QORL_CLONE(FStringIDAttribute)
    QORL_RECORD(FStringIDAttribute)

public:
    /// `constructionFlags` are of `ConstructionFlag`.
    explicit FStringIDAttribute(std::string_view key = {}, uint32_t constructionFlags = 0) : key_(key) {
        setEntryFlags(entryFlags(constructionFlags));
    }
    FStringIDAttribute(const FStringIDAttribute& other) = default;
    FStringIDAttribute(FStringIDAttribute&& other) noexcept = default;
    FStringIDAttribute& operator=(const FStringIDAttribute&) = delete;
    ~FStringIDAttribute() override = default;

    const std::string& key() const { return key_; }

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;

private:
    std::string key_;
};

/// An entry whose key is a number.
class FIntIDAttribute : public FAttributeValue {
    QORL_CLASS(FIntIDAttribute, FAttributeValue)
    QORL_CLONE(FIntIDAttribute)
    QORL_RECORD(FIntIDAttribute)

public:
    explicit FIntIDAttribute(uint32_t key = 0, uint32_t constructionFlags = 0);

    uint32_t key() const { return key_; }

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;

private:
    uint32_t key_;
};

} // namespace qorl
