#include "persistence/archive/FSizedArchive.h"

#include "foundation/ClassRecord.h"
#include "foundation/CmObject.h"
#include "persistence/streams/FStream.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qorl {

namespace {

constexpr int64_t fieldSize = sizeof(int32_t);
/// Places beyond could not be told from the markers once they have the class bit.
constexpr int64_t mostOffset = INT32_MAX - 2;

constexpr size_t firstClasses = 4096;
constexpr size_t firstObjects = 100;

/// How many times as much as was read may be read once more, and what besides. Objects that read too much go
/// back a little, all of those of one class; lengths that are made to lead back would have a small file read
/// without end.
constexpr int64_t allowedRounds = 4;
constexpr int64_t alwaysAllowedBack = int64_t{1} << 20;

} // namespace

FSizedArchive::FSizedArchive(FStream& stream, Direction direction)
    : TableArchive(stream, direction), base_(stream.tell()), frameEnd_(std::numeric_limits<int64_t>::max()) {}

FSizedArchive::~FSizedArchive() = default;

int64_t FSizedArchive::offsetHere() {
    return stream_.tell() - base_;
}

bool FSizedArchive::storeContents(CmObject& object, bool track) {
    const int64_t fieldPosition = stream_.tell();
    const int64_t offset = fieldPosition - base_;
    if (!checked(offset <= mostOffset &&
                     stream_.seek(fieldSize, FStream::fromHere) == fieldPosition + fieldSize,
                 object.getClassName()))
        return false;
    if (track)
        places_.add(object, static_cast<int32_t>(offset));
    const char* className = object.getClassName();
    const Contents contents = passContents(object);
    if (contents == Contents::refused)
        report(streamFailed, className);
    return contents == Contents::passed && checkStream(className) == 0 &&
           checked(storeLength(fieldPosition), className);
}

bool FSizedArchive::storeLength(int64_t fieldPosition) {
    const int64_t end = stream_.tell();
    const int64_t length = end - fieldPosition - fieldSize;
    return length >= 0 && length <= std::numeric_limits<int32_t>::max() &&
           stream_.seek(fieldPosition, FStream::fromStart) == fieldPosition &&
           stream_.writeInt32(static_cast<int32_t>(length)) && stream_.seek(end, FStream::fromStart) == end;
}

bool FSizedArchive::nameClass(const ClassRecord& record) {
    for (const ClassRecord* parent = record.parent(); parent && !places_.find(*parent);
         parent = parent->parent())
        if (!storeMarker(ArchiveTag::parentClass, *parent))
            return false;
    return storeMarker(ArchiveTag::newClass, record);
}

bool FSizedArchive::storeMarker(int32_t tag, const ClassRecord& record) {
    const int64_t offset = offsetHere();
    if (!checked(offset <= mostOffset && stream_.writeInt32(tag) && StoredClass::write(stream_, record),
                 record.name()))
        return false;
    places_.add(record, static_cast<int32_t>(offset));
    return true;
}

Ref<CmObject> FSizedArchive::nextObject(const char* className, bool) {
    Header header;
    if (!readHeader(header) || header.tag == ArchiveTag::null)
        return nullptr;
    return header.tag > 0 ? resolve(header.tag, className) : readInstance(header, className);
}

/// False when there is no object to read: that is reported, and the object skipped where it has a length.
bool FSizedArchive::readHeader(Header& header) {
    if (classes_.capacity() == 0) {
        classes_.reserve(firstClasses);
        objects_.reserve(firstObjects);
    }
    if (!checked(stream_.readInt32(header.tag)))
        return false;
    while (header.tag == ArchiveTag::parentClass)
        if (!readMarker(header.classIndex) || !checked(stream_.readInt32(header.tag)))
            return false;
    if (header.tag >= 0)
        return true;
    if (header.tag == ArchiveTag::newClass && !readMarker(header.classIndex))
        return false;
    if (!checked(stream_.readInt32(header.length)))
        return false;
    if (header.length < 0) {
        report(malformed, nullptr);
        return false;
    }
    if (header.tag != ArchiveTag::newClass &&
        !findClass(header.tag & ~ArchiveTag::classBit, header.classIndex))
        return skipObject(malformed, nullptr, header.length);
    const StoredClass& type = classes_[header.classIndex];
    return type.record() || skipObject(classNotRegistered, type.name(), header.length);
}

