#include "persistence/xml/XmlDocumentWriter.h"

#include "foundation/Cast.h"
#include "foundation/text/ShownText.h"
#include "foundation/text/StoredBytes.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/xml/FXmlParser.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr int32_t longestValue = FXmlParser::maxValueLength;
/// From here on an object goes behind the document's body, and its entry names it.
constexpr int32_t queueLevel = 8;
/// So does an item of a list where its own parts might be too deep to be read.
constexpr int32_t deepestListed = FXmlParser::maxDepth / 2;
constexpr size_t bytesOfLine = 32;

/// What `object` stands for; an instance that failed to become an object stands for itself.
CmObject* standsFor(CmObject* object) {
    CmObject* meant = StoredObject::meantBy(object);
    if (meant)
        return meant;
    const auto* reference = cast<FXmlReference>(object);
    return reference && reference->target() ? reference->target() : object;
}

std::string classOf(CmObject* object) {
    const auto* instance = cast<FXmlInstance>(object);
    return instance ? text::brief(instance->className8().string().toUtf8()) : object->getClassName();
}

} // namespace

bool XmlDocumentWriter::fail(std::string reason) {
    if (reason_.empty())
        reason_ = std::move(reason);
    return false;
}

bool XmlDocumentWriter::failLine() {
    if (lines_.isBroken())
        throw std::bad_alloc();
    return fail("the stream doesn't take all of the document: it is full, or not open for writing");
}

bool XmlDocumentWriter::closeElement(std::string_view element, int32_t level) {
    indent(level).put("</").put(element);
    return finish(">");
}

bool XmlDocumentWriter::begin(std::string_view tag) {
    if (!FXmlParser::isTagName(tag))
        return fail("the top element can't be named \"" + text::brief(tag) +
                    "\": a letter or _ comes first, no blank, / or > behind it, and at most " +
                    std::to_string(FXmlParser::maxTagNameLength) + " bytes");
    if (!finish("<?xml version=\"1.0\" encoding=\"utf-8\"?>"))
        return false;
    lines_.put('<').put(tag);
    return finish(">");
}

bool XmlDocumentWriter::end(std::string_view tag) {
    return closeElement(tag, 0) && handOver(1);
}

bool XmlDocumentWriter::writeAttributes(std::string_view tag, const FAttributes& attributes) {
    return begin(tag) && writeBody(attributes, 1) && writeQueue() && end(tag);
}

bool XmlDocumentWriter::writeRoots(std::string_view tag, const FAttributes& objects,
                                   const FAttributes& data) {
    if (!begin(tag))
        return false;
    indent(1);
    if (!finish("<rootObjects>"))
        return false;
    for (int32_t i = 0; i < objects.count(); ++i)
        if (!writeRoot(*objects.at(i)))
            return false;
    for (int32_t i = 0; i < data.count(); ++i)
        if (!writeDataRoot(*data.at(i)))
            return false;
    return closeElement("rootObjects", 1) && writeQueue() && end(tag);
}

bool XmlDocumentWriter::isRootName(std::string_view key) {
    if (key.empty())
        return fail("a root has no name");
    return key.size() <= FXmlParser::maxValueLength ||
           fail("the name of a root, \"" + text::brief(key) + "\", is longer than " +
                std::to_string(longestValue) + " bytes");
}

bool XmlDocumentWriter::writeRoot(const FStringIDAttribute& entry) {
    CmObject* object = entry.getObject();
    if (!object)
        return true;
    if (!isRootName(entry.key()))
        return false;
    uint64_t id = 0;
    if (enter(object, id))
        putOff(*object, id);
    // A reference to nothing at all: 0 counts as no number.
    if (id == 0)
        return true;
    open("root", entry.key(), 2).put(" ID=\"").putUnsigned(id);
    return finish("\"/>");
}

bool XmlDocumentWriter::writeDataRoot(const FStringIDAttribute& entry) {
    const Ref<CmObject> object = retain(standsFor(entry.getObject()));
    // One that names nothing has nothing to store.
    if (!object || cast<FXmlReference>(object))
        return true;
    // A copy: an object that is stored may change the entry.
    const std::string key{std::string_view(entry.key())};
    StoredObject stored;
    stored.attributes = retain(cast<FAttributes>(object));
    if (!isRootName(key) || (!stored.attributes && !take(object.get(), key, stored)))
        return false;
    open("root", key, 2);
    return finish(">") && writeBody(*stored.attributes, 3) && closeElement("root", 2);
}

void XmlDocumentWriter::putOff(CmObject& object, uint64_t id) {
    Waiting waiting{retain(&object), id};
    queue_.push_back(std::move(waiting));
}

