#pragma once

#include "foundation/threads/FThread.h"

namespace qorl {

/// Stands for the thread on which the application was initialised. It owns no thread and starts none.
class GuiThread : public FThread {
public:
    /// Takes the calling thread.
    GuiThread();
    ~GuiThread() override;

    uint32_t run() override { return 0; }
};

} // namespace qorl
