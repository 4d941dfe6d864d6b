#include "persistence/archive/FCompactArchive.h"

#include "foundation/ClassRecord.h"
#include "foundation/CmObject.h"
#include "persistence/streams/FStream.h"

#include <utility>

namespace qorl {

namespace {

constexpr size_t firstEntries = 4096;

} // namespace

FCompactArchive::FCompactArchive(FStream& stream, Direction direction) : TableArchive(stream, direction) {}

FCompactArchive::~FCompactArchive() = default;

bool FCompactArchive::nameClass(const ClassRecord& record) {
    places_.add(record, nextNumber_++);
    return checked(stream_.writeInt32(ArchiveTag::newClass) && StoredClass::write(stream_, record),
                   record.name());
}

bool FCompactArchive::storeContents(CmObject& object, bool track) {
    if (track)
        places_.add(object, nextNumber_++);
    return passContents(object) == Contents::passed && checkStream(object.getClassName()) == 0;
}

/// False at the end, and once the place is lost.
bool FCompactArchive::readTag(int32_t& tag) {
    return checked(!isLost_ && stream_.readInt32(tag));
}

/// Nobody knows any more where the next object begins.
void FCompactArchive::lose(const char* className) {
    isLost_ = true;
    report(wrongObject, className);
}

Ref<CmObject> FCompactArchive::nextObject(const char* className, bool track) {
    int32_t tag = ArchiveTag::null;
    if (!readTag(tag) || tag == ArchiveTag::null)
        return nullptr;
    if (tag > 0)
        return resolve(tag, className);
    uint32_t classIndex = 0;
    return findClass(tag, classIndex) ? readInstance(classIndex, className, track) : nullptr;
}

Ref<CmObject> FCompactArchive::resolve(int32_t number, const char* className) {
    const auto index = static_cast<size_t>(number);
    return referred(index < entries_.size() ? entries_[index].object : nullptr, className);
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
    const Contents contents = passContents(*object);
    version_ = outerVersion;
    if (contents == Contents::passed && !isLost_)
        return object;
    if (track)
        entries_[number].object = nullptr;
    if (contents != Contents::outOfReach)
        report(streamFailed, object->getClassName());
    return nullptr;
}

const StoredClass* FCompactArchive::nextClass() {
    int32_t tag = ArchiveTag::null;
    if (!readTag(tag) || tag == ArchiveTag::null)
        return nullptr;
    uint32_t index = 0;
    int32_t end = ArchiveTag::null;
    if (tag < 0 && !(findClass(tag, index) && checked(stream_.readInt32(end))))
        return nullptr;
    if (tag > 0 || end != ArchiveTag::null) {
        report(malformed, nullptr);
        return nullptr;
    }
    const StoredClass& type = classes_[index];
    if (!type.record())
        report(wrongObject, type.name());
    return type.record() ? &type : nullptr;
}

} // namespace qorl
