#pragma once

#include "persistence/archive/FCompactArchive.h"
#include "persistence/streams/FMemoryStream.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace qorl::testing {

/// The bytes that `object` stores, without its class.
inline std::string written(CmObject& object) {
    FMemoryStream stream;
    FCompactArchive archive(stream, FObjectArchive::Direction::storing);
    EXPECT_TRUE(object.writeTo(&archive));
    return std::string(stream.bytes());
}

/// What `object` answers when it reads them.
inline bool read(CmObject& object, std::string_view bytes) {
    FMemoryStream stream(bytes);
    FCompactArchive archive(stream, FObjectArchive::Direction::reading);
    return object.readFrom(&archive);
}

/// That `object` refuses the bytes wherever they are cut off.
inline void expectCutsRefused(CmObject& object, std::string_view bytes) {
    for (size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(read(object, bytes.substr(0, length))) << "cut behind byte " << length;
}

} // namespace qorl::testing
