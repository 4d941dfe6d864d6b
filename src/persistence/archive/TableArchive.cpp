#include "persistence/archive/TableArchive.h"

#include "foundation/ClassRecord.h"
#include "foundation/CmObject.h"
#include "persistence/streams/FStream.h"

#include <new>

namespace qorl {

TableArchive::TableArchive(FStream& stream, Direction direction) : FObjectArchive(stream, direction) {}

TableArchive::~TableArchive() = default;

bool TableArchive::writeObject(CmObject* object, bool track) try {
    return storing_ && checkStream() == 0 && storeObject(object, track);
} catch (const std::bad_alloc&) {
    runOut(object ? object->getClassName() : nullptr);
    return false;
}

bool TableArchive::storeObject(CmObject* object, bool track) {
    if (!object)
        return checked(stream_.writeInt32(ArchiveTag::null));
    if (track)
        if (const int32_t* place = places_.find(*object))
            return checked(stream_.writeInt32(*place), object->getClassName());
    const ClassRecord* record = recordFor(*object);
    if (record)
        return storeClass(*record) && storeContents(*object, track);
    // A reader would take what follows for the object.
    checked(stream_.writeInt32(ArchiveTag::null));
    return false;
}

bool TableArchive::storeClass(const ClassRecord& record) {
    if (const int32_t* place = places_.find(record))
        return checked(stream_.writeInt32(*place | ArchiveTag::classBit), record.name());
    return nameClass(record);
}

bool TableArchive::writeClass(const ClassRecord* record) try {
    if (!storing_ || !record || !record->persistentName() || checkStream() != 0)
        return false;
    return storeClass(*record) && checked(stream_.writeInt32(ArchiveTag::null), record->name());
} catch (const std::bad_alloc&) {
    runOut(record->name());
    return false;
}

CmObject* TableArchive::readObject(const char* className, bool track) try {
    return beginReading() ? nextObject(className, track).detach() : nullptr;
} catch (const std::bad_alloc&) {
    runOut(className);
    return nullptr;
}

const ClassRecord* TableArchive::readClass() try {
    const StoredClass* type = beginReading() ? nextClass() : nullptr;
    if (!type)
        return nullptr;
    version_ = type->version();
    return type->record();
} catch (const std::bad_alloc&) {
    runOut(nullptr);
    return nullptr;
}

Ref<CmObject> TableArchive::referred(const Ref<CmObject>& object, const char* className) {
    if (object && (!className || object->isTypeOf(className, true)))
        return object;
    report(wrongObject, object ? object->getClassName() : className);
    return nullptr;
}

int32_t TableArchive::getStoredVersion(const char* className) {
    const StoredClass* stored = StoredClass::findLast(classes_, StoredClass::find(className));
    return stored ? stored->version() : 0;
}

bool TableArchive::raiseStoredVersion(const ClassRecord* record) {
    StoredClass* stored = StoredClass::findLast(classes_, record);
    if (stored)
        stored->raiseVersion();
    return stored != nullptr;
}

} // namespace qorl
