#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/ReferenceBinder.h"
#include "persistence/attributes/StoredObject.h"
#include "persistence/streams/FMemoryStream.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <unordered_map>

namespace qorl {

namespace {

using Hold = FAttributeValue::Hold;

/// Replaces live objects in attributes by stored ones, each object by one instance.
class Detacher {
public:
    void detachAll(FAttributes& attributes) {
        detach(attributes);
        binder_.bind(attributes);
    }

private:
    void detach(FAttributes& attributes) {
        for (int32_t i = 0; i < attributes.count(); ++i) {
            // By place: storing an object may lead back to these attributes.
            CmObject* object = attributes.at(i)->getObject();
            if (!object)
                continue;
            const Ref<CmObject> replaced = detached(object);
            if (FStringIDAttribute* entry = attributes.at(i))
                entry->setObject(replaced.get(), Hold::retain);
        }
    }

    Ref<CmObject> detached(CmObject* object) {
        if (auto* nested = cast<FAttributes>(object))
            detach(*nested);
        else if (auto* lists = cast<FSubList>(object))
            for (const auto& item : lists->items)
                detach(*item);
        else if (const auto* foreign = cast<FAttrBuffer>(object))
            return copyOf(*foreign);
        else if (const auto* objects = cast<FObjectList>(object))
            return detachedList(*objects);
        else if (!cast<FAttrList>(object) && !binaryBytes(object) && !cast<FXmlObject>(object))
            return instanceOf(object);
        return retain(object);
    }

    static Ref<CmObject> copyOf(const FAttrBuffer& foreign) {
        auto copy = make<FMemoryStream>();
        copy->write(foreign.data(), foreign.size());
        copy->rewind();
        return copy;
    }

    Ref<CmObject> detachedList(const FObjectList& objects) {
        auto list = make<FObjectList>(true);
        for (CmObject* item : objects.items)
            if (item)
                list->adopt(detached(item));
        return list;
    }

    Ref<CmObject> instanceOf(CmObject* object) {
        const uint64_t id = StoredObject::idOf(object);
        if (!handled_.emplace(object, retain(object)).second)
            return binder_.addReference(id);
        StoredObject stored;
        stored.take(object);
        const auto instance = make<FXmlInstance>(id, stored.className, stored.attributes);
        binder_.addInstance(instance);
        detach(*stored.attributes);
        return instance;
    }

