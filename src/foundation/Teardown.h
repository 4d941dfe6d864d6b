#pragma once

#include <cstdint>

namespace qorl {

/// The order in which a program is taken down, from the first step to the last. This is the one place where
/// it stands: whoever owns something that goes at a step registers a `TeardownHook` for it beside its class.
enum class TeardownStep : uint8_t {
    clipboardData,    ///< The data object that we put on the clipboard.
    networkMessenger, ///< Threads and sockets stop.
    shutdownHooks,    ///< All hooks of the shutdown list.
    moduleManager,    ///< From here on no module is loaded.
    components,       ///< All modules are unloaded.
    windowManager,    ///< Layouts and workspaces are stored.
    skinManager,
    wizard,       ///< The builder and its documents.
    keyedRecords, ///< The table of records by two ids.
    scriptContext,
    scriptContextList,
    controller,        ///< Windows, schemes and the desktop.
    hookLists,         ///< What never ran is dropped.
    platformClipboard, ///< The clipboard and the platform's object services.
};

/// A step of the teardown, as a static record beside the class that needs it. Unlike start-up hooks these
/// stay: each teardown runs them, so they test what there is. Within a step the order is that of
/// registration.
class TeardownHook {
public:
    using Function = void (*)();

    TeardownHook(TeardownStep step, Function function);
    TeardownHook(const TeardownHook&) = delete;
    TeardownHook& operator=(const TeardownHook&) = delete;
    ~TeardownHook();

private:
    friend void runTeardown();

    TeardownStep step_;
    Function function_;
    TeardownHook* next_ = nullptr;
};

/// Runs all steps in their order. GUI thread.
void runTeardown();

} // namespace qorl
