#include "platform/Platform.h"

#include "platform/DesktopServices.h"
#include "platform/System.h"
#include "platform/headless/HeadlessDesktop.h"
#include "platform/x11/X11Desktop.h"

#include <atomic>
#include <memory>

namespace qorl::platform {

namespace {

// Other threads ask for the time and wake the user interface.
constinit std::atomic<DesktopServices*> services{nullptr};
constinit DpiAwareness dpiAwareness = DpiAwareness::none;

/// Empty when the environment names none.
std::string displayName() {
    std::string display;
    getEnvironment("DISPLAY", display);
    return display;
}

std::unique_ptr<DesktopServices> createX11(std::string& error) {
    const std::string display = displayName();
    if (display.empty()) {
        error = "no display: the environment variable DISPLAY is not set";
        return nullptr;
    }
    return X11Desktop::create(display, error);
}

} // namespace

bool start(Backend backend, std::string& error) {
    const std::string_view wanted = backend == Backend::headless ? "headless" : "x11";
    if (const DesktopServices* running = services) {
        if (running->getName() == wanted)
            return true;
        error = "a desktop is running already: " + std::string(running->getName());
        return false;
    }
    std::unique_ptr<DesktopServices> made;
    if (backend == Backend::headless)
        made = std::make_unique<HeadlessDesktop>();
    else
        made = createX11(error);
    services = made.release();
    return services != nullptr;
}

bool start(DesktopServices* made) {
    if (services) {
        delete made;
        return false;
    }
    services = made;
    return services != nullptr;
}

void stop() {
    // Windows that close last may still ask for the desktop.
    delete services.load();
    services = nullptr;
}

DesktopServices* desktop() {
    return services;
}

bool hasDisplay() {
    return !displayName().empty();
}

void setDpiAwareness(DpiAwareness awareness) {
    dpiAwareness = awareness;
}

DpiAwareness getDpiAwareness() {
    return dpiAwareness;
}

} // namespace qorl::platform
