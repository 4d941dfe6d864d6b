#include "foundation/CmObject.h"

#include "foundation/messages/UpdateHandler.h"

#include <functional>
#include <new>

namespace qorl {

ClassRecord CmObject::classRecord_{"CmObject", &createObject<CmObject>, nullptr};

void CmObject::update(FInterface* changed, int32_t message) {
    CmObject* object = UpdateHandler::findBeingTold(changed);
    if (!object)
        object = castToCmObject(changed);
    if (object)
        notify(object, message);
}

bool CmObject::isEqual(const CmObject* other) const {
    return this == other;
}

int32_t CmObject::compare(const CmObject* other) const {
    if (this == other)
        return 0;
    return std::greater<const CmObject*>()(this, other) ? 1 : -1;
}

uint32_t CmObject::hashCode(uint32_t size) const {
    return static_cast<uint32_t>((reinterpret_cast<uintptr_t>(this) >> 4) % size);
}

void CmObject::notify(CmObject*, int32_t) {}

bool CmObject::readFrom(FObjectArchive*) {
    return true;
}

bool CmObject::writeTo(FObjectArchive*) {
    return true;
}

bool CmObject::storeAttributes(FAttributes*) {
    return false;
}

bool CmObject::restoreAttributes(FAttributes*) {
    return false;
}

int32_t CmObject::handleMessage(FMessage*) {
    return notHandled;
}

const ClassRecord* CmObject::getClassRecord() const {
    return &classRecord_;
}

CmObject* CmObject::clone() const {
    return new (std::nothrow) CmObject;
}

CmObject* castToCmObject(FInterface* unknown) {
    FObject* object = borrowObject(unknown);
    return object && object->isTypeOf(CmObject::className(), true) ? static_cast<CmObject*>(object) : nullptr;
}

} // namespace qorl
