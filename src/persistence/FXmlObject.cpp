#include "persistence/FXmlObject.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "persistence/FObjectArchive.h"

namespace qorl {

bool FXmlObject::isEqual(const CmObject* other) const {
    const auto* stored = cast<FXmlObject>(other);
    return stored && id_ == stored->id_;
}

int32_t FXmlObject::compare(const CmObject* other) const {
    const auto* stored = cast<FXmlObject>(other);
    if (!stored)
        return CmObject::compare(other);
    return id_ < stored->id_ ? -1 : id_ > stored->id_ ? 1 : 0;
}

uint32_t FXmlObject::hashCode(uint32_t size) const {
    return static_cast<uint32_t>(id_ % size);
}

FXmlInstance::FXmlInstance(uint64_t id, const ConstString& className, Ref<FAttributes> attributes)
    : FXmlObject(id), attributes_(std::move(attributes)), className_(className) {}

CmObject* FXmlInstance::getObject() {
    if (object_ || !attributes_ || className_.isEmpty())
        return object_.get();
    // Whatever comes of it, it is not tried again.
    const Ref<FAttributes> attributes = std::move(attributes_);
    auto* factory = ClassFactory::instance();
    const Ref<FInterface> created = factory ? factory->createByName(className_.text8()) : nullptr;
    object_ = retain(castToCmObject(created.get()));
    if (!object_) {
        FObjectArchive::reportGlobally(FObjectArchive::classNotRegistered, className_.text8());
        return nullptr;
    }
    if (!object_->restoreAttributes(attributes.get()))
        object_.reset();
    return object_.get();
}

bool FXmlInstance::isClass(const char* className) const {
    return className_.string() == ConstString(className);
}

} // namespace qorl
