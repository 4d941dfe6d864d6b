#pragma once

#include "application/SkinAttempt.h"

#include <new>

namespace qorl {

/// Loads the last skin beside the start of a program. Made and finished on the user-interface thread.
class SkinLoaderThread : public FThread {
public:
    SkinLoaderThread(UApplication& application, UApplication::Errors errors)
        : FThread("FThread"), application_(application), attempt_(application), errors_(errors) {}

    uint32_t run() override {
        bool loaded = false;
        try {
            loaded = attempt_.loadLast();
        } catch (const std::bad_alloc&) {
            // Told like any other skin that can't be had.
        }
        application_.skinThreadState_ = loaded ? UApplication::skinLoadedState : UApplication::skinFailed;
        return 0;
    }

    void finish() {
        join();
        attempt_.finish(errors_);
    }

private:
    UApplication& application_;
    SkinAttempt attempt_;
    UApplication::Errors errors_;
};

} // namespace qorl
