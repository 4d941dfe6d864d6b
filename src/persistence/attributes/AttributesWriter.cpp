#include "foundation/Cast.h"
#include "foundation/text/ShownText.h"
#include "persistence/attributes/AttributesForm.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/BodyBuffer.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/attributes/StoredObject.h"
#include "persistence/streams/FBinaryStream.h"

#include <limits>
#include <new>

namespace qorl {

namespace {

using namespace AttributesForm;

/// Puts a body together, with the bodies that stand in it on a stack of its own.
class BodyWriter {
public:
    explicit BodyWriter(uint16_t byteOrder) : out_(byteOrder) {}

    const BodyBuffer& bytes() const { return out_; }
    const std::string& fault() const { return fault_; }

    bool write(const FAttributes& root) {
        // Counted, but not kept beyond this: attributes on the stack may be written, too.
        enterBody(retain(const_cast<FAttributes*>(&root)));
        while (!steps_.empty()) {
            if (steps_.back().isDone())
                leave();
            else if (!writeNext())
                return false;
        }
        return true;
    }

private:
    enum class Outcome : uint8_t { written, leftOut, failed };

    /// A body or a list of bodies or objects that is being written; exactly one of the three is there.
    struct Step {
        Ref<FAttributes> body;
        Ref<FSubList> lists;
        Ref<FObjectList> objects;
        size_t countPlace;
        int32_t next = 0;
        int32_t written = 0;

        // Asked each time: storing an object may lead back to the list.
        bool isDone() const {
            const int32_t count = body ? body->count() : lists ? lists->count() : objects->count();
            return next >= count;
        }
    };

    void enter(Step step) {
        step.countPlace = out_.size();
        out_.put<int32_t>(0);
        steps_.push_back(std::move(step));
    }

    Outcome enterBody(Ref<FAttributes> body) {
        if (depth_ >= maxDepth)
            return fail("attributes are nested deeper than " + std::to_string(maxDepth) + " levels");
        ++depth_;
        enter({std::move(body), nullptr, nullptr, 0});
        return Outcome::written;
    }

    void leave() {
        const Step& step = steps_.back();
        out_.setCount(step.countPlace, step.written);
        if (step.body)
            --depth_;
        steps_.pop_back();
    }

    /// One entry or item. What has no stored form leaves no trace.
    bool writeNext() {
        const size_t level = steps_.size() - 1;
        const size_t start = out_.size();
        Step& step = steps_[level];
        const int32_t place = step.next++;
        const Outcome outcome = step.body    ? writeEntry(*step.body->at(place))
                                : step.lists ? enterBody(step.lists->items[static_cast<size_t>(place)])
                                             : writeInstance(retain(step.objects->at(place)));
        if (outcome == Outcome::written)
            ++steps_[level].written;
        else
            out_.cut(start);
        return outcome != Outcome::failed;
    }

    Outcome writeEntry(const FStringIDAttribute& entry) {
        if (!out_.putText(std::string_view(entry.key())))
            return failLength("the key", entry.key().size());
        const uint16_t kind = entry.kind();
        out_.put(kind);
        // By the whole kind, as it is read: behind any other one stands nothing.
        switch (kind) {
        case FAttributeValue::integer: out_.put(entry.getInteger()); break;
        case FAttributeValue::real: out_.put(entry.getFloat()); break;
        case FAttributeValue::string: return writeText(entry.getString());
        case FAttributeValue::object: return writeObject(retain(entry.getObject()));
        default: break;
        }
        return Outcome::written;
    }

    Outcome writeText(const ConstString& text) {
        if (out_.putText(text))
            return Outcome::written;
        return failLength("the text", static_cast<size_t>(text.size()));
    }

    template <typename Items, typename Put>
    Outcome writeList(Subkind subkind, const Items& items, Put put) {
        out_.put<uint16_t>(subkind);
        out_.put(static_cast<int32_t>(items.size()));
        for (const auto& item : items)
            if (put(item) != Outcome::written)
                return Outcome::failed;
        return Outcome::written;
    }

    template <typename Number>
    Outcome writeNumber(Number number) {
        out_.put(number);
        return Outcome::written;
    }

