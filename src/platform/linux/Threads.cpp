#include "platform/Threads.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <features.h>
#include <iterator>
#include <limits>
#include <new>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/resource.h>
#include <sys/single_threaded.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>
#if defined(__GLIBC__)
#include <gnu/libc-version.h>
#include <link.h>
#endif

namespace qorl::platform {

constinit const char* const detail::singleThreadMark = &__libc_single_threaded;

namespace {

/// What a handle points to. Shared by the holder of the handle and the running thread; the last one deletes
/// it.
struct ThreadRecord {
    ThreadBody body = nullptr;
    void* argument = nullptr;
    pthread_t thread = {};
    std::atomic<pid_t> id = 0;
    std::atomic<int> owners = 1;
    std::atomic<bool> isTerminated = false;
    bool isForeign = false; ///< not started here: cannot be joined
    std::mutex joinLock;    ///< while it is held, nobody else joins the thread
    std::atomic<bool> isJoined = false;
    sem_t released = {};
    sem_t ended = {};

    ThreadRecord() {
        sem_init(&released, 0, 0);
        sem_init(&ended, 0, 0);
    }
    ~ThreadRecord() {
        sem_destroy(&released);
        sem_destroy(&ended);
    }
};

thread_local constinit ThreadRecord* ownRecord = nullptr;

void releaseRecord(ThreadRecord* record) {
    if (--record->owners == 0)
        delete record;
}

ThreadRecord* toRecord(ThreadHandle handle) {
    return reinterpret_cast<ThreadRecord*>(handle);
}

void* enterThread(void* argument) {
    auto* record = static_cast<ThreadRecord*>(argument);
    while (sem_wait(&record->released) != 0) {}
    ownRecord = record;
    record->id = static_cast<pid_t>(syscall(SYS_gettid));
    record->id.notify_all();
    const uint32_t code = record->body(record->argument);
    // From here on the thread ends by itself: a signal that comes now finds nothing to end.
    ownRecord = nullptr;
    sem_post(&record->ended);
    releaseRecord(record);
    return reinterpret_cast<void*>(static_cast<uintptr_t>(code));
}

timespec deadlineAfter(int64_t milliseconds) {
    timespec deadline = {};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += milliseconds / 1000;
    deadline.tv_nsec += (milliseconds % 1000) * 1'000'000;
    if (deadline.tv_nsec >= 1'000'000'000) {
        ++deadline.tv_sec;
        deadline.tv_nsec -= 1'000'000'000;
    }
    return deadline;
}

bool waitForEnd(ThreadRecord& record, int64_t milliseconds) {
    const timespec deadline = deadlineAfter(std::max<int64_t>(milliseconds, 0));
    for (;;) {
        const int result = milliseconds < 0 ? sem_wait(&record.ended)
                                            : sem_clockwait(&record.ended, CLOCK_MONOTONIC, &deadline);
        if (result == 0)
            break;
        if (errno != EINTR)
            return false;
    }
    // The thread tells its end once; each waiter passes it on to the next.
    sem_post(&record.ended);
    return true;
}

/// Nobody tells the end of a thread that was not started here, but its number goes.
bool waitForForeignEnd(const ThreadRecord& record, int64_t milliseconds) {
    constexpr int64_t step = 10;
    for (;;) {
        if (syscall(SYS_tgkill, getpid(), record.id.load(), 0) != 0 && errno == ESRCH)
            return true;
        if (milliseconds == 0)
            return false;
        const int64_t pause = milliseconds < 0 ? step : std::min(milliseconds, step);
        sleepThread(pause);
        milliseconds -= milliseconds < 0 ? 0 : pause;
    }
}

/// False once the thread is joined: then its `pthread_t` may be another one's.
bool signalThread(ThreadRecord& record, int signal) {
    const std::lock_guard guard(record.joinLock);
    return !record.isJoined && pthread_kill(record.thread, signal) == 0;
}

/// The handler of the signal is the process's, so one termination at a time.
constinit std::mutex terminationLock;
constinit thread_local uint32_t ownThreadId = 0;

/// Set for the last attempt.
constinit std::atomic<bool> mayEndAnywhere = false;

#if defined(__GLIBC__) && defined(__x86_64__)

/// The code of the C library, in which a thread may hold the allocator's lock or another one that the whole
/// process needs.
struct CodeRange {
    uintptr_t begin = 0;
    uintptr_t end = 0;
};
constinit CodeRange libraryCode;

void findLibraryCode() {
    const auto visit = [](dl_phdr_info* object, size_t, void*) {
        const auto inside = reinterpret_cast<uintptr_t>(&gnu_get_libc_version);
        for (int i = 0; i < object->dlpi_phnum; ++i) {
            const auto& segment = object->dlpi_phdr[i];
            const uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
            if (segment.p_type == PT_LOAD && inside >= begin && inside < begin + segment.p_memsz) {
                libraryCode = {begin, begin + segment.p_memsz};
                return 1;
            }
        }
        return 0;
    };
    dl_iterate_phdr(visit, nullptr);
}

/// Whether the thread was interrupted within the C library, but for its waits in the kernel: those end behind
/// the instruction of a system call with "interrupted". Other system calls are made under locks, such as the
/// allocator's to get more memory.
bool mayHoldLibraryLock(const void* context) {
    const auto& registers = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
    const auto at = static_cast<uintptr_t>(registers[REG_RIP]);
    if (at < libraryCode.begin + 2 || at >= libraryCode.end)
        return false;
    const auto* code = reinterpret_cast<const uint8_t*>(at);
    const bool isBehindSyscall = code[-2] == 0x0F && code[-1] == 0x05;
    return !(isBehindSyscall && registers[REG_RAX] == -EINTR);
}

#else

void findLibraryCode() {}
bool mayHoldLibraryLock(const void*) {
    return false;
}

#endif

/// Ends the calling thread in the kernel, with nothing unwound; a later signal tries again where it would
/// leave a lock of the C library behind.
void endCallingThread(int, siginfo_t*, void* context) {
    if (!ownRecord || (!mayEndAnywhere && mayHoldLibraryLock(context)))
        return;
    ownRecord->isTerminated = true;
    sem_post(&ownRecord->ended);
    syscall(SYS_exit, 0);
}

/// The nice value for a relative priority; the system has no other scale that an ordinary process may use.
int toNice(int32_t priority) {
    struct Row {
        int32_t priority;
        int nice;
    };
    static constexpr Row rows[] = {{-15, 19}, {-2, 10}, {-1, 5}, {0, 0}, {1, -5}, {2, -10}, {15, -20}};
    const auto* row = std::lower_bound(std::begin(rows), std::end(rows), priority,
                                       [](const Row& r, int32_t value) { return r.priority < value; });
    return row == std::end(rows) ? -20 : row->nice;
}

/// The nice value of the first thread of a process is that of the process, too. What we gave to it is no
/// class of the process; a value that differs from it comes from outside and is.
struct FirstThread {
    std::mutex lock;
    int processNice = 0;
    int given = noNice;

