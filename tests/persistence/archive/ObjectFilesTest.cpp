#include "persistence/archive/ObjectFiles.h"

#include "ArchiveProbe.h"
#include "ArchiveTesting.h"
#include "support/DebugOutput.h"
#include "support/FailingAllocation.h"
#include "support/LittleCost.h"
#include "support/SettingsFolder.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

class ObjectFiles : public ::testing::Test {
protected:
    ~ObjectFiles() override { GraphNode::cutAll(); }

    DebugOutput output_;
    SettingsFolder folder_;
};

TEST_F(ObjectFiles, HoldTheContentsWithoutTheClass) {
    const auto node = makeNode(7, {nullptr, makeNode(8)});
    ASSERT_TRUE(saveObjectFile("node", node.get()));
    EXPECT_EQ(
        hexOf(folder_.read("settings/node.bin")),
        hexOf(bytesOf("07 00 00 00  02 00 00 00  00 00 00 00 "
                      "FE FF FF FF 09 00 00 00 'CmObject' 00 00  FF FF FF FF 0A 00 00 00 'GraphNode' 03 00 "
                      "08 00 00 00  08 00 00 00  00 00 00 00")))
        << "to the byte, whatever the size of the blocks in which it goes out";
    const auto back = makeNode(0);
    EXPECT_TRUE(loadObjectFile("node", back.get()));
    EXPECT_EQ(GraphNode::describe(back.get()), GraphNode::describe(node.get()));
    EXPECT_FALSE(saveObjectFile("null", nullptr));
    EXPECT_FALSE(loadObjectFile("node", nullptr));
}