    Outcome writeObject(const Ref<CmObject>& object) {
        if (!object)
            return Outcome::leftOut;
        if (auto* nested = cast<FAttributes>(object)) {
            out_.put<uint16_t>(nestedAttributes);
            return enterBody(retain(nested));
        }
        if (cast<FAttrList>(object))
            return writeAnyList(object);
        if (const auto bytes = binaryBytes(object.get()))
            return writeBinary(*bytes);
        return writeInstance(object);
    }

    Outcome writeAnyList(const Ref<CmObject>& object) {
        if (const auto* list = cast<FIntList>(object))
            return writeList(intList, list->items, [this](int64_t item) { return writeNumber(item); });
        if (const auto* list = cast<FFloatList>(object))
            return writeList(floatList, list->items, [this](double item) { return writeNumber(item); });
        if (const auto* list = cast<FStringList>(object))
            return writeList(stringList, list->items, [this](const String& item) { return writeText(item); });
        if (auto* list = cast<FSubList>(object)) {
            out_.put<uint16_t>(subList);
            enter({nullptr, retain(list), nullptr, 0});
            return Outcome::written;
        }
        if (auto* list = cast<FObjectList>(object)) {
            out_.put<uint16_t>(objectList);
            enter({nullptr, nullptr, retain(list), 0});
            return Outcome::written;
        }
        return Outcome::leftOut;
    }

    Outcome writeBinary(std::string_view bytes) {
        constexpr size_t most = std::numeric_limits<int32_t>::max();
        if (bytes.size() > most)
            return fail("a binary value of " + std::to_string(bytes.size()) + " bytes; at most " +
                        std::to_string(most) + " can be stored");
        out_.put<uint16_t>(binary);
        out_.put(static_cast<int32_t>(bytes.size()));
        out_.putBytes(bytes);
        return Outcome::written;
    }

    Outcome writeKnown(uint64_t id) {
        out_.put<uint16_t>(knownObject);
        out_.put(id);
        return Outcome::written;
    }

    Outcome writeInstance(const Ref<CmObject>& item) {
        // A list keeps the place of an item that is nothing.
        if (!item)
            return writeKnown(0);
        const Ref<CmObject> object = retain(StoredObject::meantBy(item.get()));
        if (!object)
            return Outcome::leftOut;
        if (const auto* unbound = cast<FXmlReference>(object))
            return writeKnown(written_.enterUnbound(unbound->id()));
        const auto [id, isNew] = written_.enter(object.get(), StoredObject::idOf(item.get()));
        if (!isNew)
            return writeKnown(id);
        StoredObject stored;
        if (!stored.take(object.get())) {
            written_.forget(object.get());
            return Outcome::leftOut;
        }
        out_.put<uint16_t>(newObject);
        if (!out_.putText(stored.className))
            return failLength("the class name", static_cast<size_t>(stored.className.size()));
        out_.put(id);
        return enterBody(std::move(stored.attributes));
    }

    Outcome failLength(const char* what, size_t length) {
        return fail(std::string(what) + " has " + std::to_string(length) + " characters; at most " +
                    std::to_string(String::maxStoredBytes) +
                    " bytes with terminator and mark can be read back");
    }

    /// Says under which keys it happened, as far as they are few.
    Outcome fail(const std::string& text) {
        constexpr size_t mostKeys = 8;
        std::string keys;
        for (size_t i = 0; i < steps_.size() && i < mostKeys; ++i)
            if (const auto& body = steps_[i].body)
                if (const FStringIDAttribute* entry = body->at(steps_[i].next - 1))
                    keys += (keys.empty() ? "\"" : "|") + text::brief(entry->key());
        fault_ = keys.empty() ? text : keys + "\": " + text;
        return Outcome::failed;
    }

    BodyBuffer out_;
    std::vector<Step> steps_;
    int32_t depth_ = 0;
    WrittenObjects written_;
    std::string fault_;
};

} // namespace

bool writeAttributes(FBinaryStream& stream, const FAttributes& attributes, std::string* fault) try {
    BodyWriter writer(stream.byteOrder());
    if (!writer.write(attributes)) {
        if (fault)
            *fault = writer.fault();
        return false;
    }
    const auto size = static_cast<int64_t>(writer.bytes().size());
    if (stream.write(writer.bytes().data(), size) == size)
        return true;
    if (fault)
        *fault = "the stream does not take all of " + std::to_string(size) + " bytes";
    return false;
} catch (const std::bad_alloc&) {
    // Short enough to take no memory.
    if (fault)
        fault->assign("out of memory");
    return false;
}

} // namespace qorl
