#include "persistence/attributes/AttributesStream.h"

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/ReferenceBinder.h"
#include "persistence/attributes/StoredObject.h"
#include "persistence/streams/FMemoryStream.h"

#include <algorithm>
#include <limits>
#include <new>
#include <unordered_map>

namespace qorl {

namespace {

/// What stands behind the kind of an object.
enum Subkind : uint16_t {
    archivedList = 1,
    intList = 2,
    floatList = 3,
    stringList = 4,
    subList = 5,
    nestedAttributes = 6,
    binary = 7,
    archivedObject = 8,
    newObject = 20,
    knownObject = 21,
    utf8List = 41,
    classList = 101,
    classObject = 108,
    objectList = 201,
};

constexpr int32_t maxDepth = 200;

class BodyWriter {
public:
    explicit BodyWriter(FBinaryStream& stream) : stream_(stream) {}

    /// False also when an object had no attributes: its place is empty, and what follows can't be read.
    bool writeRoot(const FAttributes& attributes) { return writeBody(attributes) && isReadable_; }

private:
    bool writeBody(const FAttributes& attributes) {
        // Deeper than it could be read.
        if (depth_ >= maxDepth || !stream_.writeInt32(attributes.count()))
            return false;
        ++depth_;
        bool isGood = true;
        for (int32_t i = 0; isGood && i < attributes.count(); ++i)
            isGood = writeEntry(*attributes.at(i));
        --depth_;
        return isGood;
    }

    bool writeEntry(const FStringIDAttribute& entry) {
        if (!writeText(ConstString(std::string_view(entry.key()))) || !stream_.writeUInt16(entry.kind()))
            return false;
        // By the whole kind, as it is read: behind any other one stands nothing.
        switch (entry.kind()) {
        case FAttributeValue::integer: return stream_.writeInt64(entry.getInteger());
        case FAttributeValue::real: return stream_.writeDouble(entry.getFloat());
        case FAttributeValue::string: return writeText(entry.getString());
        case FAttributeValue::object: return writeObject(entry.getObject());
        default: return true;
        }
    }

    /// False also when there is no memory for a copy: an empty text in its place would be a loss.
    bool writeText(const ConstString& text) {
        const String copy(text);
        return copy.isEmpty() == text.isEmpty() && copy.writeTo(stream_);
    }
    bool writeSubkind(Subkind subkind) { return stream_.writeUInt16(subkind); }

    template <typename Items, typename Write>
    bool writeList(Subkind subkind, const Items& items, Write write) {
        return writeSubkind(subkind) && stream_.writeInt32(static_cast<int32_t>(items.size())) &&
               std::all_of(items.begin(), items.end(), write);
    }

    bool writeObject(CmObject* object) {
        if (const auto* list = cast<FIntList>(object))
            return writeList(intList, list->items, [this](int64_t item) { return stream_.writeInt64(item); });
        if (const auto* list = cast<FFloatList>(object))
            return writeList(floatList, list->items,
                             [this](double item) { return stream_.writeDouble(item); });
        if (const auto* list = cast<FStringList>(object))
            return writeList(stringList, list->items, [this](const String& item) { return writeText(item); });
        if (const auto* list = cast<FSubList>(object))
            return writeList(subList, list->items, [this](const auto& item) { return writeBody(*item); });
        if (const auto* list = cast<FObjectList>(object))
            return writeList(objectList, list->items, [this](CmObject* item) { return writeInstance(item); });
        if (const auto* nested = cast<FAttributes>(object))
            return writeSubkind(nestedAttributes) && writeBody(*nested);
        if (const auto bytes = binaryBytes(object)) {
            const auto size = static_cast<int32_t>(bytes->size());
            return bytes->size() <= static_cast<size_t>(std::numeric_limits<int32_t>::max()) &&
                   writeSubkind(binary) && stream_.writeInt32(size) &&
                   (size == 0 || stream_.write(bytes->data(), size) == size);
        }
        return writeInstance(object);
    }

    bool writeKnown(uint64_t id) { return writeSubkind(knownObject) && stream_.writeUInt64(id); }

    bool writeInstance(CmObject* object) {
        if (!object)
            return writeKnown(0);
        if (const auto* reference = cast<FXmlReference>(object)) {
            if (!reference->target())
                return writeKnown(reference->id());
            object = reference->target();
        }
        const uint64_t id = StoredObject::idOf(object);
        if (!written_.emplace(id, retain(object)).second)
            return writeKnown(id);
        if (!writeSubkind(newObject))
            return false;
        StoredObject stored;
        if (!stored.take(object)) {
            isReadable_ = false;
            return true;
        }
        return writeText(stored.className) && stream_.writeUInt64(id) && writeBody(*stored.attributes);
    }

    FBinaryStream& stream_;
    int32_t depth_ = 0;
    bool isReadable_ = true;
    // Held until the end, since an address that is free again would name another object.
    std::unordered_map<uint64_t, Ref<CmObject>> written_;
};

class BodyReader {
public:
    BodyReader(FBinaryStream& stream, FObjectArchive* archive) : stream_(stream), archive_(archive) {}

    bool readBody(FAttributes& attributes) {
        int32_t count = 0;
        if (depth_ >= maxDepth || !stream_.readInt32(count))
            return false;
        ++depth_;
        bool isGood = true;
        for (int32_t i = 0; isGood && i < count; ++i)
            isGood = readEntry(attributes);
        --depth_;
        return isGood;
    }

