#pragma once

#include "platform/Threads.h"

#include <functional>
#include <gtest/gtest.h>
#include <utility>

namespace qorl::testing {

/// A thread of the platform that runs a test's body; its handle is closed with the scope.
class PlatformThread {
public:
    static constexpr int64_t generous = 30'000; ///< milliseconds, for a busy machine

    explicit PlatformThread(std::function<void()> body, const char* name = "test") : body_(std::move(body)) {
        EXPECT_TRUE(platform::startThread(&run, this, name, handle_));
    }
    ~PlatformThread() { platform::closeThread(handle_); }
    PlatformThread(const PlatformThread&) = delete;
    PlatformThread& operator=(const PlatformThread&) = delete;

    platform::ThreadHandle handle() const { return handle_; }
    bool ends(int64_t milliseconds = generous) const { return platform::joinThread(handle_, milliseconds); }

private:
    static uint32_t run(void* self) {
        static_cast<PlatformThread*>(self)->body_();
        return 0;
    }

    std::function<void()> body_;
    platform::ThreadHandle handle_ = 0;
};

} // namespace qorl::testing
