#pragma once

#include "foundation/CmObject.h"

namespace qorl {

/// An object whose attributes the defaults store keeps under the name of its class, from load to save. One
/// that is made when the load ends, or later, asks for its own by `FDefaultPool::restoreAutoSaver`.
class AutoSaver : public CmObject {
    QORL_CLASS(AutoSaver, CmObject)

public:
    AutoSaver();
    ~AutoSaver() override;
};

} // namespace qorl
