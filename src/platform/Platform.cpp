#include "platform/Platform.h"

#include "platform/Clock.h"
#include "platform/DesktopServices.h"
#include "platform/System.h"
#include "platform/headless/HeadlessDesktop.h"
#include "platform/x11/X11Desktop.h"

#include <memory>
#include <mutex>

namespace qorl::platform {

namespace {

constinit DesktopServices* services = nullptr;

// The same for other threads: the one that is told here stands for as long as the lock is held.
constinit std::mutex sharedLock;
constinit DesktopServices* shared = nullptr;

void share(DesktopServices* desktop) {
    const std::lock_guard guard(sharedLock);
    shared = desktop;
}

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
    share(services);
    return services != nullptr;
}

bool start(DesktopServices* made) {
    if (services) {
        delete made;
        return false;
    }
    services = made;
    share(services);
    return services != nullptr;
}

void stop() {
    share(nullptr);
    // Windows that close last may still ask for the desktop.
    delete services;
    services = nullptr;
}

void wakeUp() {
    const std::lock_guard guard(sharedLock);
    if (shared)
        shared->wakeUp();
}

int64_t getTicks() {
    const std::lock_guard guard(sharedLock);
    return shared ? shared->getTicks() : getMonotonicMilliseconds();
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
