#pragma once

#include "application/UApplication.h"

#include <new>

namespace qorl {

/// Loads the last skin beside the start of a program.
class SkinLoaderThread : public FThread {
public:
    SkinLoaderThread(UApplication& application, UApplication::Errors errors)
        : FThread("FThread"), application_(application), errors_(errors) {}

    uint32_t run() override {
        bool loaded = false;
        try {
            loaded = application_.loadLastSkin(errors_);
        } catch (const std::bad_alloc&) {
            // Told like any other skin that can't be had.
        }
        application_.skinThreadState_ = loaded ? UApplication::skinLoadedState : UApplication::skinFailed;
        return 0;
    }

private:
    UApplication& application_;
    UApplication::Errors errors_;
};

} // namespace qorl
