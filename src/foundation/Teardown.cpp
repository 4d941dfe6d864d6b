#include "foundation/Teardown.h"

namespace qorl {

namespace {

constinit TeardownHook* firstHook = nullptr;

} // namespace

TeardownHook::TeardownHook(TeardownStep step, Function function) : step_(step), function_(function) {
    TeardownHook** link = &firstHook;
    while (*link && (*link)->step_ <= step)
        link = &(*link)->next_;
    next_ = *link;
    *link = this;
}

TeardownHook::~TeardownHook() {
    TeardownHook** link = &firstHook;
    while (*link && *link != this)
        link = &(*link)->next_;
    if (*link)
        *link = next_;
}

void runTeardown() {
    for (const TeardownHook* hook = firstHook; hook; hook = hook->next_)
        hook->function_();
}

} // namespace qorl
