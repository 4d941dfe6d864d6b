#include "foundation/CmUID.h"
#include "foundation/containers/CmArray.h"
#include "foundation/containers/CmLinkedList.h"
#include "persistence/FAttributes.h"

#include <qorl/Ref.h>

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <thread>

namespace qorl {
namespace {

uint32_t countOf(CmObject* object) {
    object->addRef();
    return object->release();
}

/// Elements that are equal by number.
class Item : public CmObject {
    QORL_CLASS(Item, CmObject)

public:
    explicit Item(uint32_t number) : number(number) {}
    bool isEqual(const CmObject* other) const override {
        return static_cast<const Item*>(other)->number == number;
    }

    uint32_t number;
};

std::vector<uint32_t> numbersOf(const CmContainer& container) {
    std::vector<uint32_t> numbers;
    const std::unique_ptr<CmIterator> iterator(container.newIterator());
    while (!iterator->done())
        numbers.push_back(static_cast<Item*>(iterator->next())->number);
    return numbers;
}

using Numbers = std::vector<uint32_t>;

/// What holds for every container that keeps the order of arrival.
template <typename Container>
class OrderedContainers : public ::testing::Test {
protected:
    void SetUp() override {
        for (const auto& item : items)
            ASSERT_TRUE(container.add(item.get()));
    }

