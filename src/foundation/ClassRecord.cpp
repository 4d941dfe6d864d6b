#include "foundation/ClassRecord.h"

#include "foundation/ClassFactory.h"

#include <cstring>

namespace qorl {

namespace {

void registerRecord(ClassRecord& record) {
    if (!record.create() && !record.parent())
        return;
    if (ClassFactory* factory = ClassFactory::instance())
        factory->addRecord(record);
}

} // namespace

ClassRecord::ClassRecord(const char* name, CreateFunction create, ClassRecord* parent, uint16_t version)
    : name_(name), persistentName_(name), create_(create), parent_(parent), version_(version) {
    registerRecord(*this);
}

ClassRecord::ClassRecord(const InterfaceId& uid, CreateFunction create)
    : name_(nullptr), persistentName_(nullptr), uid_(uid), create_(create), parent_(nullptr), version_(0) {
    registerRecord(*this);
}

ClassRecord::ClassRecord(const char* alias, ClassRecord& source)
    : ClassRecord(alias, source.create_, nullptr) {
    source.persistentName_ = alias;
}

bool ClassRecord::isOnParentChain(const char* name) const {
    if (!name)
        return false;
    for (const ClassRecord* record = this; record; record = record->parent_)
        if (record->name_ && std::strcmp(record->name_, name) == 0)
            return true;
    return false;
}

} // namespace qorl
