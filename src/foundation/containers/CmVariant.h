#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/ConstString.h"

namespace qorl {

/// One value of a kind that is known at run time only, as an object: a number, a text or an object.
///
/// Texts are zero-terminated. What the variant owns, a reference on an object or a block from `malloc`, goes
/// with the value. The tags are those of stored variants and differ from those of `FAttributeVariant`, the
/// record in which a value crosses an interface.
class CmVariant : public CmObject {
    QORL_CLASS(CmVariant, CmObject)
    QORL_RECORD(CmVariant)

public:
    enum Type : uint16_t {
        none = 0,
        integer = 1,
        object = 2,
        real = 4,
        text8 = 8,
        text16 = 16,
        ownedFlag = 32,
        kinds = 31, ///< The bits that tell the kind; there is one of them at most.
    };

    /// What becomes of a text or an object that is set.
    enum class Hold : uint8_t {
        view,  ///< only looked at: it outlives the variant
        adopt, ///< the caller's reference or block passes
        keep   ///< a reference of the variant's own, or a copy
    };

    CmVariant() = default;
    explicit CmVariant(int64_t value) { setInteger(value); }
    explicit CmVariant(double value) { setReal(value); }
    explicit CmVariant(const ConstString& text) { setText(text); }
    /// Copies texts and shares objects, whoever owns them.
    explicit CmVariant(const FAttributeVariant& value);
    /// Empty when a copy of its text finds no memory.
    CmVariant(const CmVariant& other);
    CmVariant& operator=(const CmVariant& other);
    ~CmVariant() override { clear(); }

    CmObject* clone() const override;

    uint16_t type() const { return type_; }
    /// The kind without the mark of ownership.
    uint16_t bareType() const { return type_ & kinds; }
    bool isOwned() const { return (type_ & ownedFlag) != 0; }

    void clear();
    void setInteger(int64_t value);
    void setReal(double value);
    /// False, and an empty variant, when a copy finds no memory; null gives an empty variant too.
    bool setText8(const char* text, Hold hold = Hold::keep);
    bool setText16(const char16_t* text, Hold hold = Hold::keep);
    void setObject(CmObject* object, Hold hold = Hold::keep);
    /// Copies a text in its width.
    bool setText(const ConstString& text);

    /// Of numbers, converted as needed, toward zero and limited to the type; 0 for everything else.
    int64_t getInteger() const;
    double getReal() const;
    /// Null for everything else. The caller gets no reference.
    CmObject* getObject() const { return bareType() == object ? value_.object : nullptr; }
    /// A view that is good until the value changes; empty for everything else.
    ConstString getText() const;
    /// The value as it crosses an interface, still owned by this variant.
    FAttributeVariant toRecord() const;

    /// The type in 16 bits, of which those above the mark of ownership say nothing, then the number, the text
    /// or the object. What was read is owned.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// "type", then "lValue", "fValue", "obj" or "str". What was restored is owned.
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

private:
    template <typename Char>
    bool setChars(const Char* text, int32_t length, Hold hold, Type type);

    uint16_t type_ = none;
    union {
        int64_t integer;
        double real;
        char* text8;
        char16_t* text16;
        CmObject* object;
    } value_ = {0};
};

} // namespace qorl
