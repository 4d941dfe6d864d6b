#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// A receiver of messages that lives in another module. GUI thread.
class IPlugMessageTarget : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{47082185-6D5D-4217-928D-E11DB0418A03}");

    /// `message` answers `IMessageAttributes`. 1 when handled.
    virtual int32_t receiveMessage(FInterface* message) = 0;

protected:
    ~IPlugMessageTarget() = default;
};

} // namespace qorl
