#pragma once

#include <qorl/InterfaceId.h>
#include <qorl/Result.h>

namespace qorl {

/// The root of every interface. The three operations stand in the first three slots of every object.
///
/// Threading: `addRef` and `release` may be called on any thread, for any object.
class FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{00000000-0000-0000-C000-000000000046}");

    /// Stores the face of this object that answers to `id` in `out`, with one reference for the caller.
    /// `Result::noInterface`, and null in `out`, when there is none.
    virtual Result queryInterface(const InterfaceId& id, void** out) = 0;

    /// Returns the new count.
    virtual uint32_t addRef() = 0;

    /// Returns the remaining count, 0 when the object went.
    virtual uint32_t release() = 0;

protected:
    ~FInterface() = default;
};

} // namespace qorl
