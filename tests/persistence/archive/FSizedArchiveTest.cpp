#include "ArchiveProbe.h"
#include "ArchiveTesting.h"
#include "foundation/containers/CmBuffer.h"
#include "persistence/streams/FBufferStream.h"
#include "support/LittleCost.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using Stores = Storing<FSizedArchive>;
using Reads = Reading<FSizedArchive>;

/// The markers of a first node: 39 bytes, that of its class at 19.
#define NODE_MARKERS "FE FF FF FF 09 00 00 00 'CmObject' 00 00  FF FF FF FF 0A 00 00 00 'GraphNode' 03 00 "
/// A node that links to nothing, as a first one.
#define FIRST_NODE NODE_MARKERS "08 00 00 00  01 00 00 00  00 00 00 00 "
/// As a later one, with a value.
#define LATER_NODE(value) "13 00 00 80  08 00 00 00 " value " 00 00 00  00 00 00 00 "

/// A node that links to nothing, to itself, and to a second one of its class.
constexpr StoredLoop storedLoops[] = {
    {0, NODE_MARKERS "20 00 00 00"
                     "07 00 00 00  03 00 00 00"
                     "00 00 00 00  27 00 00 00"
                     "13 00 00 80  08 00 00 00  08 00 00 00  00 00 00 00"},
    {1, "FF FF FF FE 00 00 00 09 'CmObject' 00 00  FF FF FF FF 00 00 00 0A 'GraphNode' 00 03  00 00 00 20"
        "00 00 00 07  00 00 00 03"
        "00 00 00 00  00 00 00 27"
        "80 00 00 13  00 00 00 08  00 00 00 08  00 00 00 00"},
};

TEST(FSizedArchive, HasItsBytesInBothOrders) {
    expectLoop<FSizedArchive>(storedLoops);
}

TEST(FSizedArchive, NamesBaseClassesOnceTheNearestFirst) {
    Stores storing;
    storing.archive.writeObject(make<ArchiveProbeChild>().get());
    storing.archive.writeObject(make<ArchiveProbe>().get());
    storing.archive.writeObject(makeNode(1).get());
    const std::string bytes = bytesOf("FE FF FF FF 0D 00 00 00 'ArchiveProbe' 04 00 "      // at 0
                                      "FE FF FF FF 09 00 00 00 'CmObject' 00 00 "          // at 23
                                      "FF FF FF FF 12 00 00 00 'ArchiveProbeChild' FE FF " // at 42
                                      "00 00 00 00 "
                                      "00 00 00 80 00 00 00 00 "
                                      "FF FF FF FF 0A 00 00 00 'GraphNode' 03 00 "
                                      "08 00 00 00  01 00 00 00  00 00 00 00");
    EXPECT_EQ(hexOf(storing.bytes()), hexOf(bytes));
    Reads reading(bytes);
    EXPECT_EQ(reading.nextValue(), "ArchiveProbeChild");
    EXPECT_EQ(reading.archive.getStoredVersion("ArchiveProbe"), 4) << "that of a base class";
    EXPECT_EQ(reading.nextValue(), "ArchiveProbe");
    EXPECT_EQ(reading.nextValue(), "1");
}

TEST(FSizedArchive, CountsPlacesFromWhereItBegan) {
    FMemoryStream stream;
    stream.writeInt64(0);
    FSizedArchive storing(stream, Direction::storing);
    const auto node = makeNode(1);
    EXPECT_TRUE(storing.writeObject(node.get()));
    EXPECT_TRUE(storing.writeObject(node.get()));
    EXPECT_TRUE(storing.writeObject(makeNode(2).get()));
    EXPECT_EQ(hexOf(stream.bytes().substr(8)), hexOf(bytesOf(FIRST_NODE "27 00 00 00 " LATER_NODE("02"))));
    stream.seek(8, FStream::fromStart);
    FSizedArchive reading(stream, Direction::reading);
    const auto first = Ref<CmObject>::adopt(reading.readObject("GraphNode"));
    const auto second = Ref<CmObject>::adopt(reading.readObject("GraphNode"));
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_NE(Ref<CmObject>::adopt(reading.readObject("GraphNode")), nullptr);
}

