#include "foundation/StartupHook.h"

#include <algorithm>
#include <memory>
#include <utility>

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

std::vector<const StartupHook*> StartupHookList::take(int32_t level) {
    const auto end = std::find_if(hooks_.begin(), hooks_.end(),
                                  [level](const StartupHook* hook) { return hook->level() > level; });
    const std::vector<const StartupHook*> taken(hooks_.begin(), end);
    hooks_.erase(hooks_.begin(), end);
    return taken;
}

bool runStartupHooks(int32_t level) {
    startupBegan = true;
    if (!startupHooks)
        return true;
    // Taken off before they run, since a hook may end the program, which drops the list.
    bool goOn = true;
    for (const StartupHook* hook : startupHooks->take(level)) {
        goOn = hook->call();
        if (!goOn)
            break;
    }
    if (!goOn || (startupHooks && startupHooks->isEmpty()))
        drop(startupHooks);
    return goOn;
}

void runShutdownHooks() {
    const std::unique_ptr<StartupHookList> list(std::exchange(shutdownHooks, nullptr));
    if (!list || !startupBegan)
        return;
    for (const StartupHook* hook : list->take(INT32_MAX))
        hook->call();
}

void dropHooks() {
    drop(startupHooks);
    drop(shutdownHooks);
}

} // namespace qorl
