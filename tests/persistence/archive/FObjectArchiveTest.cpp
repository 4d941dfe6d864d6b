#include "persistence/archive/FObjectArchive.h"

#include "support/DebugOutput.h"
#include "support/Slots.h"

#include <string>

namespace qorl {
namespace {

TEST(FObjectArchive, HasItsOperationsInTheirSlots) {
    using Read = CmObject* (FObjectArchive::*)(const char*);
    using Write = bool (FObjectArchive::*)(CmObject*);
    using WriteTracked = bool (FObjectArchive::*)(CmObject*, bool);
    using ReadTracked = CmObject* (FObjectArchive::*)(const char*, bool);
    using testing::entryOf;
    testing::expectEntries(
        {{entryOf(static_cast<Read>(&FObjectArchive::readObject)), "readObject"},
         {entryOf(static_cast<Write>(&FObjectArchive::writeObject)), "writeObject"},
         {entryOf(static_cast<WriteTracked>(&FObjectArchive::writeObject)), "writeObject, tracked"},
         {entryOf(static_cast<ReadTracked>(&FObjectArchive::readObject)), "readObject, tracked"},
         ENTRY(FObjectArchive, getVersion),
         ENTRY(FObjectArchive, getStoredVersion),
         ENTRY(FObjectArchive, raiseStoredVersion),
         ENTRY(FObjectArchive, writeClass),
         ENTRY(FObjectArchive, readClass)},
        testing::behindDestructor);
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
