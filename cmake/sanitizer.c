// Settings of the sanitizers, linked into every program of a sanitized build, so that a program started by
// hand behaves as one started by CTest.

#define _GNU_SOURCE
#include <pthread.h>
#include <time.h>

#define SETTING __attribute__((visibility("default"), used))

SETTING const char* __asan_default_options(void);
SETTING const char* __ubsan_default_options(void);
SETTING const char* __tsan_default_options(void);
SETTING const char* __lsan_default_suppressions(void);

const char* __asan_default_options(void) {
    return "detect_leaks=1:detect_stack_use_after_return=1:check_initialization_order="
           "1:"
           "print_suppressions=0";
}

const char* __ubsan_default_options(void) {
    return "print_stacktrace=1:halt_on_error=1";
}

const char* __tsan_default_options(void) {
    return "halt_on_error=1:second_deadlock_stack=1";
}

// Caches that live as long as the process.
const char* __lsan_default_suppressions(void) {
    return "leak:libfontconfig\nleak:libpango\n";
}

#if __has_feature(thread_sanitizer)
// The runtime of clang 14 knows the timed join against the real-time clock only; a thread joined by this one
// would stay in its books.
SETTING int pthread_clockjoin_np(pthread_t thread, void** result, clockid_t clock,
                                 const struct timespec* end) {
    struct timespec now, real;
    clock_gettime(clock, &now);
    clock_gettime(CLOCK_REALTIME, &real);
    const long long nanoseconds = (end->tv_sec - now.tv_sec) * 1000000000LL + end->tv_nsec - now.tv_nsec +
                                  real.tv_sec * 1000000000LL + real.tv_nsec;
    const struct timespec deadline = {.tv_sec = (time_t)(nanoseconds / 1000000000),
                                      .tv_nsec = (long)(nanoseconds % 1000000000)};
    return pthread_timedjoin_np(thread, result, &deadline);
}
#endif
