#include "views/AncestorDependents.h"

#include "foundation/Cast.h"
#include "foundation/containers/CmArray.h"
#include "persistence/attributes/FAttributes.h"
#include "views/UView.h"

#include <vector>

namespace qorl {

namespace {

CmContainer* dependentsOf(UView& view, const AncestorKind& kind) {
    FAttributes* attributes = view.peekAttributes();
    if (!attributes)
        return nullptr;
    // The attributes keep the container.
    return cast<CmContainer>(attributes->getObject(kind.attribute).get());
}

void enter(UView& view, UView* parent, const AncestorKind& kind) {
    UView* entry = &view;
    for (UView* node = parent; node; node = node->getParent()) {
        CmContainer* dependents = dependentsOf(*node, kind);
        if (!dependents) {
            dependents = new CmArray;
            node->getAttributes().setObject(kind.attribute, dependents, FAttributes::Hold::adopt);
        }
        if (!dependents->containsSame(entry))
            dependents->add(entry);
        if (node->hasFlag(kind.wants | kind.relays))
            return;
        node->setFlag(kind.relays, true);
        entry = node;
    }
}

void leave(UView& view, UView* parent, const AncestorKind& kind) {
    UView* entry = &view;
    for (UView* node = parent; node; node = node->getParent()) {
        CmContainer* dependents = dependentsOf(*node, kind);
        if (!dependents)
            return;
        dependents->remove(entry);
        if (!dependents->isEmpty())
            return;
        node->getAttributes().remove(kind.attribute);
        if (node->hasFlag(kind.wants) || !node->hasFlag(kind.relays))
            return;
        node->setFlag(kind.relays, false);
        entry = node;
    }
}

} // namespace

void enterAncestorDependents(UView& view, UView* parent) {
    for (const AncestorKind* kind : {&ancestorSize, &ancestorMove})
        if (view.hasFlag(kind->wants))
            enter(view, parent, *kind);
}

void leaveAncestorDependents(UView& view, UView* parent) {
    if (!parent)
        return;
    // By the marks of the parent: the view may not want to hear of it any more.
    for (const AncestorKind* kind : {&ancestorSize, &ancestorMove})
        if (parent->hasFlag(kind->wants | kind->relays))
            leave(view, parent, *kind);
}

void forEachAncestorDependent(UView& view, const AncestorKind& kind,
                              const std::function<void(UView&)>& visit) {
    CmContainer* container = dependentsOf(view, kind);
    if (!container)
        return;
    std::vector<Ref<UView>> dependents;
    dependents.reserve(static_cast<size_t>(container->count()));
    for (int32_t i = 0; i < container->count(); ++i)
        dependents.push_back(retain(cast<UView>(container->at(i))));
    for (const Ref<UView>& dependent : dependents)
        // Who heard of it before may have taken this one away, and the container with the last one.
        if (const CmContainer* left = dependentsOf(view, kind); left && left->containsSame(dependent.get()))
            visit(*dependent);
}

} // namespace qorl
