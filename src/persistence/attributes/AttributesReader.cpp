#include "foundation/text/ShownText.h"
#include "foundation/text/StoredBytes.h"
#include "foundation/text/StoredText.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/archive/StoredClass.h"
#include "persistence/attributes/AttributesForm.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/ReferenceBinder.h"
#include "persistence/streams/FMemoryStream.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

using namespace AttributesForm;
using Hold = FAttributeValue::Hold;

/// Takes a body apart, with the bodies that stand in it on a stack of its own. No count is trusted: room is
/// made for what has been read only.
class BodyReader {
public:
    BodyReader(FBinaryStream& stream, FObjectArchive* archive, OldObjects oldObjects)
        : stream_(stream), archive_(archive), areKept_(oldObjects == OldObjects::kept) {}

    const std::string& fault() const { return fault_; }

    /// Of a damaged body, too, objects get what was read of them, and references are bound.
    bool read(FAttributes& root) {
        const bool isRead = readAll(root);
        while (!oldObjects_.empty())
            createOldObject();
        binder_.bind(root);
        return isRead;
    }

private:
    /// What follows a body or a list: as many entries or items as are left.
    struct Step {
        enum class Kind : uint8_t { body, lists, objects, oldObjects, oldBody };

        Kind kind;
        int32_t left;
        /// The attributes, or the list.
        Ref<CmObject> holder;
        /// Of a list only.
        std::string key;
    };

    /// An object of an old file, which is created as soon as its body has been read, and the place for it.
    struct OldObject {
        Ref<FXmlInstance> instance;
        Ref<FAttributes> attributes;
        std::string key;
        Ref<FObjectList> list;
    };

    enum class TextRead : uint8_t { read, tooLong, failed };

    bool readAll(FAttributes& root) {
        if (!enterBody(Step::Kind::body, retain(&root)))
            return false;
        while (!steps_.empty()) {
            if (steps_.back().left == 0)
                leave();
            else if (!readNext())
                return false;
        }
        return true;
    }

    bool readNext() {
        Step& step = steps_.back();
        --step.left;
        switch (step.kind) {
        case Step::Kind::lists: {
            auto item = make<FAttributes>();
            static_cast<FSubList&>(*step.holder).items.push_back(item);
            return enterBody(Step::Kind::body, std::move(item));
        }
        case Step::Kind::objects: return readItem(static_cast<FObjectList&>(*step.holder));
        case Step::Kind::oldObjects:
            return readOldObject(
                {nullptr, nullptr, {}, retain(static_cast<FObjectList*>(step.holder.get()))});
        default: return readEntry(static_cast<FAttributes&>(*step.holder));
        }
    }

    bool enterBody(Step::Kind kind, Ref<FAttributes> body) {
        if (depth_ >= maxDepth)
            return fail("bodies are nested deeper than " + std::to_string(maxDepth) + " levels");
        int32_t count = 0;
        if (!readCount(count, "entries"))
            return false;
        ++depth_;
        steps_.push_back({kind, count, std::move(body), {}});
        return true;
    }

    void leave() {
        const Step step = std::move(steps_.back());
        steps_.pop_back();
        if (step.kind == Step::Kind::body || step.kind == Step::Kind::oldBody)
            --depth_;
        if (step.kind == Step::Kind::oldBody)
            createOldObject();
        // The item had keys of its own.
        if (!steps_.empty() && steps_.back().kind != Step::Kind::body &&
            steps_.back().kind != Step::Kind::oldBody)
            key_ = steps_.back().key;
    }

    bool readCount(int32_t& count, const char* what) {
        if (!stream_.readInt32(count))
            return fail(std::string("the stream ends in the number of ") + what);
        return count >= 0 ||
               fail("a number of " + std::to_string(count) + " " + what + "; at least 0 is right");
    }

    /// Into `bytes_`, and `text_` is what they hold.
    TextRead readText() {
        int32_t count = 0;
        text_ = {};
        if (!stream_.readInt32(count))
            return TextRead::failed;
        if (count < 1)
            return count == 0 ? TextRead::read : TextRead::failed;
        if (count > String::maxStoredBytes)
            return stream_.skip(count) ? TextRead::tooLong : TextRead::failed;
        if (static_cast<size_t>(count) > bytes_.size())
            bytes_.resize(static_cast<size_t>(count));
        if (stream_.read(bytes_.data(), count) != count)
            return TextRead::failed;
        text_ = text::loadedText({bytes_.data(), static_cast<size_t>(count)});
        return TextRead::read;
    }

    /// The text that was read; of a wide one also what stands behind a zero.
    String string() const {
        if (text_.isMarked && text_.bytes.find('\0') != std::string_view::npos &&
            text::wideLength(text_.bytes, text::Surrogates::kept) != text::invalid)
            return text::widenStored(text_.bytes);
        String read;
        if (!text_.assignTo(read))
            throw std::bad_alloc();
        return read;
    }

