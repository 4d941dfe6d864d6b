#include "persistence/streams/FStream.h"
#include "support/Slots.h"

#include <qorl/IBStream.h>

namespace qorl {
namespace {

using testing::entryOf;

TEST(StreamSlots, GoOnBehindThoseOfObjects) {
    using WriteTo = bool (FStream::*)(FStream&);
    testing::expectConsecutive({SLOT(FStream, rewind),
                                SLOT(FStream, flush),
                                SLOT(FStream, isValid),
                                SLOT(FStream, copyFrom),
                                {testing::slotOf(static_cast<WriteTo>(&FStream::writeTo)), "writeTo"},
                                SLOT(FStream, setProgress)},
                               25);
}

TEST(StreamSlots, OfTheBinaryLayerHaveNoDestructor) {
    EXPECT_EQ(entryOf(&FBinaryStream::read), 0);
    EXPECT_EQ(entryOf(&FBinaryStream::write), 1);
    EXPECT_EQ(entryOf(&FBinaryStream::seek), 2);
    EXPECT_EQ(entryOf(&FBinaryStream::tell), 3);
}

TEST(StreamSlots, OfInterfacesFollowTheRoot) {
    EXPECT_EQ(entryOf(&IBStream::read), 3);
    EXPECT_EQ(entryOf(&IBStream::write), 4);
    EXPECT_EQ(entryOf(&IBStream::seek), 5);
    EXPECT_EQ(entryOf(&IBStream::tell), 6);
    EXPECT_EQ(entryOf(&ISizeableStream::getStreamSize), 3);
    EXPECT_EQ(entryOf(&ISizeableStream::setStreamSize), 4);
}

} // namespace
} // namespace qorl
