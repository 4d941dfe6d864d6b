#include "persistence/streams/FStream.h"
#include "support/Slots.h"

#include <qorl/IBStream.h>

namespace qorl {
namespace {

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
    testing::expectEntries({ENTRY(FBinaryStream, read), ENTRY(FBinaryStream, write),
                            ENTRY(FBinaryStream, seek), ENTRY(FBinaryStream, tell)},
                           0);
}

TEST(StreamSlots, OfInterfacesFollowTheRoot) {
    testing::expectEntries(
        {ENTRY(IBStream, read), ENTRY(IBStream, write), ENTRY(IBStream, seek), ENTRY(IBStream, tell)},
        testing::behindInterface);
    testing::expectEntries({ENTRY(ISizeableStream, getStreamSize), ENTRY(ISizeableStream, setStreamSize)},
                           testing::behindInterface);
}

} // namespace
} // namespace qorl