    static constexpr int noNice = 20; // beyond the range
};
constinit FirstThread firstThread;

/// With `firstThread.lock` held.
int getProcessNice() {
    const int nice = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    return nice == firstThread.given ? firstThread.processNice : nice;
}

/// The nice value nearest to `wanted` that the system grants to a thread of ours, which may always stay as it
/// is.
int grantedNice(id_t id, int wanted) {
    rlimit limit = {};
    getrlimit(RLIMIT_NICE, &limit);
    const int lowest = 20 - static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 40));
    return std::min(getpriority(PRIO_PROCESS, id), std::max(wanted, lowest));
}

struct StackBounds {
    bool isAsked = false;
    uintptr_t low = 0;
    uintptr_t high = 0;
};
/// For the first thread it takes files to find them out.
thread_local constinit StackBounds ownStack = {};

StackBounds askStackBounds() {
    StackBounds bounds{.isAsked = true};
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return bounds;
    void* start = nullptr;
    size_t size = 0;
    if (pthread_attr_getstack(&attributes, &start, &size) == 0) {
        bounds.low = reinterpret_cast<uintptr_t>(start);
        bounds.high = bounds.low + size;
    }
    pthread_attr_destroy(&attributes);
    return bounds;
}

/// Slots carry the number of their use, so that a value left by an earlier use of the number is not seen.
constexpr int32_t slotCount = 64;

