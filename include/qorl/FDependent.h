#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// An object that hears the changes of others.
class FDependent : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{F52B7AAE-DE72-416D-8AF1-8ACE9DD7BD5E}");

    /// Common change numbers. A class may use its own beside them.
    static constexpr int32_t objectChanged = 1;
    static constexpr int32_t objectDestroyed = 2; ///< Forget the object: it is about to go.

    /// `changed` has changed in the manner that `message` says. Runs on the thread of the change.
    virtual void update(FInterface* changed, int32_t message) = 0;

protected:
    ~FDependent() = default;
};

} // namespace qorl