    void bindReferences(const FAttributes& root) { binder_.bind(root); }

private:
    bool readEntry(FAttributes& attributes) {
        String key;
        uint16_t kind = 0;
        if (!key.readFrom(stream_) || !stream_.readUInt16(kind))
            return false;
        const std::string name = key.toUtf8();
        switch (kind) {
        case FAttributeValue::integer: {
            int64_t value = 0;
            const bool isRead = stream_.readInt64(value);
            if (isRead)
                attributes.append(name).setInteger(value);
            return isRead;
        }
        case FAttributeValue::real: {
            double value = 0;
            const bool isRead = stream_.readDouble(value);
            if (isRead)
                attributes.append(name).setFloat(value);
            return isRead;
        }
        case FAttributeValue::string: {
            String text;
            const bool isRead = text.readFrom(stream_);
            if (isRead && !text.isEmpty())
                attributes.append(name).setString(text);
            return isRead;
        }
        case FAttributeValue::object: return readObjectEntry(attributes, name);
        default: return true;
        }
    }

    bool readObjectEntry(FAttributes& attributes, const std::string& name) {
        uint16_t subkind = 0;
        if (!stream_.readUInt16(subkind))
            return false;
        Ref<CmObject> value;
        if (!readValue(subkind, value))
            return false;
        if (value)
            attributes.append(name).setObject(value.detach(), FAttributeValue::Hold::adopt);
        return true;
    }

    bool readValue(uint16_t subkind, Ref<CmObject>& value) {
        switch (subkind) {
        case intList:
            return readList(value, make<FIntList>(),
                            [this](FIntList& list) { return stream_.readInt64(list.items.emplace_back()); });
        case floatList:
            return readList(value, make<FFloatList>(), [this](FFloatList& list) {
                return stream_.readDouble(list.items.emplace_back());
            });
        case stringList:
        case utf8List:
            return readList(value, make<FStringList>(true), [this](FStringList& list) {
                return list.items.emplace_back().readFrom(stream_) && (list.items.back().toWide(), true);
            });
        case subList:
            return readList(value, make<FSubList>(), [this](FSubList& list) {
                return readBody(*list.items.emplace_back(make<FAttributes>()));
            });
        case objectList:
            return readList(value, make<FObjectList>(true),
                            [this](FObjectList& list) { return readItem(list); });
        case nestedAttributes: {
            auto nested = make<FAttributes>();
            value = nested;
            return readBody(*nested);
        }
        case binary: {
            auto memory = make<FMemoryStream>();
            value = memory;
            return memory->loadBinary(stream_);
        }
        case newObject:
        case knownObject: return readInstance(subkind, value);
        default: return readOldValue(subkind, value);
        }
    }

    template <typename List, typename ReadItem>
    bool readList(Ref<CmObject>& value, Ref<List> list, ReadItem readOne) {
        value = list;
        int32_t count = 0;
        if (!stream_.readInt32(count))
            return false;
        for (int32_t i = 0; i < count; ++i)
            if (!readOne(*list))
                return false;
        return true;
    }

    bool readItem(FObjectList& list) {
        uint16_t subkind = 0;
        Ref<CmObject> item;
        if (!stream_.readUInt16(subkind) || !readInstance(subkind, item))
            return false;
        if (item)
            list.adopt(std::move(item));
        return true;
    }

    bool readInstance(uint16_t subkind, Ref<CmObject>& value) {
        uint64_t id = 0;
        if (subkind == knownObject) {
            if (!stream_.readUInt64(id))
                return false;
            value = binder_.addReference(id);
            return true;
        }
        String className;
        auto attributes = make<FAttributes>();
        if (!className.readFrom(stream_) || !stream_.readUInt64(id) || !readBody(*attributes))
            return false;
        auto instance = make<FXmlInstance>(id, className, std::move(attributes));
        binder_.addInstance(instance);
        value = instance;
        return true;
    }

    /// Forms that are read only: objects by an archive, and objects without a number.
    bool readOldValue(uint16_t subkind, Ref<CmObject>& value) {
        switch (subkind) {
        case archivedObject:
            value = Ref<CmObject>::adopt(archive_ ? archive_->readObject(nullptr) : nullptr);
            return value != nullptr;
        case archivedList:
            return readList(value, make<FObjectList>(true), [this](FObjectList& list) {
                list.adopt(Ref<CmObject>::adopt(archive_ ? archive_->readObject(nullptr) : nullptr));
                return list.items.back() != nullptr;
            });
        case classObject: return readByClass(value);
        case classList:
            return readList(value, make<FObjectList>(true), [this](FObjectList& list) {
                Ref<CmObject> item;
                const bool isRead = readByClass(item);
                if (item)
                    list.adopt(std::move(item));
                return isRead;
            });
        default: return true;
        }
    }

    bool readByClass(Ref<CmObject>& value) {
        String className;
        auto attributes = make<FAttributes>();
        if (!className.readFrom(stream_) || !readBody(*attributes))
            return false;
        const auto instance = make<FXmlInstance>(0, className, std::move(attributes));
        value = retain(instance->getObject());
        return true;
    }

    FBinaryStream& stream_;
    FObjectArchive* archive_;
    int32_t depth_ = 0;
    ReferenceBinder binder_;
};

} // namespace

bool AttributesStream::write(FBinaryStream& stream, const FAttributes& attributes) try {
    return BodyWriter(stream).writeRoot(attributes);
} catch (const std::bad_alloc&) {
    return false;
}

bool AttributesStream::read(FBinaryStream& stream, FAttributes& attributes, FObjectArchive* archive) try {
    BodyReader reader(stream, archive);
    const bool isRead = reader.readBody(attributes);
    reader.bindReferences(attributes);
    return isRead;
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
