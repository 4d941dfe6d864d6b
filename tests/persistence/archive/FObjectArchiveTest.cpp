#include "persistence/archive/FObjectArchive.h"

#include "support/DebugOutput.h"
#include "support/Slots.h"

#include <string>

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

TEST(FObjectArchive, SendsNamesOfDamagedFilesToNoTerminalAsTheyAre) {
    const struct {
        const char* name;
        const char* shown;
    } rows[] = {{"Node", "Node"},
                {"\x1B[2J\n", "\\x1B[2J\\x0A"},
                {"\u00E4", "\u00E4"},
                {"caf\xE9", "caf\\xE9"},
                {"\u009B2J", "\\x9B2J"}};
    for (const auto& [name, shown] : rows) {
        const DebugOutput output;
        FObjectArchive::reportGlobally(FObjectArchive::classNotRegistered, name);
        EXPECT_EQ(output.text, std::string("stored object: error -98: ") + shown + '\n');
    }
}

} // namespace
} // namespace qorl
