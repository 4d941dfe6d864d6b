#include "foundation/containers/Elements.h"
#include "support/TypeNames.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(CmArray, GrowsByItsRule) {
    const Ref<NumberedObject> item = make<NumberedObject>();
    const struct {
        int32_t capacity, growth;
        Numbers sizesAfter; ///< adding 1, 10, 11 and 21 elements
    } cases[] = {
        {0, CmArray::doubling, {10, 10, 20, 40}}, {0, 10, {10, 10, 20, 30}}, {3, 4, {3, 11, 11, 23}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.capacity << " by " << c.growth);
        CmArray array(c.capacity, c.growth);
        size_t row = 0;
        for (const int32_t target : {1, 10, 11, 21}) {
            while (array.count() < target)
                ASSERT_TRUE(array.add(item.get()));
            EXPECT_EQ(array.size(), c.sizesAfter[row++]) << target;
        }
    }
    EXPECT_EQ(CmArray().getGrowth(), 10);
    EXPECT_EQ(CmArray().size(), 0);
}

TEST(CmArray, RefusesWhatItCannotGrowFor) {
    const Ref<NumberedObject> items[] = {make<NumberedObject>(1), make<NumberedObject>(2),
                                         make<NumberedObject>(3)};
    for (const int32_t growth : {0, -2, -5, INT32_MIN}) {
        CmArray array(2, growth, Ownership::share);
        EXPECT_TRUE(array.add(items[0].get()) && array.add(items[1].get()));
        EXPECT_FALSE(array.add(items[2].get())) << growth;
        EXPECT_EQ(numbersOf(array), (Numbers{1, 2})) << growth;
        EXPECT_EQ(array.size(), 2) << growth;
        EXPECT_EQ(referencesOn(items[2].get()), 1u);
    }
}

template <typename Array>
class Arrays : public ::testing::Test {};
TYPED_TEST_SUITE(Arrays, ArrayKinds, testing::TypeNames);

TYPED_TEST(Arrays, ReleaseWhatNoLongerFits) {
    struct Row {
        Ownership ownership;
        uint32_t whileIn, afterwards; ///< references
    };
    for (const Row& row :
         {Row{Ownership::none, 2, 2}, Row{Ownership::adopt, 2, 1}, Row{Ownership::share, 3, 2}}) {
        SCOPED_TRACE(static_cast<int>(row.ownership));
        const Ref<NumberedObject> items[] = {make<NumberedObject>(0), make<NumberedObject>(1),
                                             make<NumberedObject>(2)};
        TypeParam array(3, 1, row.ownership);
        for (const auto& item : items) {
            item->addRef();
            array.add(item.get());
        }
        const auto expectReferences = [&](int32_t kept) {
            EXPECT_EQ(array.count(), kept);
            for (const auto& item : items)
                EXPECT_EQ(referencesOn(item.get()), item->value < kept ? row.whileIn : row.afterwards);
        };
        EXPECT_TRUE(array.setCapacity(1));
        EXPECT_EQ(array.size(), 1);
        expectReferences(1);
        EXPECT_TRUE(array.setCapacity(-7));
        expectReferences(0);
        for (const auto& item : items)
            if (row.afterwards == 2)
                item->release();
    }
}

TEST(CmArray, KeepsTheOrderOfArrival) {
    CmArray array(0, 1, Ownership::adopt);
    addNumbers(array, {3, 1, 2, 1});
    EXPECT_TRUE(array.remove(array.at(3))) << "by identity, not the equal one before it";
    EXPECT_EQ(numbersOf(array), (Numbers{3, 1, 2}));
    EXPECT_TRUE(array.removeAt(0));
    EXPECT_EQ(numbersOf(array), (Numbers{1, 2}));
}

TEST(CmOrderedArray, PutsEachObjectBehindItsEquals) {
    CmOrderedArray array(0, CmOrderedArray::doubling, Ownership::adopt);
    const std::vector<CmObject*> expected = addOfFewRanks(array, 300, 7);
    EXPECT_TRUE(
        std::equal(expected.begin(), expected.end(), array.elements().begin(), array.elements().end()));
    const NumberedObject three(3);
    EXPECT_EQ(array.find(&three),
              *std::find_if(expected.begin(), expected.end(),
                            [](const CmObject* object) { return Number::of(object) == 3; }))
        << "the first of its rank";
}

TEST(CmOrderedArray, FindsByHalving) {
    static int32_t comparisons;
    class Counting : public NumberedObject {
    public:
        using NumberedObject::NumberedObject;
        int32_t compare(const CmObject* other) const override {
            ++comparisons;
            return NumberedObject::compare(other);
        }
    };
    CmOrderedArray array(1000, 0, Ownership::adopt);
    for (int32_t i = 0; i < 1000; ++i)
        array.add(new Counting(i));
    comparisons = 0;
    const Counting wanted(613);
    EXPECT_EQ(Number::of(array.find(&wanted)), 613);
    EXPECT_LE(comparisons, 12);
}

} // namespace
} // namespace qorl
