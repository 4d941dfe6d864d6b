#pragma once

#include <cstdint>
#include <vector>

namespace qorl {

/// A step of the start-up or of the shutdown, written beside the class that needs it:
///
///     static StartupHook hook{"UKeyCode", StartupHook::ready, &registerKeyNames};
///     static ShutdownHook bye{"UCursor", StartupHook::ready, &dropCursors};
///
/// A record enters its list in the static initialisers. The list is sorted by level; within a level the order
/// of registration stays, on which nothing may rely.
class StartupHook {
public:
    /// The levels in use. 0 runs before the defaults store loads, those up to 99 behind it, 100 at the end.
    enum Level : int32_t { early = 0, prepared = 25, ready = 50, lastOfMain = 99, finish = 100 };

    /// True to go on with the start-up. The result of a shutdown step isn't used.
    using Function = bool (*)();

    StartupHook(const char* name, int32_t level, Function function);
    StartupHook(const StartupHook&) = delete;
    StartupHook& operator=(const StartupHook&) = delete;

    const char* name() const { return name_; }
    int32_t level() const { return level_; }
    bool call() const { return function_(); }

protected:
    enum class Unlisted { record };
    StartupHook(const char* name, int32_t level, Function function, Unlisted)
        : name_(name), level_(level), function_(function) {}

private:
    const char* name_;
    int32_t level_;
    Function function_;
};

class ShutdownHook : public StartupHook {
public:
    ShutdownHook(const char* name, int32_t level, Function function);
};

/// Hooks sorted by level; within a level in the order in which they came. Records are not owned. GUI thread.
class StartupHookList {
public:
    StartupHookList();

    void add(const StartupHook& hook);
    /// Takes the first hook off the list; null when the list is empty or its first hook lies above `level`.
    const StartupHook* takeFirst(int32_t level);
    bool isEmpty() const { return hooks_.empty(); }

private:
    std::vector<const StartupHook*> hooks_;
};

/// Runs the start-up hooks up to `level`, each once; true when the list is gone. A hook that fails ends the
/// walk with false, and the list goes. From the first call on the shutdown hooks are armed. A hook may itself
/// run further hooks or drop the lists: what it ran doesn't run again, and what it dropped doesn't run.
bool runStartupHooks(int32_t level);

/// Runs all shutdown hooks, if a start-up ever began, and drops their list in any case.
void runShutdownHooks();

/// What is dropped stays gone until the library is loaded again. Ends a walk that is under way.
void dropHooks();

} // namespace qorl