/// Reads what stands behind the tag of a marker.
bool FSizedArchive::readMarker(size_t& index) {
    const int64_t offset = offsetHere() - fieldSize;
    StoredClass type;
    if (!checked(type.read(stream_)))
        return false;
    const auto [known, isNew] = classesByOffset_.try_emplace(offset, classes_.size());
    index = known->second;
    if (isNew)
        classes_.push_back(std::move(type));
    return true;
}

bool FSizedArchive::findClass(int64_t offset, size_t& index) {
    auto known = classesByOffset_.find(offset);
    if (known == classesByOffset_.end()) {
        // The marker stands in an object that was skipped.
        readMarkersAt(offset);
        known = classesByOffset_.find(offset);
    }
    if (known == classesByOffset_.end())
        return false;
    index = known->second;
    return true;
}

void FSizedArchive::readMarkersAt(int64_t offset) {
    const int64_t here = stream_.tell();
    // Behind it no class has been named, and some streams would grow.
    if (base_ + offset >= here)
        return;
    stream_.seek(base_ + offset, FStream::fromStart);
    int32_t tag = ArchiveTag::parentClass;
    size_t index = 0;
    // Only markers count here, so that places which lead to each other come to an end.
    while (tag == ArchiveTag::parentClass && stream_.readInt32(tag) &&
           (tag == ArchiveTag::parentClass || tag == ArchiveTag::newClass))
        if (!readMarker(index))
            break;
    const int64_t count = stream_.tell() - (base_ + offset);
    checked(stream_.seek(here, FStream::fromStart) == here);
    countBack(count);
}

bool FSizedArchive::skipObject(Error error, const char* text, int32_t length) {
    report(error, text);
    const int64_t start = stream_.tell();
    if (!stream_.skip(endOfFrame(start, length) - start))
        report(streamFailed, text);
    return false;
}

Ref<CmObject> FSizedArchive::resolve(int32_t offset, const char* className) {
    const auto known = objects_.find(offset);
    return referred(known != objects_.end() ? known->second : nullptr, className);
}

Ref<CmObject> FSizedArchive::readInstance(const Header& header, const char* className) {
    const StoredClass& type = classes_[header.classIndex];
    const int64_t start = stream_.tell();
    const int64_t end = endOfFrame(start, header.length);
    const Ref<CmObject> object = type.create();
    const char* name = object ? object->getClassName() : className ? className : type.name();
    Contents contents = Contents::refused;
    if (object && (!className || object->isTypeOf(className, true)))
        contents = readContents(object, start, end, type.version());
    if (contents == Contents::refused)
        report(wrongObject, name);
    return goTo(end, name) && contents == Contents::passed ? object : nullptr;
}

/// The table keeps a reference on what was read whole.
FSizedArchive::Contents FSizedArchive::readContents(const Ref<CmObject>& object, int64_t start, int64_t end,
                                                    int32_t version) {
    const int64_t offset = start - fieldSize - base_;
    objects_.insert_or_assign(offset, object);
    const int32_t outerVersion = std::exchange(version_, version);
    const int64_t outerEnd = std::exchange(frameEnd_, end);
    const Contents contents = passContents(*object);
    version_ = outerVersion;
    frameEnd_ = outerEnd;
    if (contents == Contents::passed)
        return contents;
    // What it read too much may have stood at the same place.
    if (const auto entry = objects_.find(offset); entry != objects_.end() && entry->second == object)
        objects_.erase(entry);
    return contents;
}

/// An object ends no later than the one that holds it, whatever its length says.
int64_t FSizedArchive::endOfFrame(int64_t start, int32_t length) const {
    return std::max(start, std::min(start + length, frameEnd_));
}

/// False where the archive is cut, or has failed before that place. Forward it reads: a seek would pass over
/// the end, and some streams would grow.
bool FSizedArchive::goTo(int64_t end, const char* className) {
    const int64_t here = stream_.tell();
    if (lastError_ == streamFailed)
        return here >= end;
    if (here <= end)
        return checked(stream_.skip(end - here), className);
    return countBack(here - end) && checked(stream_.seek(end, FStream::fromStart) == end, className);
}

/// Called at the place from which it goes back.
bool FSizedArchive::countBack(int64_t count) {
    goneBack_ += std::max<int64_t>(count, 0);
    return checked(goneBack_ / allowedRounds <= offsetHere() + alwaysAllowedBack / allowedRounds);
}

const StoredClass* FSizedArchive::nextClass() {
    Header header;
    if (!readHeader(header) || header.tag == ArchiveTag::null)
        return nullptr;
    if (header.tag > 0 || header.length != 0) {
        report(malformed, nullptr);
        return nullptr;
    }
    return &classes_[header.classIndex];
}

} // namespace qorl
