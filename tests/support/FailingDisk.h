#pragma once

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>

namespace qorl {

/// What becomes of one call that changes the disk; `cutShort` and `tornWrite` are for writes, and count
/// these.
enum class DiskFault : uint8_t {
    error,     ///< it fails and changes nothing: the disk is full, or has a fault
    cutShort,  ///< a write takes half of its bytes; all later writes fail: the disk is full from there on
    crash,     ///< the program ends before the call
    tornWrite, ///< the program ends in the middle of a write: half of the bytes are written
    powerCut   ///< the program ends before the call, or behind its answer; files that were not flushed are
               ///< empty then, and names are as before that changed in a folder which was not flushed since
};

/// What the program's files are told to the disk with: `open` that makes a file, `write`, `fsync`,
/// `ftruncate`, `close` of what was written, `link`, `symlink`, `rename`, `unlink`, `mkdir`, `rmdir` and
/// their relatives. The programs of the tests are linked so that these calls of the library's objects pass
/// here.
namespace FailingDisk {

/// How a run ended.
struct Outcome {
    bool isMet = false;      ///< the call was reached
    bool hasCrashed = false; ///< the fault ended the program; else it answered
    bool hasLost = false;    ///< a power cut took changes of names back
    bool answer = false;
};

/// Which changes of names a power cut takes back behind those that stay: volumes differ in whether they keep
/// the order of changes.
enum class Loss : uint8_t { allLater, nextAlone };

/// Runs `prepare` and `operation` in a child process, in which the `nth` such call of `operation`, counted
/// from 1, meets `fault`. A child that ends in any other way fails the test. Of the changes of names that a
/// power cut could take back, the first `kept` stay.
Outcome run(int32_t nth, DiskFault fault, const std::function<bool()>& operation,
            const std::function<void()>& prepare = {}, size_t kept = 0, Loss loss = Loss::allLater);

/// Runs `check` in a child process that knows nothing of what was run before, and fails when it does.
void runAfresh(const std::function<void()>& check);

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
/// which none was met: `prepare()` and `operation`, which answers whether it succeeded, in a child process
/// that meets the fault, then `check(Outcome)` in another one, which looks at what a fresh start finds. A
/// power cut has a round for each number of the latest changes of names that it can take back, and for each
/// one alone.
template <typename Prepare, typename Operation, typename Check>
void failEachDiskCall(Prepare prepare, Operation operation, Check check) {
    constexpr int32_t most = 2000;
    const FailingDisk::WithoutFlushing withoutFlushing;
    constexpr struct {
        DiskFault fault;
        const char* name;
    } faults[] = {{DiskFault::error, "call that fails"},
                  {DiskFault::cutShort, "write that is cut short"},
                  {DiskFault::crash, "call that a crash forestalls"},
                  {DiskFault::tornWrite, "write that a crash tears"},
                  {DiskFault::powerCut, "call that a power cut forestalls"}};
    for (const auto& [fault, name] : faults)
        for (int32_t nth = 1;; ++nth) {
            FailingDisk::Outcome outcome;
            for (const auto loss : {FailingDisk::Loss::allLater, FailingDisk::Loss::nextAlone}) {
                if (loss == FailingDisk::Loss::nextAlone && fault != DiskFault::powerCut)
                    break;
                for (size_t kept = 0; kept == 0 || outcome.hasLost; ++kept) {
                    SCOPED_TRACE(::testing::Message()
                                 << name << ": the one at number " << nth << ", with " << kept
                                 << " changes of names that last"
                                 << (loss == FailingDisk::Loss::nextAlone ? ", and all but the next" : ""));
                    outcome = FailingDisk::run(nth, fault, operation, prepare, kept, loss);
                    FailingDisk::runAfresh([&] { check(outcome); });
                    if (::testing::Test::HasFailure())
                        return;
                }
            }
            if (!outcome.isMet) {
                EXPECT_TRUE(outcome.answer) << "without a fault it succeeds";
                EXPECT_TRUE(nth > 1 || fault != DiskFault::error) << "nothing was changed";
                break;
            }
            ASSERT_LT(nth, most) << "the operation never comes through";
        }
}

} // namespace qorl
