#include "persistence/archive/StoredClass.h"

#include "foundation/ClassFactory.h"
#include "foundation/CmObject.h"
#include "persistence/streams/FBinaryStream.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace qorl {

namespace {

/// A damaged archive may give names of any length; they are kept for messages only.
constexpr size_t longestKeptName = 255;

struct FreeBlock {
    void operator()(char* block) const { std::free(block); }
};

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
    const std::unique_ptr<char, FreeBlock> stored(stream.readCountedChars());
    uint16_t version = 0;
    if (!stored || !stream.readUInt16(version))
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
    if (!record_ || !record_->create())
        return nullptr;
    auto made = Ref<FInterface>::adopt(record_->create()());
    CmObject* object = castToCmObject(made.get());
    if (object)
        static_cast<void>(made.detach());
    return Ref<CmObject>::adopt(object);
}

} // namespace qorl
