#pragma once

#include "foundation/text/CmString.h"

namespace qorl {

/// How an application is started and in which form it lives.
enum class ApplicationType : int32_t {
    windowsMenu = 0, ///< A program whose Windows menu has "Close All", "Minimize All" and "Restore All".
    windowMenus = 1, ///< A program whose windows carry their own menus.
    library = 3,     ///< The shared library in a host's process.
};

/// What the application's constructor and its `init` are given. `infoA` and `infoB` are the program's own.
struct ApplicationArgs {
    ApplicationType type = ApplicationType::windowsMenu;
    CmString name;
    CmString infoA;
    CmString infoB;
    CmString folderName;
};

/// Who is running, for everyone in the process.
struct ApplicationInfo {
    String applicationName{"Uninitialized"};
    String infoA{"Uninitialized"};
    String infoB{"Uninitialized"};
    String companyName{"Uninitialized"};

    /// The one record.
    static const ApplicationInfo& get();
    /// Fills it, as 16-bit text; only the first call that finds memory for it has an effect. Throws
    /// std::bad_alloc.
    static void fillOnce(const ConstString& name, const ConstString& infoA, const ConstString& infoB,
                         const ConstString& company);
};

} // namespace qorl
