#pragma once

#include "persistence/streams/FStream.h"

#include <algorithm>
#include <string>

namespace qorl {

/// What one read of `count` bytes gives; nothing when it fails.
inline std::string readUpTo(FStream& stream, int64_t count) {
    std::string bytes(static_cast<size_t>(count), '?');
    bytes.resize(static_cast<size_t>(std::max<int64_t>(stream.read(bytes.data(), count), 0)));
    return bytes;
}

/// All that is left of a stream, or "nothing" where there is none.
inline std::string contentOf(FStream* stream) {
    std::string bytes;
    for (char byte = 0; stream && stream->read(&byte, 1) == 1;)
        bytes += byte;
    return stream ? bytes : "nothing";
}

} // namespace qorl
