#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace qorl::platform {

namespace detail {
extern const char* const singleThreadMark;
}

/// Whether the calling thread is the only one of this process, as far as the C library can tell. It takes the
/// mark away where a thread is started, by whomever and before the new one runs; so a true answer holds until
/// the caller itself starts one, which then sees all that the caller has written.
inline bool isSingleThreaded() {
    return *detail::singleThreadMark != 0;
}

/// A thread of the system: opaque, 0 is none.
using ThreadHandle = uintptr_t;

/// Body of a thread. The result is its exit code.
using ThreadBody = uint32_t (*)(void* argument);

/// Starts a thread that calls `body(argument)`; at most the first 15 bytes of `name` show in a debugger. The
/// thread does not run before this function has stored `handle`, so the body may use it. False when the
/// system refuses.
bool startThread(ThreadBody body, void* argument, const char* name, ThreadHandle& handle);

/// Waits for the thread's end for at most `milliseconds`, without limit if negative. True when it ended, also
/// when asked again or by several threads at once; the handle stays valid until `closeThread`. The end of a
/// thread that was not started here is seen within a hundredth of a second.
bool joinThread(ThreadHandle handle, int64_t milliseconds);

/// Ends the thread where it stands, by a signal whose handler leaves the kernel's thread: no forced
/// termination but this one needs nothing of the code that the thread runs.
///
/// Nothing is unwound. What stays behind for the life of the process: the thread's stack, every lock that it
/// holds, and whatever it had allocated or half changed. For half a second the end is put off as long as the
/// thread stands within the C library, where it may hold the allocator's lock (glibc on x86-64 only); then it
/// is ended anywhere. So this is for a thread that does not answer, before its process ends or its work is
/// given up. Where no thread is to be lost, its code looks at a flag and returns.
///
/// True when the thread has ended, by this or by itself. False for the calling thread, for one that was not
/// started here, and for one that the system does not interrupt within a further second, which then goes on.
/// One at a time: a second caller waits.
bool terminateThread(ThreadHandle handle);

/// Gives the handle up. The thread goes on if it still runs.
void closeThread(ThreadHandle handle);

/// A handle for the calling thread, also for one that was not started here; to be closed.
ThreadHandle openCurrentThread();

/// Whether the handle is the calling thread's.
bool isCurrentThread(ThreadHandle handle);

/// The number by which the system's tools know the calling thread, and the thread of a handle. The latter
/// waits until a thread that was just started has one.
uint32_t currentThreadId();
uint32_t getThreadId(ThreadHandle handle);

/// Priorities relative to the class of the process: -15 idle, -2 lowest, -1 below normal, 0 normal, 1 above
/// normal, 2 highest, 15 time critical. Raising needs rights; the nearest priority that the system grants is
/// taken, at worst the one that the thread has. False for a thread that has ended.
bool setThreadPriority(ThreadHandle handle, int32_t priority);

enum class PriorityClass : uint8_t {
    normal,
    other ///< the process runs raised or lowered against others
};

/// The class of this process at the moment: as it was started or changed from outside. What
/// `setThreadPriority` gives to the process's first thread does not count.
PriorityClass getPriorityClass();

/// Bytes of stack below its caller that the calling thread has left, for what calls itself as often as data
/// say. The largest number there is on a stack that the system doesn't know, such as a fibre's.
int64_t getStackLeft();

/// Real time, on any thread. The user-interface thread uses `DesktopServices::sleep`.
void sleepThread(int64_t milliseconds);

enum class Reset : uint8_t {
    automatic, ///< a wait that succeeds clears it
    manual     ///< stays set until `reset`
};

/// A flag that threads wait for. Threading: all operations from any thread.
class Event {
public:
    enum class State : uint8_t { clear, set };

    explicit Event(Reset kind, State state = State::clear) : kind_(kind), isSet_(state == State::set) {}

    void set();
    void reset();

    /// True when it was set within `milliseconds`; negative waits without limit, 0 only looks.
    bool wait(int64_t milliseconds = -1);

private:
    std::mutex mutex_;
    std::condition_variable condition_;
    Reset kind_;
    bool isSet_;
};

/// Thread-local words by number. At most 64 at a time; -1 when all are taken. A fresh slot reads null on
/// every thread, also when its number was used before.
int32_t allocateThreadSlot();
void freeThreadSlot(int32_t slot);
void setThreadSlot(int32_t slot, void* value);
void* getThreadSlot(int32_t slot);

} // namespace qorl::platform
