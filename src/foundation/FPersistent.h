#pragma once

#include <qorl/FInterface.h>

namespace qorl {

class FAttributes;
class FUID;

/// An object, often foreign, that stores and restores itself and says by which class id it is created again.
class FPersistent : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{BA1A4637-3C9F-46D0-A65D-BA0EB85DA829}");

    virtual Result getClassId(FUID& classId) = 0;
    virtual Result store(FAttributes* attributes) = 0;
    virtual Result restore(FAttributes* attributes) = 0;

protected:
    ~FPersistent() = default;
};

} // namespace qorl
