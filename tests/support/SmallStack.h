#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>

namespace qorl::testing {

/// Runs `work` to its end on a thread that has so many bytes of stack, as worker threads of hosts may.
inline void runOnStack(size_t bytes, std::function<void()> work) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
    const auto enter = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(&thread, &attributes, enter, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

} // namespace qorl::testing
