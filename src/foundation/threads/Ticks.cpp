#include "foundation/threads/Ticks.h"

#include "foundation/messages/EventLoop.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "platform/Threads.h"

namespace qorl {

uint32_t getTicks() {
    return static_cast<uint32_t>(platform::getTicks());
}

void sleep(uint32_t milliseconds) {
    platform::DesktopServices* desktop = EventLoop::isGuiThread() ? platform::desktop() : nullptr;
    if (desktop)
        desktop->sleep(milliseconds);
    else
        platform::sleepThread(milliseconds);
}

} // namespace qorl
