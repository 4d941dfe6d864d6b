#include "foundation/containers/Elements.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>

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

uint32_t byTens(const CmObject* object, uint32_t size) {
    return static_cast<uint32_t>(Number::of(object)) / 10 % size;
}

/// The tens of the numbers in the order of a walk, neighbours once.
Numbers tensOf(const CmHashTable& table) {
    Numbers tens = numbersOf(table);
    for (int32_t& number : tens)
        number /= 10;
    tens.erase(std::unique(tens.begin(), tens.end()), tens.end());
    return tens;
}

TEST(CmHashTable, MovesItsElementsToTheBucketsOfANewFunction) {
    CmHashTable table(7, CmHashTable::Growth::fixed, Ownership::adopt);
    for (int32_t i = 0; i < 50; ++i)
        table.add(new NumberedObject(i * 13 % 50));
    EXPECT_GT(tensOf(table).size(), 5u);
    table.setHashFunction(&byTens);
    Numbers tens = tensOf(table);
    std::sort(tens.begin(), tens.end());
    EXPECT_EQ(tens, (Numbers{0, 1, 2, 3, 4})) << "a walk goes through one bucket after the other";
    const auto expectAll = [&table] {
        EXPECT_EQ(table.count(), 50);
        for (int32_t i = 0; i < 50; ++i) {
            const NumberedObject probe(i);
            EXPECT_EQ(Number::of(table.find(&probe)), i);
        }
    };
    expectAll();
    // A function that does not keep to its limit reaches no memory of others.
    table.setHashFunction([](const CmObject*, uint32_t) { return UINT32_MAX; });
    expectAll();
    table.setHashFunction(nullptr);
    expectAll();
    for (int32_t i = 0; i < 50; ++i) {
        const NumberedObject probe(i);
        EXPECT_TRUE(table.remove(table.find(&probe)));
    }
    EXPECT_EQ(numbersOf(table), Numbers());
}

TEST(CmHashTable, KeepsItsBucketsThroughRandomOperations) {
    CmHashTable table(5, CmHashTable::Growth::fixed, Ownership::adopt);
    std::multiset<int32_t> reference;
    std::mt19937 random(3);
    for (int32_t i = 0; i < 20'000; ++i) {
        const auto number = static_cast<int32_t>(random() % 40);
        const NumberedObject probe(number);
        CmObject* found = table.find(&probe);
        ASSERT_EQ(found != nullptr, reference.contains(number)) << i;
        if (found && random() % 100 < (i / 300 % 2 ? 90u : 30u)) {
            ASSERT_TRUE(table.remove(found));
            reference.erase(reference.find(number));
        } else {
            ASSERT_TRUE(table.add(new NumberedObject(number)));
            reference.insert(number);
        }
        ASSERT_EQ(static_cast<size_t>(table.count()), reference.size());
    }
    Numbers all = numbersOf(table);
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, Numbers(reference.begin(), reference.end()));
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
