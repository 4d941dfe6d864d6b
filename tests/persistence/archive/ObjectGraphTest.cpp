#include "ArchiveProbe.h"
#include "ArchiveTesting.h"
#include "foundation/CmUID.h"
#include "foundation/containers/CmArray.h"
#include "foundation/containers/CmBuffer.h"
#include "foundation/containers/CmHashTable.h"
#include "foundation/containers/CmStack.h"
#include "foundation/containers/CmVariant.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"
#include "support/FailingAllocation.h"
#include "support/MemoryMeter.h"
#include "support/ShakyStream.h"
#include "support/SmallStack.h"
#include "support/TypeNames.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <random>

namespace qorl {

QORL_REGISTER(GraphNode, "GraphNode", CmObject, 3)
QORL_REGISTER(ArchiveProbe, "ArchiveProbe", CmObject, 4)
QORL_REGISTER(ArchiveProbeChild, "ArchiveProbeChild", ArchiveProbe, 0xFFFE)

namespace {

template <typename Archive>
class ObjectGraphs : public ::testing::Test {
protected:
    ~ObjectGraphs() override {
        GraphNode::cutAll();
        EXPECT_EQ(GraphNode::all.size(), 0u) << "nodes were lost";
    }
};
using Both = ::testing::Types<FCompactArchive, FSizedArchive>;
TYPED_TEST_SUITE(ObjectGraphs, Both, testing::TypeNames);

/// Nodes that link at random: to themselves, to each other both ways, to one several times, and to nothing.
std::vector<Ref<GraphNode>> randomGraph(uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<Ref<GraphNode>> nodes;
    for (uint32_t i = random() % 200 + 1; i > 0; --i)
        nodes.push_back(makeNode(static_cast<int32_t>(random())));
    for (const auto& node : nodes)
        for (uint32_t i = random() % 5; i > 0; --i)
            node->links.push_back(random() % 8 ? Ref<CmObject>(nodes[random() % nodes.size()]) : nullptr);
    return nodes;
}

TYPED_TEST(ObjectGraphs, ComeBackWithTheirCyclesAndSharedObjects) {
    for (uint32_t seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        const auto nodes = randomGraph(seed);
        const auto byteOrder = static_cast<uint16_t>(seed % 2);
        Storing<TypeParam> storing(byteOrder);
        ASSERT_TRUE(storing.archive.writeObject(nodes[0].get()));
        const std::string bytes = storing.bytes();

        Ref<CmObject> back;
        {
            Reading<TypeParam> reading(bytes, byteOrder);
            back = reading.next("GraphNode");
            EXPECT_EQ(reading.log.text, "");
            EXPECT_EQ(reading.stream.tell(), reading.stream.size());
        }
        EXPECT_EQ(GraphNode::describe(back.get()), GraphNode::describe(nodes[0].get()));
        Storing<TypeParam> again(byteOrder);
        ASSERT_TRUE(again.archive.writeObject(back.get()));
        EXPECT_TRUE(again.bytes() == bytes);

        GraphNode::cutAll();
    }
}

TYPED_TEST(ObjectGraphs, HoldTheStoredObjectsUntilTheArchiveGoes) {
    Storing<TypeParam> storing;
    for (int32_t i = 0; i < 100; ++i) {
        // A node at the address of the one before must not be taken for it.
        const auto node = makeNode(i);
        ASSERT_TRUE(storing.archive.writeObject(node.get()));
    }
    Reading<TypeParam> reading(storing.bytes());
    for (int32_t i = 0; i < 100; ++i)
        EXPECT_EQ(reading.nextValue(), std::to_string(i));
}

TYPED_TEST(ObjectGraphs, StoreAnObjectTwiceWithoutTracking) {
    const auto node = makeNode(5);
    Storing<TypeParam> storing;
    EXPECT_TRUE(storing.archive.writeObject(node.get(), false));
    EXPECT_TRUE(storing.archive.writeObject(node.get(), false));
    EXPECT_TRUE(storing.archive.writeObject(node.get(), true));
    EXPECT_TRUE(storing.archive.writeObject(node.get()));
    Reading<TypeParam> reading(storing.bytes());
    const Ref<CmObject> first = reading.next(nullptr, false);
    const Ref<CmObject> second = reading.next(nullptr, false);
    const Ref<CmObject> third = reading.next();
    ASSERT_TRUE(first && second && third);
    EXPECT_TRUE(first != second && second != third);
    EXPECT_EQ(reading.next(), third);
}

TYPED_TEST(ObjectGraphs, TellOnlyWhatWasReadOfACutStream) {
    const auto shared = makeNode(2);
    const auto node = makeNode(1, {shared, make<CmString>("text"), shared, nullptr});
    const size_t before = GraphNode::all.size();
    const auto cutEverywhere = [&node](uint16_t byteOrder, bool isKnown) {
        Storing<TypeParam> storing(byteOrder);
        ASSERT_TRUE(storing.archive.writeObject(node.get()));
        const std::string bytes = storing.bytes();
        std::optional<Unregistered> gone;
        if (!isKnown)
            gone.emplace(GraphNode::classRecord());
        for (size_t length = 0; length < bytes.size(); ++length) {
            SCOPED_TRACE(::testing::Message() << "byte order " << byteOrder << ", length " << length);
            Reading<TypeParam> reading(bytes.substr(0, length), byteOrder);
            EXPECT_EQ(reading.next(), nullptr);
            EXPECT_NE(reading.archive.lastError(), 0);
            EXPECT_NE(reading.log.text, "");
        }
    };
    for (const uint16_t byteOrder : {0, 1})
        for (const bool isKnown : {true, false})
            cutEverywhere(byteOrder, isKnown);
    EXPECT_EQ(GraphNode::all.size(), before) << "objects were lost";
}

/// What of a stored graph is not as it was: bits of one byte, or a 32-bit word.
struct Damage {
    bool isWord;
    uint32_t value;

