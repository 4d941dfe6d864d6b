#pragma once

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/streams/FMemoryStream.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace qorl {

/// The smallest archive there can be: an object is the counted name of its class, with count 0 for null, and
/// then what it wrote. Objects and classes are not tracked, and nesting ends at 64 levels.
class PlainArchive : public FObjectArchive {
public:
    using FObjectArchive::Direction;

    static constexpr int32_t deepest = 64;

    PlainArchive(FStream& stream, Direction direction) : FObjectArchive(stream, direction) {}

    CmObject* readObject(const char* className) override {
        lastError_ = 0;
        int32_t length = 0;
        const int64_t start = stream_.tell();
        if (!stream_.readInt32(length))
            return fail(streamFailed);
        if (length == 0)
            return nullptr;
        stream_.seek(start, FStream::fromStart);
        char* name = stream_.readCountedChars();
        const Ref<FInterface> made = name ? create(name) : nullptr;
        std::free(name);
        Ref<CmObject> object = retain(castToCmObject(made.get()));
        if (!object || (className && !object->isTypeOf(className, true)))
            return fail(object ? wrongObject : classNotRegistered);
        if (depth_ >= deepest)
            return fail(malformed);
        ++depth_;
        const bool complete = object->readFrom(this);
        --depth_;
        lastError_ = 0;
        return complete ? object.detach() : fail(streamFailed);
    }
    bool writeObject(CmObject* object) override {
        if (!object)
            return stream_.writeInt32(0);
        return stream_.writeCountedChars(object->getClassName()) && object->writeTo(this);
    }
    bool writeObject(CmObject* object, bool) override { return writeObject(object); }
    CmObject* readObject(const char* className, bool) override { return readObject(className); }
    int32_t getStoredVersion(const char*) override { return 0; }
    bool raiseStoredVersion(const ClassRecord*) override { return false; }
    bool writeClass(const ClassRecord*) override { return false; }
    const ClassRecord* readClass() override { return nullptr; }

protected:
    virtual Ref<FInterface> create(const char* className) {
        return ClassFactory::instance()->createByName(className);
    }

private:
    CmObject* fail(Error error) {
        lastError_ = error;
        return nullptr;
    }

    int32_t depth_ = 0;
};

namespace testing {

/// The bytes that `object` stores.
inline std::string written(CmObject& object) {
    FMemoryStream stream;
    PlainArchive archive(stream, PlainArchive::Direction::storing);
    EXPECT_TRUE(object.writeTo(&archive));
    return std::string(stream.bytes());
}

/// What `object` answers when it reads them.
inline bool read(CmObject& object, std::string_view bytes) {
    FMemoryStream stream(bytes);
    PlainArchive archive(stream, PlainArchive::Direction::reading);
    return object.readFrom(&archive);
}

} // namespace testing

} // namespace qorl