/// What nodes one after the other give, or report, where not everything is as it should be.
struct FaultyNodes {
    const char* fault;
    const char* bytes;
    std::vector<std::string> results;
};

const FaultyNodes faultyNodes[] = {
    {"unknown class with a known parent",
     "FE FF FF FF 0A 00 00 00 'GraphNode' 00 00  FF FF FF FF 02 00 00 00 'Y' 07 00  05 00 00 00 "
     "'four' "
     "00 00 00 80  08 00 00 00  01 00 00 00  00 00 00 00",
     {"-98 Y", "1", "-100"}},
    {"unknown class that occurs again",
     "FF FF FF FF 02 00 00 00 'Y' 07 00  00 00 00 00  00 00 00 80  03 00 00 00  01 02 03 " NODE_MARKERS,
     {"-98 Y", "-98 Y", "-100"}},
    {"unknown class at the end, cut",
     "FF FF FF FF 02 00 00 00 'Y' 07 00  FF FF FF 7F  00",
     {"-98 Y; -100 Y"}},
    {"negative length behind a name", "FF FF FF FF 0A 00 00 00 'GraphNode' 03 00  FF FF FF FF", {"-97"}},
    {"negative length behind a class",
     FIRST_NODE "13 00 00 80  FF FF FF FF " LATER_NODE("02"),
     {"1", "-97", "2"}},
    {"class of no place",
     FIRST_NODE "14 00 00 80  04 00 00 00  00 00 00 00 " LATER_NODE("02"),
     {"1", "-97", "2"}},
    {"class at its own place",
     FIRST_NODE "33 00 00 80  04 00 00 00  00 00 00 00 " LATER_NODE("02"),
     {"1", "-97", "2"}},
    {"classes at each other's places",
     FIRST_NODE "3B 00 00 80  00 00 00 00  33 00 00 80  00 00 00 00 " LATER_NODE("02"),
     {"1", "-97", "-97", "2"}},
    {"class behind the end", FIRST_NODE "FD FF FF FF  00 00 00 00 " LATER_NODE("02"), {"1", "-97", "2"}},
    {"object of no place", FIRST_NODE "28 00 00 00 " LATER_NODE("02"), {"1", "-99", "2"}},
    {"name too long", "FF FF FF FF 01 00 04 00 'GraphNode' 03 00 00 00 00 00", {"-100", "null"}},
    {"name without a length", "FE FF FF FF 00 00 00 00 00 00 00 00 00 00", {"-100"}},
    {"class that can't be made",
     "FF FF FF FF 0C 00 00 00 'CmContainer' 00 00  04 00 00 00  00 00 00 00 " NODE_MARKERS,
     {"-99 CmContainer", "-100"}},
    {"object whose contents are short", NODE_MARKERS "04 00 00 00  05 00 00 00", {"-99 GraphNode", "-100"}},
    {"length that ends before the contents",
     NODE_MARKERS "04 00 00 00  05 00 00 00  00 00 00 00 " LATER_NODE("02"),
     {"5", "null", "2"}},
    {"length that ends behind the contents",
     NODE_MARKERS "0A 00 00 00  05 00 00 00  00 00 00 00  AA AA " LATER_NODE("02"),
     {"5", "2"}},
    {"length that ends behind the end",
     NODE_MARKERS "0A 00 00 00  05 00 00 00  00 00 00 00  AA",
     {"-100 GraphNode"}},
    {"length that ends behind the object that holds it",
     NODE_MARKERS
     "18 00 00 00  05 00 00 00  01 00 00 00  13 00 00 80  00 00 00 10  06 00 00 00  00 00 00 00 " //
     LATER_NODE("02"),
     {"5", "2"}},
    {"object that holds one that can't be read",
     NODE_MARKERS "11 00 00 00  05 00 00 00  01 00 00 00  28 00 00 80  01 00 00 00  00 " LATER_NODE("02"),
     {"-97; -99 GraphNode", "2"}},
};

