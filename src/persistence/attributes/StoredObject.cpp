#include "persistence/attributes/StoredObject.h"

#include "foundation/Cast.h"
#include "foundation/ClassRecord.h"
#include "persistence/attributes/FXmlObject.h"

#include <cstring>

namespace qorl {

const char* StoredObject::classNameOf(const CmObject* object) {
    const ClassRecord* record = object->getClassRecord();
    const char* own = object->getClassName();
    const bool isInherited = !record || !record->name() ||
                             (record == &CmObject::classRecord() && std::strcmp(own, "CmObject") != 0);
    return isInherited ? own : record->persistentName();
}

uint64_t StoredObject::idOf(const CmObject* object) {
    const auto* stored = cast<FXmlObject>(object);
    return stored ? stored->id() : static_cast<uint64_t>(reinterpret_cast<uintptr_t>(object));
}

CmObject* StoredObject::meantBy(CmObject* object) {
    if (const auto* reference = cast<FXmlReference>(object); reference && reference->target())
        object = reference->target();
    auto* instance = cast<FXmlInstance>(object);
    // Without attributes nothing is created any more.
    return instance && !instance->getAttributes() ? instance->getObject() : object;
}

Ref<CmObject> StoredObject::live(Ref<CmObject> object) {
    auto* stored = cast<FXmlObject>(object);
    if (!stored)
        return object;
    // A reference may only watch its target.
    const auto* reference = cast<FXmlReference>(stored);
    const Ref<FXmlInstance> target = retain(reference ? reference->target() : nullptr);
    return retain(stored->getObject());
}

bool StoredObject::take(CmObject* object) {
    if (auto* instance = cast<FXmlInstance>(object)) {
        className = FAttributeValue::copyOf(instance->className8().string());
        attributes = retain(instance->getAttributes());
        if (attributes)
            return true;
        object = instance->getObject();
    }
    attributes = make<FAttributes>();
    if (!object || !object->storeAttributes(attributes.get()))
        return false;
    className = FAttributeValue::copyOf(ConstString(classNameOf(object)));
    return true;
}

uint64_t WrittenObjects::takeId(uint64_t id) {
    while (!ids_.insert(id).second)
        id = ++lastMade_;
    return id;
}

uint64_t WrittenObjects::enterUnbound(uint64_t id) {
    // 0 stands for nothing in any document.
    if (id == 0)
        return 0;
    const auto [place, isNew] = unbound_.try_emplace(id, id);
    if (isNew)
        place->second = takeId(id);
    return place->second;
}

WrittenObjects::Entry WrittenObjects::enter(CmObject* object, uint64_t id) {
    const auto [place, isNew] = known_.try_emplace(object);
    if (!isNew)
        return {place->second.id, false};
    place->second.id = takeId(id);
    place->second.object = retain(object);
    return {place->second.id, true};
}

void WrittenObjects::forget(const CmObject* object) {
    const auto place = known_.find(object);
    ids_.erase(place->second.id);
    known_.erase(place);
}

} // namespace qorl
