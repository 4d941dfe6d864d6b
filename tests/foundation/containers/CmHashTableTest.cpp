#include "foundation/containers/Elements.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(CmHashTable, GrowsTenfoldAtTwoElementsABucket) {
    CmHashTable fixed(CmHashTable::defaultBuckets, CmHashTable::Growth::fixed, Ownership::adopt);
    CmHashTable growing(CmHashTable::defaultBuckets, CmHashTable::Growth::automatic, Ownership::adopt);
    for (int32_t i = 0; i < 20; ++i)
        ASSERT_TRUE(fixed.add(new NumberedObject(i)) && growing.add(new NumberedObject(i)));
    EXPECT_EQ(growing.size(), 10);
    fixed.add(new NumberedObject(20));
    growing.add(new NumberedObject(20));
    EXPECT_EQ(fixed.size(), 10);
    EXPECT_EQ(growing.size(), 100) << "at the add that finds 20 elements";
    for (int32_t i = 0; i <= 20; ++i) {
        const NumberedObject probe(i);
        EXPECT_EQ(Number::of(growing.find(&probe)), i);
    }
    EXPECT_EQ(CmHashTable().getGrowth(), CmHashTable::Growth::fixed);
    EXPECT_EQ(CmHashTable(0).size(), 10);
    EXPECT_EQ(CmHashTable(-3).size(), 10);
}

TEST(CmHashTable, KeepsEqualsInTheOrderOfArrivalWhenItGrows) {
    CmHashTable table(1, CmHashTable::Growth::automatic, Ownership::adopt);
    std::vector<CmObject*> twins;
    for (int32_t i = 0; i < 40; ++i) {
        if (i % 10 == 0)
            table.add(twins.emplace_back(new NumberedObject(5)));
        table.add(new NumberedObject(1000 + i));
    }
    EXPECT_EQ(table.size(), 100);
    for (CmObject* twin : twins) {
        EXPECT_EQ(table.find(twin), twin);
        EXPECT_TRUE(table.remove(twin));
    }
}

TEST(CmHashTable, MovesItsElementsToTheBucketsOfANewFunction) {
    CmHashTable table(7, CmHashTable::Growth::fixed, Ownership::adopt);
    for (int32_t i = 0; i < 30; ++i)
        table.add(new NumberedObject(i));
    table.setHashFunction([](const CmObject* object, uint32_t size) {
        return (size - 1) - static_cast<uint32_t>(Number::of(object)) % size;
    });
    EXPECT_EQ(numbersOf(table).front(), 6) << "of the first bucket, by the function";
    for (int32_t i = 0; i < 30; ++i) {
        const NumberedObject probe(i);
        EXPECT_EQ(Number::of(table.find(&probe)), i);
    }
    // A function that does not keep to its limit reaches no memory of others.
    table.setHashFunction([](const CmObject*, uint32_t) { return UINT32_MAX; });
    EXPECT_EQ(table.count(), 30);
    const NumberedObject probe(12);
    EXPECT_EQ(Number::of(table.find(&probe)), 12);
    table.setHashFunction(nullptr);
    EXPECT_EQ(numbersOf(table).front(), 0);
}

TEST(CmHashTable, RemovesWhatChangedItsHash) {
    CmHashTable table(10, CmHashTable::Growth::fixed, Ownership::adopt);
    auto* moved = new NumberedObject(3);
    table.add(moved);
    moved->value = 4;
    EXPECT_TRUE(table.containsSame(moved));
    EXPECT_TRUE(table.remove(moved));
    EXPECT_TRUE(table.isEmpty());
}

} // namespace
} // namespace qorl