    std::vector<Ref<Item>> items{make<Item>(1), make<Item>(2), make<Item>(3), make<Item>(2)};
    Container container;
};

using Kinds = ::testing::Types<CmArray, CmLinkedList>;
TYPED_TEST_SUITE(OrderedContainers, Kinds);

TYPED_TEST(OrderedContainers, RefusesNullAndBadIndices) {
    CmContainer& c = this->container;
    EXPECT_FALSE(c.add(nullptr));
    for (const int32_t index : {-1, 4, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(c.at(index), nullptr) << index;
        EXPECT_FALSE(c.removeAt(index)) << index;
    }
    EXPECT_FALSE(c.remove(nullptr));
    EXPECT_EQ(numbersOf(c), (Numbers{1, 2, 3, 2}));
}

TYPED_TEST(OrderedContainers, RemovesFromEveryPlace) {
    CmContainer& c = this->container;
    EXPECT_TRUE(c.removeAt(3));
    EXPECT_TRUE(c.add(this->items[3].get())) << "the tail is found again";
    EXPECT_TRUE(c.remove(this->items[3].get())) << "by identity, not the equal one before it";
    EXPECT_EQ(numbersOf(c), (Numbers{1, 2, 3}));
    EXPECT_FALSE(c.remove(this->items[3].get()));
    EXPECT_TRUE(c.removeAt(0));
    EXPECT_TRUE(c.removeAt(0));
    EXPECT_EQ(c.at(0), this->items[2].get());
    EXPECT_TRUE(c.removeAt(0));
    EXPECT_TRUE(c.isEmpty());
    EXPECT_TRUE(c.add(this->items[0].get()));
    EXPECT_EQ(numbersOf(c), (Numbers{1}));
}

TYPED_TEST(OrderedContainers, TellsEqualFromSame) {
    const CmContainer& c = this->container;
    const Ref<Item> two = make<Item>(2);
    EXPECT_EQ(c.find(two.get()), this->items[1].get()) << "the first equal one";
    EXPECT_TRUE(c.containsEqual(two.get()));
    EXPECT_FALSE(c.containsSame(two.get()));
    EXPECT_EQ(c.countEqual(two.get()), 2);
    EXPECT_EQ(c.countSame(this->items[3].get()), 1);
    EXPECT_EQ(c.find(nullptr), nullptr);
}

TYPED_TEST(OrderedContainers, WalksBothWays) {
    const std::unique_ptr<CmIterator> it(this->container.newIterator());
    it->last();
    Numbers backwards;
    while (!it->done())
        backwards.push_back(static_cast<Item*>(it->previous())->number);
    EXPECT_EQ(backwards, (Numbers{2, 3, 2, 1}));
    EXPECT_EQ(it->next(), nullptr);
    EXPECT_EQ(it->current(), nullptr);
    EXPECT_TRUE(it->seek(this->items[2].get()));
    EXPECT_EQ(it->current(), this->items[2].get());
    it->backward(2);
    EXPECT_EQ(it->current(), this->items[0].get());
    it->forward(3);
    EXPECT_EQ(it->current(), this->items[3].get());
    it->forward(1);
    EXPECT_TRUE(it->done());
    EXPECT_TRUE(it->seek(nullptr));
    EXPECT_TRUE(it->done());
}

TYPED_TEST(OrderedContainers, MayLoseElementsThroughItsIterator) {
    const std::unique_ptr<CmIterator> it(this->container.newIterator());
    while (!it->done()) {
        if (static_cast<Item*>(it->current())->number == 2)
            EXPECT_TRUE(this->container.removeAtIterator(it.get()));
        else
            it->next();
    }
    EXPECT_EQ(numbersOf(this->container), (Numbers{1, 3}));
    EXPECT_FALSE(this->container.removeAtIterator(it.get())) << "past the end";
    this->container.add(this->items[1].get());
    EXPECT_EQ(numbersOf(this->container), (Numbers{1, 3, 2})) << "the tail is in order";
}

TYPED_TEST(OrderedContainers, CountsReferencesByItsOwnership) {
    struct Case {
        Ownership ownership;
        uint32_t whileIn;
        uint32_t afterwards;
    };
    for (const Case& c : {Case{Ownership::none, 3, 3}, Case{Ownership::adopt, 3, 2},
                          Case{Ownership::share, 4, 3}, Case{static_cast<Ownership>(9), 3, 3}}) {
        SCOPED_TRACE(static_cast<int>(c.ownership));
        const Ref<Item> item = make<Item>(1);
        item->addRef();
        item->addRef();
        TypeParam container;
        container.setOwnership(c.ownership);
        container.add(item.get());
        EXPECT_EQ(countOf(item.get()), c.whileIn);
        {
            const Ref<CmObject> copy = Ref<CmObject>::adopt(container.clone());
            EXPECT_EQ(static_cast<CmContainer*>(copy.get())->at(0), item.get());
        }
        EXPECT_EQ(countOf(item.get()), c.whileIn) << "a copy gives back what it took";
        container.removeAll();
        EXPECT_EQ(countOf(item.get()), c.afterwards);
        while (countOf(item.get()) > 1)
            item->release();
    }
}

TYPED_TEST(OrderedContainers, ReleasesWhatItOwnsWhenItGoes) {
    const Ref<Item> item = make<Item>(1);
    {
        TypeParam container;
        container.setOwnership(Ownership::share);
        container.add(item.get());
        container.add(item.get());
        EXPECT_EQ(countOf(item.get()), 3u);
    }
    EXPECT_EQ(countOf(item.get()), 1u);
}

struct Collector : CmVisitor {
    bool visit(CmObject* element) override {
        const std::lock_guard guard(mutex);
        seen.push_back(static_cast<Item*>(element)->number);
        threads.push_back(std::this_thread::get_id());
        return seen.size() < limit;
    }
    std::mutex mutex;
    Numbers seen;
    std::vector<std::thread::id> threads;
    size_t limit = SIZE_MAX;
};

TYPED_TEST(OrderedContainers, VisitsEachElementOnceFromAllThreads) {
    std::vector<Ref<Item>> many;
    TypeParam container;
    for (uint32_t i = 0; i < 103; ++i) {
        many.push_back(make<Item>(i));
        container.add(many.back().get());
    }
    for (const int32_t threads : {0, 1, 2, 4, 103}) {
        SCOPED_TRACE(threads);
        Collector collector;
        EXPECT_TRUE(container.forEachParallel(collector, threads, 1));
        std::sort(collector.seen.begin(), collector.seen.end());
        EXPECT_EQ(collector.seen, numbersOf(container));
    }
    Collector few;
    EXPECT_TRUE(container.forEachParallel(few, 8, 104)) << "too few for a second thread";
    EXPECT_EQ(few.seen, numbersOf(container)) << "in order";
    EXPECT_EQ(std::count(few.threads.begin(), few.threads.end(), std::this_thread::get_id()), 103);
    Collector stopping;
    stopping.limit = 3;
    EXPECT_FALSE(container.forEachParallel(stopping, 4, 1));
    EXPECT_LE(stopping.seen.size(), 3u + 3u) << "each thread ends at its next element";
}

TYPED_TEST(OrderedContainers, ComesBackFromItsAttributes) {
    TypeParam container;
    container.setOwnership(Ownership::adopt);
    for (const uint32_t word : {7u, 8u})
        container.add(new CmUID(FUID(word, 0, 0, 0)));
    const Ref<FAttributes> stored = make<FAttributes>();
    ASSERT_TRUE(container.storeAttributes(stored.get()));
    EXPECT_EQ(stored->getInteger("ownership"), 1);
    EXPECT_EQ(stored->count("obj"), 2);

    TypeParam back;
    ASSERT_TRUE(back.restoreAttributes(stored.get()));
    EXPECT_EQ(back.getOwnership(), Ownership::adopt);
    ASSERT_EQ(back.count(), 2);
    EXPECT_EQ(static_cast<CmUID*>(back.at(1))->uid().word(0), 8u);
}

TEST(CmArray, GrowsByItsRule) {
    const Ref<Item> item = make<Item>(0);
    CmArray fixed(2, CmArray::fixedCapacity);
    EXPECT_TRUE(fixed.add(item.get()));
    EXPECT_TRUE(fixed.add(item.get()));
    EXPECT_FALSE(fixed.add(item.get()));
    EXPECT_EQ(fixed.count(), 2);

    struct Case {
        int32_t capacity;
        int32_t growth;
        std::vector<int32_t> sizesAfter; ///< adding 1, 10, 11 and 21 elements
    };
    const Case cases[] = {
        {0, CmArray::doubling, {10, 10, 20, 40}}, {0, 10, {10, 10, 20, 30}}, {3, 4, {3, 11, 11, 23}}};
    for (const Case& c : cases) {
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

TEST(CmArray, ReleasesWhatNoLongerFits) {
    const Ref<Item> items[] = {make<Item>(0), make<Item>(1), make<Item>(2)};
    CmArray array(3, 1, Ownership::share);
    for (const auto& item : items)
        array.add(item.get());
    EXPECT_TRUE(array.setCapacity(1));
    EXPECT_EQ(array.count(), 1);
    EXPECT_EQ(countOf(items[0].get()), 2u);
    EXPECT_EQ(countOf(items[1].get()), 1u);
    EXPECT_EQ(countOf(items[2].get()), 1u);
}

TEST(CmLinkedList, TakesAndSplicesWithTheirReferences) {
    CmLinkedList first(Ownership::adopt);
    CmLinkedList second(Ownership::adopt);
    for (uint32_t i = 0; i < 2; ++i)
        second.add(new Item(i));
    first.splice(second);
    EXPECT_TRUE(second.isEmpty());
    second.add(new Item(9));
    first.splice(second);
    EXPECT_EQ(numbersOf(first), (Numbers{0, 1, 9}));
    const Ref<CmObject> taken = Ref<CmObject>::adopt(first.takeFirst());
    EXPECT_EQ(countOf(taken.get()), 1u);
    EXPECT_EQ(first.count(), 2);
    EXPECT_EQ(second.takeFirst(), nullptr);
}

} // namespace
} // namespace qorl