    bool readEntry(FAttributes& attributes) {
        uint16_t kind = 0;
        switch (readText()) {
        case TextRead::tooLong: return fail("a key is longer than " + std::to_string(String::maxStoredBytes));
        case TextRead::failed: return fail("no key stands here");
        case TextRead::read: break;
        }
        // Keys end at a zero byte wherever they are used.
        key_ = text_.bytes.substr(0, text_.bytes.find('\0'));
        if (!stream_.readUInt16(kind))
            return fail("the stream ends in the kind of a value");
        switch (kind) {
        case FAttributeValue::integer: {
            int64_t value = 0;
            if (!readNumber(value))
                return failEnd();
            attributes.append(key_).setInteger(value);
            return true;
        }
        case FAttributeValue::real: {
            double value = 0;
            if (!readNumber(value))
                return failEnd();
            attributes.append(key_).setFloat(value);
            return true;
        }
        case FAttributeValue::string: return readString(attributes);
        case FAttributeValue::object: return readObject(attributes);
        default: return true;
        }
    }

    bool readString(FAttributes& attributes) {
        const TextRead result = readText();
        if (result == TextRead::failed)
            return failEnd();
        if (result == TextRead::tooLong)
            tellTooLong();
        if (!text_.bytes.empty())
            attributes.append(key_).takeString(string());
        return true;
    }

    /// An entry's value, with what it leads to left on the stack.
    bool readObject(FAttributes& attributes) {
        uint16_t subkind = 0;
        if (!stream_.readUInt16(subkind))
            return fail("the stream ends in the kind of an object");
        switch (subkind) {
        case intList: return readNumbers(store(attributes, make<FIntList>())->items);
        case floatList: return readNumbers(store(attributes, make<FFloatList>())->items);
        case stringList:
        case utf8List: return readTexts(*store(attributes, make<FStringList>(true)));
        case subList: return enterList(Step::Kind::lists, store(attributes, make<FSubList>()));
        case objectList: return enterList(Step::Kind::objects, store(attributes, make<FObjectList>()));
        case classList: return enterList(Step::Kind::oldObjects, store(attributes, make<FObjectList>()));
        case archivedList: return readArchived(*store(attributes, make<FObjectList>()));
        case nestedAttributes:
            return enterBody(Step::Kind::body, Ref<FAttributes>(store(attributes, make<FAttributes>())));
        case binary: return readBinary(*store(attributes, make<FMemoryStream>()));
        case newObject: {
            Ref<FXmlInstance> instance;
            return readInstance(instance) && store(attributes, instance) && enterInstance(*instance);
        }
        case knownObject: {
            Ref<FXmlReference> reference;
            return readReference(reference) && store(attributes, reference);
        }
        case classObject: return readOldObject({nullptr, retain(&attributes), key_, nullptr});
        case archivedObject: {
            Ref<CmObject> object;
            return readArchived(object) && (!object || store(attributes, object));
        }
        default: return true;
        }
    }

    template <typename T>
    Ref<T> store(FAttributes& attributes, Ref<T> object) {
        attributes.append(key_).setObject(object.get(), Hold::retain);
        return object;
    }

    bool enterList(Step::Kind kind, Ref<CmObject> list) {
        int32_t count = 0;
        if (!readCount(count, "items"))
            return false;
        steps_.push_back({kind, count, std::move(list), key_});
        return true;
    }

    bool readNumber(int64_t& value) { return stream_.readInt64(value); }
    bool readNumber(double& value) { return stream_.readDouble(value); }

    template <typename Number>
    bool readNumbers(std::vector<Number>& items) {
        int32_t left = 0;
        if (!readCount(left, "items"))
            return false;
        for (Number value = 0; left > 0; --left) {
            if (!readNumber(value))
                return failEnd();
            items.push_back(value);
        }
        return true;
    }

    /// All items become wide. Bytes that are no UTF-8 are read as in XML.
    bool readTexts(FStringList& list) {
        int32_t left = 0;
        if (!readCount(left, "items"))
            return false;
        for (; left > 0; --left) {
            const TextRead result = readText();
            if (result == TextRead::failed)
                return failEnd();
            if (result == TextRead::read)
                list.items.push_back(text::widenStored(text_.bytes));
            else
                tellTooLong();
        }
        return true;
    }

    static void reportLength(const std::string& what) {
        const std::string text =
            what + " is longer than " + std::to_string(String::maxStoredBytes) + " bytes";
        FObjectArchive::reportGlobally(FObjectArchive::malformed, text.c_str());
    }
    void tellTooLong() const { reportLength("a text of \"" + text::brief(key_) + '"'); }

    bool readBinary(FMemoryStream& memory) {
        int32_t left = 0;
        if (!readCount(left, "bytes"))
            return false;
        char piece[4096];
        while (left > 0) {
            const int64_t wanted = std::min<int64_t>(left, sizeof piece);
            const int64_t got = stream_.read(piece, wanted);
            if (got > 0 && memory.write(piece, got) != got)
                throw std::bad_alloc();
            if (got != wanted)
                return failEnd();
            left -= static_cast<int32_t>(wanted);
        }
        memory.rewind();
        return true;
    }

