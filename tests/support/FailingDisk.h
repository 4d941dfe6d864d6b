#pragma once

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>

namespace qorl {

/// What becomes of one call that changes the disk.
enum class DiskFault : uint8_t {
    error,     ///< it fails and changes nothing: the disk is full, or has a fault
    cutShort,  ///< a write takes half of its bytes; all later writes fail: the disk is full from there on
    crash,     ///< the program ends before the call
    tornWrite, ///< the program ends in the middle of the call: half of the bytes are written
    powerCut   ///< the program ends before the call; files that were not flushed are empty then, and folders
               ///< gone that were made in one that was not flushed since
};

/// What the program's files are told to the disk with: `open` that may make a file, `write`, `fsync`,
/// `ftruncate`, `close`, `link`, `symlink`, `rename`, `unlink`, `mkdir`, `rmdir` and their relatives. The
/// programs of the tests are linked so that these calls of the library's objects pass here.
namespace FailingDisk {

/// How a run ended.
struct Outcome {
    bool isMet = false;      ///< the call was reached
    bool hasCrashed = false; ///< the fault ended the program; else it answered
    bool answer = false;
};

/// Runs `operation` in a child process, in which the `nth` such call, counted from 1, meets `fault`. A child
/// that ends in any other way fails the test.
Outcome run(int32_t nth, DiskFault fault, const std::function<bool()>& operation);

/// Runs `operation` in a child process, and lets the power go when it has answered.
Outcome runToPowerCut(const std::function<bool()>& operation);

/// While it lives, files are not really flushed, which takes long and shows only when the power is cut.
class WithoutFlushing {
public:
    WithoutFlushing();
    WithoutFlushing(const WithoutFlushing&) = delete;
    ~WithoutFlushing();
};

/// While it lives the volume knows no hard links.
class WithoutLinks {
public:
    WithoutLinks();
    WithoutLinks(const WithoutLinks&) = delete;
    ~WithoutLinks();
};

} // namespace FailingDisk

/// For each fault, and for the first call that changes the disk, the second, and so on, up to the round in
/// which none was met: `prepare()`, then `operation`, which answers whether it succeeded, in a child process
/// that meets the fault, then `check(Outcome)`, which looks at what a fresh start finds.
template <typename Prepare, typename Operation, typename Check>
void failEachDiskCall(Prepare prepare, Operation operation, Check check) {
    constexpr int32_t most = 2000;
    const FailingDisk::WithoutFlushing withoutFlushing;
    constexpr struct {
        DiskFault fault;
        const char* name;
    } faults[] = {{DiskFault::error, "fails"},
                  {DiskFault::cutShort, "is cut short"},
                  {DiskFault::crash, "is not reached"},
                  {DiskFault::tornWrite, "is torn by a crash"},
                  {DiskFault::powerCut, "is not reached for a power cut"}};
    for (const auto& [fault, name] : faults)
        for (int32_t nth = 1;; ++nth) {
            SCOPED_TRACE(::testing::Message() << "call " << nth << " of the disk " << name);
            prepare();
            const FailingDisk::Outcome outcome = FailingDisk::run(nth, fault, operation);
            check(outcome);
            if (::testing::Test::HasFailure())
                return;
            if (!outcome.isMet) {
                EXPECT_TRUE(outcome.answer) << "without a fault it succeeds";
                EXPECT_GT(nth, 1) << "nothing was written";
                break;
            }
            ASSERT_LT(nth, most) << "the operation never comes through";
        }
}

} // namespace qorl
