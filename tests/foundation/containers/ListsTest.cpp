#include "foundation/containers/Elements.h"
#include "support/TypeNames.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(CmLinkedList, TakesAndSplicesWithTheirReferences) {
    CmLinkedList first(Ownership::adopt);
    CmLinkedList second(Ownership::adopt);
    addNumbers(second, numbersBelow(2));
    first.splice(second);
    EXPECT_TRUE(second.isEmpty());
    second.add(new NumberedObject(9));
    first.splice(second);
    first.splice(first);
    EXPECT_EQ(numbersOf(first), (Numbers{0, 1, 9}));
    const Ref<CmObject> taken = Ref<CmObject>::adopt(first.takeFirst());
    EXPECT_EQ(referencesOn(taken.get()), 1u);
    EXPECT_EQ(first.count(), 2);
    EXPECT_EQ(second.takeFirst(), nullptr);
}

template <typename List>
Numbers takenFrom(List& list) {
    Numbers numbers;
    while (const Ref<CmObject> object = Ref<CmObject>::adopt(list.takeFirst()))
        numbers.push_back(Number::of(object.get()));
    return numbers;
}

TEST(CmQueue, GivesWhatCameFirst) {
    CmQueue queue(Ownership::adopt);
    addNumbers(queue, {1, 2, 3});
    EXPECT_EQ(takenFrom(queue), (Numbers{1, 2, 3}));
}

TEST(CmStack, GivesWhatCameLastAndKeepsThatOrderInItsCopy) {
    CmStack stack(Ownership::adopt);
    addNumbers(stack, {1, 2, 3});
    const Ref<CmStack> copy = Ref<CmStack>::adopt(static_cast<CmStack*>(stack.clone()));
    EXPECT_EQ(takenFrom(stack), (Numbers{3, 2, 1}));
    stack.add(new NumberedObject(4));
    EXPECT_EQ(takenFrom(stack), (Numbers{4})) << "its tail is in order";
    EXPECT_EQ(takenFrom(*copy), (Numbers{3, 2, 1}));
}

template <typename Types>
class IntrusiveLists : public ::testing::Test {};

template <typename ListOf, typename ElementOf>
struct Kind {
    using List = ListOf;
    using Element = ElementOf;
};
using Kinds = ::testing::Types<Kind<CmILinkedList, NumberedLink>, Kind<CmIDLinkedList, NumberedDoubleLink>>;
TYPED_TEST_SUITE(IntrusiveLists, Kinds, testing::TypeNames);

TYPED_TEST(IntrusiveLists, HaveAnElementOnOneListAtMost) {
    using Element = typename TypeParam::Element;
    const Ref<Element> items[] = {make<Element>(1), make<Element>(2)};
    typename TypeParam::List list;
    typename TypeParam::List other;
    for (const auto& item : items) {
        EXPECT_TRUE(list.add(item.get()));
        EXPECT_FALSE(list.add(item.get())) << "the last one has no next either";
        EXPECT_FALSE(other.add(item.get()));
        EXPECT_FALSE(other.remove(item.get()));
        EXPECT_FALSE(other.containsSame(item.get()));
    }
    EXPECT_EQ(numbersOf(list), (Numbers{1, 2}));

    const Element copy(*items[0]);
    EXPECT_FALSE(list.containsSame(&copy)) << "a copy is on no list";
    const Ref<NumberedObject> plain = make<NumberedObject>(3);
    EXPECT_FALSE(list.add(plain.get()));
    EXPECT_FALSE(list.remove(plain.get()));

    EXPECT_TRUE(list.remove(items[0].get()));
    EXPECT_TRUE(other.add(items[0].get())) << "it is free again";
    list.removeAll();
    EXPECT_TRUE(other.add(items[1].get()));
    EXPECT_EQ(numbersOf(other), (Numbers{1, 2}));
}

} // namespace
} // namespace qorl
