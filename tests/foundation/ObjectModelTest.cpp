#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/CmObject.h"
#include "foundation/FPersistent.h"
#include "support/FailingAllocation.h"
#include "support/Objects.h"

#include <gtest/gtest.h>
#include <new>
#include <string>

namespace qorl {
namespace {

class IExtra : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{5B0F0C0E-6E43-4AF4-9E0D-4E30A0A8A6D1}");
    virtual int extra() = 0;
};

class ISecond : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{5B0F0C0E-6E43-4AF4-9E0D-4E30A0A8A6D2}");
    virtual int second() = 0;
};

class Animal : public CmObject {
    QORL_CLASS(Animal, CmObject)
    QORL_CLONE(Animal)
    QORL_RECORD(Animal)
};
QORL_REGISTER(Animal, "TestAnimal", CmObject, 3)

class Dog : public Animal, public IExtra, public ISecond {
    QORL_CLASS_NAMED(Dog, Animal, "Zoo::Dog")
    QORL_CLONE(Dog)
    QORL_FACES(Dog, Animal, IExtra, ISecond)

public:
    int extra() override { return 7; }
    int second() override { return legs; }

    int legs = 4;
};

/// An object of another module: it knows nothing of our private id.
class Foreign : public FInterface {
public:
    Result queryInterface(const InterfaceId& id, void** out) override {
        *out = id == FInterface::iid ? this : nullptr;
        return *out ? Result::ok : Result::noInterface;
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
};

TEST(InterfaceId, ReadsTextAndWordsAlike) {
    constexpr InterfaceId fromText = InterfaceId::fromText("{00112233-4455-6677-8899-AABBCCDDEEFF}");
    EXPECT_EQ(fromText, InterfaceId::fromWords(0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF));
    EXPECT_EQ(fromText.bytes[0], 0x33);
    EXPECT_EQ(fromText.bytes[4], 0x55);
    EXPECT_EQ(fromText.bytes[6], 0x77);
    EXPECT_EQ(fromText.bytes[8], 0x88);
    EXPECT_EQ(fromText.bytes[15], 0xFF);
}

TEST(ObjectModel, AnObjectHasNothingButItsCount) {
    struct Numbered : FObject {
        int32_t number = 0;
    };
    EXPECT_EQ(sizeof(Numbered), sizeof(void*) + 2 * sizeof(int32_t)) << "its own field stands right behind";
    EXPECT_EQ(sizeof(CmObject), sizeof(FObject));
}

TEST(ObjectModel, GivesEachFaceUnderItsOwnId) {
    const Ref<Dog> dog = make<Dog>();
    Ref<IExtra> extra;
    Ref<ISecond> second;
    ASSERT_EQ(dog->queryInterface(IExtra::iid, extra.out()), Result::ok);
    ASSERT_EQ(extra->queryInterface(ISecond::iid, second.out()), Result::ok);
    EXPECT_EQ(extra->extra(), 7);
    EXPECT_EQ(second->second(), 4);

    Ref<FInterface> rootOfFirst;
    Ref<FInterface> rootOfSecond;
    ASSERT_EQ(extra->queryInterface(FInterface::iid, rootOfFirst.out()), Result::ok);
    ASSERT_EQ(second->queryInterface(FInterface::iid, rootOfSecond.out()), Result::ok);
    EXPECT_EQ(rootOfFirst, rootOfSecond) << "one object is one root";
    EXPECT_EQ(dog->addRef(), 6u);
    EXPECT_EQ(dog->release(), 5u);
}

TEST(ObjectModel, LeavesNullBehindForAnUnknownId) {
    const Ref<Dog> dog = make<Dog>();
    int something = 0;
    void* out = &something;
    EXPECT_EQ(dog->queryInterface(InterfaceId::fromWords(1, 2, 3, 4), &out), Result::noInterface);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(static_cast<uint32_t>(Result::noInterface), 0x80004002u);
    EXPECT_EQ(referencesOn(dog.get()), 1u) << "a refusal takes no reference";
}

TEST(ObjectModel, AnObjectThatCountsItselfWhileItGoesIsDestroyedOnce) {
    static int destroyed;
    destroyed = 0;
    struct SelfCounting : CmObject {
        ~SelfCounting() override {
            ++destroyed;
            const Ref<CmObject> self = retain<CmObject>(this);
            static_cast<void>(Ref<CmObject>(self));
        }
    };
    auto* object = new SelfCounting;
    EXPECT_EQ(object->addRef(), 2u);
    EXPECT_EQ(object->release(), 1u);
    EXPECT_EQ(object->release(), 0u);
    EXPECT_EQ(destroyed, 1);
}

TEST(ObjectModel, TellsItsClassesByName) {
    const Dog dog;
    struct Case {
        const char* name;
        bool exact, deep;
    };
    const std::string copied = "TestAnimal";
    const std::string animal = "Animal";
    const Case cases[] = {
        {"Zoo::Dog", true, true},  {"Animal", false, true},   {animal.c_str(), false, true},
        {"CmObject", false, true}, {"FObject", false, true},  {"Dog", false, false},
        {"Anima", false, false},   {"Animals", false, false}, {"animal", false, false},
        {"", false, false},        {nullptr, false, false},   {copied.c_str(), false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name ? c.name : "null");
        EXPECT_EQ(dog.isA(c.name), c.exact);
        EXPECT_EQ(dog.isTypeOf(c.name, false), c.exact);
        EXPECT_EQ(dog.isTypeOf(c.name, true), c.deep);
    }
    EXPECT_STREQ(dog.getClassName(), "Zoo::Dog");
    EXPECT_TRUE(FObject().isTypeOf("FObject", false));
}

TEST(ObjectModel, CastsDownUpAndAcrossFaces) {
    const Ref<Dog> dog = make<Dog>();
    CmObject* object = dog.get();
    IExtra* face = dog.get();
    const CmObject* constant = dog.get();
    EXPECT_EQ(cast<Dog>(object), dog.get());
    EXPECT_EQ(cast<Animal>(face), dog.get());
    EXPECT_EQ(cast<Dog>(constant), dog.get());
    EXPECT_EQ(cast<Dog>(Ref<Animal>(dog)), dog.get());
    EXPECT_EQ(cast<Dog>(static_cast<CmObject*>(nullptr)), nullptr);

    const Ref<Animal> animal = make<Animal>();
    EXPECT_EQ(cast<Dog>(animal), nullptr);
    EXPECT_EQ(referencesOn(dog.get()), 1u) << "a cast takes no reference";
}

TEST(ObjectModel, NeverTakesAForeignObjectForItsOwn) {
    Foreign foreign;
    EXPECT_EQ(castToCmObject(&foreign), nullptr);
    EXPECT_EQ(castToCmObject(nullptr), nullptr);
    EXPECT_EQ(cast<CmObject>(static_cast<FInterface*>(&foreign)), nullptr);
    // An object of ours without attributes and records is no CmObject either.
    FObject plain;
    EXPECT_EQ(castToCmObject(&plain), nullptr);
}

/// An object of ours that writes down how it is asked whether it is one.
class Asked : public CmObject {
    QORL_CLASS(Asked, CmObject)

public:
    Result queryInterface(const InterfaceId& id, void** out) override {
        log += id == privateInterfaceId() ? "private " : "other ";
        return CmObject::queryInterface(id, out);
    }
    uint32_t release() override {
        log += "release ";
        return CmObject::release();
    }

