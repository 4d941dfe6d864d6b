#include "foundation/containers/Elements.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"
#include "support/TypeNames.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(CmAssociation, GoesByItsKey) {
    const Ref<CmAssociation> one =
        make<CmAssociation>(new CmString("b"), new NumberedObject(1), Ownership::adopt, Ownership::adopt);
    const CmString key("b");
    const CmAssociation twin(const_cast<CmString*>(&key), nullptr, Ownership::none);
    const CmAssociation above(new CmString("c"), nullptr, Ownership::adopt);
    const CmAssociation bare;
    EXPECT_TRUE(one->isEqual(&twin));
    EXPECT_FALSE(one->isEqual(&above));
    EXPECT_FALSE(one->isEqual(&key));
    EXPECT_FALSE(one->isEqual(nullptr));
    EXPECT_EQ(one->compare(&twin), 0);
    EXPECT_LT(one->compare(&above), 0);
    EXPECT_GT(above.compare(one.get()), 0);
    EXPECT_EQ(one->hashCode(97), key.hashCode(97));

    EXPECT_EQ(bare.compare(one.get()), -1);
    EXPECT_EQ(bare.compare(&bare), -1);
    EXPECT_GT(one->compare(&bare), 0);
    EXPECT_FALSE(bare.isEqual(one.get()) || one->isEqual(&bare));
    EXPECT_TRUE(bare.isEqual(&bare));
    EXPECT_EQ(bare.hashCode(97), 0u);
}

TEST(CmAssociation, CountsReferencesOnKeyAndObject) {
    struct Case {
        Ownership ownership;
        uint32_t whileHeld, withCopy, afterwards;
    };
    for (const Case& c :
         {Case{Ownership::none, 2, 2, 2}, Case{Ownership::adopt, 2, 3, 1}, Case{Ownership::share, 3, 4, 2}}) {
        SCOPED_TRACE(static_cast<int>(c.ownership));
        const Ref<CmObject> key = make<NumberedObject>(1);
        const Ref<CmObject> object = make<NumberedObject>(2);
        const auto expect = [&](uint32_t count) {
            EXPECT_EQ(referencesOn(key.get()), count);
            EXPECT_EQ(referencesOn(object.get()), count);
        };
        key->addRef();
        object->addRef();
        {
            const CmAssociation pair(key.get(), object.get(), c.ownership, c.ownership);
            expect(c.whileHeld);
            const Ref<CmObject> copy = Ref<CmObject>::adopt(pair.clone());
            expect(c.withCopy);
        }
        expect(c.afterwards);
        if (c.ownership == Ownership::adopt)
            continue;
        key->release();
        object->release();
    }
    const Ref<CmObject> object = make<NumberedObject>(3);
    CmAssociation pair(nullptr, object.get());
    pair.setObject(object.get());
    EXPECT_EQ(referencesOn(object.get()), 2u) << "put in its own place";
    pair.setObject(nullptr);
    EXPECT_EQ(referencesOn(object.get()), 1u);
}

TEST(CmAssociation, ComesBackFromItsAttributes) {
    const Ref<CmString> key = make<CmString>("key");
    const Ref<FAttributes> stored = make<FAttributes>();
    CmAssociation pair(key.get(), nullptr);
    ASSERT_TRUE(pair.storeAttributes(stored.get()));
    EXPECT_TRUE(stored->contains("Key"));
    EXPECT_FALSE(stored->contains("Obj"));
    const Ref<NumberedObject> object = make<NumberedObject>(7);
    pair.setObject(object.get());
    ASSERT_TRUE(pair.storeAttributes(stored.get()));
    CmAssociation back;
    ASSERT_TRUE(back.restoreAttributes(stored.get()));
    EXPECT_EQ(back.getKey(), key.get());
    EXPECT_EQ(back.getObject(), object.get());
}

template <typename Dictionary>
class Dictionaries : public ::testing::Test {};
using Kinds = ::testing::Types<CmDictionary, CmBTreeDictionary, CmHashDictionary>;
TYPED_TEST_SUITE(Dictionaries, Kinds, testing::TypeNames);

TYPED_TEST(Dictionaries, FindAnObjectByAKeyThatIsEqual) {
    TypeParam dictionary;
    dictionary.setOwnership(Ownership::adopt);
    const char* const names[] = {"green", "red", "amber", "blue", ""};
    int32_t number = 0;
    for (const char* name : names)
        ASSERT_TRUE(dictionary.add(new CmAssociation(new CmString(name), new NumberedObject(number++),
                                                     Ownership::adopt, Ownership::adopt)));
    number = 0;
    for (const char* name : names) {
        const CmString key(name);
        const CmAssociation* found = dictionary.lookup(&key);
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(Number::of(found->getObject()), number++) << name;
    }
    const CmString missing("white");
    EXPECT_EQ(dictionary.lookup(&missing), nullptr);
    EXPECT_EQ(dictionary.lookup(nullptr), nullptr);
    const CmString red("red");
    EXPECT_TRUE(dictionary.remove(dictionary.lookup(&red)));
    EXPECT_EQ(dictionary.lookup(&red), nullptr);
}

TYPED_TEST(Dictionaries, RefuseWhatIsNoPair) {
    TypeParam dictionary;
    const Ref<CmObject> plain = make<NumberedObject>(1);
    EXPECT_FALSE(dictionary.add(plain.get()));
    EXPECT_TRUE(dictionary.isEmpty());
}

