#include "persistence/attributes/StoredObject.h"

#include "foundation/Cast.h"
#include "foundation/ClassRecord.h"
#include "persistence/xml/FXmlObject.h"

#include <cstring>

namespace qorl {

namespace {

/// The name of the class's own record; a class that only inherits one goes by its name at run time.
const char* storedClassName(const CmObject* object) {
    const ClassRecord* record = object->getClassRecord();
    const char* own = object->getClassName();
    const bool isInherited = !record || !record->name() ||
                             (record == &CmObject::classRecord() && std::strcmp(own, "CmObject") != 0);
    return isInherited ? own : record->persistentName();
}

} // namespace

uint64_t StoredObject::idOf(const CmObject* object) {
    const auto* stored = cast<FXmlObject>(object);
    return stored ? stored->id() : static_cast<uint64_t>(reinterpret_cast<uintptr_t>(object));
}

bool StoredObject::take(CmObject* object) {
    if (auto* instance = cast<FXmlInstance>(object)) {
        className = instance->className8().string();
        attributes = retain(instance->getAttributes());
        if (attributes)
            return true;
        object = instance->getObject();
    }
    attributes = make<FAttributes>();
    if (!object || !object->storeAttributes(attributes.get()))
        return false;
    className.assign8(storedClassName(object));
    return true;
}

} // namespace qorl
