#include "persistence/attributes/ReferenceBinder.h"

#include "foundation/Cast.h"
#include "persistence/attributes/FAttrList.h"

#include <algorithm>

namespace qorl {

namespace {

/// Strongly connected components of a graph (Tarjan 1972), without recursion: two numbers lie on one ring
/// when their components are equal.
class Rings {
public:
    explicit Rings(const std::vector<std::vector<size_t>>& leadsTo)
        : leadsTo_(leadsTo), order_(leadsTo.size()), low_(leadsTo.size()), component_(leadsTo.size()) {
        for (size_t node = 0; node < leadsTo.size(); ++node)
            if (order_[node] == 0)
                search(node);
    }

    bool isOneRing(size_t a, size_t b) const { return component_[a] == component_[b]; }

private:
    struct Step {
        size_t node;
        size_t next;
    };

    void open(size_t node) {
        order_[node] = low_[node] = ++count_;
        waiting_.push_back(node);
        way_.push_back({node, 0});
    }

    void search(size_t start) {
        open(start);
        while (!way_.empty()) {
            const size_t node = way_.back().node;
            if (way_.back().next == leadsTo_[node].size()) {
                close(node);
                continue;
            }
            const size_t next = leadsTo_[node][way_.back().next++];
            if (order_[next] == 0)
                open(next);
            else if (component_[next] == 0)
                low_[node] = std::min(low_[node], order_[next]);
        }
    }

    void close(size_t node) {
        way_.pop_back();
        if (!way_.empty())
            low_[way_.back().node] = std::min(low_[way_.back().node], low_[node]);
        if (low_[node] != order_[node])
            return;
        size_t member = node;
        do {
            member = waiting_.back();
            waiting_.pop_back();
            component_[member] = order_[node];
        } while (member != node);
    }

    const std::vector<std::vector<size_t>>& leadsTo_;
    // 0 is not yet.
    std::vector<size_t> order_;
    std::vector<size_t> low_;
    std::vector<size_t> component_;
    std::vector<size_t> waiting_;
    std::vector<Step> way_;
    size_t count_ = 0;
};

} // namespace

Ref<FXmlReference> ReferenceBinder::addReference(uint64_t id) {
    const auto& reference = references_.emplace_back(make<FXmlReference>(id));
    own_.insert(reference.get());
    return reference;
}

void ReferenceBinder::addInstance(Ref<FXmlInstance> instance) {
    byId_[instance->id()] = instance.get();
    own_.insert(instance.get());
    instances_.push_back(std::move(instance));
}

void ReferenceBinder::bind(const FAttributes& root) {
    if (references_.empty())
        return;
    leadsTo_.emplace_back();
    visit(root, 0);
    followReferences();
    for (const auto& instance : instances_) {
        enter(instance.get());
        followReferences();
    }
    const Rings rings(leadsTo_);
    for (const Place& place : places_) {
        if (!place.target)
            continue;
        // Each instance got its number where it is stored or first referred to, so that whoever is left to
        // hold another one has a lower number than it.
        const size_t target = numbers_[place.target];
        const bool closesRing = target <= place.owner && rings.isOneRing(target, place.owner);
        place.reference->bind(place.target,
                              closesRing ? FXmlReference::Binding::watch : FXmlReference::Binding::hold);
    }
}

void ReferenceBinder::visit(const FAttributes& attributes, size_t owner) {
    for (int32_t i = 0; i < attributes.count(); ++i)
        visitObject(attributes.at(i)->getObject(), owner);
}

void ReferenceBinder::visitObject(CmObject* object, size_t owner) {
    if (!object)
        return;
    if (const auto* nested = cast<FAttributes>(object)) {
        visit(*nested, owner);
    } else if (const auto* lists = cast<FSubList>(object)) {
        for (const auto& item : lists->items)
            visit(*item, owner);
    } else if (const auto* objects = cast<FObjectList>(object)) {
        for (CmObject* item : objects->items)
            visitObject(item, owner);
    } else if (own_.contains(object)) {
        if (auto* instance = cast<FXmlInstance>(object)) {
            const size_t number = enter(instance);
            leadsTo_[owner].push_back(number);
        } else if (auto* reference = cast<FXmlReference>(object)) {
            places_.push_back({reference, owner, nullptr});
        }
    }
}

size_t ReferenceBinder::enter(FXmlInstance* instance) {
    const auto [entry, isNew] = numbers_.emplace(instance, leadsTo_.size());
    const size_t number = entry->second;
    if (!isNew)
        return number;
    leadsTo_.emplace_back();
    if (const FAttributes* attributes = instance->getAttributes())
        visit(*attributes, number);
    return number;
}

void ReferenceBinder::followReferences() {
    // Entering an instance may find more of them.
    for (; followed_ < places_.size(); ++followed_) {
        const auto found = byId_.find(places_[followed_].reference->id());
        if (found == byId_.end())
            continue;
        places_[followed_].target = found->second;
        const size_t number = enter(found->second);
        leadsTo_[places_[followed_].owner].push_back(number);
    }
}

} // namespace qorl
