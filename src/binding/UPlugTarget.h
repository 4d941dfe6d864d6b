#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/CmObject.h"

#include <qorl/IBoundValue.h>
#include <qorl/IPlugMessageTarget.h>

namespace qorl {

/// Stands between a value and a target that lives in another module.
///
/// Edits reach the raw interface as `IValueTarget::valueEdited`, edit brackets its `IValueEditTarget`. The
/// raw interface isn't counted: its component takes itself away from the value before it goes.
class UPlugTarget : public CmObject, public IPlugMessageTarget {
    QORL_CLASS(UPlugTarget, CmObject)
    QORL_FACES(UPlugTarget, CmObject, IPlugMessageTarget)

public:
    explicit UPlugTarget(Binding::IValueTarget* raw) : raw_(raw) {}

    void notify(CmObject* changedObject, int32_t message) override;
    /// The two edit brackets count as handled even when the component doesn't take them.
    int32_t handleMessage(FMessage* message) override;
    int32_t receiveMessage(FInterface* message) override;

private:
    Binding::IValueTarget* raw_;
};

} // namespace qorl
