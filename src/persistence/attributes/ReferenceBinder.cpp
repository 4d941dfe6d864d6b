#include "persistence/attributes/ReferenceBinder.h"

#include "foundation/Cast.h"
#include "persistence/attributes/AttributesWalk.h"
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
    addUnnamed(std::move(instance));
}

void ReferenceBinder::addUnnamed(Ref<FXmlInstance> instance) {
    own_.insert(instance.get());
    instances_.push_back(std::move(instance));
}

/// Finds where references and instances stand and who leads to whom, and binds them.
class ReferenceBinder::Run {
public:
    explicit Run(const ReferenceBinder& binder) : binder_(binder) {}

    void bind(FAttributes& root);

private:
    /// Where an object stands. Places of attributes have numbers: 0 for the root, others for instances.
    struct Place {
        FAttributes* attributes;
        /// Within a list of objects, if it stands there.
        FObjectList* list;
        int32_t index;
        size_t owner;

        void put(Ref<CmObject> object) const;
    };
    struct ReferencePlace {
        FXmlReference* reference;
        size_t owner;
        FXmlInstance* target;
    };
    struct InstancePlace {
        FXmlInstance* instance;
        Place place;
    };

    void visitWaiting();
    void visitObject(CmObject* object, const Place& place);
    size_t enter(FXmlInstance* instance);
    void followReferences();

    const ReferenceBinder& binder_;
    std::unordered_map<const FXmlInstance*, size_t> numbers_;
    std::vector<std::vector<size_t>> leadsTo_;
    std::vector<ReferencePlace> referencePlaces_;
    std::vector<InstancePlace> instancePlaces_;
    AttributesWalk walk_;
    size_t followed_ = 0;
};

void ReferenceBinder::bind(FAttributes& root) {
    if (!references_.empty())
        Run(*this).bind(root);
}

void ReferenceBinder::Run::bind(FAttributes& root) {
    leadsTo_.emplace_back();
    walk_.add(retain(&root));
    visitWaiting();
    followReferences();
    for (const auto& instance : binder_.instances_) {
        enter(instance.get());
        visitWaiting();
        followReferences();
    }
    const Rings rings(leadsTo_);
    // Each instance got its number where it is stored or first referred to, so that whoever is left to hold
    // another one has a lower number than it.
    const auto closesRing = [this, &rings](const FXmlInstance* target, size_t owner) {
        const size_t number = numbers_[target];
        return number <= owner && rings.isOneRing(number, owner);
    };
    // First, so that no ring is left closed when memory runs out.
    for (const auto& [instance, place] : instancePlaces_) {
        if (!closesRing(instance, place.owner))
            continue;
        auto reference = make<FXmlReference>(instance->id());
        reference->bind(instance, FXmlReference::Binding::watch);
        place.put(std::move(reference));
    }
    for (const auto& place : referencePlaces_)
        if (place.target)
            place.reference->bind(place.target, closesRing(place.target, place.owner)
                                                    ? FXmlReference::Binding::watch
                                                    : FXmlReference::Binding::hold);
}

void ReferenceBinder::Run::Place::put(Ref<CmObject> object) const {
    if (list)
        list->replace(index, std::move(object));
    else
        attributes->at(index)->replaceObject(object.get(), FAttributeValue::Hold::retain);
}

void ReferenceBinder::Run::visitWaiting() {
    while (walk_.next()) {
        FAttributes& attributes = walk_.attributes();
        const size_t owner = walk_.owner();
        for (int32_t i = 0; i < attributes.count(); ++i) {
            CmObject* object = attributes.at(i)->getObject();
            if (walk_.addNested(object, owner))
                continue;
            auto* objects = cast<FObjectList>(object);
            if (!objects)
                visitObject(object, {&attributes, nullptr, i, owner});
            for (int32_t item = 0; objects && item < objects->count(); ++item)
                visitObject(objects->at(item), {&attributes, objects, item, owner});
        }
    }
}

void ReferenceBinder::Run::visitObject(CmObject* object, const Place& place) {
    if (!object || !binder_.own_.contains(object))
        return;
    if (auto* instance = cast<FXmlInstance>(object)) {
        const size_t number = enter(instance);
        leadsTo_[place.owner].push_back(number);
        instancePlaces_.push_back({instance, place});
    } else if (auto* reference = cast<FXmlReference>(object)) {
        referencePlaces_.push_back({reference, place.owner, nullptr});
    }
}

size_t ReferenceBinder::Run::enter(FXmlInstance* instance) {
    const auto [entry, isNew] = numbers_.emplace(instance, leadsTo_.size());
    const size_t number = entry->second;
    if (!isNew)
        return number;
    leadsTo_.emplace_back();
    if (FAttributes* attributes = instance->getAttributes())
        walk_.add(retain(attributes), number);
    return number;
}

void ReferenceBinder::Run::followReferences() {
    // Entering an instance may find more of them.
    for (; followed_ < referencePlaces_.size(); ++followed_) {
        const auto found = binder_.byId_.find(referencePlaces_[followed_].reference->id());
        if (found == binder_.byId_.end())
            continue;
        referencePlaces_[followed_].target = found->second;
        const size_t number = enter(found->second);
        leadsTo_[referencePlaces_[followed_].owner].push_back(number);
        visitWaiting();
    }
}

} // namespace qorl
