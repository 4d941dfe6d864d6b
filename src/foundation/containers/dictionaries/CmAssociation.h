#pragma once

#include "foundation/containers/CmContainer.h"

namespace qorl {

/// A pair of a key and an object, the element of dictionaries. Equal to another pair, ordered and hashed by
/// the keys alone.
///
/// Either may be null. A pair without a key sorts before all others and equals none but itself. The key's
/// contents must not change while a dictionary holds the pair.
///
/// A key may be a pair itself. Where that goes on for more than `deepest` pairs, the ones reached there are
/// told apart by identity.
class CmAssociation : public CmObject {
    QORL_CLASS(CmAssociation, CmObject)
    QORL_CLONE(CmAssociation)
    QORL_RECORD(CmAssociation)

public:
    /// How many pairs, each the key of the one before, are followed.
    static constexpr int32_t deepest = 1000;

    CmAssociation() = default;
    /// The ownerships say what happens to the references on key and object, from the start to the end of the
    /// pair.
    CmAssociation(CmObject* key, CmObject* object, Ownership keyOwnership = Ownership::share,
                  Ownership objectOwnership = Ownership::share);
    /// Holds what `other` holds; a pair that owns has references of its own.
    CmAssociation(const CmAssociation& other);
    CmAssociation& operator=(const CmAssociation&) = delete;
    ~CmAssociation() override;

    CmObject* getKey() const { return key_; }
    CmObject* getObject() const { return object_; }
    /// The one before goes, by its ownership.
    void setObject(CmObject* object, Ownership ownership = Ownership::share);

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;

    /// The key, then the object. What was read is owned. False, which is reported, for a pair whose keys
    /// would lead back to itself.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    /// As `readFrom`.
    bool restoreAttributes(FAttributes* attributes) override;

private:
    void setKey(CmObject* key, Ownership ownership);
    /// Not of a class derived from the pair, which may compare in a way of its own.
    static bool isPlainPair(const CmObject* key) { return key && key->isTypeOf(className(), false); }
    /// Whether this is not among the keys of `key`, as far as they are followed.
    bool canHave(const CmObject* key) const;
    /// The key, when that is a pair which leaves everything to its own key.
    const CmAssociation* keyPair() const {
        return keyIsPair_ ? static_cast<const CmAssociation*>(key_) : nullptr;
    }

    CmObject* key_ = nullptr;
    CmObject* object_ = nullptr;
    Ownership keyOwnership_ = Ownership::none;
    Ownership objectOwnership_ = Ownership::none;
    bool keyIsPair_ = false;
};

} // namespace qorl
