#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/StoredObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlObject.h"
#include "persistence/xml/XmlDocument.h"
#include "persistence/xml/XmlEntities.h"

#include <charconv>
#include <deque>
#include <new>
#include <unordered_map>

namespace qorl {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr int32_t longestValue = 2048;
constexpr int32_t queueLevel = 8;
constexpr size_t binaryLine = 32;

std::string numberText(double value) {
    char digits[512];
    const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 50);
    return {digits, result.ptr};
}

class DocumentWriter {
public:
    explicit DocumentWriter(std::string& out) : out_(out) {}

    bool writeDocument(std::string_view tag, const FAttributes& attributes) {
        line(0, "<?xml version=\"1.0\" encoding=\"utf-8\"?>");
        line(0, '<' + std::string(tag) + '>');
        bool isGood = writeBody(attributes, 1);
        if (isGood && !queue_.empty())
            out_ += lineEnd;
        while (isGood && !queue_.empty()) {
            const Ref<CmObject> object = std::move(queue_.front());
            queue_.pop_front();
            isGood = writeFull(object.get(), {}, 1);
            out_ += lineEnd;
        }
        line(0, "</" + std::string(tag) + '>');
        return isGood;
    }

private:
    void line(int32_t level, std::string_view text) {
        out_.append(static_cast<size_t>(level) * 3, ' ').append(text).append(lineEnd);
    }

    static std::string attribute(std::string_view name, std::string_view value) {
        std::string text = " " + std::string(name) + "=\"";
        XmlEntities::escape8(text, value);
        return text + '"';
    }

    static std::string named(std::string_view key) { return attribute("name", key); }

    static std::string escaped(const ConstString& text) {
        std::string out;
        if (text.isWide())
            XmlEntities::escapeUtf8(out, text.toUtf8());
        else
            XmlEntities::escape8(out, text.view8());
        return out;
    }

    bool writeBody(const FAttributes& attributes, int32_t level) {
        for (int32_t i = 0; i < attributes.count(); ++i)
            if (!writeEntry(*attributes.at(i), level))
                return false;
        return true;
    }

    bool writeEntry(const FStringIDAttribute& entry, int32_t level) {
        const std::string name = named(entry.key());
        if (entry.isInteger())
            line(level, "<int" + name + attribute("value", std::to_string(entry.getInteger())) + "/>");
        else if (entry.isFloat())
            line(level, "<float" + name + attribute("value", numberText(entry.getFloat())) + "/>");
        else if (entry.isString())
            writeString(name, entry.getString(), level);
        else if (CmObject* object = entry.getObject())
            return writeObject(object, entry.key(), level);
        return true;
    }

    void writeString(const std::string& name, const ConstString& text, int32_t level) {
        const std::string wide = text.isWide() ? " wide=\"true\"" : "";
        if (text.size() <= longestValue) {
            line(level, "<string" + name + " value=\"" + escaped(text) + '"' + wide + "/>");
            return;
        }
        line(level, "<string" + name + wide + '>');
        line(0, escaped(text));
        line(level, "</string>");
    }

    bool writeObject(CmObject* object, std::string_view key, int32_t level) {
        if (const auto* nested = cast<FAttributes>(object)) {
            line(level, "<member" + named(key) + '>');
            const bool isGood = writeBody(*nested, level + 1);
            line(level, "</member>");
            return isGood;
        }
        if (const auto* list = cast<FAttrList>(object))
            return list->count() == 0 || writeList(object, key, level);
        if (const auto bytes = binaryBytes(object))
            return writeBinary(key, *bytes, level);
        return writeInstance(object, key, level);
    }

    bool writeBinary(std::string_view key, std::string_view bytes, int32_t level) {
        constexpr char digits[] = "0123456789ABCDEF";
        line(level, "<bin" + named(key) + '>');
        for (; !bytes.empty(); bytes.remove_prefix(std::min(binaryLine, bytes.size()))) {
            out_.append(static_cast<size_t>(level) + 1, '\t');
            for (const char c : bytes.substr(0, binaryLine)) {
                out_ += digits[static_cast<uint8_t>(c) >> 4];
                out_ += digits[static_cast<uint8_t>(c) & 15];
            }
            out_ += lineEnd;
        }
        line(level, "</bin>");
        return true;
    }

    void openList(std::string_view key, std::string_view type, int32_t level) {
        line(level, "<list" + named(key) + attribute("type", type) + '>');
    }

    bool writeList(CmObject* object, std::string_view key, int32_t level) {
        bool isGood = true;
        if (const auto* integers = cast<FIntList>(object)) {
            openList(key, "int", level);
            for (const int64_t item : integers->items)
                writeItem(std::to_string(item), level + 1);
        } else if (const auto* reals = cast<FFloatList>(object)) {
            openList(key, "float", level);
            for (const double item : reals->items)
                writeItem(numberText(item), level + 1);
        } else if (const auto* texts = cast<FStringList>(object)) {
            openList(key, "string", level);
            // Items are always wide text.
            for (const String& item : texts->items)
                writeItem(escaped(ConstString(std::u16string_view(item.toUtf16()))), level + 1);
        } else if (const auto* objects = cast<FObjectList>(object)) {
            openList(key, "obj", level);
            for (CmObject* item : objects->items)
                isGood = isGood && (!item || writeListed(item, level + 1));
        } else if (const auto* lists = cast<FSubList>(object)) {
            openList(key, "list", level);
            for (const auto& item : lists->items) {
                line(level + 1, "<item>");
                isGood = isGood && writeBody(*item, level + 2);
                line(level + 1, "</item>");
            }
        }
        line(level, "</list>");
        return isGood;
    }

    void writeItem(std::string_view value, int32_t level) {
        line(level, "<item value=\"" + std::string(value) + "\"/>");
    }

    static CmObject* targetOf(CmObject* object) {
        const auto* reference = cast<FXmlReference>(object);
        return reference && reference->target() ? reference->target() : object;
    }

    bool writeListed(CmObject* item, int32_t level) {
        item = targetOf(item);
        const uint64_t id = StoredObject::idOf(item);
        if (!cast<FXmlReference>(item) && known_.emplace(id, retain(item)).second)
            return writeFull(item, {}, level);
        writeItem(std::to_string(id), level);
        return true;
    }

    bool writeInstance(CmObject* object, std::string_view key, int32_t level) {
        object = targetOf(object);
        const uint64_t id = StoredObject::idOf(object);
        const bool isNew = !cast<FXmlReference>(object) && known_.emplace(id, retain(object)).second;
        if (isNew && level < queueLevel)
            return writeFull(object, key, level);
        if (isNew)
            queue_.push_back(retain(object));
        line(level, "<obj" + named(key) + attribute("ID", std::to_string(id)) + "/>");
        return true;
    }

    bool writeFull(CmObject* object, std::string_view key, int32_t level) {
        StoredObject stored;
        if (!stored.take(object))
            return false;
        line(level, "<obj class=\"" + stored.className.toUtf8() + '"' + (key.empty() ? "" : named(key)) +
                        attribute("ID", std::to_string(StoredObject::idOf(object))) + '>');
        const bool isGood = writeBody(*stored.attributes, level + 1);
        line(level, "</obj>");
        return isGood;
    }

    std::string& out_;
    // Held until the end, since an address that is free again would name another object.
    std::unordered_map<uint64_t, Ref<CmObject>> known_;
    std::deque<Ref<CmObject>> queue_;
};

} // namespace

bool XmlDocument::write(std::string& text, std::string_view tag, const FAttributes& attributes) try {
    return DocumentWriter(text).writeDocument(tag, attributes);
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace qorl
