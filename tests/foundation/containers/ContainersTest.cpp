// What holds for every container, whatever its storage.

#include "foundation/ClassFactory.h"
#include "foundation/containers/Elements.h"
#include "persistence/attributes/FAttributes.h"
#include "support/TypeNames.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <utility>
#include <vector>

namespace qorl {

QORL_REGISTER(NumberedObject, "NumberedObject", CmObject, 0)
QORL_REGISTER(NumberedLink, "NumberedLink", CmILink, 0)
QORL_REGISTER(NumberedDoubleLink, "NumberedDoubleLink", CmIDLink, 0)

namespace {

Numbers sorted(Numbers numbers) {
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

Numbers walkedBackwards(CmIterator& it) {
    Numbers numbers;
    for (it.last(); !it.done();)
        numbers.push_back(Number::of(it.previous()));
    return numbers;
}

template <typename Container>
class Containers : public ::testing::Test {
protected:
    static constexpr bool isIntrusive =
        std::is_same_v<Container, CmILinkedList> || std::is_same_v<Container, CmIDLinkedList>;

    void fill(int32_t count) {
        for (int32_t i = 0; i < count; ++i) {
            // Not in order, each number once.
            items.push_back(makeElement<Container>(i * 37 % count));
            ASSERT_TRUE(container.add(items.back().get()));
        }
    }
    /// The same numbers again, in the order in which they were added.
    Numbers added() const {
        Numbers numbers;
        for (const auto& item : items)
            numbers.push_back(Number::of(item.get()));
        return numbers;
    }

    std::vector<Ref<CmObject>> items;
    Container container;
};

TYPED_TEST_SUITE(Containers, AllContainersInAllForms, testing::TypeNames);

TEST(ContainerRecords, TellTheFamilyAndMakeNoAbstractContainer) {
    EXPECT_FALSE(CmOrderedArray().isTypeOf("CmArray", true)) << "they only share their storage";
    const auto* container = ClassFactory::instance()->findByName("CmContainer");
    ASSERT_TRUE(container);
    EXPECT_EQ(container->create(), nullptr);
}

TYPED_TEST(Containers, RefuseNullAndBadIndices) {
    this->fill(5);
    CmContainer& c = this->container;
    EXPECT_FALSE(c.add(nullptr));
    for (const int32_t index : {-1, 5, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(c.at(index), nullptr) << index;
        EXPECT_FALSE(c.removeAt(index)) << index;
    }
    EXPECT_FALSE(c.remove(nullptr));
    EXPECT_FALSE(c.removeAtIterator(nullptr));
    EXPECT_EQ(c.find(nullptr), nullptr);
    EXPECT_FALSE(c.containsEqual(nullptr) || c.containsSame(nullptr));
    EXPECT_EQ(c.countEqual(nullptr) + c.countSame(nullptr), 0);
    EXPECT_EQ(sorted(numbersOf(c)), (Numbers{0, 1, 2, 3, 4}));
}

TYPED_TEST(Containers, TellEqualFromSame) {
    this->fill(40);
    const CmContainer& c = this->container;
    for (const auto& item : this->items) {
        const Ref<CmObject> twin = makeElement<TypeParam>(Number::of(item.get()));
        SCOPED_TRACE(Number::of(item.get()));
        EXPECT_EQ(c.find(twin.get()), item.get());
        EXPECT_TRUE(c.containsEqual(twin.get()));
        EXPECT_TRUE(c.containsSame(item.get()));
        EXPECT_FALSE(c.containsSame(twin.get()));
        EXPECT_EQ(c.countEqual(twin.get()), 1);
        EXPECT_EQ(c.countSame(item.get()), 1);
        EXPECT_FALSE(this->container.remove(twin.get()));
    }
    const Ref<CmObject> missing = makeElement<TypeParam>(99);
    EXPECT_EQ(c.find(missing.get()), nullptr);
}

TYPED_TEST(Containers, WalkTheSameBackwardsAndByIndex) {
    TypeParam empty;
    const std::unique_ptr<CmIterator> nothing(empty.newIterator());
    nothing->last();
    EXPECT_TRUE(nothing->done());
    EXPECT_EQ(nothing->previous(), nullptr);

    this->fill(41);
    const CmContainer& c = this->container;
    const Numbers forwards = numbersOf(c);
    EXPECT_EQ(forwards.size(), 41u);
    const std::unique_ptr<CmIterator> it(c.newIterator());
    EXPECT_EQ(walkedBackwards(*it), Numbers(forwards.rbegin(), forwards.rend()));
    EXPECT_EQ(it->next(), nullptr) << "before the first";
    EXPECT_EQ(it->current(), nullptr);
    for (size_t i = 0; i < forwards.size(); ++i)
        ASSERT_EQ(Number::of(c.at(static_cast<int32_t>(i))), forwards[i]) << i;

    EXPECT_TRUE(it->seek(c.at(20)));
    EXPECT_EQ(it->current(), c.at(20));
    it->backward(15);
    EXPECT_EQ(it->current(), c.at(5));
    it->forward(35);
    EXPECT_EQ(it->current(), c.at(40));
    it->forward(1);
    EXPECT_TRUE(it->done());
    EXPECT_EQ(it->next(), nullptr) << "past the end";
    EXPECT_TRUE(it->seek(nullptr));
    EXPECT_TRUE(it->done());
}

TYPED_TEST(Containers, LoseElementsThroughTheirIterator) {
    // What goes: each number by its remainder, so that single ones, neighbours and all of them go.
    for (const int32_t divisor : {1, 2, 3, 5, 50}) {
        SCOPED_TRACE(divisor);
        this->container.removeAll();
        this->items.clear();
        this->fill(50);
        CmContainer& c = this->container;
        Numbers expected = numbersOf(c);
        Numbers visited;
        const std::unique_ptr<CmIterator> it(c.newIterator());
        while (!it->done()) {
            visited.push_back(Number::of(it->current()));
            if (visited.back() % divisor == 0)
                ASSERT_TRUE(c.removeAtIterator(it.get()));
            else
                it->next();
        }
        EXPECT_EQ(visited, expected) << "each element once, in order";
        EXPECT_FALSE(c.removeAtIterator(it.get())) << "past the end";
        std::erase_if(expected, [divisor](int32_t number) { return number % divisor == 0; });
        EXPECT_EQ(numbersOf(c), expected);
        EXPECT_EQ(static_cast<size_t>(c.count()), expected.size());
        for (const auto& item : this->items)
            if (Number::of(item.get()) % divisor == 0) {
                ASSERT_TRUE(c.add(item.get()));
            }
        EXPECT_EQ(sorted(numbersOf(c)), sorted(this->added())) << "all ends are in order";
    }
}

TYPED_TEST(Containers, LoseElementsOnTheWayBack) {
    this->fill(50);
    CmContainer& c = this->container;
    const Numbers before = numbersOf(c);
    const std::unique_ptr<CmIterator> it(c.newIterator());
    it->last();
    for (size_t left = before.size(); left > 0; --left) {
        ASSERT_EQ(Number::of(it->current()), before[left - 1]);
        ASSERT_TRUE(c.removeAtIterator(it.get()));
        EXPECT_TRUE(it->done()) << "nothing stands behind the last";
        it->last();
    }
    EXPECT_TRUE(c.isEmpty());
}

TYPED_TEST(Containers, RefuseTheIteratorOfAnotherOne) {
    this->fill(2);
    TypeParam other;
    const Ref<CmObject> element = makeElement<TypeParam>(1);
    other.add(element.get());
    const std::unique_ptr<CmIterator> it(other.newIterator());
    EXPECT_FALSE(this->container.removeAtIterator(it.get()));
    EXPECT_EQ(this->container.count() + other.count(), 3);
    other.removeAll();
}

/// So many that nodes split and tables are built anew. The iterator stands inside meanwhile, and is in order
/// from its next step on that names a place.
TYPED_TEST(Containers, TakeNewElementsUnderAnIterator) {
    this->fill(10);
    std::vector<Ref<CmObject>> late;
    for (int32_t number = -50; number < 0; ++number)
        late.push_back(makeElement<TypeParam>(number));
    using Step = void (*)(CmIterator&, CmObject*);
    const Step steps[] = {[](CmIterator& it, CmObject*) { it.first(); },
                          [](CmIterator& it, CmObject*) { it.last(); },
                          [](CmIterator& it, CmObject* object) { it.seek(object); }};
    const std::unique_ptr<CmIterator> it(this->container.newIterator());
    for (const Step& step : steps) {
        SCOPED_TRACE(&step - steps);
        it->first();
        it->forward(5);
        for (const auto& element : late)
            ASSERT_TRUE(this->container.add(element.get()));
        const Numbers all = numbersOf(this->container);
        EXPECT_EQ(all.size(), 60u);
        CmObject* place = this->container.at(30);
        step(*it, place);
        const CmObject* expected = &step == &steps[0]   ? this->container.at(0)
                                   : &step == &steps[1] ? this->container.at(59)
                                                        : place;
        EXPECT_EQ(it->current(), expected);
        EXPECT_EQ(walkedBackwards(*it), Numbers(all.rbegin(), all.rend()));
        for (const auto& element : late)
            ASSERT_TRUE(this->container.remove(element.get()));
    }
}

TYPED_TEST(Containers, CountReferencesByTheirOwnership) {
    struct Case {
        Ownership ownership;
        uint32_t whileIn, afterwards;
    };
    using Removal = void (*)(CmContainer&, CmObject*);
    const Removal removals[] = {
        [](CmContainer& c, CmObject*) { c.removeAll(); },
        [](CmContainer& c, CmObject* object) { EXPECT_TRUE(c.remove(object)); },
        [](CmContainer& c, CmObject*) { EXPECT_TRUE(c.removeAt(0)); },
        [](CmContainer& c, CmObject*) {
            const std::unique_ptr<CmIterator> it(c.newIterator());
            EXPECT_TRUE(c.removeAtIterator(it.get()));
        },
    };
    for (const Case& c : {Case{Ownership::none, 3, 3}, Case{Ownership::adopt, 3, 2},
                          Case{Ownership::share, 4, 3}, Case{static_cast<Ownership>(9), 3, 3}}) {
        for (const Removal& removal : removals) {
            SCOPED_TRACE(::testing::Message() << "ownership " << static_cast<int>(c.ownership) << ", removal "
                                              << &removal - removals);
            const Ref<CmObject> item = makeElement<TypeParam>(1);
            item->addRef();
            item->addRef();
            TypeParam container;
            container.setOwnership(c.ownership);
            container.add(item.get());
            EXPECT_EQ(referencesOn(item.get()), c.whileIn);
            {
                const Ref<CmObject> copy = Ref<CmObject>::adopt(container.clone());
                EXPECT_EQ(static_cast<CmContainer*>(copy.get())->count(), this->isIntrusive ? 0 : 1);
            }
            EXPECT_EQ(referencesOn(item.get()), c.whileIn) << "a copy gives back what it took";
            removal(container, item.get());
            EXPECT_TRUE(container.isEmpty());
            EXPECT_EQ(referencesOn(item.get()), c.afterwards);
            while (referencesOn(item.get()) > 1)
                item->release();
        }
    }
}

TYPED_TEST(Containers, ReleaseWhatTheyOwnWhenTheyGo) {
    for (const Ownership ownership : {Ownership::none, Ownership::adopt, Ownership::share}) {
        SCOPED_TRACE(static_cast<int>(ownership));
        const int32_t before = Number::alive;
        std::vector<Ref<CmObject>> kept;
        {
            TypeParam container;
            container.setOwnership(ownership);
            for (int32_t i = 0; i < 60; ++i) {
                Ref<CmObject> element = makeElement<TypeParam>(i);
                ASSERT_TRUE(container.add(element.get()));
                if (ownership == Ownership::adopt)
                    static_cast<void>(element.detach());
                else
                    kept.push_back(std::move(element));
            }
            EXPECT_EQ(Number::alive, before + 60);
        }
        for (const auto& element : kept)
            ASSERT_EQ(referencesOn(element.get()), 1u);
        kept.clear();
        EXPECT_EQ(Number::alive, before);
    }
}

TYPED_TEST(Containers, AreInOrderWhenAnElementGoes) {
    CmContainer& c = this->container;
    c.setOwnership(Ownership::adopt);
    addNumbers(this->container, numbersBelow(30));
    int32_t calls = 0;
    Number::onGoing = [&](CmObject* object) {
        ++calls;
        EXPECT_FALSE(c.containsSame(object));
        EXPECT_EQ(numbersOf(c).size(), static_cast<size_t>(c.count()));
    };
    EXPECT_TRUE(c.removeAt(10));
    EXPECT_TRUE(c.remove(c.at(3)));
    const std::unique_ptr<CmIterator> it(c.newIterator());
    EXPECT_TRUE(c.removeAtIterator(it.get()));
    c.removeAll();
    Number::onGoing = nullptr;
    EXPECT_EQ(calls, 30);
}

TYPED_TEST(Containers, ComeBackFromTheirAttributes) {
    this->fill(12);
    this->container.setOwnership(Ownership::adopt);
    for (const auto& item : this->items)
        item->addRef();
    const Ref<FAttributes> stored = make<FAttributes>();
    ASSERT_TRUE(this->container.storeAttributes(stored.get()));
    EXPECT_EQ(stored->getInteger("ownership"), 1);
    EXPECT_EQ(stored->count("obj"), 12);
    const Numbers before = numbersOf(this->container);
    // An element that carries its link is on one container only.
    this->container.removeAll();

    TypeParam back;
    ASSERT_TRUE(back.restoreAttributes(stored.get()));
    EXPECT_EQ(back.getOwnership(), Ownership::adopt);
    EXPECT_EQ(numbersOf(back), before);

    this->container.setOwnership(Ownership::none);
    const Ref<FAttributes> plain = make<FAttributes>();
    ASSERT_TRUE(this->container.storeAttributes(plain.get()));
    EXPECT_FALSE(plain->contains("ownership"));
}

} // namespace
} // namespace qorl
