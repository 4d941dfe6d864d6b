#pragma once

#include "persistence/streams/FMemoryStream.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>

namespace qorl {

/// A stream that owns these bytes and stands before them.
inline Ref<FMemoryStream> memoryOf(std::string_view bytes) {
    auto memory = make<FMemoryStream>();
    memory->write(bytes.data(), static_cast<int64_t>(bytes.size()));
    memory->rewind();
    return memory;
}

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

struct SeekRow {
    int64_t offset;
    int32_t mode;
    int64_t place;
};

/// One after the other, each from where the one before led.
inline void expectSeeks(FStream& stream, std::initializer_list<SeekRow> rows) {
    for (const SeekRow& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.offset << " from " << row.mode);
        EXPECT_EQ(stream.seek(row.offset, row.mode), row.place);
        EXPECT_TRUE(row.place < 0 || stream.tell() == row.place) << stream.tell();
    }
}

} // namespace qorl