TEST(CmBTreeDictionary, RefusesAKeyThatExists) {
    for (const int32_t order : {3, 4, 32}) {
        CmBTreeDictionary dictionary(order, Ownership::adopt);
        for (int32_t i = 0; i < 200; ++i)
            addNumbers(dictionary, {i * 83 % 200});
        for (int32_t i = 0; i < 200; ++i) {
            const Ref<CmObject> twin = makeElement<CmDictionary>(i);
            ASSERT_FALSE(dictionary.add(twin.get())) << "order " << order << ", key " << i;
            ASSERT_EQ(referencesOn(twin.get()), 1u);
        }
        EXPECT_EQ(dictionary.count(), 200);
    }
}

/// Puts a higher key first.
class Descending : public CmAssociation {
    QORL_CLASS(Descending, CmAssociation)

public:
    using CmAssociation::CmAssociation;
    int32_t compare(const CmObject* other) const override { return -CmAssociation::compare(other); }
};

TEST(CmBTreeDictionary, AsksAPairOfADerivedClassForItsOrder) {
    CmBTreeDictionary dictionary(3, Ownership::adopt);
    for (const int32_t number : {2, 3, 1, 5, 4})
        ASSERT_TRUE(dictionary.add(new Descending(new NumberedObject(number), nullptr, Ownership::adopt)));
    EXPECT_EQ(numbersOf(dictionary), (Numbers{5, 4, 3, 2, 1}));
}

TEST(CmBTreeDictionary, HasAPairWithoutAKeyInFront) {
    CmBTreeDictionary dictionary(3, Ownership::adopt);
    const auto add = [&dictionary](CmObject* key) {
        return dictionary.add(new CmAssociation(key, nullptr, Ownership::adopt));
    };
    ASSERT_TRUE(add(new NumberedObject(1)) && add(nullptr) && add(new NumberedObject(0)));
    EXPECT_EQ(cast<CmAssociation>(dictionary.at(0))->getKey(), nullptr);
    const NumberedObject one(1);
    EXPECT_EQ(dictionary.lookup(&one), dictionary.at(2));
}

/// Pairs of which each second one has a key, in a container too.
std::vector<Ref<CmAssociation>> addHalfWithKeys(CmContainer& container, int32_t count) {
    std::vector<Ref<CmAssociation>> pairs;
    for (int32_t i = 0; i < count; ++i) {
        pairs.push_back(make<CmAssociation>(i % 2 ? make<NumberedObject>(i).get() : nullptr, nullptr));
        EXPECT_TRUE(container.add(pairs.back().get()));
    }
    return pairs;
}

/// Counts how often it is asked for its rank or whether it is equal.
struct Counted : CmAssociation {
    int32_t compare(const CmObject* other) const override {
        return ++questions, CmAssociation::compare(other);
    }
    bool isEqual(const CmObject* other) const override { return ++questions, CmAssociation::isEqual(other); }
    static inline int32_t questions = 0;
};

TEST(CmBTreeDictionary, RefusesAPairThatIsHere) {
    for (const int32_t order : {3, 32}) {
        CmBTreeDictionary dictionary(order, Ownership::share);
        for (const auto& pair : addHalfWithKeys(dictionary, 20))
            EXPECT_FALSE(dictionary.add(pair.get())) << (pair->getKey() ? "with" : "without") << " a key";
        EXPECT_EQ(dictionary.count(), 20);
    }

    CmBTreeDictionary dictionary(3, Ownership::adopt);
    Counted::questions = 0;
    for (int32_t i = 0; i < 1000; ++i)
        ASSERT_TRUE(dictionary.add(new Counted));
    EXPECT_LT(Counted::questions, 50'000) << "a file may hold any number of pairs without a key";
}

template <typename Container>
class SortedPairs : public ::testing::Test {};
using Sorted = ::testing::Types<CmOrderedArray, CmBTree, CmBTreeDictionary>;
TYPED_TEST_SUITE(SortedPairs, Sorted, testing::TypeNames);

TYPED_TEST(SortedPairs, AreFoundWithoutAKey) {
    TypeParam container;
    const auto pairs = addHalfWithKeys(container, 40);
    for (const auto& pair : pairs) {
        EXPECT_EQ(container.find(pair.get()), pair.get());
        EXPECT_TRUE(container.containsEqual(pair.get()));
    }
    const CmAssociation none;
    EXPECT_EQ(container.find(&none), nullptr);
    const NumberedObject between(6);
    const CmAssociation missing(const_cast<NumberedObject*>(&between), nullptr, Ownership::none);
    EXPECT_EQ(container.find(&missing), nullptr);
    for (const auto& pair : pairs)
        EXPECT_TRUE(container.remove(pair.get()));
}

TEST(CmHashDictionary, AsksItsHashFunctionWithPairs) {
    CmHashDictionary dictionary(10, CmHashTable::Growth::fixed, Ownership::adopt);
    dictionary.setHashFunction([](const CmObject* object, uint32_t size) {
        const auto* pair = cast<CmAssociation>(object);
        return pair ? static_cast<uint32_t>(Number::of(pair->getKey()) / 3) % size : size;
    });
    addNumbers(dictionary, numbersBelow(30));
    for (int32_t i = 0; i < 30; ++i) {
        const NumberedObject key(i);
        const CmAssociation* found = dictionary.lookup(&key);
        ASSERT_TRUE(found) << i;
        EXPECT_EQ(Number::of(found), i);
    }
}

} // namespace
} // namespace qorl
