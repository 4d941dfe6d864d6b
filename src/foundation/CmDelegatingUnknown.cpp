#include "foundation/CmDelegatingUnknown.h"

#include "foundation/Cast.h"
#include "foundation/CmUID.h"
#include "foundation/FPersistent.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"

#include <new>
#include <utility>

namespace qorl {

QORL_REGISTER(CmDelegatingUnknown, "CmDelegatingUnknown", CmObject, 0)

namespace {

constinit CmDelegatingUnknown::Creator foreignCreator = nullptr;

Ref<FPersistent> persistentFace(FInterface* foreign) {
    Ref<FPersistent> face;
    if (foreign)
        foreign->queryInterface(FPersistent::iid, face.out());
    return face;
}

} // namespace

CmDelegatingUnknown::Creator CmDelegatingUnknown::setCreator(Creator creator) {
    return std::exchange(foreignCreator, creator);
}

CmDelegatingUnknown::CmDelegatingUnknown(Ref<FInterface> foreign, Owner* owner)
    : foreign_(std::move(foreign)), owner_(owner) {}

CmDelegatingUnknown::CmDelegatingUnknown(const CmDelegatingUnknown& other)
    : CmObject(other), foreign_(other.foreign_) {}

CmDelegatingUnknown::~CmDelegatingUnknown() {
    if (owner_)
        owner_->wrapperDestroyed(this);
}

Result CmDelegatingUnknown::queryInterface(const InterfaceId& id, void** out) {
    return foreign_ ? foreign_->queryInterface(id, out) : CmObject::queryInterface(id, out);
}

bool CmDelegatingUnknown::isEqual(const CmObject* other) const {
    const auto* wrapper = cast<CmDelegatingUnknown>(other);
    return wrapper && wrapper->foreign_ == foreign_;
}

bool CmDelegatingUnknown::describe(FUID& classId, FAttributes& data) const {
    const Ref<FPersistent> persistent = persistentFace(foreign_.get());
    return persistent && persistent->getClassId(classId) == Result::ok &&
           persistent->store(&data) == Result::ok;
}

bool CmDelegatingUnknown::recreate(const FUID& classId, FAttributes& data) {
    foreign_ = foreignCreator ? foreignCreator(classId) : nullptr;
    const Ref<FPersistent> persistent = persistentFace(foreign_.get());
    return persistent && persistent->restore(&data) == Result::ok;
}

bool CmDelegatingUnknown::writeTo(FObjectArchive* archive) try {
    FUID classId;
    FAttributes data;
    return describe(classId, data) && CmUID(classId).writeTo(archive) && data.writeTo(archive);
} catch (const std::bad_alloc&) {
    return false;
}

bool CmDelegatingUnknown::readFrom(FObjectArchive* archive) try {
    CmUID id;
    FAttributes data;
    return id.readFrom(archive) && data.readFrom(archive) && recreate(id.uid(), data);
} catch (const std::bad_alloc&) {
    return false;
}

bool CmDelegatingUnknown::storeAttributes(FAttributes* attributes) {
    FUID classId;
    const Ref<FAttributes> data = make<FAttributes>();
    if (!describe(classId, *data) || !CmUID(classId).storeAttributes(attributes))
        return false;
    attributes->setObject("ObjData", data.get(), FAttributes::Hold::retain);
    return true;
}

bool CmDelegatingUnknown::restoreAttributes(FAttributes* attributes) {
    CmUID id;
    FAttributes* data = attributes->getAttributes("ObjData");
    return data && id.restoreAttributes(attributes) && recreate(id.uid(), *data);
}

} // namespace qorl
