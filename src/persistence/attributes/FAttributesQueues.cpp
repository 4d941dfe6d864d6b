#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/xml/FXmlObject.h"

namespace qorl {

template <typename List>
List* FAttributes::list(std::string_view key) const {
    const auto* found = find(key);
    return found ? cast<List>(found->getObject()) : nullptr;
}

/// The list of `key`, made when the key is new; null when it holds something else.
template <typename List, typename... Arguments>
List* FAttributes::makeList(std::string_view key, Arguments... arguments) {
    if (const auto* found = find(key))
        return cast<List>(found->getObject());
    auto made = make<List>(arguments...);
    List* list = made.get();
    append(key).setObject(made.detach(), Hold::adopt);
    return list;
}

bool FAttributes::appendInteger(std::string_view key, int64_t value) {
    auto* list = makeList<FIntList>(key);
    if (list)
        list->items.push_back(value);
    return list;
}

bool FAttributes::appendFloat(std::string_view key, double value) {
    auto* list = makeList<FFloatList>(key);
    if (list)
        list->items.push_back(value);
    return list;
}

bool FAttributes::appendString(std::string_view key, const ConstString& text) {
    auto* list = makeList<FStringList>(key, text.isWide());
    if (!list || list->wide != text.isWide())
        return false;
    list->items.emplace_back(text);
    return true;
}

bool FAttributes::appendObject(std::string_view key, CmObject* object, bool owned) {
    auto* list = object ? makeList<FObjectList>(key, owned) : nullptr;
    if (!list || list->owned != owned)
        return false;
    list->items.push_back(object);
    return true;
}

bool FAttributes::appendAttributes(std::string_view key, Ref<FAttributes> attributes) {
    auto* list = attributes ? makeList<FSubList>(key) : nullptr;
    if (list)
        list->items.push_back(std::move(attributes));
    return list;
}

bool FAttributes::nextInteger(std::string_view key, int64_t& value) {
    auto* list = this->list<FIntList>(key);
    const int32_t place = list ? list->step() : -1;
    if (place >= 0)
        value = list->items[static_cast<size_t>(place)];
    return place >= 0;
}

bool FAttributes::nextFloat(std::string_view key, double& value) {
    auto* list = this->list<FFloatList>(key);
    const int32_t place = list ? list->step() : -1;
    if (place >= 0)
        value = list->items[static_cast<size_t>(place)];
    return place >= 0;
}

bool FAttributes::nextText(std::string_view key, ConstString& text) {
    auto* list = this->list<FStringList>(key);
    const int32_t place = list ? list->step() : -1;
    if (place >= 0)
        text = list->items[static_cast<size_t>(place)];
    return place >= 0;
}

Ref<CmObject> FAttributes::nextObject(std::string_view key, const char* className) {
    auto* list = this->list<FObjectList>(key);
    const int32_t place = list ? list->step() : -1;
    CmObject* object = place >= 0 ? list->items[static_cast<size_t>(place)] : nullptr;
    if (auto* stored = cast<FXmlObject>(object))
        object = stored->getObject();
    return retain(object && (!className || object->isTypeOf(className, true)) ? object : nullptr);
}

FAttributes* FAttributes::nextAttributes(std::string_view key) {
    auto* list = this->list<FSubList>(key);
    const int32_t place = list ? list->step() : -1;
    return place >= 0 ? list->items[static_cast<size_t>(place)].get() : nullptr;
}

FAttributes* FAttributes::nextXmlAttributes(std::string_view key, const char* className) {
    auto* list = this->list<FObjectList>(key);
    const int32_t place = list ? list->step() : -1;
    auto* stored = place >= 0 ? cast<FXmlObject>(list->items[static_cast<size_t>(place)]) : nullptr;
    return stored && (!className || stored->isClass(className)) ? stored->getAttributes() : nullptr;
}

int32_t FAttributes::count(std::string_view key) const {
    const auto* list = this->list<FAttrList>(key);
    return list ? list->count() : 0;
}

void FAttributes::resetCursor(std::string_view key) {
    if (auto* list = this->list<FAttrList>(key))
        list->resetCursor();
}

void FAttributes::resetAllCursors() {
    for (int32_t i = 0; i < count(); ++i) {
        CmObject* object = at(i)->getObject();
        if (auto* list = cast<FAttrList>(object))
            list->resetCursor();
        if (auto* nested = cast<FAttributes>(object))
            nested->resetAllCursors();
        if (auto* nested = cast<FSubList>(object))
            for (const auto& item : nested->items)
                item->resetAllCursors();
    }
}

bool FAttributes::appendSavedObject(std::string_view key, CmObject* object, bool detach) {
    auto attributes = make<FAttributes>();
    if (!object || !object->storeAttributes(attributes.get()))
        return false;
    if (detach)
        attributes->detachObjects();
    return appendAttributes(key, std::move(attributes));
}

bool FAttributes::loadNextObject(std::string_view key, CmObject* object) {
    FAttributes* attributes = nextAttributes(key);
    return attributes && object && object->restoreAttributes(attributes);
}

} // namespace qorl
