#include "persistence/archive/FObjectArchive.h"

#include "support/Slots.h"

namespace qorl {
namespace {

/// The slot of an operation behind a virtual destructor that stands first and takes two entries.
template <typename Operation>
ptrdiff_t archiveSlot(Operation operation) {
    return testing::entryOf(operation) - 1;
}

TEST(FObjectArchive, HasItsOperationsInTheirSlots) {
    using Read = CmObject* (FObjectArchive::*)(const char*);
    using Write = bool (FObjectArchive::*)(CmObject*);
    using WriteTracked = bool (FObjectArchive::*)(CmObject*, bool);
    using ReadTracked = CmObject* (FObjectArchive::*)(const char*, bool);
    EXPECT_EQ(archiveSlot(static_cast<Read>(&FObjectArchive::readObject)), 1);
    EXPECT_EQ(archiveSlot(static_cast<Write>(&FObjectArchive::writeObject)), 2);
    EXPECT_EQ(archiveSlot(static_cast<WriteTracked>(&FObjectArchive::writeObject)), 3);
    EXPECT_EQ(archiveSlot(static_cast<ReadTracked>(&FObjectArchive::readObject)), 4);
    EXPECT_EQ(archiveSlot(&FObjectArchive::getVersion), 5);
    EXPECT_EQ(archiveSlot(&FObjectArchive::getStoredVersion), 6);
    EXPECT_EQ(archiveSlot(&FObjectArchive::raiseStoredVersion), 7);
    EXPECT_EQ(archiveSlot(&FObjectArchive::writeClass), 8);
    EXPECT_EQ(archiveSlot(&FObjectArchive::readClass), 9);
}

} // namespace
} // namespace qorl
