#pragma once

#include <cstdint>

namespace qorl {

/// What operations across an object boundary answer. Nothing is ever thrown across one.
enum class Result : int32_t {
    ok = 0,
    no = 1, ///< A plain "false": the call was fine, the answer is no.
    notImplemented = static_cast<int32_t>(0x80004001),
    noInterface = static_cast<int32_t>(0x80004002),
    failure = static_cast<int32_t>(0x80004005),
    invalidArgument = static_cast<int32_t>(0x80070057),
};

} // namespace qorl
