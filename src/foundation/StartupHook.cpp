#include "foundation/StartupHook.h"

#include <algorithm>

namespace qorl {

namespace {

/// Enough for all hooks of the library.
constexpr size_t firstRoom = 64;

constinit StartupHookList* startupHooks = nullptr;
constinit StartupHookList* shutdownHooks = nullptr;
constinit bool startupBegan = false;

void enter(StartupHookList*& list, const StartupHook& hook) {
    if (!list)
        list = new StartupHookList;
    list->add(hook);
}

/// Each is off the list before it runs: what a hook drops is dropped at once, and what it runs runs once.
const StartupHook* takeFirst(StartupHookList* list, int32_t level) {
    return list ? list->takeFirst(level) : nullptr;
}

void drop(StartupHookList*& list) {
    delete list;
    list = nullptr;
}

/// Frees the lists of a library that is unloaded without ever being entered.
struct HookListOwner {
    HookListOwner() {}
    ~HookListOwner() { dropHooks(); }
};
[[gnu::init_priority(102)]] HookListOwner owner;

} // namespace

StartupHook::StartupHook(const char* name, int32_t level, Function function)
    : StartupHook(name, level, function, Unlisted::record) {
    enter(startupHooks, *this);
}

ShutdownHook::ShutdownHook(const char* name, int32_t level, Function function)
    : StartupHook(name, level, function, Unlisted::record) {
    enter(shutdownHooks, *this);
}

StartupHookList::StartupHookList() {
    hooks_.reserve(firstRoom);
}

void StartupHookList::add(const StartupHook& hook) {
    const auto behind =
        std::upper_bound(hooks_.begin(), hooks_.end(), hook.level(),
                         [](int32_t level, const StartupHook* other) { return level < other->level(); });
    hooks_.insert(behind, &hook);
}

const StartupHook* StartupHookList::takeFirst(int32_t level) {
    if (hooks_.empty() || hooks_.front()->level() > level)
        return nullptr;
    const StartupHook* first = hooks_.front();
    hooks_.erase(hooks_.begin());
    return first;
}

bool runStartupHooks(int32_t level) {
    startupBegan = true;
    while (const StartupHook* hook = takeFirst(startupHooks, level)) {
        if (!hook->call()) {
            drop(startupHooks);
            return false;
        }
    }
    if (startupHooks && startupHooks->isEmpty())
        drop(startupHooks);
    return true;
}

void runShutdownHooks() {
    if (startupBegan)
        while (const StartupHook* hook = takeFirst(shutdownHooks, INT32_MAX))
            hook->call();
    drop(shutdownHooks);
}

void dropHooks() {
    drop(startupHooks);
    drop(shutdownHooks);
}

} // namespace qorl