TEST_F(ObjectFiles, ComeBackWhereObjectsCrossTheBlocks) {
    const auto root = makeNode(1);
    for (int32_t i = 0; i < 20'000; ++i)
        root->links.push_back(makeNode(i, {i > 0 ? root->links[0] : nullptr}));
    ASSERT_TRUE(saveObjectFile("many", root.get()));
    const auto back = makeNode(0);
    EXPECT_TRUE(loadObjectFile("many", back.get()));
    EXPECT_TRUE(GraphNode::describe(back.get()) == GraphNode::describe(root.get()));
}

TEST_F(ObjectFiles, LeaveNoFileWhenTheObjectCantStoreItself) {
    const ProbeActions actions(
        [](FObjectArchive& archive) {
            archive.stream().writeInt32(1);
            return false;
        },
        nullptr);
    EXPECT_FALSE(saveObjectFile("probe", make<ArchiveProbe>().get()));
    EXPECT_FALSE(objectFileExists("probe"));
    EXPECT_FALSE(folder_.has("settings/probe.bin"));

    // One that it holds is as bad, whether it looks at the result or not.
    ArchiveProbe::onWrite = [](FObjectArchive& archive) {
        archive.writeObject(make<ArchiveProbe>().get());
        return true;
    };
    EXPECT_FALSE(saveObjectFile("probe", make<ArchiveProbe>().get()));
    EXPECT_FALSE(folder_.has("settings/probe.bin"));
}

TEST_F(ObjectFiles, AreTakenFromTheSharedDataWhereTheUserHasNone) {
    const std::string shared = bytesOf("05 00 00 00  00 00 00 00");
    folder_.write("shared/node.bin", shared);
    const auto node = makeNode(0);
    EXPECT_FALSE(objectFileExists("node"));
    ASSERT_TRUE(loadObjectFile("node", node.get()));
    EXPECT_EQ(node->value, 5);
    node->value = 6;
    ASSERT_TRUE(saveObjectFile("node", node.get()));
    node->value = 0;
    ASSERT_TRUE(loadObjectFile("node", node.get()));
    EXPECT_EQ(node->value, 6);
    EXPECT_EQ(folder_.read("shared/node.bin"), shared);
    EXPECT_FALSE(loadObjectFile("none", node.get()));
}

/// What an interrupted save kept is not mixed with the part of the file that could be read.
TEST_F(ObjectFiles, GiveAnObjectTheContentsOfOneFileOnly) {
    ASSERT_TRUE(saveObjectFile("node", makeNode(7, {makeNode(8)}).get()));
    const std::string whole = folder_.read("settings/node.bin");
    folder_.write("settings/node_old.bin", bytesOf("05 00 00 00  00 00 00 00"));
    for (size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        folder_.write("settings/node.bin", whole.substr(0, length));
        const auto node = makeNode(0);
        EXPECT_EQ(loadObjectFile("node", node.get()), length == 0);
        EXPECT_EQ(node->value, length == 0 ? 5 : length < 4 ? 0 : 7);
    }
}

TEST_F(ObjectFiles, FailAtLittleCostWhateverTheyClaim) {
    const std::string link =
        "FE FF FF FF 09 00 00 00 'CmObject' 00 00  FF FF FF FF 0A 00 00 00 'GraphNode' 03 00 ";
    const std::pair<const char*, std::string> cases[] = {
        {"2 GB of links", "FF FF FF 7F"},
        {"a class name of 2 GB", "01 00 00 00  FF FF FF FF  FF FF FF 7F 'GraphNode'"},
        {"an object of 2 GB", "01 00 00 00 " + link + "FF FF FF 7F 08 00 00 00"},
        {"an object of 4 GB", "01 00 00 00 " + link + "FF FF FF FF 08 00 00 00"},
    };
    for (const auto& [name, text] : cases) {
        SCOPED_TRACE(name);
        const std::string bytes = bytesOf("07 00 00 00 " + text);
        folder_.write("settings/node.bin", bytes);
        const LittleCost cost(bytes.size());
        EXPECT_FALSE(loadObjectFile("node", makeNode(0).get()));
    }
}

TEST_F(ObjectFiles, AreRenamedAndDeleted) {
    const auto node = makeNode(3);
    EXPECT_FALSE(renameObjectFile("a", "b"));
    EXPECT_FALSE(deleteObjectFile("a"));
    ASSERT_TRUE(saveObjectFile("a", node.get()));
    EXPECT_TRUE(objectFileExists("a"));
    EXPECT_TRUE(renameObjectFile("a", "b"));
    EXPECT_FALSE(objectFileExists("a"));
    EXPECT_TRUE(objectFileExists("b"));
    EXPECT_TRUE(deleteObjectFile("b"));
    EXPECT_FALSE(objectFileExists("b"));
}

TEST_F(ObjectFiles, TellOfClassesThatAreUnknown) {
    ASSERT_TRUE(saveObjectFile("node", makeNode(1, {make<ArchiveProbe>()}).get()));
    const Unregistered unregistered(ArchiveProbe::classRecord());
    const GlobalReports log;
    EXPECT_FALSE(loadObjectFile("node", makeNode(0).get()));
    EXPECT_EQ(log.text, "-98 ArchiveProbe");
}

TEST_F(ObjectFiles, TellWhenMemoryRunsOutAndKeepTheFileBefore) {
    const auto before = makeNode(1);
    const auto after = makeNode(2, {makeNode(3)});
    ASSERT_TRUE(saveObjectFile("node", before.get()));
    const std::string bytes = folder_.read("settings/node.bin");
    failEachAllocation([&](FailingAllocation& allocation) {
        saveObjectFile("node", before.get());
        const bool isSaved = allocation.during([&] { return saveObjectFile("node", after.get()); });
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        EXPECT_EQ(folder_.read("settings/node.bin") != bytes, isSaved);
    });
    folder_.write("settings/node_old.bin", bytes);
    failEachAllocation([&](FailingAllocation& allocation) {
        const auto back = makeNode(0);
        const bool isLoaded = allocation.during([&] { return loadObjectFile("node", back.get()); });
        EXPECT_TRUE(isLoaded || allocation.hasFailed());
        EXPECT_TRUE(!isLoaded || GraphNode::describe(back.get()) == GraphNode::describe(after.get()))
            << "older contents in the place of the file";
    });
}

TEST_F(ObjectFiles, AreNotLoadedWithoutWhatThereWasNoMemoryFor) {
    Ref<CmObject> child;
    const ProbeActions actions([](FObjectArchive& archive) { return archive.writeObject(makeNode(1).get()); },
                               [&child](FObjectArchive& archive) {
                                   child = Ref<CmObject>::adopt(archive.readObject("GraphNode"));
                                   return true;
                               });
    const auto probe = make<ArchiveProbe>();
    ASSERT_TRUE(saveObjectFile("probe", probe.get()));
    failEachAllocation([&](FailingAllocation& allocation) {
        child.reset();
        const bool isLoaded = allocation.during([&] { return loadObjectFile("probe", probe.get()); });
        EXPECT_TRUE(isLoaded || allocation.hasFailed());
        EXPECT_TRUE(!isLoaded || child) << "the next save would lose it";
    });
}

} // namespace
} // namespace qorl
