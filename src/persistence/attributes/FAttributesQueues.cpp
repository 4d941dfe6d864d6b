#include "foundation/Cast.h"
#include "persistence/attributes/AttributesWalk.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/attributes/StoredObject.h"

#include <new>

namespace qorl {

namespace {

/// The place of the next item; -1 at the end, and without a list.
int32_t nextPlace(FAttrList* list) {
    return list ? list->step() : -1;
}

/// Null instead of that.
template <typename List>
auto* nextItem(List* list) {
    const int32_t place = nextPlace(list);
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

bool FAttributes::appendObject(std::string_view key, Ref<CmObject> object) {
    const auto add = [&object](FObjectList& list) {
        if (list.kind() != FObjectList::Items::owned)
            return false;
        list.add(std::move(object));
        return true;
    };
    return object && addTo<FObjectList>(key, add, FObjectList::Items::owned);
}

bool FAttributes::appendWatched(std::string_view key, CmObject* object) {
    const auto add = [object](FObjectList& list) {
        if (list.kind() != FObjectList::Items::watched)
            return false;
        list.watch(object);
        return true;
    };
    return object && addTo<FObjectList>(key, add, FObjectList::Items::watched);
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
    for (int32_t place = nextPlace(list.get()); place >= 0; place = list->step()) {
        Ref<CmObject> object = StoredObject::live(retain(list->at(place)));
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
    for (int32_t place = nextPlace(list); place >= 0; place = list->step()) {
        auto* stored = cast<FXmlObject>(list->at(place));
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
    AttributesWalk walk;
    walk.add(retain(this));
    while (walk.next())
        for (int32_t i = 0; i < walk.attributes().count(); ++i) {
            CmObject* object = walk.attributes().at(i)->getObject();
            if (auto* list = cast<FAttrList>(object))
                list->resetCursor();
            walk.addNested(object);
        }
}

bool FAttributes::appendSavedObject(std::string_view key, CmObject* object, LiveObjects live) {
    auto attributes = make<FAttributes>();
    if (!object || !object->storeAttributes(attributes.get()))
        return false;
    if (live == LiveObjects::detached && !attributes->detachObjects())
        throw std::bad_alloc();
    return appendAttributes(key, std::move(attributes));
}

bool FAttributes::loadNextObject(std::string_view key, CmObject* object) {
    const Ref<FAttributes> attributes = retain(nextAttributes(key));
    return attributes && object && object->restoreAttributes(attributes.get());
}

} // namespace qorl
