#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <new>
#include <type_traits>

namespace qorl {

/// Makes one allocation of the code under test fail, so that a test sees what an operation tells when memory
/// runs out.
///
/// Counts what the calling thread asks of `operator new`, `malloc`, `calloc` and `realloc` from the objects
/// linked into the test program; the insides of shared libraries and other threads are left alone. Usually
/// driven by `failEachAllocation`.
class FailingAllocation {
public:
    /// The `nth` allocation, counted from 1, is the one to fail.
    explicit FailingAllocation(int64_t nth) : left_(nth) {}
    FailingAllocation(const FailingAllocation&) = delete;

    /// Runs `operation` and counts its allocations; those before and behind it are not counted. Gives its
    /// result. An exception that it lets out fails the test and gives a default value.
    template <typename Operation>
    std::invoke_result_t<Operation> during(Operation operation);
    /// The same for an operation that tells of it by `std::bad_alloc`. Whether it came to its end.
    template <typename Operation>
    bool completes(Operation operation);
    /// Whether the allocation was reached.
    bool hasFailed() const { return left_ <= 0; }

private:
    struct Armed {
        explicit Armed(int64_t& left);
        ~Armed();
    };

    int64_t left_;
};

/// Calls `round(FailingAllocation&)` with the first allocation failing, then with the second, and so on, up
/// to the round in which none failed any more. Each round sets its objects up anew, runs the operation in
/// `during`, and checks either its success or, when `hasFailed`, that it told of the failure and left its
/// object alone.
template <typename Round>
void failEachAllocation(Round round) {
    constexpr int64_t most = 10000;
    for (int64_t nth = 1; nth <= most; ++nth) {
        SCOPED_TRACE(::testing::Message() << "allocation " << nth << " to fail");
        FailingAllocation allocation(nth);
        round(allocation);
        if (!allocation.hasFailed())
            return;
    }
    ADD_FAILURE() << "the operation makes more than " << most << " allocations";
}

template <typename Operation>
std::invoke_result_t<Operation> FailingAllocation::during(Operation operation) {
    try {
        const Armed armed(left_);
        return operation();
    } catch (const std::bad_alloc&) {
        ADD_FAILURE() << "the operation let std::bad_alloc out";
    }
    return std::invoke_result_t<Operation>();
}

template <typename Operation>
bool FailingAllocation::completes(Operation operation) {
    try {
        const Armed armed(left_);
        operation();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace qorl