TEST(FSizedArchive, LeavesOutWhatCantBeReadAndGoesOnBehindIt) {
    for (const auto& [fault, text, results] : faultyNodes) {
        SCOPED_TRACE(fault);
        Reads reading(bytesOf(text));
        for (const auto& result : results)
            EXPECT_EQ(reading.nextValue(), result);
    }
}

TEST(FSizedArchive, FindsMarkersInObjectsThatItSkipped) {
    // The first node stands in an object of a class that nobody knows, and so do the markers of its class.
    Reads reading(bytesOf("FF FF FF FF 02 00 00 00 'Y' 00 00  33 00 00 00 " // 16 bytes
                          NODE_MARKERS "08 00 00 00  05 00 00 00  00 00 00 00 "
                          "23 00 00 80  08 00 00 00  06 00 00 00  00 00 00 00 "
                          "37 00 00 00 "
                          "23 00 00 80  08 00 00 00  07 00 00 00  00 00 00 00 "
                          "10 00 00 80  08 00 00 00  00 00 00 00  00 00 00 00"));
    EXPECT_EQ(reading.nextValue(), "-98 Y");
    EXPECT_EQ(reading.nextValue(), "6");
    EXPECT_EQ(reading.archive.getStoredVersion("GraphNode"), 3);
    EXPECT_EQ(reading.nextValue(), "-99") << "an object that was skipped is not there";
    EXPECT_EQ(reading.nextValue(), "7");
    EXPECT_EQ(reading.nextValue(), "CmObject") << "from the first of several markers";
}

TEST(FSizedArchive, StandsBehindAnObjectWhateverItReads) {
    for (const int64_t count : {0, 8, 16, 17, 28, 100}) {
        SCOPED_TRACE(count);
        const ProbeActions actions([](FObjectArchive& archive) { return archive.stream().pad(16); },
                                   [count](FObjectArchive& archive) {
                                       archive.stream().skip(count);
                                       return true;
                                   });
        Stores storing;
        ASSERT_TRUE(storing.archive.writeObject(make<ArchiveProbe>().get()));
        const int64_t end = storing.stream.tell();
        ASSERT_TRUE(storing.archive.writeObject(makeNode(1).get()));
        Reads reading(storing.bytes());
        EXPECT_NE(reading.next("ArchiveProbe"), nullptr);
        EXPECT_EQ(reading.stream.tell(), end);
        EXPECT_EQ(reading.nextValue(), "1");
    }
}

TEST(FSizedArchive, StandsBehindEachOfManyObjectsThatReadTooMuch) {
    constexpr int32_t many = 20'000;
    const auto probe = make<ArchiveProbe>();
    Stores storing;
    for (int32_t i = 0; i < many; ++i)
        ASSERT_TRUE(storing.archive.writeObject(probe.get(), false));
    const std::string bytes = storing.bytes();
    const ProbeActions actions(nullptr, [](FObjectArchive& archive) {
        archive.stream().skip(50); // frames have 8 bytes
        return true;
    });
    Reads reading(bytes);
    for (int32_t i = 0; i < many; ++i)
        ASSERT_NE(reading.next(), nullptr) << i;
}

TEST(FSizedArchive, ReadsANeighbourAgainThatAnObjectTookForItsOwn) {
    const ProbeActions actions(nullptr, [](FObjectArchive& archive) {
        return Ref<CmObject>::adopt(archive.readObject("GraphNode")) != nullptr;
    });
    const auto node = makeNode(1);
    Stores storing;
    storing.archive.writeObject(make<ArchiveProbe>().get());
    storing.archive.writeObject(node.get());
    storing.archive.writeObject(node.get());
    Reads reading(storing.bytes());
    EXPECT_EQ(reading.nextValue(), "ArchiveProbe");
    const Ref<CmObject> first = reading.next();
    EXPECT_EQ(GraphNode::describe(first.get()), "1: \n");
    EXPECT_EQ(reading.next(), first);
}

