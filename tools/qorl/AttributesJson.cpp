#include "AttributesJson.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"

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

/// Whether somebody else holds the attributes, as an archive does with all that it reads: they may stand in
/// several places then, and in themselves.
bool isShared(FAttributes& attributes) {
    attributes.addRef();
    return attributes.release() > 1;
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
        if (next >= static_cast<size_t>(objects->count()))
            return false;
        json_.beginObject();
        begin(objects->at(static_cast<int32_t>(next)));
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
    if (auto* attributes = cast<FAttributes>(object))
        return beginNested(*attributes);
    if (cast<FSubList>(object))
        return beginLevel(object, "attributes");
    if (cast<FObjectList>(object))
        return beginLevel(object, "object");
    if (beginValues(object))
        return json_.endObject();
    beginInstance(object);
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

void AttributesJson::beginReference(uint64_t number) {
    json_.member("kind", "reference");
    json_.member("id", static_cast<int64_t>(number));
    json_.endObject();
}

void AttributesJson::beginNested(FAttributes& attributes) {
    const bool mayComeAgain = isShared(attributes);
    const auto [number, isNew] =
        mayComeAgain ? numbers_.enter(&attributes, 0) : WrittenObjects::Entry{0, true};
    if (!isNew)
        return beginReference(number);
    json_.member("kind", "attributes");
    if (mayComeAgain)
        json_.member("id", static_cast<int64_t>(number));
    beginAttributes(retain(&attributes));
}

void AttributesJson::beginInstance(CmObject* item) {
    const Ref<CmObject> object = retain(StoredObject::meantBy(item));
    const uint64_t id = cast<FXmlObject>(item) ? StoredObject::idOf(item) : 0;
    if (!object || cast<FXmlReference>(object)) {
        if (id == 0)
            return beginReference(0);
        // The first one of its number stands for all that lead nowhere.
        const Ref<CmObject>& missing = missing_.try_emplace(id, retain(item)).first->second;
        return beginReference(numbers_.enter(missing.get(), id).id);
    }
    const auto [number, isNew] = numbers_.enter(object.get(), id);
    if (!isNew)
        return beginReference(number);
    StoredObject stored;
    const bool hasForm = stored.take(object.get());
    json_.member("kind", "object");
    json_.member("class", hasForm ? stored.className.toUtf8() : StoredObject::classNameOf(object.get()));
    json_.member("id", static_cast<int64_t>(number));
    if (hasForm)
        return beginAttributes(stored.attributes);
    json_.endObject();
}

} // namespace qorl::tool
