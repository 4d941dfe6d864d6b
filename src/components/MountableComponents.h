#pragma once

#include "components/FComponentRegistry.h"

namespace qorl {

/// Enters the components that can mount files in the `FMountTable`, as the registry gets to know them.
class MountableComponents : public ComponentListener {
public:
    void componentAdded(FComponentDescription* component) override;
    void componentRemoved(FComponentDescription* component) override;
    void componentsLoaded() override {}
};

} // namespace qorl