struct SlotValue {
    uint32_t use;
    void* value;
};

constinit std::mutex slotLock;
constinit std::atomic<uint32_t> slotUses[slotCount] = {};
constinit bool isSlotTaken[slotCount] = {};
thread_local constinit SlotValue slotValues[slotCount] = {};

} // namespace

int64_t getStackLeft() {
    if (!ownStack.isAsked)
        ownStack = askStackBounds();
    const auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    const bool isKnown = here >= ownStack.low && here < ownStack.high;
    return isKnown ? static_cast<int64_t>(here - ownStack.low) : std::numeric_limits<int64_t>::max();
}

bool startThread(ThreadBody body, void* argument, const char* name, ThreadHandle& handle) {
    auto* record = new (std::nothrow) ThreadRecord;
    if (!record)
        return false;
    record->body = body;
    record->argument = argument;
    record->owners = 2;
    handle = reinterpret_cast<ThreadHandle>(record);
    if (pthread_create(&record->thread, nullptr, enterThread, record) != 0) {
        delete record;
        handle = 0;
        return false;
    }
    char shortName[16] = {};
    for (size_t i = 0; name && i < sizeof shortName - 1 && name[i]; ++i)
        shortName[i] = name[i];
    pthread_setname_np(record->thread, shortName);
    sem_post(&record->released);
    return true;
}

bool joinThread(ThreadHandle handle, int64_t milliseconds) {
    ThreadRecord* record = toRecord(handle);
    if (!record)
        return false;
    if (record->isForeign)
        return waitForForeignEnd(*record, milliseconds);
    if (!waitForEnd(*record, milliseconds))
        return false;
    const std::lock_guard guard(record->joinLock);
    if (record->isJoined)
        return true;
    // A terminated thread is never joined: the next one on its stack would inherit its thread-specific data.
    if (!record->isTerminated)
        pthread_join(record->thread, nullptr);
    record->isJoined = true;
    return true;
}

bool terminateThread(ThreadHandle handle) {
    ThreadRecord* record = toRecord(handle);
    if (!record || record->isForeign || record == ownRecord)
        return false;
    // Before it has told its id a thread does not know its record, which the signal's handler needs.
    record->id.wait(0);
    const std::lock_guard guard(terminationLock);
    if (joinThread(handle, 0))
        return true;
    const int signal = SIGRTMAX - 1;
    struct sigaction action = {};
    struct sigaction earlier = {};
    action.sa_sigaction = endCallingThread;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    findLibraryCode();
    if (sigaction(signal, &action, &earlier) != 0)
        return false;
    bool hasEnded = false;
    constexpr int attempts = 500; // of a millisecond each
    for (int i = 0; i < attempts && !hasEnded; ++i) {
        signalThread(*record, signal);
        hasEnded = joinThread(handle, 1);
    }
    if (!hasEnded) {
        mayEndAnywhere = true;
        signalThread(*record, signal);
        hasEnded = joinThread(handle, 1000);
        mayEndAnywhere = false;
    }
    // A signal that is still on its way must not meet the default action, which ends the process.
    if (!hasEnded) {
        earlier = {};
        earlier.sa_handler = SIG_IGN;
    }
    sigaction(signal, &earlier, nullptr);
    if (hasEnded && record->isTerminated)
        releaseRecord(record);
    return hasEnded;
}

void closeThread(ThreadHandle handle) {
    ThreadRecord* record = toRecord(handle);
    if (!record)
        return;
    if (!record->isForeign && !record->isJoined)
        pthread_detach(record->thread);
    releaseRecord(record);
}