    bool readItem(FObjectList& list) {
        uint16_t subkind = 0;
        if (!stream_.readUInt16(subkind))
            return fail("the stream ends in the kind of an object");
        if (subkind == newObject) {
            Ref<FXmlInstance> instance;
            if (!readInstance(instance))
                return false;
            list.add(instance);
            return enterInstance(*instance);
        }
        if (subkind != knownObject)
            return true;
        Ref<FXmlReference> reference;
        if (!readReference(reference))
            return false;
        list.add(reference);
        return true;
    }

    bool readInstance(Ref<FXmlInstance>& instance) {
        uint64_t id = 0;
        if (!readClassName())
            return failEnd();
        const String className = string();
        if (!stream_.readUInt64(id))
            return failEnd();
        instance = make<FXmlInstance>(id, className, make<FAttributes>());
        binder_.addInstance(instance);
        return true;
    }

    bool enterInstance(FXmlInstance& instance) {
        return enterBody(Step::Kind::body, retain(instance.getAttributes()));
    }

    bool readReference(Ref<FXmlReference>& reference) {
        uint64_t id = 0;
        if (!stream_.readUInt64(id))
            return failEnd();
        reference = binder_.addReference(id);
        return true;
    }

    /// Without a class an object only stays stored, or goes when it is an old one.
    bool readClassName() {
        const TextRead result = readText();
        if (result == TextRead::tooLong)
            reportLength("a class name");
        return result != TextRead::failed;
    }

    bool readOldObject(OldObject object) {
        if (!readClassName())
            return failEnd();
        const auto attributes = make<FAttributes>();
        object.instance = make<FXmlInstance>(0, string(), attributes);
        oldObjects_.push_back(std::move(object));
        return enterBody(Step::Kind::oldBody, attributes);
    }

    /// One of an unknown class or without one, or that refuses its attributes, is told to the global error
    /// sink, and dropped. One of a known class that could not come to be stays stored.
    void createOldObject() {
        const OldObject old = std::move(oldObjects_.back());
        oldObjects_.pop_back();
        const char* className = old.instance->className8().text8();
        Ref<CmObject> object = areKept_ ? nullptr : retain(old.instance->getObject());
        if (*className == '\0')
            FObjectArchive::reportGlobally(FObjectArchive::classNotRegistered, className);
        else if (areKept_)
            object = old.instance;
        else if (!object && !old.instance->getAttributes())
            FObjectArchive::reportGlobally(FObjectArchive::wrongObject, className);
        else if (!object && StoredClass::find(className))
            object = old.instance;
        if (!object)
            return;
        // One that stays stored may hold references.
        if (object == old.instance.get())
            binder_.addUnnamed(old.instance);
        if (old.list)
            old.list->add(object);
        else
            old.attributes->append(old.key).setObject(object.get(), Hold::retain);
    }

    /// Null is an object, too, if it was stored.
    bool readArchived(Ref<CmObject>& object) {
        if (!archive_)
            return fail("an object in the form of an archive, and there is no archive");
        object = Ref<CmObject>::adopt(archive_->readObject(nullptr));
        return object || archive_->lastError() == 0 || fail("the archive gives no object");
    }

    bool readArchived(FObjectList& list) {
        int32_t left = 0;
        if (!readCount(left, "items"))
            return false;
        for (; left > 0; --left) {
            Ref<CmObject> object;
            if (!readArchived(object))
                return false;
            list.add(std::move(object));
        }
        return true;
    }

    bool failEnd() { return fail("the value of \"" + text::brief(key_) + "\" is cut off or damaged"); }

    bool fail(const std::string& text) {
        fault_ = "before byte " + std::to_string(stream_.tell()) + ": " + text;
        return false;
    }

    FBinaryStream& stream_;
    FObjectArchive* archive_;
    bool areKept_;
    std::vector<Step> steps_;
    std::vector<OldObject> oldObjects_;
    int32_t depth_ = 0;
    ReferenceBinder binder_;
    std::vector<char> bytes_;
    text::LoadedText text_{};
    std::string key_;
    std::string fault_;
};

} // namespace

bool readAttributes(FBinaryStream& stream, FAttributes& attributes, FObjectArchive* archive,
                    std::string* fault, OldObjects oldObjects) try {
    BodyReader reader(stream, archive, oldObjects);
    const bool isRead = reader.read(attributes);
    if (!isRead && fault)
        *fault = reader.fault();
    return isRead;
} catch (const std::bad_alloc&) {
    // The archive tells.
    if (archive)
        throw;
    // Short enough to take no memory.
    if (fault)
        fault->assign("out of memory");
    return false;
}

} // namespace qorl
