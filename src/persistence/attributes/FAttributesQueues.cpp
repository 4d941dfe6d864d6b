#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/attributes/StoredObject.h"

#include <new>
#include <unordered_set>

namespace qorl {

namespace {

/// The item behind the cursor; null at the end, and without a list.
template <typename List>
auto* nextItem(List* list) {
    const int32_t place = list ? list->step() : -1;
    return place >= 0 ? &list->items[static_cast<size_t>(place)] : nullptr;
}

} // namespace

template <typename List>
List* FAttributes::list(std::string_view key) const {
    const auto* found = find(key);
    return found ? cast<List>(found->getObject()) : nullptr;
}

/// Calls `add` with the list of `key`, or with a new one, which stays when that was true.
template <typename List, typename Add, typename... Arguments>
bool FAttributes::addTo(std::string_view key, Add add, Arguments... arguments) {
    if (const auto* found = find(key)) {
        auto* list = cast<List>(found->getObject());
        return list && add(*list);
    }
    const auto made = make<List>(arguments...);
    if (!add(*made))
        return false;
    append(key).setObject(made.get(), Hold::retain);
    return true;
}

bool FAttributes::appendInteger(std::string_view key, int64_t value) {
    return addTo<FIntList>(key, [value](FIntList& list) {
        list.items.push_back(value);
        return true;
    });
}

bool FAttributes::appendFloat(std::string_view key, double value) {
    return addTo<FFloatList>(key, [value](FFloatList& list) {
        list.items.push_back(value);
        return true;
    });
}

bool FAttributes::appendString(std::string_view key, const ConstString& text) {
    const auto add = [&text](FStringList& list) {
        if (list.wide != text.isWide())
            return false;
        list.items.push_back(FAttributeValue::copyOf(text));
        return true;
    };
    return addTo<FStringList>(key, add, text.isWide());
}

bool FAttributes::appendObject(std::string_view key, CmObject* object, bool owned) {
    const auto add = [object, owned](FObjectList& list) {
        if (list.owned != owned)
            return false;
        list.items.push_back(object);
        if (owned)
            object->addRef();
        return true;
    };
    if (!object || !addTo<FObjectList>(key, add, owned))
        return false;
    // The list has a reference of its own by now.
    if (owned)
        object->release();
    return true;
}

bool FAttributes::appendAttributes(std::string_view key, Ref<FAttributes> attributes) {
    return attributes && addTo<FSubList>(key, [&attributes](FSubList& list) {
               list.items.push_back(attributes);
               return true;
           });
}

bool FAttributes::nextInteger(std::string_view key, int64_t& value) {
    const auto* item = nextItem(list<FIntList>(key));
    if (item)
        value = *item;
    return item != nullptr;
}

bool FAttributes::nextFloat(std::string_view key, double& value) {
    const auto* item = nextItem(list<FFloatList>(key));
    if (item)
        value = *item;
    return item != nullptr;
}

bool FAttributes::nextText(std::string_view key, ConstString& text) {
    const auto* item = nextItem(list<FStringList>(key));
    if (item)
        text = *item;
    return item != nullptr;
}

Ref<CmObject> FAttributes::nextObject(std::string_view key, const char* className) {
    const Ref<FObjectList> list = retain(this->list<FObjectList>(key));
    while (CmObject* const* item = nextItem(list.get())) {
        Ref<CmObject> object = StoredObject::live(retain(*item));
        if (object && (!className || object->isTypeOf(className, true)))
            return object;
    }
    return nullptr;
}

FAttributes* FAttributes::nextAttributes(std::string_view key) {
    const auto* item = nextItem(list<FSubList>(key));
    return item ? item->get() : nullptr;
}

FAttributes* FAttributes::nextXmlAttributes(std::string_view key, const char* className) {
    auto* list = this->list<FObjectList>(key);
    while (CmObject* const* item = nextItem(list)) {
        auto* stored = cast<FXmlObject>(*item);
        if (!stored || (className && !stored->isClass(className)))
            continue;
        if (FAttributes* attributes = stored->getAttributes())
            return attributes;
    }
    return nullptr;
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
    std::vector<FAttributes*> waiting{this};
    // Live attributes may stand in each other.
    std::unordered_set<const FAttributeItems*> seen;
    while (!waiting.empty()) {
        FAttributes& attributes = *waiting.back();
        waiting.pop_back();
        if (!seen.insert(attributes.items()).second)
            continue;
        for (int32_t i = 0; i < attributes.count(); ++i) {
            CmObject* object = attributes.at(i)->getObject();
            if (auto* list = cast<FAttrList>(object))
                list->resetCursor();
            if (auto* nested = cast<FAttributes>(object))
                waiting.push_back(nested);
            else if (const auto* lists = cast<FSubList>(object))
                for (const auto& item : lists->items)
                    waiting.push_back(item.get());
        }
    }
}

bool FAttributes::appendSavedObject(std::string_view key, CmObject* object, bool detach) {
    auto attributes = make<FAttributes>();
    if (!object || !object->storeAttributes(attributes.get()))
        return false;
    if (detach && !attributes->detachObjects())
        throw std::bad_alloc();
    return appendAttributes(key, std::move(attributes));
}

bool FAttributes::loadNextObject(std::string_view key, CmObject* object) {
    const Ref<FAttributes> attributes = retain(nextAttributes(key));
    return attributes && object && object->restoreAttributes(attributes.get());
}

} // namespace qorl