    // Held until the end, since an address that is free again would name another object.
    std::unordered_map<const CmObject*, Ref<CmObject>> handled_;
    ReferenceBinder binder_;
};

/// The attributes that stand for a value: nested ones, or those of a stored object.
FAttributes* attributesOf(const FAttributeValue& value) {
    CmObject* object = value.getObject();
    if (auto* nested = cast<FAttributes>(object))
        return nested;
    auto* stored = cast<FXmlObject>(object);
    return stored ? stored->getAttributes() : nullptr;
}

/// Calls `search` for all attributes below a value until it is true.
template <typename Search>
bool searchBelow(const FAttributeValue& value, Search search) {
    if (FAttributes* nested = attributesOf(value))
        return search(*nested);
    if (const auto* lists = cast<FSubList>(value.getObject()))
        for (const auto& item : lists->items)
            if (search(*item))
                return true;
    if (const auto* objects = cast<FObjectList>(value.getObject()))
        for (CmObject* item : objects->items)
            if (auto* stored = cast<FXmlObject>(item);
                stored && stored->getAttributes() && search(*stored->getAttributes()))
                return true;
    return false;
}

/// `path` behind its first part when that part is `key`.
std::string_view pathBelow(std::string_view path, std::string_view key) {
    const size_t bar = path.find('|');
    return bar != std::string_view::npos && path.substr(0, bar) == key ? path.substr(bar + 1) : path;
}

bool describe(const FAttributeValue& entry, FAttributeVariant& value) {
    value = {};
    if (entry.isInteger()) {
        value.kind = FAttributeVariant::integer;
        value.integerValue = entry.getInteger();
    } else if (entry.isFloat()) {
        value.kind = FAttributeVariant::real;
        value.realValue = entry.getFloat();
    } else if (entry.isString() && entry.isWide()) {
        value.kind = FAttributeVariant::text16;
        value.text16Value = entry.getText16();
    } else if (entry.isString()) {
        value.kind = FAttributeVariant::text8;
        value.text8Value = entry.getText8();
    }
    return value.kind != FAttributeVariant::none;
}

constexpr std::string_view standardKey = "Additional Attributes";
constexpr std::string_view numberPrefix = "IntID:";

bool isConverted(const FAttributeValue& entry) {
    return !(entry.flags() & (FAttributeValue::entryFlag1 | FAttributeValue::foreign));
}

/// Copies the value of an entry; a stored object is replaced by the live one.
void copyValue(const FAttributeValue& from, FAttributeValue& to) {
    const auto* stored = cast<FXmlObject>(from.getObject());
    if (stored)
        to.setObject(const_cast<FXmlObject*>(stored)->getObject(), Hold::retain);
    else if (from.isObject())
        to.setObject(from.getObject(), Hold::retain);
    else
        to = from;
}

std::string keyOfNumber(uint32_t number) {
    std::string text;
    for (uint32_t rest = number; rest & 0xFF; rest >>= 8)
        text += static_cast<char>(rest & 0xFF);
    if (ConstString(std::string_view(text)).isAscii())
        return text;
    return std::string(numberPrefix) + std::to_string(number);
}

uint32_t numberOfKey(std::string_view key) {
    uint32_t number = 0;
    if (const size_t prefix = key.find(numberPrefix); prefix != std::string_view::npos) {
        std::from_chars(key.data() + prefix + numberPrefix.size(), key.data() + key.size(), number);
        return number;
    }
    for (size_t i = 0; i < 4 && i < key.size(); ++i)
        number |= static_cast<uint32_t>(static_cast<uint8_t>(key[i])) << (8 * i);
    return number;
}

} // namespace

void FAttributes::detachObjects() {
    Detacher().detachAll(*this);
}

FAttributes* FAttributes::findAttributes(std::string_view path) const {
    FAttributes* found = nullptr;
    for (int32_t i = 0; i < count(); ++i) {
        const FStringIDAttribute& entry = *at(i);
        if (!entry.isObject())
            continue;
        if (entry.key() == path)
            if (FAttributes* nested = attributesOf(entry))
                return nested;
        path = pathBelow(path, entry.key());
        if (searchBelow(
                entry, [&](FAttributes& nested) { return (found = nested.findAttributes(path)) != nullptr; }))
            return found;
    }
    return nullptr;
}

bool FAttributes::findValue(std::string_view path, FAttributeVariant& value) const {
    for (int32_t i = 0; i < count(); ++i) {
        const FStringIDAttribute& entry = *at(i);
        if (!entry.isObject()) {
            if (entry.key() == path && describe(entry, value))
                return true;
            continue;
        }
        path = pathBelow(path, entry.key());
        if (searchBelow(entry, [&](FAttributes& nested) { return nested.findValue(path, value); }))
            return true;
    }
    return false;
}

void FAttributes::saveExtraAttributes(const FAttributes& values, std::string_view key) {
    auto nested = make<FAttributes>();
    for (int32_t i = 0; i < values.count(); ++i)
        if (const FStringIDAttribute& entry = *values.at(i); isConverted(entry))
            static_cast<FAttributeValue&>(nested->append(entry.key())) = entry;
    if (!nested->isEmpty())
        setObject(key.empty() ? standardKey : key, nested.detach(), Hold::adopt);
}

bool FAttributes::loadExtraAttributes(FAttributes& values, std::string_view key, bool keep) const {
    const FAttributes* nested = getAttributes(key.empty() ? standardKey : key);
    if (!nested)
        return false;
    for (int32_t i = 0; i < nested->count(); ++i) {
        const FStringIDAttribute& entry = *nested->at(i);
        if (!keep || !values.contains(entry.key()))
            copyValue(entry, values.entry(entry.key()));
    }
    return true;
}

void FAttributes::saveIntKeyAttributes(const std::vector<FIntIDAttribute>& values, std::string_view key) {
    auto nested = make<FAttributes>();
    for (const auto& entry : values)
        if (isConverted(entry))
            static_cast<FAttributeValue&>(nested->append(keyOfNumber(entry.key()))) = entry;
    if (!nested->isEmpty())
        setObject(key.empty() ? standardKey : key, nested.detach(), Hold::adopt);
}

bool FAttributes::loadIntKeyAttributes(std::vector<FIntIDAttribute>& values, std::string_view key,
                                       bool keep) const {
    const FAttributes* nested = getAttributes(key.empty() ? standardKey : key);
    if (!nested)
        return false;
    for (int32_t i = 0; i < nested->count(); ++i) {
        const FStringIDAttribute& entry = *nested->at(i);
        const uint32_t number = numberOfKey(entry.key());
        const auto known = std::find_if(values.begin(), values.end(), [number](const FIntIDAttribute& value) {
            return value.key() == number;
        });
        if (known == values.end())
            copyValue(entry, values.emplace_back(number));
        else if (!keep)
            copyValue(entry, *known);
    }
    return true;
}

} // namespace qorl
