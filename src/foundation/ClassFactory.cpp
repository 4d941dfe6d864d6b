#include "foundation/ClassFactory.h"

#include "foundation/CmObject.h"
#include "foundation/FPersistent.h"
#include "foundation/Singleton.h"
#include "foundation/text/ConstString.h"

#include <cstring>

namespace qorl {

namespace {

constinit Singleton<ClassFactory> factorySlot;

template <ClassRecord* ClassRecord::*next>
void append(ClassRecord*& head, ClassRecord& record) {
    ClassRecord** link = &head;
    // One that stands there already stays in its place: behind itself it would end no search.
    while (*link && *link != &record)
        link = &((*link)->*next);
    *link = &record;
}

template <ClassRecord* ClassRecord::*next>
void unlink(ClassRecord*& head, ClassRecord& record) {
    ClassRecord** link = &head;
    while (*link && *link != &record)
        link = &((*link)->*next);
    if (!*link)
        return;
    *link = record.*next;
    record.*next = nullptr;
}

Ref<FInterface> createFrom(const ClassRecord* record) {
    return record && record->create() ? Ref<FInterface>::adopt(record->create()()) : nullptr;
}

} // namespace

ClassFactory* ClassFactory::instance() {
    return factorySlot.get();
}

uint32_t ClassFactory::bucketOf(const char* name) {
    return ConstString(name).hashCode(nameBuckets);
}

uint32_t ClassFactory::bucketOf(const InterfaceId& id) {
    const FUID uid(id);
    return (uid.word(0) + uid.word(1) + uid.word(2) + uid.word(3)) % idBuckets;
}

void ClassFactory::addRecord(ClassRecord& record) {
    if (record.name_)
        append<&ClassRecord::nextByName_>(byName_[bucketOf(record.name_)], record);
    if (record.uid_ != InterfaceId())
        append<&ClassRecord::nextById_>(byId_[bucketOf(record.uid_)], record);
}

void ClassFactory::removeRecord(ClassRecord& record) {
    if (record.name_)
        unlink<&ClassRecord::nextByName_>(byName_[bucketOf(record.name_)], record);
    if (record.uid_ != InterfaceId())
        unlink<&ClassRecord::nextById_>(byId_[bucketOf(record.uid_)], record);
}

const ClassRecord* ClassFactory::findByName(const char* name) const {
    if (!name)
        return nullptr;
    for (const ClassRecord* record = byName_[bucketOf(name)]; record; record = record->nextByName_)
        if (std::strcmp(record->name_, name) == 0)
            return record;
    return nullptr;
}

const ClassRecord* ClassFactory::findById(const InterfaceId& id) const {
    for (const ClassRecord* record = byId_[bucketOf(id)]; record; record = record->nextById_)
        if (record->uid_ == id)
            return record;
    return nullptr;
}

const ClassRecord* ClassFactory::find(const char* nameOrId) const {
    if (const ClassRecord* record = findByName(nameOrId))
        return record;
    FUID id;
    return id.fromPlainString(nameOrId) && id.isValid() ? findById(id) : nullptr;
}

Ref<FInterface> ClassFactory::createByName(const char* name) const {
    return createFrom(find(name));
}

Ref<FInterface> ClassFactory::createById(const InterfaceId& id) const {
    return createFrom(findById(id));
}

bool ClassFactory::describeClass(FInterface* unknown, TextSink& sink, NameForm form) const {
    if (!unknown)
        return false;
    if (const CmObject* object = castToCmObject(unknown)) {
        const char* name = object->getClassName();
        const ClassRecord* record = findByName(name);
        if (form == NameForm::runTime || record) {
            sink.write(form == NameForm::runTime ? name : record->persistentName());
            return true;
        }
    }
    Ref<FPersistent> persistent;
    FUID id;
    if (unknown->queryInterface(FPersistent::iid, persistent.out()) != Result::ok ||
        persistent->getClassId(id) != Result::ok)
        return false;
    if (form == NameForm::persistent && !findById(id))
        return false;
    char text[FUID::plainLength + 1];
    id.toPlainString(text);
    sink.write(text);
    return true;
}

} // namespace qorl