bool XmlDocumentWriter::writeQueue() {
    if (!queue_.empty() && !finish())
        return false;
    while (!queue_.empty()) {
        const Waiting next = std::move(queue_.front());
        queue_.pop_front();
        if (!writeFull(next.object.get(), next.id, nullptr, 1) || !finish())
            return false;
    }
    return true;
}

bool XmlDocumentWriter::writeBody(const FAttributes& attributes, int32_t level) {
    if (!attributes.isEmpty() && level >= static_cast<int32_t>(FXmlParser::maxDepth))
        return fail("attributes are nested deeper than " + std::to_string(FXmlParser::maxDepth));
    for (int32_t i = 0; i < attributes.count(); ++i)
        if (!writeEntry(*attributes.at(i), level))
            return false;
    return true;
}

bool XmlDocumentWriter::writeEntry(const FStringIDAttribute& entry, int32_t level) {
    const std::string_view key = entry.key();
    if (key.size() > FXmlParser::maxValueLength)
        return fail("the key \"" + text::brief(key) + "\" is longer than " + std::to_string(longestValue) +
                    " bytes");
    switch (entry.kind()) {
    case FAttributeValue::integer:
        open("int", key, level).put(" value=\"").putInteger(entry.getInteger());
        return finish("\"/>");
    case FAttributeValue::real:
        open("float", key, level).put(" value=\"").putFloat(entry.getFloat());
        return finish("\"/>");
    case FAttributeValue::string: return writeString(key, entry.getString(), level);
    case FAttributeValue::object: return writeObject(retain(entry.getObject()), key, level);
    // Behind any other kind stands nothing that could be stored.
    default: return true;
    }
}

bool XmlDocumentWriter::writeString(std::string_view key, const ConstString& text, int32_t level) {
    const bool isShort = text.size() <= longestValue;
    open("string", key, level);
    if (isShort)
        lines_.put(" value=\"").putEscaped(text, Escape::entities).put('"');
    if (text.isWide())
        lines_.put(" wide=\"true\"");
    if (isShort)
        return finish("/>");
    if (!finish(">"))
        return false;
    lines_.putEscaped(text, Escape::entities);
    return finish() && closeElement("string", level);
}

bool XmlDocumentWriter::writeObject(const Ref<CmObject>& object, std::string_view key, int32_t level) {
    if (!object)
        return true;
    if (const auto* nested = cast<FAttributes>(object)) {
        open("member", key, level);
        return finish(">") && writeBody(*nested, level + 1) && closeElement("member", level);
    }
    if (const auto* list = cast<FAttrList>(object))
        return list->count() == 0 || writeList(object.get(), key, level);
    if (const auto bytes = binaryBytes(object.get()))
        return writeBinary(key, *bytes, level);
    return writeInstance(object.get(), key, level);
}

bool XmlDocumentWriter::writeBinary(std::string_view key, std::string_view bytes, int32_t level) {
    open("bin", key, level);
    if (!finish(">"))
        return false;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytesOfLine, bytes.size()))) {
        lines_.fill('\t', level + 1).putHex(bytes.substr(0, bytesOfLine));
        if (!finish())
            return false;
    }
    return closeElement("bin", level);
}

bool XmlDocumentWriter::writeList(CmObject* list, std::string_view key, int32_t level) {
    const auto begin = [&](std::string_view type) {
        open("list", key, level).put(" type=\"").put(type);
        return finish("\">");
    };
    const auto beginItem = [&]() -> XmlLine& { return indent(level + 1).put("<item value=\""); };
    if (level + 1 >= static_cast<int32_t>(FXmlParser::maxDepth))
        return fail("the list \"" + text::brief(key) + "\" is nested deeper than " +
                    std::to_string(FXmlParser::maxDepth));
    bool isGood = true;
    if (const auto* integers = cast<FIntList>(list)) {
        isGood = begin("int");
        for (size_t i = 0; isGood && i < integers->items.size(); ++i) {
            beginItem().putInteger(integers->items[i]);
            isGood = finish("\"/>");
        }
    } else if (const auto* reals = cast<FFloatList>(list)) {
        isGood = begin("float");
        for (size_t i = 0; isGood && i < reals->items.size(); ++i) {
            beginItem().putFloat(reals->items[i]);
            isGood = finish("\"/>");
        }
    } else if (const auto* texts = cast<FStringList>(list)) {
        isGood = begin("string");
        for (size_t i = 0; isGood && i < texts->items.size(); ++i)
            isGood = writeTextItem(texts->items[i], level + 1);
    } else if (const auto* objects = cast<FObjectList>(list)) {
        isGood = begin("obj");
        for (int32_t i = 0; isGood && i < objects->count(); ++i)
            isGood = writeListed(objects->at(i), level + 1);
    } else if (const auto* lists = cast<FSubList>(list)) {
        isGood = begin("list");
        for (size_t i = 0; isGood && i < lists->items.size(); ++i) {
            const Ref<FAttributes> item = lists->items[i];
            indent(level + 1);
            isGood = finish("<item>") && writeBody(*item, level + 2) && closeElement("item", level + 1);
        }
    } else {
        return true;
    }
    return isGood && closeElement("list", level);
}

