#include "components/MountableComponents.h"

#include "foundation/Cast.h"
#include "persistence/mounts/FMountTable.h"

namespace qorl {

namespace {

bool canMount(const FComponentDescription& component) {
    return component.getCategory() == ConstString(FMountTable::componentCategory);
}

Ref<FInterface> createMounter(CmObject* component) {
    auto* description = cast<FComponentDescription>(component);
    return description && description->isAvailable() ? description->createRaw(false) : nullptr;
}

} // namespace

void MountableComponents::componentAdded(FComponentDescription* component) {
    if (auto* table = canMount(*component) ? FMountTable::instance() : nullptr)
        table->addComponent(retain<CmObject>(component), &createMounter);
}

void MountableComponents::componentRemoved(FComponentDescription* component) {
    if (auto* table = canMount(*component) ? FMountTable::instance() : nullptr)
        table->removeComponent(component);
}

} // namespace qorl
