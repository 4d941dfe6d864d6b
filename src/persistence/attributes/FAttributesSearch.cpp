#include "foundation/Cast.h"
#include "persistence/attributes/AttributesFace.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/FXmlObject.h"

#include <set>
#include <utility>

namespace qorl {

namespace {

/// The attributes that stand for an entry's object: nested ones, or those of a stored object.
FAttributes* attributesOf(CmObject* object) {
    if (auto* nested = cast<FAttributes>(object))
        return nested;
    auto* instance = cast<FXmlInstance>(object);
    return instance ? instance->getAttributes() : nullptr;
}

/// The attributes that the item of a list stands for; null for an item without.
FAttributes* attributesOfItem(CmObject* list, int32_t place) {
    if (const auto* lists = cast<FSubList>(list))
        return lists->items[static_cast<size_t>(place)].get();
    auto* stored = cast<FXmlObject>(cast<FObjectList>(list)->at(place));
    return stored ? stored->getAttributes() : nullptr;
}

int32_t itemCount(CmObject* object) {
    const bool isSearched = cast<FSubList>(object) || cast<FObjectList>(object);
    return isSearched ? cast<FAttrList>(object)->count() : 0;
}

/// `path` behind its first part when that part is `key`.
std::string_view pathBelow(std::string_view path, std::string_view key) {
    const size_t bar = path.find('|');
    return bar != std::string_view::npos && path.substr(0, bar) == key ? path.substr(bar + 1) : path;
}

/// A search through nested attributes, depth first and in order.
class PathSearch {
public:
    PathSearch(const FAttributes& root, std::string_view path) { enter(&root, path); }

    /// Calls `isHit(entry, nested, path, shortened)` for each entry until it is true: `nested` are the
    /// attributes that stand for it, `shortened` is the path from this entry on.
    template <typename IsHit>
    bool run(IsHit isHit) {
        while (!way_.empty()) {
            if (goDown())
                continue;
            Step& step = way_.back();
            if (++step.entry >= step.attributes->count()) {
                way_.pop_back();
                continue;
            }
            step.item = 0;
            const FStringIDAttribute& entry = *step.attributes->at(step.entry);
            FAttributes* nested = attributesOf(entry.getObject());
            const std::string_view whole = step.path;
            step.path = pathBelow(whole, entry.key());
            if (isHit(entry, nested, whole, step.path))
                return true;
            if (nested)
                enter(nested, step.path);
        }
        return false;
    }

private:
    struct Step {
        const FAttributes* attributes;
        std::string_view path;
        int32_t entry = -1;
        int32_t item = 0;
    };

    /// Into the next item of the list that the search stands at.
    bool goDown() {
        Step& step = way_.back();
        const FStringIDAttribute* entry = step.attributes->at(step.entry);
        CmObject* list = entry ? entry->getObject() : nullptr;
        if (!list || step.item >= itemCount(list))
            return false;
        if (const FAttributes* nested = attributesOfItem(list, step.item++))
            enter(nested, step.path);
        return true;
    }

    /// What has been searched for the same path holds no hit; stored objects may lead round in a ring.
    void enter(const FAttributes* attributes, std::string_view path) {
        if (attributes->items() && searched_.emplace(attributes->items(), path.size()).second)
            way_.push_back({attributes, path});
    }

    std::vector<Step> way_;
    // A path is known by its length: it only loses its front.
    std::set<std::pair<const FAttributeItems*, size_t>> searched_;
};

} // namespace

FAttributes* FAttributes::findAttributes(std::string_view path) const {
    FAttributes* found = nullptr;
    PathSearch(*this, path)
        .run([&found](const FStringIDAttribute& entry, FAttributes* nested, std::string_view whole,
                      std::string_view) {
            found = entry.key() == whole ? nested : nullptr;
            return found != nullptr;
        });
    return found;
}

bool FAttributes::findValue(std::string_view path, FAttributeVariant& value) const {
    value = {};
    return PathSearch(*this, path)
        .run([&value](const FStringIDAttribute& entry, FAttributes*, std::string_view,
                      std::string_view shortened) {
            return !entry.isObject() && entry.key() == shortened && describe(entry, value);
        });
}

} // namespace qorl
