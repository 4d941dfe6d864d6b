#pragma once

#include <cstdlib>

namespace qorl {

/// For `std::unique_ptr`: owns a block from `malloc`.
struct FreeBlock {
    void operator()(void* block) const noexcept { std::free(block); }
};

} // namespace qorl
