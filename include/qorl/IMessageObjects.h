#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// The objects among a message's attributes, for other modules that keep what they get.
///
/// `IMessageAttributes` shows the same objects; there they carry no reference. Threading: as the message, one
/// thread at a time.
class IMessageObjects : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{E5A422B4-66DB-4C45-8D56-DE2DCB29A40A}");

    /// Takes a reference of its own; null removes the attribute.
    virtual Result storeObject(const char* key, FInterface* object) = 0;
    /// With one reference for the caller. `Result::no`, and null, when there is no object under the key.
    virtual Result fetchObject(const char* key, FInterface** object) = 0;
    /// `Result::no`, and nothing removed, when there is no object under the key.
    virtual Result removeObject(const char* key) = 0;

protected:
    ~IMessageObjects() = default;
};

} // namespace qorl
