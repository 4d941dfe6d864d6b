#include "ArchiveProbe.h"
#include "ArchiveTesting.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using Stores = Storing<FCompactArchive>;
using Reads = Reading<FCompactArchive>;

constexpr StoredLoop storedLoops[] = {
    {0, "FF FF FF FF  0A 00 00 00 'GraphNode' 03 00"
        "07 00 00 00  03 00 00 00"
        "00 00 00 00  02 00 00 00"
        "01 00 00 80  08 00 00 00  00 00 00 00"},
    {1, "FF FF FF FF  00 00 00 0A 'GraphNode' 00 03"
        "00 00 00 07  00 00 00 03"
        "00 00 00 00  00 00 00 02"
        "80 00 00 01  00 00 00 08  00 00 00 00"},
};

TEST(FCompactArchive, HasItsBytesInBothOrders) {
    expectLoop<FCompactArchive>(storedLoops);
}

TEST(FCompactArchive, NumbersClassesAndTrackedObjectsInOneRow) {
    const auto first = makeNode(1);
    const auto second = makeNode(2);
    const auto other = make<ArchiveProbe>();
    Stores storing;
    EXPECT_TRUE(storing.archive.writeObject(first.get(), false)); // class 1
    EXPECT_TRUE(storing.archive.writeObject(second.get()));       // object 2
    EXPECT_TRUE(storing.archive.writeObject(other.get()));        // class 3, object 4
    EXPECT_TRUE(storing.archive.writeObject(first.get()));        // object 5
    EXPECT_TRUE(storing.archive.writeObject(other.get()));
    EXPECT_TRUE(storing.archive.writeObject(first.get()));
    const std::string bytes = storing.bytes();
    EXPECT_EQ(hexOf(bytes.substr(bytes.size() - 20)),
              hexOf(bytesOf("01 00 00 80  01 00 00 00  00 00 00 00  04 00 00 00  05 00 00 00")));
    Reads reading(bytes);
    EXPECT_NE(reading.next(nullptr, false), nullptr);
    EXPECT_EQ(reading.nextValue(), "2");
    const Ref<CmObject> probe = reading.next();
    EXPECT_EQ(reading.nextValue(), "1");
    EXPECT_EQ(reading.next(), probe);
    EXPECT_EQ(reading.nextValue(), "1");
}

/// What `readObject` gives, or reports, for bytes that nobody could have written.
TEST(FCompactArchive, ReportsWhatCantBeRead) {
    const struct {
        const char* bytes;
        const char* className;
        const char* result;
    } cases[] = {
        {"", nullptr, "-100"},
        {"00 00 00", nullptr, "-100"},
        {"00 00 00 00", "GraphNode", "null"},
        {"01 00 00 00", "GraphNode", "-99 GraphNode"},
        {"01 00 00 00", nullptr, "-99"},
        {"FF FF FF 7F", nullptr, "-99"},
        {"00 00 00 80", nullptr, "-99"},
        {"01 00 00 80", nullptr, "-99"},
        {"FE FF FF FF", nullptr, "-99"},
        {"FF FF FF FF", nullptr, "-100"},
        {"FF FF FF FF FF FF FF FF 'GraphNode' 00 00", nullptr, "-100"},
        {"FF FF FF FF 00 00 00 00 00 00", nullptr, "-100"},
        {"FF FF FF FF 01 00 04 00 'GraphNode' 00 00", nullptr, "-100"},
        {"FF FF FF FF FF FF FF 7F 'GraphNode' 00 00", nullptr, "-100"},
        {"FF FF FF FF 0A 00 00 00 'GraphNode' 00", nullptr, "-100"},
        {"FF FF FF FF 08 00 00 00 'Unheard' 00 00 00 00 00 00", "GraphNode", "-99 Unheard"},
        {"FF FF FF FF 0C 00 00 00 'CmContainer' 00 00 00 00 00 00", nullptr, "-99 CmContainer"},
        {"FF FF FF FF 0A 00 00 00 'GraphNode' 00 00 07 00", nullptr, "-100 GraphNode"},
        {"FF FF FF FF 0A 00 00 00 'GraphNode' 00 00 07 00 00 00 FF FF FF 7F", nullptr,
         "-100; -100 GraphNode"},
        // Its only link is the number of its class, then one that is still to come.
        {"FF FF FF FF 0A 00 00 00 'GraphNode' 00 00 07 00 00 00 01 00 00 00 01 00 00 00", nullptr,
         "-99; -100 GraphNode"},
        {"FF FF FF FF 0A 00 00 00 'GraphNode' 00 00 07 00 00 00 01 00 00 00 03 00 00 00", nullptr,
         "-99; -100 GraphNode"},
    };
    for (const auto& [text, className, result] : cases) {
        SCOPED_TRACE(text);
        Reads reading(bytesOf(text));
        EXPECT_EQ(reading.nextValue(className), result);
    }
}