    std::string log;
};

TEST(ObjectModel, RecognisesItsOwnByThePrivateIdAlone) {
    Asked object;
    EXPECT_EQ(castToCmObject(static_cast<FInterface*>(&object)), &object);
    EXPECT_EQ(object.log, "private release ") << "the reference that the question took goes back at once";
}

TEST(ObjectModel, IsRecognisedWhileItGoes) {
    struct Going : CmObject {
        ~Going() override { EXPECT_NE(castToCmObject(this), nullptr); }
    };
    auto* counted = new Going;
    EXPECT_EQ(counted->release(), 0u);
    const Going onTheStack;
}

/// Memory for it, or for something that it holds, is never there.
struct Starving : CmObject {
    struct Member {
        Member() { throw std::bad_alloc(); }
        Member(const Member&) { throw std::bad_alloc(); }
        explicit Member(int) {}
    };
    Starving() = default;
    explicit Starving(int) : member(0) {}
    Member member;
    QORL_CLONE(Starving)
};

TEST(ObjectModel, WithoutMemoryNothingIsMadeAndNothingEscapes) {
    EXPECT_EQ(createObject<Starving>(), nullptr);
    const Starving original(0);
    EXPECT_EQ(original.clone(), nullptr);
    failEachAllocation([](FailingAllocation& memory) {
        const Ref<FInterface> made =
            memory.during([] { return ClassFactory::instance()->createByName("TestAnimal"); });
        EXPECT_EQ(made == nullptr, memory.hasFailed());
    });
}

TEST(ObjectModel, ClonesAreNewObjectsOfTheClass) {
    const Ref<Dog> dog = make<Dog>();
    dog->legs = 3;
    dog->addRef();
    const Ref<CmObject> copy = Ref<CmObject>::adopt(dog->clone());
    dog->release();
    ASSERT_TRUE(copy->isA("Zoo::Dog"));
    EXPECT_EQ(cast<Dog>(copy)->legs, 3);
    EXPECT_EQ(referencesOn(copy.get()), 1u) << "the count is not copied";
    EXPECT_STREQ(dog->getClassRecord()->name(), "TestAnimal") << "the nearest record";
}

TEST(ObjectModel, OrdersAndHashesByAddress) {
    CmObject objects[2];
    EXPECT_EQ(objects[0].compare(&objects[0]), 0);
    EXPECT_EQ(objects[0].compare(&objects[1]), -1);
    EXPECT_EQ(objects[1].compare(&objects[0]), 1);
    // Neighbours of 16 bytes fall into neighbouring buckets.
    static_assert(sizeof(CmObject) == 16);
    EXPECT_EQ(objects[1].hashCode(97), (objects[0].hashCode(97) + 1) % 97);
    EXPECT_EQ(objects[0].hashCode(1), 0u);
}

class AliasSource : public CmObject {
    QORL_CLASS(AliasSource, CmObject)
    QORL_RECORD(AliasSource)
};
QORL_REGISTER(AliasSource, "TestAliasSource", Animal, 0)
QORL_REGISTER_ALIAS(AliasSource, "TestAlias")

class AliasedByName : public CmObject {
    QORL_CLASS(AliasedByName, CmObject)
    QORL_RECORD(AliasedByName)
};
QORL_REGISTER(AliasedByName, "AliasedByName", CmObject, 0)
QORL_REGISTER_ALIAS(AliasedByName, "TestStoredName")

constexpr InterfaceId idOnly = InterfaceId::fromText("{DE500000-0000-4000-8000-00000000BEEF}");
QORL_REGISTER_ID(Animal, idOnly)

/// Its name has no record, but its class id has.
class Stored : public CmObject, public FPersistent {
    QORL_CLASS(Stored, CmObject)
    QORL_FACES(Stored, CmObject, FPersistent)

public:
    Result getClassId(FUID& classId) override {
        classId = idOnly;
        return Result::ok;
    }
    Result store(FAttributes*) override { return Result::no; }
    Result restore(FAttributes*) override { return Result::no; }
};

ClassRecord unregistered{"TestUnregistered", nullptr, nullptr};

struct CollectingSink : TextSink {
    void write(std::string_view part) override { text += part; }
    std::string text;
};

TEST(ClassFactory, CreatesByNameByIdAndByTheDigitsOfAnId) {
    const ClassFactory& factory = *ClassFactory::instance();
    const Ref<FInterface> byName = factory.createByName("TestAnimal");
    ASSERT_TRUE(byName);
    EXPECT_EQ(referencesOn(byName.get()), 1u) << "the caller's is the only reference";
    EXPECT_NE(cast<Animal>(byName), nullptr);
    EXPECT_NE(cast<Animal>(factory.createById(idOnly)), nullptr);
    EXPECT_NE(cast<Animal>(factory.createByName("DE50000000004000800000000000BEEF")), nullptr);

    for (const char* unknown :
         {"testanimal", "TestAnimal ", "", "00000000000000000000000000000000", "TestUnregistered"})
        EXPECT_FALSE(factory.createByName(unknown)) << unknown;
    EXPECT_FALSE(factory.createByName(nullptr));
    EXPECT_EQ(factory.findByName("TestUnregistered"), nullptr);
    EXPECT_EQ(factory.findById(InterfaceId()), nullptr);
}

TEST(ClassFactory, AnAliasIsWrittenAndBothNamesAreRead) {
    const ClassFactory& factory = *ClassFactory::instance();
    EXPECT_STREQ(AliasSource::classRecord().persistentName(), "TestAlias");
    EXPECT_STREQ(AliasSource::classRecord().name(), "TestAliasSource");
    for (const char* name : {"TestAliasSource", "TestAlias"})
        EXPECT_NE(cast<AliasSource>(factory.createByName(name)), nullptr) << name;
    EXPECT_EQ(factory.findByName("TestAlias")->parent(), nullptr);
}

TEST(ClassFactory, WalksTheParentsOfARecord) {
    const ClassRecord& record = AliasSource::classRecord();
    for (const char* name : {"TestAliasSource", "TestAnimal", "CmObject"})
        EXPECT_TRUE(record.isOnParentChain(name)) << name;
    EXPECT_FALSE(record.isOnParentChain("FObject"));
    EXPECT_FALSE(record.isOnParentChain(nullptr));
    EXPECT_EQ(Animal::classRecord().version(), 3);
}

TEST(ClassFactory, ForgetsARemovedRecordAndNoOther) {
    ClassFactory factory;
    // These two share a bucket: the fold of their bytes is equal modulo 50.
    ClassRecord first{"2", &createObject<Animal>, nullptr};
    ClassRecord second{"d", &createObject<Animal>, nullptr};
    ClassFactory::instance()->removeRecord(first);
    ClassFactory::instance()->removeRecord(second);
    factory.addRecord(first);
    for (int times = 0; times < 2; ++times)
        factory.addRecord(second); // a record stands once
    factory.removeRecord(first);
    EXPECT_EQ(factory.findByName("2"), nullptr);
    EXPECT_EQ(factory.findByName("d"), &second);
    EXPECT_EQ(ClassFactory::instance()->findByName("d"), nullptr);
}

TEST(ClassFactory, DescribesClassesByTheNameOfTheForm) {
    const ClassFactory& factory = *ClassFactory::instance();
    Dog dog;
    AliasSource source;
    Foreign foreign;
    const auto describe = [&](FInterface* object, ClassFactory::NameForm form) {
        CollectingSink sink;
        return factory.describeClass(object, sink, form) ? sink.text : "nothing";
    };
    EXPECT_EQ(describe(static_cast<IExtra*>(&dog), ClassFactory::NameForm::runTime), "Zoo::Dog");
    EXPECT_EQ(describe(&source, ClassFactory::NameForm::runTime), "AliasSource");
    EXPECT_EQ(describe(&foreign, ClassFactory::NameForm::persistent), "nothing");
    Animal animal;
    EXPECT_EQ(describe(&animal, ClassFactory::NameForm::persistent), "nothing")
        << "no record is found by its name at run time";
    AliasedByName aliased;
    EXPECT_EQ(describe(&aliased, ClassFactory::NameForm::persistent), "TestStoredName");
    Stored stored;
    EXPECT_EQ(describe(static_cast<CmObject*>(&stored), ClassFactory::NameForm::runTime), "Stored");
    EXPECT_EQ(describe(static_cast<CmObject*>(&stored), ClassFactory::NameForm::persistent),
              "DE50000000004000800000000000BEEF");
    EXPECT_EQ(describe(nullptr, ClassFactory::NameForm::runTime), "nothing");
}

} // namespace
} // namespace qorl
