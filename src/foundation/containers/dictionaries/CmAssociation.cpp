#include "foundation/containers/dictionaries/CmAssociation.h"

#include "foundation/Cast.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"

#include <utility>

namespace qorl {

QORL_REGISTER(CmAssociation, "CmAssociation", CmObject, 0)

namespace {

/// Puts `object` in the place of what is held, by the rule of either.
void exchange(CmObject*& held, Ownership& heldBy, CmObject* object, Ownership ownership) {
    if (object && ownership == Ownership::share)
        object->addRef();
    CmObject* old = std::exchange(held, object);
    if (releases(std::exchange(heldBy, ownership)) && old)
        old->release();
}

/// Of two pairs that both own, each has a reference.
Ownership ownershipOfCopy(Ownership ownership) {
    return releases(ownership) ? Ownership::share : Ownership::none;
}

} // namespace

CmAssociation::CmAssociation(CmObject* key, CmObject* object, Ownership keyOwnership,
                             Ownership objectOwnership) {
    setKey(key, keyOwnership);
    setObject(object, objectOwnership);
}

CmAssociation::CmAssociation(const CmAssociation& other)
    : CmAssociation(other.key_, other.object_, ownershipOfCopy(other.keyOwnership_),
                    ownershipOfCopy(other.objectOwnership_)) {}

CmAssociation::~CmAssociation() {
    setObject(nullptr, Ownership::none);
    setKey(nullptr, Ownership::none);
}

void CmAssociation::setKey(CmObject* key, Ownership ownership) {
    exchange(key_, keyOwnership_, key, ownership);
}

void CmAssociation::setObject(CmObject* object, Ownership ownership) {
    exchange(object_, objectOwnership_, object, ownership);
}

bool CmAssociation::isEqual(const CmObject* other) const {
    const auto* pair = cast<CmAssociation>(other);
    if (!pair || !key_ || !pair->key_)
        return this == other;
    return key_->isEqual(pair->key_);
}

int32_t CmAssociation::compare(const CmObject* other) const {
    if (!key_)
        return -1;
    const auto* pair = cast<CmAssociation>(other);
    if (!pair)
        return CmObject::compare(other);
    return pair->key_ ? key_->compare(pair->key_) : 1;
}

uint32_t CmAssociation::hashCode(uint32_t size) const {
    return key_ ? key_->hashCode(size) : 0;
}

bool CmAssociation::writeTo(FObjectArchive* archive) {
    return archive->writeObject(key_) && archive->writeObject(object_);
}

bool CmAssociation::readFrom(FObjectArchive* archive) {
    // Null is stored too; only the archive can tell it from a failure.
    setKey(archive->readObject(nullptr), Ownership::adopt);
    if (archive->lastError() != 0)
        return false;
    setObject(archive->readObject(nullptr), Ownership::adopt);
    return archive->lastError() == 0;
}

bool CmAssociation::storeAttributes(FAttributes* attributes) {
    try {
        attributes->setObject("Key", key_, FAttributes::Hold::retain);
        attributes->setObject("Obj", object_, FAttributes::Hold::retain);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool CmAssociation::restoreAttributes(FAttributes* attributes) {
    try {
        setKey(attributes->getObject("Key").detach(), Ownership::adopt);
        setObject(attributes->getObject("Obj").detach(), Ownership::adopt);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace qorl