TEST(FCompactArchive, ComparesTheClassOnlyWhereAnObjectOccursAgain) {
    const auto node = makeNode(1);
    Stores storing;
    storing.archive.writeObject(node.get());
    storing.archive.writeObject(node.get());
    storing.archive.writeObject(node.get());
    Reads reading(storing.bytes());
    EXPECT_EQ(reading.nextValue("CmString"), "1");
    EXPECT_EQ(reading.nextValue("CmString"), "-99 GraphNode");
    EXPECT_EQ(reading.archive.lastError(), FObjectArchive::wrongObject);
    EXPECT_EQ(reading.nextValue("CmObject"), "1");
    EXPECT_EQ(reading.archive.lastError(), 0);
}

TEST(FCompactArchive, GoesOnBehindAnObjectThatCouldNotStoreItself) {
    const ProbeActions actions([](FObjectArchive&) { return false; }, nullptr);
    const auto bad = make<ArchiveProbe>();
    const auto good = makeNode(1);
    Stores storing;
    EXPECT_FALSE(storing.archive.writeObject(bad.get()));
    EXPECT_EQ(storing.archive.lastError(), 0);
    EXPECT_TRUE(storing.archive.writeObject(good.get()));
    EXPECT_EQ(storing.log.text, "");
}

/// Behind such an object stands what is left of its fields, and no tags.
TEST(FCompactArchive, StopsForGoodBehindAnObjectThatCantBeRead) {
    const ProbeActions actions(nullptr, [](FObjectArchive&) { return false; });
    const std::string node = bytesOf("FF FF FF FF  0A 00 00 00 'GraphNode' 03 00  05 00 00 00  00 00 00 00");
    const struct {
        const char* bytes;
        const char* log;
        const char* later; ///< with what the next call reports
    } cases[] = {
        {"FF FF FF FF 08 00 00 00 'Unheard' 00 00", "-99 Unheard", "-99 Unheard; -100"},
        {"07 00 00 80", "-99", "-99; -100"},
        {"FF FF FF FF 0D 00 00 00 'ArchiveProbe' 04 00", "-100 ArchiveProbe", "-100 ArchiveProbe"},
        {"FF FF FF FF 0A 00 00 00 'GraphNode' 00 00 07 00 00 00 01 00 00 00"
         "FF FF FF FF 08 00 00 00 'Unheard' 00 00",
         "-99 Unheard; -100 GraphNode", "-99 Unheard; -100 GraphNode"},
    };
    for (const auto& [text, log, later] : cases) {
        SCOPED_TRACE(text);
        Reads reading(bytesOf(text) + node);
        EXPECT_EQ(reading.next(), nullptr);
        EXPECT_EQ(reading.log.text, log);
        const int64_t place = reading.stream.tell();
        EXPECT_EQ(reading.next(), nullptr);
        EXPECT_EQ(reading.archive.readClass(), nullptr);
        EXPECT_EQ(reading.archive.checkStream(), FObjectArchive::streamFailed);
        EXPECT_EQ(reading.archive.lastError(), FObjectArchive::streamFailed);
        EXPECT_EQ(reading.stream.tell(), place);
        EXPECT_EQ(reading.log.text, later) << "the failure is told once";
    }
}

TEST(FCompactArchive, SurvivesObjectsNested100000Deep) {
    std::string bytes = bytesOf("FF FF FF FF  0A 00 00 00 'GraphNode' 03 00  00 00 00 00  01 00 00 00");
    for (int32_t i = 0; i < 100'000; ++i)
        bytes += bytesOf("01 00 00 80  00 00 00 00  01 00 00 00");
    Reads reading(bytes);
    EXPECT_EQ(reading.next(), nullptr);
    EXPECT_EQ(reading.archive.lastError(), FObjectArchive::streamFailed);
}

TEST(FCompactArchive, BringsAClassAloneWithItsVersion) {
    expectClassTwice<FCompactArchive>("FF FF FF FF  0A 00 00 00 'GraphNode' 03 00  00 00 00 00"
                                      "01 00 00 80  00 00 00 00",
                                      "", "-100");
}

} // namespace
} // namespace qorl
