#include "foundation/Cast.h"
#include "foundation/text/ConstString.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/attributes/StoredObject.h"

#include <charconv>
#include <string>
#include <unordered_map>

namespace qorl {

namespace {

using Hold = FAttributeValue::Hold;

constexpr std::string_view standardKey = "Additional Attributes";
constexpr std::string_view numberPrefix = "IntID:";

bool isConverted(const FAttributeValue& entry) {
    constexpr uint16_t kinds =
        FAttributeValue::integer | FAttributeValue::real | FAttributeValue::string | FAttributeValue::object;
    return (entry.kind() & kinds) && !entry.isHidden();
}

/// An object gets a reference of its own, so that the nested list stands by itself.
void saveValue(const FAttributeValue& from, FAttributeValue& to) {
    if (from.isObject())
        to.setObject(from.getObject(), Hold::retain);
    else
        to.setValue(from);
}

/// The object that an entry brings, or null: the live one in place of a stored one. One whose class is
/// missing stays stored, so that it is there again when its module is.
Ref<CmObject> loadedObject(const FAttributeValue& from) {
    const Ref<CmObject> object = retain(from.getObject());
    auto* stored = cast<FXmlObject>(object.get());
    Ref<CmObject> live = StoredObject::live(object);
    return !live && stored && stored->getAttributes() ? object : live;
}

/// Calls `target()` for the place of each entry of `nested` that has a value.
template <typename Target>
void loadValues(const FAttributes& nested, Target target) {
    for (int32_t i = 0; i < nested.count(); ++i) {
        // Making a stored object may lead back to these attributes, so the key is kept.
        const std::string key = nested.at(i)->key();
        const Ref<CmObject> object = loadedObject(*nested.at(i));
        const FStringIDAttribute* entry = nested.at(i);
        if (!entry || (entry->isObject() && !object))
            continue;
        FAttributeValue* place = target(key);
        if (!place)
            continue;
        if (object)
            place->setObject(object.get(), Hold::retain);
        else
            place->setValue(*entry);
    }
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

/// Finds or makes the values of a list under numbers.
class NumberedValues {
public:
    explicit NumberedValues(std::vector<FIntIDAttribute>& values) : values_(values) {
        for (size_t i = 0; i < values.size(); ++i)
            places_.emplace(values[i].key(), i);
    }

    bool contains(uint32_t number) const { return places_.contains(number); }

    FAttributeValue* entry(uint32_t number) {
        const auto [place, isNew] = places_.emplace(number, values_.size());
        return isNew ? &values_.emplace_back(number) : &values_[place->second];
    }

private:
    std::vector<FIntIDAttribute>& values_;
    std::unordered_map<uint32_t, size_t> places_;
};

} // namespace

void FAttributes::saveExtraAttributes(const FAttributes& values, std::string_view key) {
    const auto nested = make<FAttributes>();
    for (int32_t i = 0; i < values.count(); ++i)
        if (const FStringIDAttribute& entry = *values.at(i); isConverted(entry))
            saveValue(entry, nested->append(entry.key()));
    if (!nested->isEmpty())
        setObject(key.empty() ? standardKey : key, nested.get(), Hold::retain);
}

bool FAttributes::loadExtraAttributes(FAttributes& values, std::string_view key, OldValues oldValues) const {
    const Ref<FAttributes> nested = retain(getAttributes(key.empty() ? standardKey : key));
    if (!nested)
        return false;
    const bool isAppended =
        oldValues == OldValues::besideNew || (oldValues == OldValues::replaced && values.isEmpty());
    loadValues(*nested, [&](const std::string& name) -> FAttributeValue* {
        if (isAppended)
            return &values.append(name);
        return oldValues == OldValues::kept && values.contains(name) ? nullptr : &values.entry(name);
    });
    return true;
}

void FAttributes::saveIntKeyAttributes(const std::vector<FIntIDAttribute>& values, std::string_view key) {
    const auto nested = make<FAttributes>();
    for (const auto& entry : values)
        if (isConverted(entry))
            saveValue(entry, nested->append(keyOfNumber(entry.key())));
    if (!nested->isEmpty())
        setObject(key.empty() ? standardKey : key, nested.get(), Hold::retain);
}

bool FAttributes::loadIntKeyAttributes(std::vector<FIntIDAttribute>& values, std::string_view key,
                                       OldValues oldValues) const {
    const Ref<FAttributes> nested = retain(getAttributes(key.empty() ? standardKey : key));
    if (!nested)
        return false;
    if (oldValues == OldValues::besideNew || (oldValues == OldValues::replaced && values.empty())) {
        loadValues(*nested, [&](const std::string& name) { return &values.emplace_back(numberOfKey(name)); });
        return true;
    }
    NumberedValues places(values);
    loadValues(*nested, [&](const std::string& name) -> FAttributeValue* {
        const uint32_t number = numberOfKey(name);
        return oldValues == OldValues::kept && places.contains(number) ? nullptr : places.entry(number);
    });
    return true;
}

} // namespace qorl