/// Items are wide text. A long one stands as a long string does.
bool XmlDocumentWriter::writeTextItem(const ConstString& text, int32_t level) {
    const String wide = text.isWide() ? String() : text::widenStored(text.view8());
    const ConstString& item = text.isWide() ? text : wide;
    indent(level).put("<item");
    if (item.size() <= longestValue) {
        lines_.put(" value=\"").putEscaped(item, Escape::entities);
        return finish("\"/>");
    }
    if (!finish(">"))
        return false;
    lines_.putEscaped(item, Escape::entities);
    return finish() && closeElement("item", level);
}

/// Gives what the object stands for and its number, and true when it is to be written. A reference that was
/// never bound is not.
bool XmlDocumentWriter::enter(CmObject*& object, uint64_t& id) {
    const auto* reference = cast<FXmlReference>(object);
    id = StoredObject::idOf(reference && reference->target() ? reference->target() : object);
    object = standsFor(object);
    if (cast<FXmlReference>(object)) {
        id = written_.enterUnbound(id);
        return false;
    }
    const auto entry = written_.enter(object, id);
    id = entry.id;
    return entry.isNew;
}

bool XmlDocumentWriter::writeListed(CmObject* item, int32_t level) {
    uint64_t id = 0;
    if (item && enter(item, id)) {
        if (level < deepestListed)
            return writeFull(item, id, nullptr, level);
        putOff(*item, id);
    }
    // The number 0 keeps the place of an item that is nothing.
    indent(level).put("<item value=\"").putUnsigned(id);
    return finish("\"/>");
}

bool XmlDocumentWriter::writeInstance(CmObject* object, std::string_view key, int32_t level) {
    uint64_t id = 0;
    if (enter(object, id)) {
        if (level < queueLevel)
            return writeFull(object, id, &key, level);
        putOff(*object, id);
    }
    open("obj", key, level).put(" ID=\"").putUnsigned(id);
    return finish("\"/>");
}

/// As it stands, but for what would end the value or be taken for an entity.
void XmlDocumentWriter::putClassName(std::string_view name) {
    for (size_t at = 0; at < name.size();) {
        const size_t end = std::min(name.find_first_of("\"&", at), name.size());
        lines_.put(name.substr(at, end - at));
        if (end < name.size())
            lines_.put(name[end] == '&' ? "&amp;" : "&quot;");
        at = end + 1;
    }
}

/// Fails with the object's class and, where it has one, its key.
bool XmlDocumentWriter::take(CmObject* object, std::string_view key, StoredObject& stored) {
    const auto* instance = cast<FXmlInstance>(object);
    if (!stored.take(object)) {
        // One that could not be restored goes on without its attributes, which are gone.
        if (!instance) {
            const std::string place = key.empty() ? "" : " under \"" + text::brief(key) + '"';
            return fail("an object of the class " + classOf(object) + place + " has no attributes to store");
        }
        stored.className = instance->className8().string();
        stored.attributes = make<FAttributes>();
    }
    if (stored.className.isEmpty() && !(instance && instance->className8().isEmpty()))
        throw std::bad_alloc();
    return true;
}

/// With a null `key` it has no name where it stands.
bool XmlDocumentWriter::writeFull(CmObject* object, uint64_t id, const std::string_view* key, int32_t level) {
    StoredObject stored;
    const std::string name(key ? *key : std::string_view());
    if (!take(object, name, stored))
        return false;
    if (stored.className.size() > longestValue)
        return fail("a class name is longer than " + std::to_string(longestValue) + " characters");
    indent(level).put("<obj class=\"");
    putClassName(stored.className.toUtf8());
    lines_.put('"');
    if (key)
        lines_.put(" name=\"").putEscaped(name, Escape::entities).put('"');
    lines_.put(" ID=\"").putUnsigned(id);
    return finish("\">") && writeBody(*stored.attributes, level + 1) && closeElement("obj", level);
}

} // namespace qorl
