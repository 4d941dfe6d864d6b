#include "persistence/attributes/AttributesWalk.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"

#include <utility>

namespace qorl {

bool AttributesWalk::addNested(CmObject* part, size_t owner) {
    if (auto* nested = cast<FAttributes>(part)) {
        add(retain(nested), owner);
        return true;
    }
    const auto* lists = cast<FSubList>(part);
    if (!lists)
        return false;
    for (const auto& item : lists->items)
        add(item, owner);
    return true;
}

bool AttributesWalk::next() {
    while (!waiting_.empty()) {
        current_ = std::move(waiting_.back());
        waiting_.pop_back();
        FAttributeItems* items = current_.attributes->items();
        if (seen_.emplace(items, retain(items)).second)
            return true;
    }
    current_ = {};
    return false;
}

} // namespace qorl
