#include "persistence/files/StoringStream.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(StoringStream, TellsTheFirstFailure) {
    platform::File full;
    ASSERT_FALSE(full.open("/dev/full", platform::openWrite));
    StoringStream stream(full);
    char byte = 0;
    EXPECT_EQ(stream.write(&byte, 1), -1);
    EXPECT_EQ(stream.read(&byte, 1), -1);
    EXPECT_EQ(stream.error().code, ENOSPC) << "not that it can't be read";
    EXPECT_FALSE(stream.isValid());
}

} // namespace
} // namespace qorl