ThreadHandle openCurrentThread() {
    auto* record = new (std::nothrow) ThreadRecord;
    if (!record)
        return 0;
    record->thread = pthread_self();
    record->id = static_cast<pid_t>(syscall(SYS_gettid));
    record->isForeign = true;
    return reinterpret_cast<ThreadHandle>(record);
}

bool isCurrentThread(ThreadHandle handle) {
    const ThreadRecord* record = toRecord(handle);
    if (!record)
        return false;
    return record->isForeign ? pthread_equal(record->thread, pthread_self()) != 0 : record == ownRecord;
}

uint32_t currentThreadId() {
    if (ownThreadId == 0)
        ownThreadId = static_cast<uint32_t>(syscall(SYS_gettid));
    return ownThreadId;
}

uint32_t getThreadId(ThreadHandle handle) {
    ThreadRecord* record = toRecord(handle);
    if (!record)
        return 0;
    record->id.wait(0);
    return static_cast<uint32_t>(record->id);
}

bool setThreadPriority(ThreadHandle handle, int32_t priority) {
    ThreadRecord* record = toRecord(handle);
    if (!record || record->isJoined)
        return false;
    const auto id = static_cast<id_t>(getThreadId(handle));
    const std::lock_guard guard(firstThread.lock);
    const int processNice = getProcessNice();
    int nice = std::clamp(processNice + toNice(priority), -20, 19);
    if (setpriority(PRIO_PROCESS, id, nice) != 0) {
        nice = grantedNice(id, nice);
        if (setpriority(PRIO_PROCESS, id, nice) != 0)
            return false;
    }
    if (id == static_cast<id_t>(getpid())) {
        firstThread.processNice = processNice;
        firstThread.given = nice;
    }
    return true;
}

PriorityClass getPriorityClass() {
    const std::lock_guard guard(firstThread.lock);
    return getProcessNice() == 0 ? PriorityClass::normal : PriorityClass::other;
}

void sleepThread(int64_t milliseconds) {
    if (milliseconds <= 0) {
        sched_yield();
        return;
    }
    const timespec deadline = deadlineAfter(milliseconds);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {}
}

void Event::set() {
    const std::lock_guard guard(mutex_);
    isSet_ = true;
    // Told under the lock: a waiter may delete the event as soon as it returns.
    if (kind_ == Reset::automatic)
        condition_.notify_one();
    else
        condition_.notify_all();
}

void Event::reset() {
    const std::lock_guard guard(mutex_);
    isSet_ = false;
}

bool Event::wait(int64_t milliseconds) {
    std::unique_lock guard(mutex_);
    const auto isSet = [this] { return isSet_; };
    // The clock counts nanoseconds; a century is for ever.
    constexpr int64_t longest = int64_t{100} * 365 * 24 * 60 * 60 * 1000;
    milliseconds = std::min(milliseconds, longest);
    if (milliseconds < 0)
        condition_.wait(guard, isSet);
    else if (!condition_.wait_for(guard, std::chrono::milliseconds(milliseconds), isSet))
        return false;
    if (kind_ == Reset::automatic)
        isSet_ = false;
    return true;
}

int32_t allocateThreadSlot() {
    const std::lock_guard guard(slotLock);
    for (int32_t slot = 0; slot < slotCount; ++slot) {
        if (isSlotTaken[slot])
            continue;
        isSlotTaken[slot] = true;
        ++slotUses[slot];
        return slot;
    }
    return -1;
}

void freeThreadSlot(int32_t slot) {
    if (slot < 0 || slot >= slotCount)
        return;
    const std::lock_guard guard(slotLock);
    isSlotTaken[slot] = false;
}

void setThreadSlot(int32_t slot, void* value) {
    if (slot >= 0 && slot < slotCount)
        slotValues[slot] = {slotUses[slot], value};
}

void* getThreadSlot(int32_t slot) {
    if (slot < 0 || slot >= slotCount || slotValues[slot].use != slotUses[slot])
        return nullptr;
    return slotValues[slot].value;
}

} // namespace qorl::platform
