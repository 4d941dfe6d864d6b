#pragma once

#include "application/UApplication.h"

namespace qorl {

/// The application behind the library's entry functions: no menus, no splash, no language of its own.
class UPluginApplication : public UApplication {
    QORL_CLASS(UPluginApplication, UApplication)

public:
    explicit UPluginApplication(const ApplicationArgs& args) : UApplication(args) {}
    /// Stores the settings before anything goes.
    ~UPluginApplication() override;

    /// Then the settings are loaded.
    bool runStartupHooks() override;
    void finishStartup() override;
    bool createSchemes() override;

    // The published table goes on.

    /// From an initialised to a started application. False when a hook refused, or the program is to quit.
    virtual bool startup();
    virtual void hook53();
};

} // namespace qorl
