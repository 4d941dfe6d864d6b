#pragma once

#include <cstdlib>
#include <memory>

namespace qorl::platform {

struct SystemTextDeleter {
    void operator()(char* text) const { std::free(text); }
};

/// A text that a call of the C library allocated.
using SystemText = std::unique_ptr<char, SystemTextDeleter>;

} // namespace qorl::platform
