#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/CmObject.h"

#include <qorl/IBoundValue.h>

namespace qorl {

/// The second face of `UPlugTarget`, by which a message target of another module is told from an ordinary
/// object.
class IPlugMessageTarget : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{47082185-6D5D-4217-928D-E11DB0418A03}");

    /// `message` answers the attribute interface of messages. 1 when handled.
    virtual int32_t receiveMessage(FInterface* message) = 0;
};

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