TEST(FSizedArchive, GivesUpWhereLengthsLeadBackForEver) {
    // Each object is empty by its length, but reads two: the second one from within the first.
    std::string bytes = bytesOf("FE FF FF FF 09 00 00 00 'CmObject' 00 00  "
                                "FF FF FF FF 0D 00 00 00 'ArchiveProbe' 04 00  00 00 00 00 ");
    for (int32_t i = 0; i < 500; ++i)
        bytes += bytesOf("13 00 00 80  00 00 00 00");
    int32_t count = 0;
    const ProbeActions actions(nullptr, [&count](FObjectArchive& archive) {
        ++count;
        for (int32_t i = 0; i < 2; ++i)
            Ref<CmObject>::adopt(archive.readObject(nullptr));
        return true;
    });
    Reads reading(bytes);
    reading.next();
    EXPECT_EQ(reading.archive.lastError(), FObjectArchive::streamFailed);
    EXPECT_LT(count, 200'000);
}

TEST(FSizedArchive, MakesNoBufferGrowToALengthOrPlaceThatIsMadeUp) {
    for (const char* text : {NODE_MARKERS "FF FF FF 7F  05 00 00 00  00 00 00 00 ",
                             FIRST_NODE "F0 FF FF FF  04 00 00 00  00 00 00 00 "}) {
        SCOPED_TRACE(text);
        const std::string bytes = bytesOf(text);
        const auto buffer = make<CmBuffer>(bytes.data(), static_cast<int32_t>(bytes.size()), 8);
        buffer->clear();
        const int32_t capacity = buffer->capacity();
        FBufferStream stream(buffer);
        FSizedArchive archive(stream, Direction::reading);
        while (Ref<CmObject>::adopt(archive.readObject(nullptr)))
            continue;
        EXPECT_NE(archive.lastError(), 0);
        EXPECT_EQ(buffer->capacity(), capacity);
    }
}

TEST(FSizedArchive, SurvivesObjectsNested100000Deep) {
    constexpr int32_t depth = 100'000;
    constexpr int32_t sizeOfEach = 16; // class, length, value, number of links
    FMemoryStream stream;
    const std::string markers = bytesOf(NODE_MARKERS);
    stream.write(markers.data(), static_cast<int64_t>(markers.size()));
    for (int32_t left = depth; left > 0; --left) {
        if (left < depth)
            stream.writeUInt32(0x80000013);
        stream.writeInt32(left * sizeOfEach - 8);
        stream.writeInt32(left);
        stream.writeInt32(left > 1 ? 1 : 0);
    }
    const LittleCost cost(depth * sizeOfEach);
    Reads reading(std::string(stream.bytes()));
    EXPECT_EQ(reading.next(), nullptr);
    EXPECT_EQ(reading.archive.lastError(), FObjectArchive::streamFailed);
}

TEST(FSizedArchive, RefusesObjectsOfAnotherClassAndSkipsThem) {
    Reads reading(bytesOf(FIRST_NODE LATER_NODE("02") "27 00 00 00 27 00 00 00"));
    EXPECT_EQ(reading.nextValue("CmString"), "-99 GraphNode");
    EXPECT_EQ(reading.nextValue("CmObject"), "2");
    EXPECT_EQ(reading.nextValue(), "-99") << "a reference to the refused one";
}

TEST(FSizedArchive, StopsForGoodBehindAnObjectThatCouldNotStoreItself) {
    const ProbeActions actions([](FObjectArchive&) { return false; }, nullptr);
    Stores storing;
    EXPECT_FALSE(storing.archive.writeObject(make<ArchiveProbe>().get()));
    EXPECT_EQ(storing.log.text, "-100 ArchiveProbe");
    EXPECT_FALSE(storing.archive.writeObject(makeNode(1).get()));
    EXPECT_FALSE(storing.archive.writeClass(&GraphNode::classRecord()));
    EXPECT_EQ(storing.log.text, "-100 ArchiveProbe") << "told once";
}

TEST(FSizedArchive, BringsAClassAloneWithItsVersion) {
    expectClassTwice<FSizedArchive>(NODE_MARKERS "00 00 00 00  13 00 00 80  00 00 00 00",
                                    "FF FF FF FF 02 00 00 00 'Y' 00 00 00 00 00 00 "
                                    "13 00 00 80  02 00 00 00  00 00",
                                    "-98 Y; -97");
}

} // namespace
} // namespace qorl
