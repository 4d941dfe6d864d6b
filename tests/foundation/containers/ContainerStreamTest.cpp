#include "foundation/containers/Elements.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/StoredBytes.h"
#include "support/TypeNames.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::read;
using testing::written;

template <typename Container>
class ContainerStreams : public ::testing::Test {};

TYPED_TEST_SUITE(ContainerStreams, AllContainers, testing::TypeNames);

TYPED_TEST(ContainerStreams, BringEverythingBack) {
    const int32_t before = Number::alive;
    {
        TypeParam container;
        container.setOwnership(Ownership::adopt);
        addNumbers(container, {5, 25, 3, 9, 17, 1, 15});
        const std::string bytes = written(container);

        TypeParam back;
        back.setOwnership(Ownership::adopt);
        back.add(makeElement<TypeParam>(99).detach());
        ASSERT_TRUE(read(back, bytes));
        EXPECT_EQ(back.getOwnership(), Ownership::adopt);
        EXPECT_EQ(numbersOf(back), numbersOf(container)) << "in order, and without what was there";
        EXPECT_EQ(referencesOn(back.at(0)), 1u);
        EXPECT_EQ(written(back), bytes);
    }
    EXPECT_EQ(Number::alive, before);
}

TYPED_TEST(ContainerStreams, LoseNoReferenceOnWhatWasReadOfACutStream) {
    for (const Ownership ownership : {Ownership::none, Ownership::adopt, Ownership::share}) {
        std::string bytes;
        {
            TypeParam container;
            container.setOwnership(Ownership::adopt);
            addNumbers(container, {2, 1, 3});
            container.setOwnership(ownership);
            bytes = written(container);
            container.setOwnership(Ownership::adopt);
        }
        const int32_t before = Number::alive;
        for (size_t length = 0; length < bytes.size(); ++length) {
            TypeParam back;
            EXPECT_FALSE(read(back, std::string_view(bytes).substr(0, length))) << length;
            EXPECT_LT(back.count(), 3);
            EXPECT_EQ(Number::alive - before, back.count()) << "after " << length << " bytes";
            EXPECT_TRUE(ownership != Ownership::none || back.isEmpty()) << "after " << length << " bytes";
        }
        EXPECT_EQ(Number::alive, before);
    }
}

TYPED_TEST(ContainerStreams, BelieveNoCount) {
    TypeParam container;
    std::string bytes = written(container);
    ASSERT_TRUE(read(container, bytes));
    for (const int32_t count : {-1, INT32_MIN, 1, INT32_MAX}) {
        for (size_t i = 0; i < 4; ++i)
            bytes[bytes.size() - 4 + i] = static_cast<char>(static_cast<uint32_t>(count) >> 8 * i & 255);
        const int32_t size = container.size();
        EXPECT_FALSE(read(container, bytes)) << count;
        EXPECT_EQ(container.size(), size) << "no memory by the count " << count;
    }
}

struct Field {
    int32_t stored;
    int32_t kept;
};

template <typename Array>
class ArrayStreams : public ::testing::Test {};
TYPED_TEST_SUITE(ArrayStreams, ArrayKinds, testing::TypeNames);

TYPED_TEST(ArrayStreams, TakeAnyGrowthWithoutTrustingIt) {
    // What is written, and what an array with that growth is after it is read.
    for (const Field& growth : {Field{0, 0}, Field{1, 1}, Field{-1, 10}, Field{-77, 10},
                                Field{INT32_MAX, INT32_MAX}, Field{1'000'000, 1'000'000}}) {
        SCOPED_TRACE(growth.stored);
        TypeParam array(40, growth.stored, Ownership::adopt);
        addNumbers(array, numbersBelow(33));
        TypeParam back;
        ASSERT_TRUE(read(back, written(array)));
        EXPECT_EQ(numbersOf(back), numbersOf(array));
        EXPECT_EQ(back.getGrowth(), growth.kept);
        EXPECT_LE(back.size(), 80) << "no more than its elements need";

        const Ref<FAttributes> attributes = make<FAttributes>();
        ASSERT_TRUE(array.storeAttributes(attributes.get()));
        TypeParam restored(0, growth.stored);
        ASSERT_TRUE(restored.restoreAttributes(attributes.get()));
        EXPECT_EQ(numbersOf(restored), numbersOf(array));
        EXPECT_EQ(restored.getGrowth(), growth.stored);
        EXPECT_EQ(restored.size(), 40) << "as many at a time as are here already";
    }
}

