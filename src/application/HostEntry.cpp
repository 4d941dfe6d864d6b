// The two functions that the library exports.
#include "application/CmHostClasses.h"
#include "application/UPluginApplication.h"

#include <new>

namespace {

constinit qorl::UPluginApplication* application = nullptr;
constinit int32_t users = 0;

bool startApplication() {
    try {
        qorl::ApplicationArgs args;
        args.type = qorl::ApplicationType::library;
        args.name = qorl::CmString("qorl-frame");
        application = new qorl::UPluginApplication(args);
        application->init(args);
        return application->startup();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

extern "C" {

/// Null when the start failed. A further call then gives the object without trying again.
[[gnu::visibility("default")]] qorl::IHostClasses* GetHostClasses() {
    if (!application && !startApplication())
        return nullptr;
    ++users;
    return &qorl::CmHostClasses::instance();
}

/// The last user's call takes everything down.
[[gnu::visibility("default")]] void TerminateModule() {
    if (users-- != 1)
        return;
    if (!application) {
        qorl::tearDownApplication();
        return;
    }
    delete application;
    application = nullptr;
}
}
