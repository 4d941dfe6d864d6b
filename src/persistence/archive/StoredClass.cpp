#include "persistence/archive/StoredClass.h"

#include "foundation/ClassFactory.h"
#include "foundation/CmObject.h"
#include "persistence/streams/FBinaryStream.h"

#include <cstring>
#include <new>
#include <string_view>

namespace qorl {

namespace {

/// Of a name that nobody knows; it is kept for messages only.
constexpr size_t longestKeptName = 255;

bool areSame(const char* a, const char* b) {
    return a && b && std::strcmp(a, b) == 0;
}

} // namespace

const ClassRecord* StoredClass::find(const char* className) {
    const ClassFactory* factory = ClassFactory::instance();
    return factory ? factory->findByName(className) : nullptr;
}

StoredClass* StoredClass::findLast(std::span<StoredClass> classes, const ClassRecord* record) {
    for (size_t at = classes.size(); at-- > 0;)
        if (classes[at].is(record))
            return &classes[at];
    return nullptr;
}

bool StoredClass::write(FBinaryStream& stream, const ClassRecord& record) {
    return stream.writeCountedChars(record.persistentName()) && stream.writeUInt16(record.version());
}

bool StoredClass::read(FBinaryStream& stream) {
    int32_t count = 0;
    uint16_t version = 0;
    if (!stream.readInt32(count) || count < 1 || count > FBinaryStream::maxCountedBytes)
        return false;
    // Not by `readCountedChars`, which tells a lack of memory as it tells damage. The name may lack its zero.
    const auto stored = std::make_unique<char[]>(static_cast<size_t>(count) + 1);
    if (stream.read(stored.get(), count) != count || !stream.readUInt16(version))
        return false;
    record_ = find(stored.get());
    if (record_) {
        version_ = static_cast<int16_t>(version);
        return true;
    }
    const std::string_view kept = std::string_view(stored.get()).substr(0, longestKeptName);
    unknownName_ = std::make_unique<char[]>(kept.size() + 1);
    kept.copy(unknownName_.get(), kept.size());
    return true;
}

const char* StoredClass::name() const {
    return record_ ? record_->name() : unknownName_.get();
}

bool StoredClass::is(const ClassRecord* record) const {
    return record_ && record &&
           (record_ == record || areSame(record_->persistentName(), record->persistentName()));
}

Ref<CmObject> StoredClass::create() const {
    return record_ ? createFrom(*record_) : nullptr;
}

Ref<CmObject> StoredClass::createFrom(const ClassRecord& record) {
    if (!record.create())
        return nullptr;
    auto made = Ref<FInterface>::adopt(record.create()());
    if (!made)
        throw std::bad_alloc();
    CmObject* object = castToCmObject(made.get());
    if (object)
        static_cast<void>(made.detach());
    return Ref<CmObject>::adopt(object);
}

} // namespace qorl
