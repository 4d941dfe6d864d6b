#include "components/FComponentRegistry.h"

#include "foundation/Cast.h"
#include "foundation/CmDelegatingUnknown.h"
#include "foundation/FPersistent.h"
#include "foundation/text/CmString.h"
#include "foundation/text/StringObject.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/defaults/FDefaultPool.h"
#include "support/FailingAllocation.h"
#include "support/Slots.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace qorl {
namespace {

const FUID gateId(0x00112233, 0x44556677, 0x8899AABB, 0xCCDDEEFF);
const FUID delayId(1, 2, 3, 4);

CmObject* makeNamed(FInterface*, FComponentDescription* description) {
    return new CmString(description->getName());
}

/// A foreign object that stores one number.
class Foreign : public StringObject, public FPersistent {
    QORL_CLASS(Foreign, StringObject)
    QORL_FACES(Foreign, StringObject, FPersistent)

public:
    Result getClassId(FUID& classId) override {
        classId = gateId;
        return Result::ok;
    }
    Result store(FAttributes* attributes) override {
        attributes->setInteger("value", value);
        return Result::ok;
    }
    Result restore(FAttributes* attributes) override {
        value = attributes->getInteger("value");
        return Result::ok;
    }

    int64_t value = 0;
};

FInterface* makeForeign(void* context) {
    ++*static_cast<int*>(context);
    return static_cast<FPersistent*>(new Foreign);
}

class Journal final : public ComponentListener {
public:
    explicit Journal(FComponentRegistry& registry) : registry_(registry) {}
    void componentAdded(FComponentDescription* component) override { note('+', component); }
    void componentRemoved(FComponentDescription* component) override { note('-', component); }
    void componentsLoaded() override {}

    std::string text;

private:
    /// With the number of components that the listener finds at that moment.
    void note(char what, FComponentDescription* component) {
        text += what + component->getName().toUtf8() +
                std::to_string(registry_.countInCategory(component->getCategory())) + ' ';
    }

    FComponentRegistry& registry_;
};

class FComponentRegistryTest : public ::testing::Test {
protected:
    FComponentRegistryTest() { FComponentRegistry::makeInstance(); }
    ~FComponentRegistryTest() override {
        FComponentRegistry::dropInstance();
        FGlobalDefaultPool::instance()->clear();
    }

    static FComponentRegistry& registry() { return *FComponentRegistry::instance(); }
    static void add(const char* category, const char* name, const FUID& id) {
        registry().addComponent(
            make<FComponentDescription>(ConstString(category), ConstString(name), id, &makeNamed));
    }
};

TEST(FComponentDescriptionSlots, GoOnBehindThoseOfObjects) {
    testing::expectSlotsFrom(25, &FComponentDescription::getName, &FComponentDescription::setName,
                             &FComponentDescription::getCategory, &FComponentDescription::getId,
                             &FComponentDescription::getCardinality, &FComponentDescription::getVendor,
                             &FComponentDescription::getUrl, &FComponentDescription::getEmail,
                             &FComponentDescription::getModulePath, &FComponentDescription::getModuleName,
                             &FComponentDescription::isAvailable, &FComponentDescription::createInstance,
                             &FComponentDescription::createRaw);
}

TEST_F(FComponentRegistryTest, KeepsEachCategorySorted) {
    add("Effect", "Gate", gateId);
    add("Effect", "Delay", delayId);
    add("Tool", "Pencil", FUID(5, 6, 7, 8));
    ASSERT_EQ(registry().countInCategory("Effect"), 2);
    EXPECT_EQ(registry().getComponent("Effect", 0)->getName(), ConstString("Delay"));
    EXPECT_EQ(registry().getComponent("Effect", 2), nullptr);
    EXPECT_EQ(registry().getComponent("Effect", -1), nullptr);
    EXPECT_EQ(registry().countInCategory("effect"), 0);
    EXPECT_EQ(registry().findByName("Effect", "GATE")->getId(), gateId);
    EXPECT_EQ(registry().findByName("effect", "Gate"), nullptr);
    EXPECT_EQ(registry().findById(delayId)->getName(), ConstString("Delay"));
    EXPECT_EQ(registry().findById(delayId, "Tool"), nullptr);
    registry().getComponent("Tool", 0)->setNumber(9);
    EXPECT_EQ(registry().findByNumber("Tool", 9)->getName(), ConstString("Pencil"));
    registry().getComponent("Tool", 0)->setCardinality(3);
    EXPECT_EQ(registry().getCardinality("Tool", 0), 3);
    EXPECT_EQ(registry().getCardinality("Tool", 1), 1);
    registry().findById(delayId)->setName("Tremolo");
    add("Effect", "Reverb", FUID(9, 9, 9, 9));
    EXPECT_EQ(registry().getComponent("Effect", 0)->getName(), ConstString("Gate"));
    EXPECT_EQ(registry().getComponent("Effect", 2)->getName(), ConstString("Tremolo"))
        << "under its new name";
}

TEST_F(FComponentRegistryTest, TellsListenersBeforeTheDirectoryChanges) {
    Journal journal(registry());
    registry().addListener(&journal);
    add("Effect", "Gate", gateId);
    registry().removeComponent(delayId);
    registry().removeComponent(gateId);
    registry().removeListener(&journal);
    add("Effect", "Delay", delayId);
    EXPECT_EQ(journal.text, "+Gate0 -Gate1 ");
    registry().unloadAll();
    EXPECT_EQ(registry().countInCategory("Effect"), 0);
}

TEST_F(FComponentRegistryTest, TellsNobodyOfWhatItHasNoMemoryFor) {
    const char* const category = "Effects that no small string has room for";
    failEachAllocation([&](FailingAllocation& allocation) {
        Journal journal(registry());
        registry().addListener(&journal);
        const bool isAdded = allocation.completes([&] { add(category, "Gate", gateId); });
        EXPECT_EQ(journal.text, isAdded ? "+Gate0 " : "");
        EXPECT_EQ(registry().countInCategory(category), isAdded ? 1 : 0);
        registry().removeListener(&journal);
        registry().unloadAll();
    });
}

/// Takes the next listener away when it hears of something.
class Remover : public ComponentListener {
public:
    void componentAdded(FComponentDescription*) override {
        FComponentRegistry::instance()->removeListener(next.get());
        next.reset();
    }
    void componentRemoved(FComponentDescription*) override {}
    void componentsLoaded() override {}

