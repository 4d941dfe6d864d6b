#include "persistence/archive/FCompactArchive.h"

#include "foundation/ClassRecord.h"
#include "foundation/CmObject.h"
#include "persistence/streams/FStream.h"

#include <new>
#include <ranges>
#include <utility>

namespace qorl {

namespace {

constexpr int32_t nullTag = 0;
constexpr int32_t newClassTag = -1;
constexpr int32_t classBit = INT32_MIN;
constexpr size_t firstCapacity = 4096;

} // namespace

FCompactArchive::FCompactArchive(FStream& stream, Direction direction) : FObjectArchive(stream, direction) {}

FCompactArchive::~FCompactArchive() = default;

bool FCompactArchive::writeObject(CmObject* object, bool track) try {
    return storing_ && checkStream() == 0 && storeObject(object, track);
} catch (const std::bad_alloc&) {
    report(streamFailed, object->getClassName());
    return false;
}

bool FCompactArchive::storeObject(CmObject* object, bool track) {
    if (!object)
        return checked(stream_.writeInt32(nullTag));
    if (track)
        if (const auto known = numbers_.find(object); known != numbers_.end())
            return checked(stream_.writeInt32(known->second));
    const ClassRecord* record = recordFor(*object);
    if (!record || !storeClass(*record))
        return false;
    if (track) {
        // Retained, so that no other object can come at its address and be taken for it.
        stored_.push_back(retain(object));
        numbers_.emplace(object, nextNumber_++);
    }
    return passContents(*object) && checkStream() == 0;
}

bool FCompactArchive::storeClass(const ClassRecord& record) {
    const auto [known, isNew] = numbers_.try_emplace(&record, nextNumber_);
    if (!isNew)
        return checked(stream_.writeInt32(known->second | classBit));
    ++nextNumber_;
    return checked(stream_.writeInt32(newClassTag) && StoredClass::write(stream_, record));
}

CmObject* FCompactArchive::readObject(const char* className, bool track) try {
    return beginReading() ? nextObject(className, track).detach() : nullptr;
} catch (const std::bad_alloc&) {
    report(streamFailed, className);
    return nullptr;
}

Ref<CmObject> FCompactArchive::nextObject(const char* className, bool track) {
    int32_t tag = nullTag;
    if (!checked(stream_.readInt32(tag)) || tag == nullTag)
        return nullptr;
    if (tag > 0)
        return resolve(tag, className);
    const size_t number = readClassNumber(tag);
    return number > 0 ? readInstance(number, className, track) : nullptr;
}

Ref<CmObject> FCompactArchive::resolve(int32_t number, const char* className) {
    const auto index = static_cast<size_t>(number);
    Ref<CmObject> object = index < entries_.size() ? entries_[index].object : nullptr;
    if (object && (!className || object->isTypeOf(className, true)))
        return object;
    report(wrongObject, object ? object->getClassName() : className);
    return nullptr;
}

/// The number of a class that is read, or has been; 0, which is reported, when there is none.
size_t FCompactArchive::readClassNumber(int32_t tag) {
    if (entries_.empty()) {
        entries_.reserve(firstCapacity);
        entries_.emplace_back();
    }
    if (tag == newClassTag) {
        Entry entry;
        if (!checked(entry.type.read(stream_)))
            return 0;
        classNumbers_.push_back(entries_.size());
        entries_.push_back(std::move(entry));
        return classNumbers_.back();
    }
    const auto number = static_cast<size_t>(tag & ~classBit);
    if (number < entries_.size() && entries_[number].type.name())
        return number;
    report(wrongObject, nullptr);
    return 0;
}

Ref<CmObject> FCompactArchive::readInstance(size_t classNumber, const char* className, bool track) {
    const StoredClass& type = entries_[classNumber].type;
    const int32_t version = type.version();
    Ref<CmObject> object = type.create();
    if (!object) {
        report(wrongObject, type.record() && className ? className : type.name());
        return nullptr;
    }
    const size_t number = entries_.size();
    if (track)
        entries_.push_back({{}, object});
    const int32_t outerVersion = std::exchange(version_, version);
    const bool isRead = passContents(*object);
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
    for (const size_t number : classNumbers_ | std::views::reverse)
        if (entries_[number].type.is(record))
            return &entries_[number].type;
    return nullptr;
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
    return storeClass(*record) && checked(stream_.writeInt32(nullTag));
} catch (const std::bad_alloc&) {
    report(streamFailed, record->name());
    return false;
}

const ClassRecord* FCompactArchive::readClass() try {
    int32_t tag = nullTag;
    if (!beginReading() || !checked(stream_.readInt32(tag)) || tag == nullTag)
        return nullptr;
    if (tag > 0) {
        report(malformed, nullptr);
        return nullptr;
    }
    const size_t number = readClassNumber(tag);
    int32_t end = nullTag;
    if (number == 0 || !checked(stream_.readInt32(end)))
        return nullptr;
    const StoredClass& type = entries_[number].type;
    if (end != nullTag)
        report(malformed, nullptr);
    else if (!type.record())
        report(wrongObject, type.name());
    if (end != nullTag || !type.record())
        return nullptr;
    version_ = type.version();
    return type.record();
} catch (const std::bad_alloc&) {
    report(streamFailed, nullptr);
    return nullptr;
}

} // namespace qorl
