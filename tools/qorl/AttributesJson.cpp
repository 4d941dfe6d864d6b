#include "AttributesJson.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/xml/FXmlObject.h"

namespace qorl::tool {

namespace {

/// The list of a kind without items of their own, when `object` is one.
template <typename List, typename WriteItem>
bool writeList(JsonWriter& json, const CmObject* object, const char* itemKind, WriteItem writeItem) {
    const auto* list = cast<List>(object);
    if (!list)
        return false;
    json.member("kind", "list");
    json.member("of", itemKind);
    json.key("value");
    json.beginArray();
    for (const auto& item : list->items)
        writeItem(item);
    json.endArray();
    return true;
}

} // namespace

std::string hexOf(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        text += digits[static_cast<uint8_t>(byte) >> 4];
        text += digits[static_cast<uint8_t>(byte) & 15];
    }
    return text;
}

const char* storedNameOf(const CmObject& object) {
    const ClassRecord* record = object.getClassRecord();
    const bool isOwn = record && record != &CmObject::classRecord() && record->persistentName();
    return isOwn ? record->persistentName() : object.getClassName();
}

void AttributesJson::writeAttributes(const Ref<FAttributes>& attributes) {
    const size_t outer = levels_.size();
    beginAttributes(attributes);
    finish(outer);
}

void AttributesJson::writeObject(CmObject* object) {
    const size_t outer = levels_.size();
    begin(object);
    finish(outer);
}

void AttributesJson::finish(size_t outer) {
    while (levels_.size() > outer) {
        if (beginNextItem())
            continue;
        json_.endArray();
        json_.endObject();
        levels_.pop_back();
    }
}

bool AttributesJson::beginNextItem() {
    const CmObject* holder = levels_.back().holder.get();
    const size_t next = levels_.back().next++;
    if (const auto* attributes = cast<FAttributes>(holder)) {
        if (next >= static_cast<size_t>(attributes->count()))
            return false;
        json_.beginObject();
        beginEntry(*attributes->at(static_cast<int32_t>(next)));
    } else if (const auto* lists = cast<FSubList>(holder)) {
        if (next >= lists->items.size())
            return false;
        json_.beginObject();
        beginAttributes(lists->items[next]);
    } else {
        const auto* objects = cast<FObjectList>(holder);
        if (next >= objects->items.size())
            return false;
        json_.beginObject();
        begin(objects->items[next]);
    }
    return true;
}

void AttributesJson::beginEntry(const FStringIDAttribute& entry) {
    json_.member("key", entry.key());
    switch (entry.kind()) {
    case FAttributeValue::integer:
        json_.member("kind", "int");
        json_.member("value", entry.getInteger());
        break;
    case FAttributeValue::real:
        json_.member("kind", "float");
        json_.key("value");
        json_.real(entry.getFloat());
        break;
    case FAttributeValue::string:
        json_.member("kind", "string");
        json_.member("value", entry.getString().toUtf8());
        json_.key("wide");
        json_.boolean(entry.isWide());
        break;
    case FAttributeValue::object: return begin(entry.getObject());
    default: break;
    }
    json_.endObject();
}

void AttributesJson::begin(CmObject* object) {
    if (!object)
        return beginReference(0);
    if (auto* attributes = cast<FAttributes>(object)) {
        json_.member("kind", "attributes");
        return beginAttributes(retain(attributes));
    }
    if (cast<FSubList>(object))
        return beginLevel(object, "attributes");
    if (cast<FObjectList>(object))
        return beginLevel(object, "object");
    if (beginValues(object))
        return json_.endObject();
    if (cast<FXmlObject>(object))
        return beginStored(object);
    beginLive(object);
}

void AttributesJson::beginAttributes(const Ref<FAttributes>& attributes) {
    json_.key("attributes");
    json_.beginArray();
    levels_.push_back({attributes, 0});
}

void AttributesJson::beginLevel(CmObject* holder, const char* itemKind) {
    json_.member("kind", "list");
    json_.member("of", itemKind);
    json_.key("value");
    json_.beginArray();
    levels_.push_back({retain(holder), 0});
}

bool AttributesJson::beginValues(CmObject* object) {
    if (const auto bytes = binaryBytes(object)) {
        json_.member("kind", "binary");
        json_.member("hex", hexOf(*bytes));
        return true;
    }
    return writeList<FIntList>(json_, object, "int", [this](int64_t item) { json_.number(item); }) ||
           writeList<FFloatList>(json_, object, "float", [this](double item) { json_.real(item); }) ||
           writeList<FStringList>(json_, object, "string",
                                  [this](const String& item) { json_.string(item.toUtf8()); });
}

void AttributesJson::beginReference(int64_t id) {
    json_.member("kind", "reference");
    json_.member("id", id);
    json_.endObject();
}

void AttributesJson::beginStored(CmObject* object) {
    const auto* reference = cast<FXmlReference>(object);
    auto* instance = reference ? reference->target() : cast<FXmlInstance>(object);
    const uint64_t number = cast<FXmlObject>(object)->id();
    const auto id = static_cast<int64_t>(number);
    if (!instance || !instance->getAttributes() || !stored_.insert(number).second)
        return beginReference(id);
    json_.member("kind", "object");
    json_.member("class", instance->className8().text8());
    json_.member("id", id);
    beginAttributes(retain(instance->getAttributes()));
}

void AttributesJson::beginLive(CmObject* object) {
    const auto [place, isNew] = live_.try_emplace(object, static_cast<int64_t>(live_.size() + 1));
    if (!isNew)
        return beginReference(place->second);
    held_.push_back(retain(object));
    json_.member("kind", "object");
    json_.member("class", storedNameOf(*object));
    json_.member("id", place->second);
    const auto attributes = make<FAttributes>();
    if (object->storeAttributes(attributes.get()))
        return beginAttributes(attributes);
    json_.endObject();
}

} // namespace qorl::tool