    std::unique_ptr<Journal> next;
};

TEST_F(FComponentRegistryTest, CallsNoListenerThatAnotherOneRemoved) {
    Remover remover;
    remover.next = std::make_unique<Journal>(registry());
    registry().addListener(&remover);
    registry().addListener(remover.next.get());
    add("Effect", "Gate", gateId);
    EXPECT_EQ(remover.next, nullptr);
    EXPECT_EQ(registry().countInCategory("Effect"), 1);
    registry().removeListener(&remover);
}

TEST_F(FComponentRegistryTest, CreatesByPlaceNameAndId) {
    add("Effect", "Gate", gateId);
    EXPECT_EQ(cast<CmString>(registry().create(nullptr, "Effect", 0))->string(), ConstString("Gate"));
    EXPECT_NE(registry().create(nullptr, "Effect", ConstString("gate")), nullptr);
    EXPECT_NE(registry().create(nullptr, gateId), nullptr);
    EXPECT_EQ(registry().create(nullptr, delayId), nullptr);
    EXPECT_EQ(registry().create(nullptr, "Effect", 1), nullptr);
}

TEST_F(FComponentRegistryTest, AComponentMayGoWhileItCreates) {
    registry().addComponent(make<FComponentDescription>(
        ConstString("Effect"), ConstString("Gate"), gateId, [](FInterface*, FComponentDescription* self) {
            FComponentRegistry::instance()->removeComponent(gateId);
            return makeNamed(nullptr, self);
        }));
    EXPECT_EQ(cast<CmString>(registry().create(nullptr, gateId))->string(), ConstString("Gate"));
    EXPECT_EQ(registry().findById(gateId), nullptr);
}

TEST_F(FComponentRegistryTest, RestoresForeignObjects) {
    int made = 0;
    registry().addComponent(make<FCompiledInComponentDescription>(
        1, ConstString("Gate"), ConstString("Effect"), gateId, &makeForeign, &made));
    const Ref<CmObject> wrapper = registry().create(nullptr, gateId);
    auto* own = cast<CmDelegatingUnknown>(wrapper);
    ASSERT_NE(own, nullptr);
    Ref<FPersistent> face;
    ASSERT_EQ(wrapper->queryInterface(FPersistent::iid, face.out()), Result::ok);
    static_cast<Foreign*>(face.get())->value = 42;

    FAttributes stored;
    ASSERT_TRUE(wrapper->storeAttributes(&stored));
    const auto restored = make<CmDelegatingUnknown>();
    ASSERT_TRUE(restored->restoreAttributes(&stored));
    ASSERT_EQ(restored->queryInterface(FPersistent::iid, face.out()), Result::ok);
    EXPECT_EQ(static_cast<Foreign*>(face.get())->value, 42);
    EXPECT_EQ(made, 2);
    registry().unloadAll();
    EXPECT_FALSE(make<CmDelegatingUnknown>()->restoreAttributes(&stored));
}

TEST_F(FComponentRegistryTest, RemembersWhatIsAvailable) {
    const auto stored = [] {
        return FGlobalDefaultPool::instance()->getGroup("Components\\Category Effect\\Available", 0, false);
    };
    const auto hidden = make<FComponentDescription>("Effect", "Gate", gateId, &makeNamed);
    hidden->setAvailable(false);
    registry().addComponent(hidden);
    EXPECT_TRUE(hidden->isAvailable()) << "where nothing is stored";
    EXPECT_EQ(stored(), nullptr) << "looking leaves no settings behind";
    registry().findById(gateId)->setAvailable(false);
    registry().saveAvailability("Effect");
    const FDefaults* group = stored();
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->values().getInteger("{00112233-4455-6677-8899-AABBCCDDEEFF}", 9), 0);
    registry().unloadAll();
    add("Effect", "Gate", gateId);
    EXPECT_FALSE(registry().findById(gateId)->isAvailable());
}

} // namespace
} // namespace qorl
