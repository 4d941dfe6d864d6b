#pragma once

#include "persistence/attributes/FAttributes.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace qorl {

/// A walk through attributes and those nested in them, in which each list of entries comes once: live
/// attributes may stand in each other, and share their entries. Depth takes no stack.
///
///     AttributesWalk walk;
///     walk.add(retain(&root));
///     while (walk.next())
///         for (int32_t i = 0; i < walk.attributes().count(); ++i)
///             walk.addNested(walk.attributes().at(i)->getObject());
///
/// Entries may come and go meanwhile: it holds the lists that came and what is still to come, and must go
/// before a root that stands on the stack. What finds no memory throws `std::bad_alloc`.
class AttributesWalk {
public:
    /// They wait for their turn, the last ones first. `owner` is whose they are, for who has to know.
    void add(Ref<FAttributes> attributes, size_t owner = 0) {
        waiting_.push_back({std::move(attributes), owner});
    }
    /// Attributes, or those of a list of attributes. False, and nothing added, for any other object.
    bool addNested(CmObject* part, size_t owner = 0);

    /// Goes on to the next ones; false when there are none any more.
    bool next();
    FAttributes& attributes() const { return *current_.attributes; }
    size_t owner() const { return current_.owner; }

private:
    struct Step {
        Ref<FAttributes> attributes;
        size_t owner;
    };

    Step current_{};
    std::vector<Step> waiting_;
    // Held until the end, since an address that is free again would name another list.
    std::unordered_map<const FAttributeItems*, Ref<FAttributeItems>> seen_;
};

} // namespace qorl
