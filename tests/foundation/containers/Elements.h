#pragma once

#include "foundation/Cast.h"
#include "foundation/containers/CmArray.h"
#include "foundation/containers/CmBTree.h"
#include "foundation/containers/CmDLinkedList.h"
#include "foundation/containers/CmHashTable.h"
#include "foundation/containers/CmIDLinkedList.h"
#include "foundation/containers/CmILinkedList.h"
#include "foundation/containers/CmLinkedList.h"
#include "foundation/containers/CmOrderedArray.h"
#include "foundation/containers/CmQueue.h"
#include "foundation/containers/CmStack.h"
#include "foundation/containers/dictionaries/CmBTreeDictionary.h"
#include "foundation/containers/dictionaries/CmDictionary.h"
#include "foundation/containers/dictionaries/CmHashDictionary.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/streams/FStream.h"
#include "support/Objects.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace qorl {

/// What the elements of these tests have in common: a number by which they are equal, ordered and hashed.
class Number {
public:
    explicit Number(int32_t value) : value(value) { ++alive; }
    Number(const Number& other) : Number(other.value) {}
    Number& operator=(const Number&) = default;

    static int32_t of(const CmObject* object);
    static inline int32_t alive = 0;
    /// Called with each element that goes.
    static inline std::function<void(CmObject*)> onGoing;

    int32_t value;

protected:
    ~Number() { --alive; }
};

template <typename Base>
class Numbered : public Base, public Number {
public:
    explicit Numbered(int32_t value) : Number(value) {}
    Numbered(const Numbered&) = default;
    Numbered& operator=(const Numbered&) = delete;
    ~Numbered() override {
        if (onGoing)
            onGoing(this);
    }

    bool isEqual(const CmObject* other) const override { return value == of(other); }
    int32_t compare(const CmObject* other) const override {
        return value < of(other) ? -1 : value > of(other);
    }
    uint32_t hashCode(uint32_t size) const override { return static_cast<uint32_t>(value) % size; }
    bool writeTo(FObjectArchive* archive) override { return archive->stream().writeInt32(value); }
    bool readFrom(FObjectArchive* archive) override { return archive->stream().readInt32(value); }
};

class NumberedObject : public Numbered<CmObject> {
    QORL_CLASS(NumberedObject, CmObject)
    QORL_CLONE(NumberedObject)
    QORL_RECORD(NumberedObject)

public:
    explicit NumberedObject(int32_t value = 0) : Numbered(value) {}
};

class NumberedLink : public Numbered<CmILink> {
    QORL_CLASS(NumberedLink, CmILink)
    QORL_CLONE(NumberedLink)
    QORL_RECORD(NumberedLink)

public:
    explicit NumberedLink(int32_t value = 0) : Numbered(value) {}
};

class NumberedDoubleLink : public Numbered<CmIDLink> {
    QORL_CLASS(NumberedDoubleLink, CmIDLink)
    QORL_CLONE(NumberedDoubleLink)
    QORL_RECORD(NumberedDoubleLink)

public:
    explicit NumberedDoubleLink(int32_t value = 0) : Numbered(value) {}
};

inline int32_t Number::of(const CmObject* object) {
    if (const auto* pair = cast<CmAssociation>(object))
        object = pair->getKey();
    if (const auto* plain = cast<NumberedObject>(object))
        return plain->value;
    if (const auto* link = cast<NumberedLink>(object))
        return link->value;
    return static_cast<const NumberedDoubleLink*>(object)->value;
}

using Numbers = std::vector<int32_t>;

inline Numbers numbersOf(const CmContainer& container) {
    Numbers numbers;
    const std::unique_ptr<CmIterator> iterator(container.newIterator());
    while (!iterator->done())
        numbers.push_back(Number::of(iterator->next()));
    return numbers;
}

class WideBTree : public CmBTree {
public:
    WideBTree() : CmBTree(5) {}
    CmObject* clone() const override { return copyOf(*this); }
};

class GrowingHashTable : public CmHashTable {
public:
    GrowingHashTable() : CmHashTable(defaultBuckets, Growth::automatic) {}
    CmObject* clone() const override { return copyOf(*this); }
};

template <typename... More>
using ContainersAnd = ::testing::Types<CmArray, CmOrderedArray, CmLinkedList, CmQueue, CmStack, CmDLinkedList,
                                       CmDictionary, CmILinkedList, CmIDLinkedList, CmBTree,
                                       CmBTreeDictionary, CmHashTable, CmHashDictionary, More...>;
using AllContainers = ContainersAnd<>;
using AllContainersInAllForms = ContainersAnd<WideBTree, GrowingHashTable>;
using ArrayKinds = ::testing::Types<CmArray, CmOrderedArray>;

/// An element of the kind that `Container` takes.
template <typename Container>
Ref<CmObject> makeElement(int32_t number) {
    if constexpr (requires(const Container& c) { c.lookup(nullptr); })
        return make<CmAssociation>(new NumberedObject(number), nullptr, Ownership::adopt);
    else if constexpr (std::is_base_of_v<CmILinkedList, Container>)
        return make<NumberedLink>(number);
    else if constexpr (std::is_base_of_v<CmIDLinkedList, Container>)
        return make<NumberedDoubleLink>(number);
    else
        return make<NumberedObject>(number);
}

/// Gives the container an element of each number, for which it has a reference.
template <typename Container>
void addNumbers(Container& container, const Numbers& numbers) {
    for (const int32_t number : numbers)
        ASSERT_TRUE(container.add(makeElement<Container>(number).detach()));
}

/// Adds elements of a few ranks in turn. Gives them as they have to stand: equals in the order of arrival.
inline std::vector<CmObject*> addOfFewRanks(CmContainer& container, int32_t count, int32_t ranks) {
    std::vector<CmObject*> expected;
    for (int32_t i = 0; i < count; ++i) {
        expected.push_back(new NumberedObject(i * 31 % ranks));
        EXPECT_TRUE(container.add(expected.back()));
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [](const CmObject* a, const CmObject* b) { return a->compare(b) < 0; });
    return expected;
}

inline Numbers numbersBelow(int32_t end) {
    Numbers numbers(static_cast<size_t>(end));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

} // namespace qorl