    void applyTo(std::string& bytes, size_t place) const {
        bytes.resize(std::max(bytes.size(), place + sizeof value));
        if (isWord)
            std::memcpy(bytes.data() + place, &value, sizeof value);
        else
            bytes[place] = static_cast<char>(static_cast<uint32_t>(bytes[place]) ^ value);
    }
};

TYPED_TEST(ObjectGraphs, SurviveEveryDamageAtLittleCost) {
    constexpr Damage damages[] = {{false, 1},     {false, 2},         {false, 4},
                                  {false, 0x80},  {false, 0xFF},      {true, 0xFFFFFFFF},
                                  {true, 50'001}, {true, 0x7FFFFFFF}, {true, 0x80000000}};
    const auto shared = makeNode(2);
    const auto node =
        makeNode(1, {shared, make<CmString>("text"), makeNode(3, {shared}), make<CmBuffer>("bytes", 5, 8)});
    Storing<TypeParam> storing;
    ASSERT_TRUE(storing.archive.writeObject(node.get()));
    const std::string stored = storing.bytes();
    GraphNode::cutAll();
    for (size_t place = 0; place < stored.size(); ++place) {
        for (const Damage& damage : damages) {
            SCOPED_TRACE(::testing::Message() << "place " << place << " value " << damage.value);
            std::string bytes = stored;
            damage.applyTo(bytes, place);
            const MemoryMeter meter;
            Reading<TypeParam> reading(std::move(bytes));
            int32_t objects = 0;
            while (reading.next())
                ASSERT_LT(++objects, 100);
            ASSERT_LT(meter.bytes(), 1 << 20);
            GraphNode::cutAll();
        }
    }
}

TYPED_TEST(ObjectGraphs, AreRefusedWhereTheyAreNestedTooDeep) {
    for (const int32_t depth : {FObjectArchive::deepest, FObjectArchive::deepest + 1, 100'000}) {
        SCOPED_TRACE(depth);
        auto chain = makeNode(0);
        for (int32_t i = 1; i < depth; ++i)
            chain = makeNode(i, {chain});
        Storing<TypeParam> storing;
        const bool isAllowed = depth <= FObjectArchive::deepest;
        EXPECT_EQ(storing.archive.writeObject(chain.get()), isAllowed);
        EXPECT_EQ(storing.archive.lastError(), isAllowed ? 0 : FObjectArchive::streamFailed);
        if (isAllowed) {
            Reading<TypeParam> reading(storing.bytes());
            const Ref<CmObject> back = reading.next();
            EXPECT_TRUE(GraphNode::describe(back.get()) == GraphNode::describe(chain.get()));
        }
        GraphNode::cutAll();
    }
}

TYPED_TEST(ObjectGraphs, AreRefusedBeforeTheyTakeAllOfAStack) {
    const auto probe = make<ArchiveProbe>();
    const auto nest = [&, left = 1900](FObjectArchive& archive) mutable {
        return left-- <= 0 || archive.writeObject(probe.get(), false);
    };
    // Each takes as much as a class with large buffers of its own, and looks at no result.
    const auto takeStack = [](auto pass) {
        volatile char buffer[4096];
        buffer[0] = 1;
        pass();
        return buffer[0] == 1;
    };
    std::string bytes;
    {
        const ProbeActions actions(nest, nullptr);
        Storing<TypeParam> storing;
        ASSERT_TRUE(storing.archive.writeObject(probe.get()));
        bytes = storing.bytes();
    }
    const ProbeActions actions(
        [&](FObjectArchive& archive) { return takeStack([&] { archive.writeObject(probe.get(), false); }); },
        [&](FObjectArchive& archive) {
            return takeStack([&] { Ref<CmObject>::adopt(archive.readObject(nullptr)); });
        });
    testing::runOnStack(0x40000, [&] {
        Storing<TypeParam> storing;
        EXPECT_FALSE(storing.archive.writeObject(probe.get()));
        EXPECT_EQ(storing.archive.lastError(), FObjectArchive::streamFailed);
        Reading<TypeParam> reading(bytes);
        EXPECT_EQ(reading.next(), nullptr);
        EXPECT_EQ(reading.archive.lastError(), FObjectArchive::streamFailed);
    });
}

TYPED_TEST(ObjectGraphs, TellWhenMemoryRunsOutAndLoseNothing) {
    const auto shared = makeNode(2);
    const auto node = makeNode(1, {shared, make<CmString>("text"), shared});
    const ClassRecord* lone = &CmString::classRecord();
    Storing<TypeParam> whole;
    ASSERT_TRUE(whole.archive.writeClass(lone) && whole.archive.writeObject(node.get()));
    const std::string bytes = whole.bytes();
    const size_t before = GraphNode::all.size();

    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream stream;
        stream.resize(4096);
        stream.rewind();
        const bool isStored = allocation.during([&] {
            TypeParam archive(stream, Direction::storing);
            return archive.writeClass(lone) && archive.writeObject(node.get()) && archive.lastError() == 0;
        });
        EXPECT_EQ(isStored, !allocation.hasFailed());
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream stream{std::string_view(bytes)};
        const Ref<CmObject> back = allocation.during([&] {
            TypeParam archive(stream, Direction::reading);
            const bool hasClass = archive.readClass() == lone;
            auto object = Ref<CmObject>::adopt(archive.readObject(nullptr));
            EXPECT_EQ(archive.lastError() != 0, !object || !hasClass);
            return object;
        });
        EXPECT_EQ(back == nullptr, allocation.hasFailed());
    });
    EXPECT_EQ(GraphNode::all.size(), before) << "objects were lost";
}

/// One object of each kind that asks for memory while it reads itself, and a container of all of them.
std::vector<Ref<CmObject>> objectsThatTakeMemory() {
    const auto attributes = make<FAttributes>();
    attributes->setString("name", ConstString(u"a name with an \u00E4"));
    attributes->setInteger("number", 5);
    std::vector<Ref<CmObject>> objects{makeNode(1),
                                       make<CmString>("text"),
                                       make<CmString>(u"\u00E4"),
                                       make<CmUID>(FUID(1, 2, 3, 4)),
                                       make<CmBuffer>("bytes", 5, 8),
                                       make<CmVariant>(ConstString(u"\u00E4")),
                                       attributes};
    for (const Ref<CmContainer>& all : std::initializer_list<Ref<CmContainer>>{
             make<CmArray>(0, 1, Ownership::share), make<CmStack>(Ownership::share),
             make<CmHashTable>(16, CmHashTable::Growth::fixed, Ownership::share)}) {
        for (size_t i = 0; i < 7; ++i)
            all->add(objects[i].get());
        objects.push_back(all);
    }
    return objects;
}

TYPED_TEST(ObjectGraphs, AreNotTakenForWholeWhereAnObjectTakesNullForAnAnswer) {
    for (const Ref<CmObject>& part : objectsThatTakeMemory()) {
        SCOPED_TRACE(part->getClassName());
        const ProbeActions actions([&](FObjectArchive& archive) { return archive.writeObject(part.get()); },
                                   [](FObjectArchive& archive) {
                                       Ref<CmObject>::adopt(archive.readObject(nullptr));
                                       return true;
                                   });
        Storing<TypeParam> storing;
        ASSERT_TRUE(storing.archive.writeObject(make<ArchiveProbe>().get()));
        const std::string bytes = storing.bytes();
        failEachAllocation([&](FailingAllocation& allocation) {
            FMemoryStream stream{std::string_view(bytes)};
            const Ref<CmObject> back = allocation.during([&] {
                TypeParam archive(stream, Direction::reading);
                auto object = Ref<CmObject>::adopt(archive.readObject(nullptr));
                EXPECT_EQ(archive.lastError(), object ? 0 : FObjectArchive::streamFailed);
                return object;
            });
            EXPECT_EQ(back == nullptr, allocation.hasFailed());
        });
    }
}

TYPED_TEST(ObjectGraphs, TellThatAStreamTookNotAll) {
    const auto shared = makeNode(2);
    const auto node = makeNode(1, {shared, nullptr, shared});
    Storing<TypeParam> whole;
    ASSERT_TRUE(whole.archive.writeObject(node.get()));
    for (int64_t room = 0; room < whole.stream.size(); ++room) {
        SCOPED_TRACE(room);
        ShakyStream stream;
        stream.room = room;
        TypeParam archive(stream, Direction::storing);
        EXPECT_FALSE(archive.writeObject(node.get()));
        const int64_t end = stream.tell();
        if (archive.lastError() == 0)
            continue;
        EXPECT_EQ(archive.lastError(), FObjectArchive::streamFailed);
        EXPECT_FALSE(archive.writeObject(nullptr));
        EXPECT_FALSE(archive.writeClass(&GraphNode::classRecord()));
        EXPECT_EQ(stream.tell(), end) << "it goes on after a failure";
    }
}

TYPED_TEST(ObjectGraphs, KnowTheVersionOfTheClassThatIsBeingRead) {
    std::string versions;
    bool isInside = false;
    const auto nested = [&isInside](auto transfer) {
        if (isInside)
            return true;
        isInside = true;
        const bool isDone = transfer();
        isInside = false;
        return isDone;
    };
    const auto child = make<ArchiveProbeChild>();
    const ProbeActions actions(
        [&](FObjectArchive& archive) {
            return nested([&] { return archive.writeObject(child.get(), false); });
        },
        [&](FObjectArchive& archive) {
            const auto note = [&] { versions += std::to_string(archive.getVersion()) + ' '; };
            note();
            return nested([&] {
                const bool isRead =
                    Ref<CmObject>::adopt(archive.readObject("ArchiveProbeChild", false)) != nullptr;
                note();
                return isRead;
            });
        });
    const auto outer = make<ArchiveProbe>();
    Storing<TypeParam> storing;
    EXPECT_TRUE(storing.archive.writeObject(outer.get(), false));
    EXPECT_TRUE(storing.archive.writeObject(outer.get(), false));
    EXPECT_EQ(storing.archive.getStoredVersion("ArchiveProbe"), 0);
    EXPECT_FALSE(storing.archive.raiseStoredVersion(&ArchiveProbe::classRecord()));

    Reading<TypeParam> reading(storing.bytes());
    EXPECT_NE(reading.next(nullptr, false), nullptr);
    EXPECT_EQ(versions, "4 -2 4 ") << "a version has 16 bits and a sign";
    EXPECT_EQ(reading.archive.getVersion(), 0);
    EXPECT_EQ(reading.archive.getStoredVersion("ArchiveProbe"), 4);
    EXPECT_EQ(reading.archive.getStoredVersion("ArchiveProbeChild"), -2);
    EXPECT_EQ(reading.archive.getStoredVersion("GraphNode"), 0);
    EXPECT_EQ(reading.archive.getStoredVersion("Unheard"), 0);
    EXPECT_EQ(reading.archive.getStoredVersion(nullptr), 0);

    EXPECT_TRUE(reading.archive.raiseStoredVersion(&ArchiveProbe::classRecord()));
    EXPECT_FALSE(reading.archive.raiseStoredVersion(&GraphNode::classRecord()));
    EXPECT_FALSE(reading.archive.raiseStoredVersion(nullptr));
    EXPECT_EQ(reading.archive.getStoredVersion("ArchiveProbe"), 5);
    versions.clear();
    EXPECT_NE(reading.next(nullptr, false), nullptr);
    EXPECT_EQ(versions, "5 -2 5 ");
}

TYPED_TEST(ObjectGraphs, StoreAClassUnderItsAliasAndReadEitherName) {
    const auto attributes = make<FAttributes>();
    Storing<TypeParam> storing;
    ASSERT_TRUE(storing.archive.writeObject(attributes.get()));
    std::string bytes = storing.bytes();
    const std::string stored = bytesOf("0B 00 00 00 'Attributes' 00 00");
    ASSERT_NE(bytes.find(stored), std::string::npos) << hexOf(bytes);
    {
        Reading<TypeParam> reading(bytes);
        EXPECT_NE(cast<FAttributes>(reading.next("FAttributes")), nullptr);
        EXPECT_TRUE(reading.archive.raiseStoredVersion(&FAttributes::classRecord()));
        EXPECT_EQ(reading.archive.getStoredVersion("FAttributes"), 1);
        EXPECT_EQ(reading.archive.getStoredVersion("Attributes"), 1);
    }
    bytes.replace(bytes.find(stored), stored.size(), bytesOf("0C 00 00 00 'FAttributes' 00 00"));
    Reading<TypeParam> reading(bytes);
    EXPECT_NE(cast<FAttributes>(reading.next()), nullptr);
}

TYPED_TEST(ObjectGraphs, StoreNullForWhatCouldNotBeReadBack) {
    const auto object = make<UnrecordedObject>();
    Storing<TypeParam> storing;
    EXPECT_FALSE(storing.archive.writeObject(object.get()));
    EXPECT_EQ(storing.log.text, "-98 UnrecordedObject");
    EXPECT_TRUE(storing.archive.writeObject(makeNode(1).get())) << "others still go";
    Reading<TypeParam> reading(storing.bytes());
    EXPECT_EQ(reading.nextValue(), "null");
    EXPECT_EQ(reading.nextValue(), "1");
}

TYPED_TEST(ObjectGraphs, CollectTheErrorsThatOccurredAndKeepTheLastOne) {
    Reading<TypeParam> reading(bytesOf("FF FF FF 7F  FF FF FF 7F  00 00 00 00"));
    for (int32_t i = 0; i < 2; ++i) {
        EXPECT_EQ(reading.next(), nullptr);
        EXPECT_EQ(reading.archive.lastError(), FObjectArchive::wrongObject);
    }
    EXPECT_EQ(reading.next(), nullptr);
    EXPECT_EQ(reading.archive.lastError(), 0) << "a stored null is no error";
    EXPECT_EQ(reading.archive.checkStream(), 0);
    EXPECT_EQ(reading.next(), nullptr);
    EXPECT_EQ(reading.next(), nullptr);
    EXPECT_EQ(reading.archive.lastError(), FObjectArchive::streamFailed);
    EXPECT_THAT(reading.archive.errors(),
                ::testing::ElementsAre(FObjectArchive::wrongObject, FObjectArchive::streamFailed));
    EXPECT_EQ(reading.log.text, "-99; -99; -100");
}

TYPED_TEST(ObjectGraphs, ReportAValueWithoutAKnownKind) {
    Storing<TypeParam> storing;
    ASSERT_TRUE(storing.archive.writeObject(make<CmVariant>().get()));
    std::string bytes = storing.bytes();
    bytes[bytes.size() - 2] = 3; // its kind, which is all that an empty one has
    Reading<TypeParam> reading(bytes);
    EXPECT_EQ(reading.next(), nullptr);
    EXPECT_THAT(reading.archive.errors(), ::testing::Contains(FObjectArchive::malformed));
}

TYPED_TEST(ObjectGraphs, StopAtAStreamThatIsNotValidAnyMore) {
    char room[4] = {};
    FMemoryStream stream(room, sizeof room);
    TypeParam archive(stream, Direction::storing);
    ReportLog log;
    archive.setListener(&log);
    EXPECT_FALSE(stream.writeInt64(0)) << "which is how the stream comes to fail";
    EXPECT_EQ(archive.checkStream(), FObjectArchive::streamFailed);
    EXPECT_EQ(archive.checkStream(), FObjectArchive::streamFailed);
    EXPECT_FALSE(archive.writeObject(nullptr));
    EXPECT_EQ(log.text, "-100") << "told once";
}

TYPED_TEST(ObjectGraphs, AreReadAndStoredByArchivesOfTheirDirectionOnly) {
    Storing<TypeParam> storing;
    EXPECT_EQ(storing.archive.readObject(nullptr), nullptr);
    EXPECT_EQ(storing.archive.readClass(), nullptr);
    Reading<TypeParam> reading(std::string(16, '\0'));
    EXPECT_FALSE(reading.archive.writeObject(nullptr));
    EXPECT_FALSE(reading.archive.writeClass(&GraphNode::classRecord()));
    EXPECT_EQ(storing.stream.tell() + reading.stream.tell(), 0);
}

} // namespace
} // namespace qorl
