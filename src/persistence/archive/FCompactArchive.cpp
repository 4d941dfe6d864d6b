#include "persistence/archive/FCompactArchive.h"

#include "foundation/ClassRecord.h"
#include "foundation/CmObject.h"
#include "persistence/streams/FStream.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr size_t firstEntries = 4096;

} // namespace

FCompactArchive::FCompactArchive(FStream& stream, Direction direction) : FObjectArchive(stream, direction) {}

FCompactArchive::~FCompactArchive() = default;

bool FCompactArchive::writeObject(CmObject* object, bool track) try {
    return storing_ && checkStream() == 0 && storeObject(object, track);
} catch (const std::bad_alloc&) {
    report(streamFailed, object ? object->getClassName() : nullptr);
    return false;
}

bool FCompactArchive::storeObject(CmObject* object, bool track) {
    if (!object)
        return checked(stream_.writeInt32(ArchiveTag::null));
    if (track)
        if (const int32_t* number = places_.find(*object))
            return checked(stream_.writeInt32(*number));
    const ClassRecord* record = recordFor(*object);
    if (!record || !storeClass(*record))
        return false;
    if (track)
        places_.add(*object, nextNumber_++);
    return passContents(*object) && checkStream() == 0;
}

bool FCompactArchive::storeClass(const ClassRecord& record) {
    if (const int32_t* number = places_.find(record))
        return checked(stream_.writeInt32(*number | ArchiveTag::classBit));
    places_.add(record, nextNumber_++);
    return checked(stream_.writeInt32(ArchiveTag::newClass) && StoredClass::write(stream_, record));
}

CmObject* FCompactArchive::readObject(const char* className, bool track) try {
    return beginNext() ? nextObject(className, track).detach() : nullptr;
} catch (const std::bad_alloc&) {
    report(streamFailed, className);
    return nullptr;
}

bool FCompactArchive::beginNext() {
    return beginReading() && checked(!isLost_);
}

/// Nobody knows any more where the next object begins.
void FCompactArchive::lose(const char* className) {
    isLost_ = true;
    report(wrongObject, className);
}

Ref<CmObject> FCompactArchive::nextObject(const char* className, bool track) {
    int32_t tag = ArchiveTag::null;
    if (!checked(stream_.readInt32(tag)) || tag == ArchiveTag::null)
        return nullptr;
    if (tag > 0)
        return resolve(tag, className);
    uint32_t classIndex = 0;
    return findClass(tag, classIndex) ? readInstance(classIndex, className, track) : nullptr;
}

Ref<CmObject> FCompactArchive::resolve(int32_t number, const char* className) {
    const auto index = static_cast<size_t>(number);
    Ref<CmObject> object = index < entries_.size() ? entries_[index].object : nullptr;
    if (object && (!className || object->isTypeOf(className, true)))
        return object;
    report(wrongObject, object ? object->getClassName() : className);
    return nullptr;
}

/// A class that is read, or has been. False, which is reported, when there is none.
bool FCompactArchive::findClass(int32_t tag, uint32_t& index) {
    if (entries_.empty()) {
        entries_.reserve(firstEntries);
        entries_.emplace_back();
    }
    if (tag == ArchiveTag::newClass) {
        StoredClass type;
        if (!checked(type.read(stream_)))
            return false;
        index = static_cast<uint32_t>(classes_.size());
        classes_.push_back(std::move(type));
        entries_.push_back({nullptr, index});
        return true;
    }
    const auto number = static_cast<size_t>(tag & ~ArchiveTag::classBit);
    index = number < entries_.size() ? entries_[number].classIndex : Entry::noClass;
    if (index != Entry::noClass)
        return true;
    lose(nullptr);
    return false;
}

Ref<CmObject> FCompactArchive::readInstance(uint32_t classIndex, const char* className, bool track) {
    const StoredClass& type = classes_[classIndex];
    const int32_t version = type.version();
    Ref<CmObject> object = type.create();
    if (!object) {
        lose(type.record() && className ? className : type.name());
        return nullptr;
    }
    const size_t number = entries_.size();
    if (track)
        entries_.push_back({object});
    const int32_t outerVersion = std::exchange(version_, version);
    // One that holds what could not be read has taken foreign bytes for its own fields.
    const bool isRead = passContents(*object) && !isLost_;
    version_ = outerVersion;
    if (isRead)
        return object;
    if (track)
        entries_[number].object = nullptr;
    report(streamFailed, object->getClassName());
    return nullptr;
}

/// The class as it was read last, or null.
StoredClass* FCompactArchive::findStored(const ClassRecord* record) {
    return StoredClass::findLast(classes_, record);
}

int32_t FCompactArchive::getStoredVersion(const char* className) {
    const StoredClass* stored = findStored(StoredClass::find(className));
    return stored ? stored->version() : 0;
}

bool FCompactArchive::raiseStoredVersion(const ClassRecord* record) {
    StoredClass* stored = findStored(record);
    if (stored)
        stored->raiseVersion();
    return stored != nullptr;
}

bool FCompactArchive::writeClass(const ClassRecord* record) try {
    if (!storing_ || !record || !record->persistentName() || checkStream() != 0)
        return false;
    return storeClass(*record) && checked(stream_.writeInt32(ArchiveTag::null));
} catch (const std::bad_alloc&) {
    report(streamFailed, record->name());
    return false;
}

const ClassRecord* FCompactArchive::readClass() try {
    int32_t tag = ArchiveTag::null;
    if (!beginNext() || !checked(stream_.readInt32(tag)) || tag == ArchiveTag::null)
        return nullptr;
    if (tag > 0) {
        report(malformed, nullptr);
        return nullptr;
    }
    uint32_t index = 0;
    int32_t end = ArchiveTag::null;
    if (!findClass(tag, index) || !checked(stream_.readInt32(end)))
        return nullptr;
    const StoredClass& type = classes_[index];
    if (end != ArchiveTag::null)
        report(malformed, nullptr);
    else if (!type.record())
        report(wrongObject, type.name());
    if (end != ArchiveTag::null || !type.record())
        return nullptr;
    version_ = type.version();
    return type.record();
} catch (const std::bad_alloc&) {
    report(streamFailed, nullptr);
    return nullptr;
}

} // namespace qorl
