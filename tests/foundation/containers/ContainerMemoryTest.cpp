// What containers tell when memory runs out.

#include "foundation/containers/Elements.h"
#include "persistence/attributes/FAttributes.h"
#include "support/FailingAllocation.h"
#include "support/TypeNames.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

template <typename Container>
class ContainerMemory : public ::testing::Test {
protected:
    void SetUp() override {
        for (int32_t i = 0; i < 21; ++i)
            items.push_back(makeElement<Container>(i));
    }
    void fill(Container& container, size_t count) const {
        container.setOwnership(Ownership::share);
        for (size_t i = 0; i < count; ++i)
            ASSERT_TRUE(container.add(items[i].get()));
    }
    void expectReferences(uint32_t expected) const {
        for (const auto& item : items)
            EXPECT_EQ(referencesOn(item.get()), expected) << Number::of(item.get());
    }

    std::vector<Ref<CmObject>> items;
};

TYPED_TEST_SUITE(ContainerMemory, AllContainersInAllForms, testing::TypeNames);

TYPED_TEST(ContainerMemory, AddsAllOrNothing) {
    // The first element, and those at which arrays, trees and tables grow by more than a node.
    for (const size_t before : {0u, 10u, 12u, 14u, 20u}) {
        SCOPED_TRACE(before);
        failEachAllocation([&](FailingAllocation& memory) {
            TypeParam container;
            this->fill(container, before);
            const Numbers numbers = numbersOf(container);
            const bool isAdded = memory.during([&] { return container.add(this->items[before].get()); });
            EXPECT_EQ(isAdded, !memory.hasFailed());
            EXPECT_EQ(container.containsSame(this->items[before].get()), isAdded);
            EXPECT_EQ(referencesOn(this->items[before].get()), isAdded ? 2u : 1u);
            EXPECT_EQ(static_cast<size_t>(container.count()), before + isAdded);
            if (!isAdded) {
                EXPECT_EQ(numbersOf(container), numbers);
            }
            EXPECT_TRUE(isAdded || container.add(this->items[before].get())) << "with memory it can";
        });
    }
}

TYPED_TEST(ContainerMemory, IsCopiedWholeOrNotAtAll) {
    TypeParam container;
    this->fill(container, this->items.size());
    if constexpr (std::is_base_of_v<CmILinkedList, TypeParam> || std::is_base_of_v<CmIDLinkedList, TypeParam>)
        return; // the copy is empty
    else
        failEachAllocation([&](FailingAllocation& memory) {
            const auto copy = Ref<CmObject>::adopt(memory.during([&] { return container.clone(); }));
            EXPECT_EQ(copy != nullptr, !memory.hasFailed());
            this->expectReferences(copy ? 3 : 2);
        });
}

TYPED_TEST(ContainerMemory, AnswersWithoutAnIterator) {
    failEachAllocation([&](FailingAllocation& memory) {
        TypeParam container;
        this->fill(container, 3);
        CmObject* found = memory.during([&] { return container.at(1); });
        EXPECT_EQ(found != nullptr, !memory.hasFailed());
    });
    failEachAllocation([&](FailingAllocation& memory) {
        TypeParam container;
        this->fill(container, 3);
        const bool isRemoved = memory.during([&] { return container.removeAt(1); });
        EXPECT_EQ(isRemoved, !memory.hasFailed());
        EXPECT_EQ(container.count(), isRemoved ? 2 : 3);
    });
}

TYPED_TEST(ContainerMemory, EndsTheWholeSaveRatherThanBeLeftOut) {
    failEachAllocation([&](FailingAllocation& memory) {
        TypeParam container;
        this->fill(container, 3);
        const Ref<FAttributes> attributes = make<FAttributes>();
        bool isStored = true;
        const bool isWhole =
            memory.completes([&] { isStored = container.storeAttributes(attributes.get()); });
        EXPECT_EQ(isWhole, !memory.hasFailed());
        EXPECT_TRUE(isStored) << "false would leave only the container out";
        EXPECT_LE(referencesOn(this->items[0].get()), 3u);
    });
    this->expectReferences(1);
}

TYPED_TEST(ContainerMemory, EndsTheWholeLoadRatherThanBeDropped) {
    const Ref<FAttributes> attributes = make<FAttributes>();
    {
        TypeParam container;
        this->fill(container, 21);
        ASSERT_TRUE(container.storeAttributes(attributes.get()));
    }
    failEachAllocation([&](FailingAllocation& memory) {
        TypeParam restored;
        bool isRestored = true;
        const bool isWhole =
            memory.completes([&] { isRestored = restored.restoreAttributes(attributes.get()); });
        EXPECT_EQ(isWhole, !memory.hasFailed());
        EXPECT_TRUE(isRestored);
        EXPECT_EQ(restored.getOwnership(), Ownership::share);
        EXPECT_TRUE(!isWhole || restored.count() == 21);
    });
    attributes->removeAll();
    this->expectReferences(1);
}

class Counter : public CmVisitor {
public:
    bool visit(CmObject*) override {
        ++visits;
        return true;
    }
    std::atomic<int32_t> visits{0};
};

TEST(ContainerMemoryOfThreads, VisitsHereWhatNoThreadCanBeMadeFor) {
    CmArray array(0, CmArray::doubling, Ownership::adopt);
    addNumbers(array, numbersBelow(40));
    failEachAllocation([&](FailingAllocation& memory) {
        Counter counter;
        const bool isDone = memory.during([&] { return array.forEachParallel(counter, 3, 1); });
        EXPECT_EQ(counter.visits, isDone ? 40 : 0);
        EXPECT_TRUE(isDone || memory.hasFailed());
    });
}

} // namespace
} // namespace qorl
