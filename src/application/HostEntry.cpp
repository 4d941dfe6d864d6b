// The two functions that the library exports.
#include "application/CmHostClasses.h"
#include "application/UPluginApplication.h"

#include <memory>
#include <new>
#include <utility>

namespace {

constinit qorl::UPluginApplication* application = nullptr;
constinit int32_t users = 0;

bool startApplication() {
    try {
        qorl::ApplicationArgs args;
        args.type = qorl::ApplicationType::library;
        // The settings lie in a folder of this name.
        if (!args.name.string().assign8("qorl-frame"))
            return false;
        auto made = std::make_unique<qorl::UPluginApplication>(args);
        made->init(args);
        application = made.release();
        return application->startup();
    } catch (const std::bad_alloc&) {
        // Nobody can use what is only half started; the next call starts afresh.
        delete std::exchange(application, nullptr);
        return false;
    }
}

} // namespace

extern "C" {

/// Null when the start failed. A further call then gives the object without trying again, but for a start
/// that found no memory.
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
