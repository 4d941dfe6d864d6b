#pragma once

#include "foundation/containers/CmContainer.h"

namespace qorl {

/// A pair of a key and an object, the element of dictionaries. Equal to another pair, ordered and hashed by
/// the keys alone.
///
/// Either may be null. A pair without a key sorts before all others and equals none but itself. The key's
/// contents must not change while a dictionary holds the pair.
class CmAssociation : public CmObject {
    QORL_CLASS(CmAssociation, CmObject)
    QORL_CLONE(CmAssociation)
    QORL_RECORD(CmAssociation)

public:
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

    /// The key, then the object. What was read is owned.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

private:
    void setKey(CmObject* key, Ownership ownership);

    CmObject* key_ = nullptr;
    CmObject* object_ = nullptr;
    Ownership keyOwnership_ = Ownership::none;
    Ownership objectOwnership_ = Ownership::none;
};

} // namespace qorl
