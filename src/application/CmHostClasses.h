#pragma once

#include "foundation/CmObject.h"

#include <qorl/HostClasses.h>

namespace qorl {

/// The object that hosts talk to. It is static and lives as long as the library, so nothing counts it.
class CmHostClasses : public IHostClasses, public IHostSettings, public CmObject {
    QORL_CLASS(CmHostClasses, CmObject)

public:
    static CmHostClasses& instance();

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }

    Result createInstance(const InterfaceId& classId, void** out) override;
    Result setHostValue(const char* key, const char* value) override;
    const char* getHostValue(const char* key) override;
};

} // namespace qorl
