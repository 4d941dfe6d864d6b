#include "application/UController.h"

#include "application/UApplication.h"
#include "foundation/StartupHook.h"
#include "foundation/Teardown.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "platform/System.h"
#include "schemes/GlobalSchemes.h"
#include "windows/MenuPresenter.h"
#include "windows/UDesktop.h"

#include <new>
#include <string>

namespace qorl {

namespace {

constinit UController* theController = nullptr;

void destroyController() {
    if (theController)
        theController->release();
}

bool tellOfDeactivation(UWindow* window) {
    return theController->windowDeactivated(window);
}

const TeardownHook teardown{TeardownStep::controller, &destroyController};

} // namespace

UController* UController::instance() {
    return theController;
}

bool UController::startPlatform() {
    if (platform::desktop())
        return true;
    const bool expectsWindows = type_ != ApplicationType::library || platform::hasDisplay();
    std::string error;
    ownsPlatform_ =
        platform::start(expectsWindows ? platform::Backend::automatic : platform::Backend::headless, error);
    if (!ownsPlatform_)
        platform::debugOutput(error);
    return ownsPlatform_;
}

void UController::makeDesktop() try {
    desktop_ = make<UDesktop>();
    UDesktop::setDeactivationHook(&tellOfDeactivation);
} catch (const std::bad_alloc&) {
    if (ownsPlatform_)
        platform::stop();
    throw;
}

UController::UController(ApplicationType type) : type_(type) {
    if (startPlatform()) {
        makeDesktop();
    } else {
        loop_.stop();
        dropHooks();
    }
    // Last: one that is only half made is nobody's.
    theController = this;
}

UController::~UController() {
    runShutdownHooks();
    UDesktop::setDeactivationHook(nullptr);
    // It closes its windows and gives its cursors back, for which the platform's desktop has to stand.
    desktop_.reset();
    if (ownsPlatform_)
        platform::stop();
    GlobalSchemes::releaseAll();
    theController = nullptr;
}

bool UController::quit() {
    UApplication* application = UApplication::instance();
    if (application && !application->canQuit(0))
        return false;
    loop_.stop();
    return true;
}

void UController::redraw() {
    if (platform::DesktopServices* desktop = platform::desktop())
        desktop->flushAll();
}

uint32_t UController::currentModifiers() const {
    const platform::DesktopServices* desktop = platform::desktop();
    return desktop ? desktop->currentModifiers() : 0;
}

void UController::setMenuBar(UMenuBar* menuBar) {
    if (MenuPresenter* menus = MenuPresenter::current())
        menus->show(menuBar);
}

bool UController::windowDeactivated(UWindow* window) {
    UApplication* application = UApplication::instance();
    return !application || application->windowDeactivated(window);
}

} // namespace qorl
