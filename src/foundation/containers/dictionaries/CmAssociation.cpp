#include "foundation/containers/dictionaries/CmAssociation.h"

#include "foundation/Cast.h"
#include "foundation/containers/DeepRelease.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"

#include <qorl/Ref.h>

#include <utility>

namespace qorl {

QORL_REGISTER(CmAssociation, "CmAssociation", CmObject, 0)

namespace {

void take(CmObject* object, Ownership ownership) {
    if (object && ownership == Ownership::share)
        object->addRef();
}

void give(CmObject* object, Ownership ownership) {
    if (object && releases(ownership))
        releaseDeep(object);
}

/// Puts `object` in the place of what is held, by the rule of either.
void exchange(CmObject*& held, Ownership& heldBy, CmObject* object, Ownership ownership) {
    take(object, ownership);
    CmObject* old = std::exchange(held, object);
    give(old, std::exchange(heldBy, ownership));
}

/// Of two pairs that both own, each has a reference.
Ownership ownershipOfCopy(Ownership ownership) {
    return releases(ownership) ? Ownership::share : Ownership::none;
}

/// The next object of the archive. Null is stored too; only the archive can tell it from a failure. What is
/// there counts, whatever was amiss in a part of it.
bool readPart(FObjectArchive& archive, Ref<CmObject>& part) {
    part = Ref<CmObject>::adopt(archive.readObject(nullptr));
    return part || archive.lastError() == 0;
}

} // namespace

CmAssociation::CmAssociation(CmObject* key, CmObject* object, Ownership keyOwnership,
                             Ownership objectOwnership)
    : key_(key), object_(object), keyOwnership_(keyOwnership), objectOwnership_(objectOwnership),
      keyIsPair_(isPlainPair(key)) {
    take(key, keyOwnership);
    take(object, objectOwnership);
}

CmAssociation::CmAssociation(const CmAssociation& other)
    : CmAssociation(other.key_, other.object_, ownershipOfCopy(other.keyOwnership_),
                    ownershipOfCopy(other.objectOwnership_)) {}

CmAssociation::~CmAssociation() {
    give(std::exchange(object_, nullptr), objectOwnership_);
    keyIsPair_ = false;
    give(std::exchange(key_, nullptr), keyOwnership_);
}

void CmAssociation::setKey(CmObject* key, Ownership ownership) {
    keyIsPair_ = isPlainPair(key);
    exchange(key_, keyOwnership_, key, ownership);
}

void CmAssociation::setObject(CmObject* object, Ownership ownership) {
    exchange(object_, objectOwnership_, object, ownership);
}

bool CmAssociation::canHave(const CmObject* key) const {
    const auto* pair = cast<CmAssociation>(key);
    for (int32_t left = deepest; pair && left > 0; --left) {
        if (pair == this)
            return false;
        pair = cast<CmAssociation>(pair->key_);
    }
    return true;
}

// Keys that are pairs are followed without recursion, and only so far: stored data may hold any number of
// them.

bool CmAssociation::isEqual(const CmObject* other) const {
    const CmAssociation* own = this;
    for (int32_t left = deepest;; --left) {
        const auto* pair = cast<CmAssociation>(other);
        if (!pair || !own->key_ || !pair->key_ || left == 0)
            return own == other;
        const CmAssociation* next = own->keyPair();
        if (!next)
            return own->key_->isEqual(pair->key_);
        own = next;
        other = pair->key_;
    }
}

int32_t CmAssociation::compare(const CmObject* other) const {
    const CmAssociation* own = this;
    for (int32_t left = deepest;; --left) {
        if (!own->key_)
            return -1;
        const auto* pair = cast<CmAssociation>(other);
        if (!pair || left == 0)
            return own->CmObject::compare(other);
        if (!pair->key_)
            return 1;
        const CmAssociation* next = own->keyPair();
        if (!next)
            return own->key_->compare(pair->key_);
        own = next;
        other = pair->key_;
    }
}

uint32_t CmAssociation::hashCode(uint32_t size) const {
    const CmAssociation* own = this;
    for (int32_t left = deepest; own->keyPair(); --left) {
        if (left == 0)
            return 0;
        own = own->keyPair();
    }
    return own->key_ ? own->key_->hashCode(size) : 0;
}

bool CmAssociation::writeTo(FObjectArchive* archive) {
    return archive->writeObject(key_) && archive->writeObject(object_);
}

bool CmAssociation::readFrom(FObjectArchive* archive) {
    Ref<CmObject> read;
    if (!readPart(*archive, read))
        return false;
    if (!canHave(read.get())) {
        archive->report(FObjectArchive::malformed, getClassName());
        return false;
    }
    // Now: what the object holds may ask for it already.
    setKey(read.detach(), Ownership::adopt);
    if (!readPart(*archive, read))
        return false;
    setObject(read.detach(), Ownership::adopt);
    return true;
}

bool CmAssociation::storeAttributes(FAttributes* attributes) {
    attributes->setObject("Key", key_, FAttributes::Hold::retain);
    attributes->setObject("Obj", object_, FAttributes::Hold::retain);
    return true;
}

bool CmAssociation::restoreAttributes(FAttributes* attributes) {
    Ref<CmObject> key = attributes->getObject("Key");
    if (!canHave(key.get())) {
        FObjectArchive::reportGlobally(FObjectArchive::malformed, getClassName());
        return false;
    }
    setKey(key.detach(), Ownership::adopt);
    setObject(attributes->getObject("Obj").detach(), Ownership::adopt);
    return true;
}

} // namespace qorl