TYPED_TEST(ArrayStreams, TakeNoMemoryByAStoredGrowthThatIsOutOfProportion) {
    TypeParam array(1, INT32_MAX, Ownership::adopt);
    array.add(new NumberedObject(0));
    const std::string bytes = written(array);
    TypeParam back;
    ASSERT_TRUE(read(back, bytes));
    const auto copy = Ref<CmObject>::adopt(back.clone());
    for (TypeParam* each : {&back, static_cast<TypeParam*>(copy.get())}) {
        const int32_t size = each->size();
        while (each->count() < size)
            ASSERT_TRUE(each->add(new NumberedObject(1)));
        ASSERT_TRUE(each->add(new NumberedObject(2)));
        EXPECT_EQ(each->size(), size + 1'000'000);
        EXPECT_EQ(each->getGrowth(), INT32_MAX);
        EXPECT_EQ(written(*each).substr(0, 4), bytes.substr(0, 4));
    }
    ASSERT_TRUE(back.setCapacity(5));
    back.setGrowth(1'500'000);
    while (back.count() < 6)
        ASSERT_TRUE(back.add(new NumberedObject(3)));
    EXPECT_EQ(back.size(), 1'500'005) << "a growth that the program sets is taken as it is";
}

TYPED_TEST(ContainerStreams, StayAsTheyAreWithoutAWholeHead) {
    TypeParam container;
    container.setOwnership(Ownership::adopt);
    addNumbers(container, {3, 1, 2});
    constexpr bool isArray = std::is_base_of_v<ArrayStorage, TypeParam>;
    if constexpr (isArray)
        container.setGrowth(7);
    const Numbers before = numbersOf(container);
    const std::string head = (isArray ? std::string("\5\0\0\0", 4) : "") + std::string("\2\0\1\0\0\0", 6);
    for (size_t length = 0; length < head.size(); ++length) {
        EXPECT_FALSE(read(container, head.substr(0, length))) << length;
        EXPECT_EQ(numbersOf(container), before) << length;
        EXPECT_EQ(container.getOwnership(), Ownership::adopt);
        if constexpr (isArray) {
            EXPECT_EQ(container.getGrowth(), 7) << length;
        }
    }
}

TEST(CmArrayStream, HasItsGrowthBeforeTheGeneralForm) {
    CmArray array(0, 3, Ownership::share);
    const Ref<CmObject> element = make<CmString>("x");
    array.add(element.get());
    const std::string bytes = written(array);
    EXPECT_EQ(bytes.substr(0, 10), std::string("\3\0\0\0\2\0\1\0\0\0", 10));
    CmLinkedList list(Ownership::share);
    list.add(element.get());
    EXPECT_EQ(written(list), bytes.substr(4)) << "all others have the general form alone";
}

/// A container that has nothing but null.
class Broken : public CmContainer {
public:
    int32_t count() const override { return 1; }
    bool add(CmObject*) override { return false; }
    bool removeAtIterator(CmIterator*) override { return false; }
    bool remove(CmObject*) override { return false; }
    void removeAll() override {}
    CmIterator* newIterator() const override { return new Nothing; }

private:
    class Nothing : public CmIterator {
    public:
        bool done() const override { return isDone_; }
        CmObject* next() override {
            isDone_ = true;
            return nullptr;
        }
        CmObject* previous() override { return next(); }
        CmObject* current() const override { return nullptr; }
        void first() override { isDone_ = false; }
        void last() override { isDone_ = false; }

    private:
        bool isDone_ = false;
    };
};

TEST(ContainerStream, HasNoByteOfAContainerWithANullElement) {
    Broken broken;
    FMemoryStream stream;
    FCompactArchive archive(stream, FObjectArchive::Direction::storing);
    EXPECT_FALSE(broken.writeTo(&archive));
    EXPECT_EQ(stream.size(), 0);
}

TEST(CmAssociationStream, HoldsNullToo) {
    struct Case {
        const char* key;
        const char* object;
    };
    for (const Case& c : {Case{"k", "o"}, Case{"k", nullptr}, Case{nullptr, "o"}, Case{nullptr, nullptr}}) {
        const auto text = [](const char* chars) { return chars ? new CmString(chars) : nullptr; };
        CmAssociation pair(text(c.key), text(c.object), Ownership::adopt, Ownership::adopt);
        const std::string bytes = written(pair);
        CmAssociation back(text("old"), text("older"), Ownership::adopt, Ownership::adopt);
        ASSERT_TRUE(read(back, bytes));
        EXPECT_EQ(back.getKey() != nullptr, c.key != nullptr);
        EXPECT_EQ(back.getObject() != nullptr, c.object != nullptr);
        EXPECT_TRUE(!c.key || back.getKey()->isEqual(pair.getKey()));
        testing::expectCutsRefused(back, bytes);
    }
}

TEST(ContainerStream, BringsNestedContainersBack) {
    auto* inner = new CmLinkedList(Ownership::adopt);
    inner->add(new NumberedObject(7));
    CmArray outer(0, CmArray::doubling, Ownership::adopt);
    outer.add(inner);
    outer.add(new NumberedObject(8));
    CmArray back;
    ASSERT_TRUE(read(back, written(outer)));
    EXPECT_EQ(numbersOf(*cast<CmLinkedList>(back.at(0))), (Numbers{7}));
    EXPECT_EQ(Number::of(back.at(1)), 8);
}

} // namespace
} // namespace qorl
