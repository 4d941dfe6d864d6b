// Objects that hold each other in long chains, and pairs whose keys are pairs.

#include "foundation/containers/CmVariant.h"
#include "foundation/containers/Elements.h"
#include "foundation/text/CmString.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/TypeNames.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

template <typename Container>
Ref<CmObject> inContainer(Ref<CmObject> below) {
    const auto above = make<Container>();
    above->setOwnership(Ownership::adopt);
    EXPECT_TRUE(above->add(below.detach()));
    return above;
}

Ref<CmObject> inPair(Ref<CmObject> below) {
    return make<CmAssociation>(nullptr, below.get());
}

Ref<CmObject> asKey(Ref<CmObject> below) {
    return make<CmAssociation>(below.get(), nullptr);
}

Ref<CmObject> inVariant(Ref<CmObject> below) {
    const auto above = make<CmVariant>();
    above->setObject(below.get());
    return above;
}

using Wrapper = Ref<CmObject> (*)(Ref<CmObject>);

TEST(DeepObjects, GoWithoutTakingStackForEach) {
    const Wrapper wrappers[] = {
        inContainer<CmArray>,
        inContainer<CmLinkedList>,
        inContainer<CmDLinkedList>,
        inContainer<CmBTree>,
        inContainer<CmHashTable>,
        [](Ref<CmObject> below) { return inContainer<CmDictionary>(inPair(std::move(below))); },
        asKey,
        inVariant,
    };
    for (const Wrapper& wrapper : wrappers) {
        SCOPED_TRACE(&wrapper - wrappers);
        const int32_t before = Number::alive;
        Ref<CmObject> top = make<NumberedObject>(1);
        for (int32_t i = 0; i < 200'000; ++i)
            top = wrapper(std::move(top));
        EXPECT_EQ(Number::alive, before + 1);
        top.reset();
        EXPECT_EQ(Number::alive, before) << "nothing waits any longer";
    }
}

TEST(DeepObjects, GoAllWithoutMemoryForTheirTurn) {
    failEachAllocation([](FailingAllocation& memory) {
        const int32_t before = Number::alive;
        Ref<CmObject> top = make<NumberedObject>(0);
        for (int32_t i = 0; i < 300; ++i) {
            auto* list = new CmLinkedList(Ownership::adopt);
            list->add(top.detach());
            list->add(new NumberedObject(i));
            top = Ref<CmObject>::adopt(list);
        }
        memory.during([&] { top.reset(); });
        EXPECT_EQ(Number::alive, before);
    });
}

TEST(DeepObjects, GoAtOnceAtOrdinaryDepth) {
    // The owner of the list looks whether its element has gone as soon as it has removed it.
    class Owner : public CmObject {
    public:
        explicit Owner(bool& isGone) : isGone_(isGone) {}
        ~Owner() override {
            const int32_t before = Number::alive;
            list.removeAll();
            isGone_ = Number::alive == before - 1;
        }
        CmLinkedList list{Ownership::adopt};

    private:
        bool& isGone_;
    };
    bool isGone = false;
    auto* owner = new Owner(isGone);
    owner->list.add(new NumberedObject(1));
    Ref<CmObject> top = Ref<CmObject>::adopt(owner);
    for (int32_t i = 0; i < 20; ++i)
        top = inContainer<CmLinkedList>(std::move(top));
    top.reset();
    EXPECT_TRUE(isGone);
}

Ref<CmObject> chainOfKeys(int32_t pairs, int32_t number) {
    Ref<CmObject> top = make<NumberedObject>(number);
    for (int32_t i = 0; i < pairs; ++i)
        top = asKey(top);
    return top;
}

TEST(CmAssociation, FollowsKeysThatArePairs) {
    for (const int32_t pairs : {1, 2, 3, CmAssociation::deepest - 1, CmAssociation::deepest}) {
        SCOPED_TRACE(pairs);
        const Ref<CmObject> one = chainOfKeys(pairs, 1);
        const Ref<CmObject> twin = chainOfKeys(pairs, 1);
        const Ref<CmObject> two = chainOfKeys(pairs, 2);
        const Ref<CmObject> shorter = chainOfKeys(pairs - 1, 1);
        EXPECT_TRUE(one->isEqual(twin.get()));
        EXPECT_FALSE(one->isEqual(two.get()) || one->isEqual(make<CmAssociation>().get()));
        EXPECT_FALSE(pairs > 1 && shorter->isEqual(make<NumberedObject>(1).get()));
        EXPECT_EQ(one->compare(twin.get()), 0);
        EXPECT_EQ(one->compare(two.get()), -1);
        EXPECT_EQ(two->compare(one.get()), 1);
        EXPECT_EQ(one->hashCode(97), 1u);
    }
}

TEST(CmAssociation, EndsOnItsWayAlongAnyNumberOfKeys) {
    const Ref<CmObject> one = chainOfKeys(100'000, 1);
    const Ref<CmObject> two = chainOfKeys(100'000, 1);
    EXPECT_FALSE(one->isEqual(two.get())) << "that far down they are told apart by identity";
    EXPECT_TRUE(one->isEqual(one.get()));
    EXPECT_EQ(one->compare(two.get()), -two->compare(one.get()));
    EXPECT_EQ(one->compare(one.get()), 0);
    EXPECT_EQ(one->hashCode(97), two->hashCode(97));
}

/// Hands out what it was given, as an archive does with objects that occurred before.
class HandingOut : public FCompactArchive {
public:
    HandingOut(FStream& stream, std::vector<CmObject*> objects)
        : FCompactArchive(stream, Direction::reading), objects_(std::move(objects)) {}

    using FCompactArchive::readObject;
    CmObject* readObject(const char*) override {
        if (next_ == objects_.size())
            return nullptr;
        return retain(objects_[next_++]).detach();
    }

private:
    std::vector<CmObject*> objects_;
    size_t next_ = 0;
};

TEST(CmAssociation, RefusesItselfAmongItsKeys) {
    for (const int32_t between : {0, 1, 2, 300}) {
        SCOPED_TRACE(between);
        const auto pair = make<CmAssociation>();
        Ref<CmObject> top = pair;
        for (int32_t i = 0; i < between; ++i)
            top = asKey(top);
        FMemoryStream stream;
        HandingOut archive(stream, {top.get(), pair.get()});
        EXPECT_FALSE(pair->readFrom(&archive));
        EXPECT_EQ(archive.lastError(), FObjectArchive::malformed);
        const auto attributes = make<FAttributes>();
        attributes->setObject("Key", top.get(), FAttributes::Hold::retain);
        EXPECT_FALSE(pair->restoreAttributes(attributes.get()));
        EXPECT_EQ(pair->getKey(), nullptr);
        EXPECT_EQ(top->hashCode(97), 0u);
    }
    const auto pair = make<CmAssociation>();
    const Ref<CmObject> key = asKey(make<CmString>("key"));
    FMemoryStream stream;
    HandingOut archive(stream, {key.get(), pair.get()});
    EXPECT_TRUE(pair->readFrom(&archive)) << "as an object it holds itself as lists may do";
    EXPECT_EQ(pair->getObject(), pair.get());
    pair->setObject(nullptr);
}

TEST(CmAssociation, TakesAKeyWithAFaultInAPartOfIt) {
    /// Left something out, and was read nevertheless.
    class Faulty : public HandingOut {
    public:
        using HandingOut::HandingOut;
        using HandingOut::readObject;
        CmObject* readObject(const char* name) override {
            lastError_ = classNotRegistered;
            return HandingOut::readObject(name);
        }
    };
    const auto key = make<CmString>("key");
    const auto object = make<CmString>("object");
    FMemoryStream stream;
    CmAssociation pair;
    Faulty whole(stream, {key.get(), object.get()});
    EXPECT_TRUE(pair.readFrom(&whole));
    EXPECT_EQ(pair.getObject(), object.get());
    Faulty half(stream, {key.get()});
    EXPECT_FALSE(pair.readFrom(&half)) << "null with an error is no stored null";
}

/// Finds no memory when it is restored for the first time.
class Starved : public CmObject {
    QORL_CLASS(Starved, CmObject)
    QORL_RECORD(Starved)

public:
    bool restoreAttributes(FAttributes*) override {
        if (std::exchange(isFirst, false))
            throw std::bad_alloc();
        return true;
    }
    static inline bool isFirst = true;
};

template <typename Holder>
class Restored : public ::testing::Test {};
using Holders = ::testing::Types<CmArray, CmLinkedList, CmStack, CmHashTable, CmAssociation, CmVariant>;
TYPED_TEST_SUITE(Restored, Holders, testing::TypeNames);

TYPED_TEST(Restored, EndsTheWholeLoadWhenAnElementFindsNoMemory) {
    const int32_t before = Number::alive;
    const auto attributes = make<FAttributes>();
    const auto part = make<FXmlInstance>(1, "Starved", make<FAttributes>());
    attributes->setInteger("type", CmVariant::object);
    attributes->setObject("Key", make<CmString>("key").get(), FAttributes::Hold::retain);
    attributes->setObject("Obj", part.get(), FAttributes::Hold::retain);
    if constexpr (std::is_same_v<TypeParam, CmVariant>) {
        attributes->setObject("obj", part.get(), FAttributes::Hold::retain);
    } else {
        attributes->appendObject("obj", make<NumberedObject>(1));
        attributes->appendObject("obj", part);
    }
    Starved::isFirst = true;
    {
        TypeParam holder;
        EXPECT_THROW(holder.restoreAttributes(attributes.get()), std::bad_alloc);
    }
    TypeParam again;
    EXPECT_TRUE(again.restoreAttributes(attributes.get())) << "nothing is lost for the next time";
    if constexpr (std::is_base_of_v<CmContainer, TypeParam>) {
        EXPECT_EQ(again.count(), 2);
        again.setOwnership(Ownership::adopt);
        again.removeAll();
    } else {
        EXPECT_TRUE(cast<Starved>(again.getObject()));
    }
    attributes->removeAll();
    EXPECT_EQ(Number::alive, before);
}

} // namespace

QORL_REGISTER(Starved, "Starved", CmObject, 0)

} // namespace qorl
