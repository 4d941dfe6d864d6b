#include "application/GuiThread.h"

namespace qorl {

GuiThread::GuiThread() : FThread("GUI") {
    priority_ = defaultPriority;
    started_ = true;
    handle_ = platform::openCurrentThread();
    threadId_ = platform::currentThreadId();
}

GuiThread::~GuiThread() {
    // The handle was opened by this class, so it goes here and not with the base.
    platform::closeThread(handle_);
    handle_ = 0;
}

} // namespace qorl
