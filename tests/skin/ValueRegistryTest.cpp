#include "WizardFixture.h"
#include "binding/StringValue.h"
#include "foundation/Cast.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/defaults/FDefaultPool.h"
#include "support/FailingAllocation.h"
#include "views/controls/UControl.h"

#include <tuple>
#include <utility>

namespace qorl::testing {
namespace {

class ValueRegistryTest : public WizardFixture {};

TEST_F(ValueRegistryTest, LooksLocallyBeforeGlobally) {
    const Ref<UView> view =
        build("<valuedefine name='v' type='int' scope='global' min='-5' max='5' default='3'/>"
              "<slider name='v'/><valuedefine name='v' type='int' scope='local' max='7' default='1'/><slider "
              "name='v'/>"
              "<valuedefine name='s' type='string' scope='global' default='words'/><edit name='s'/>"
              "<valuedefine name='b' type='bool' scope='global' default='1'/><checkbox name='b'/>"
              "<valuedefine name='c' type='scroll' min='2' max='4'/><slider name='c'/>");
    const auto value = [&view](int32_t i) { return cast<UControl>(view->getSubView(i))->getValueObject(); };
    EXPECT_EQ(value(0)->getMin(), -5);
    EXPECT_EQ(value(0)->getValue(), 3);
    EXPECT_EQ(value(1)->getMax(), 7);
    auto* text = cast<Binding::StringValue>(value(2));
    EXPECT_EQ(text->getText().string().toUtf8(), "words");
    EXPECT_EQ(value(3)->getValue(), 1);
    int32_t standard = 0;
    EXPECT_TRUE(value(4)->getMin() == 2 && value(4)->getMax() == 4 && value(4)->getValue() == 2);
    EXPECT_FALSE(value(4)->getDefault(standard)) << "a place to scroll to has none to go back to";
    value(0)->setValue(-2);
    text->setString(ConstString("typed"));
    build("<valuedefine name='v' type='int' scope='global' min='-3' max='9'/><slider name='v'/>"
          "<valuedefine name='v' type='int' scope='global' min='0' max='1'/>"
          "<valuedefine name='s' type='string' scope='global' default='other'/>");
    EXPECT_EQ(value(0)->getValue(), -2) << "a reload keeps the number";
    EXPECT_EQ(text->getText().string().toUtf8(), "typed") << "and the text";
    EXPECT_EQ(value(0)->getMax(), 9) << "and takes the range, where the first definition counts";
    EXPECT_TRUE(value(0)->getDefault(standard) && standard == -3) << "the minimum without a default";
    auto other = make<TestController>();
    EXPECT_EQ(wizard().findValue("v", other.get()).get(), value(0))
        << "local values stay with their controller";
    const Binding::Value* local = wizard().findValue("v", controller_.get()).get();
    EXPECT_EQ(local, value(1));
    controller_ = make<TestController>();
    EXPECT_EQ(wizard().findValue("v", controller_.get()).get(), value(0)) << "and go with it";
}

TEST_F(ValueRegistryTest, StoresPersistentValuesInEachRunOfTheProgram) {
    FGlobalDefaultPool& pool = *FGlobalDefaultPool::instance();
    for (const int32_t run : {1, 2}) {
        pool.clear();
        const Ref<UView> view =
            build("<valuedefine name='p' type='int' scope='global' persistence='kept'/><slider name='p'/>");
        cast<UControl>(view->getSubView(0))->getValueObject()->setValue(run);
        pool.setSaveHook(+[] { return false; });
        pool.finishLoad();
        pool.save(true);
        EXPECT_EQ(pool.getGroup("UGuiValues")->values().getInteger("kept"), run);
    }
    ValueRegistry::instance()->clear();
    pool.clear();
}

TEST_F(ValueRegistryTest, ADefinedValueKnowsWhatToCallItself) {
    const Ref<UView> view = build("<valuedefine name='v' type='int' title='Mode'/><slider name='v'/>"
                                  "<slider name='v' title='Own'/>");
    const auto nameOf = [&view](int32_t i) {
        String name;
        view->getSubView(i)->getAccessibleName(name);
        return name.toUtf8();
    };
    EXPECT_EQ(nameOf(0), "Mode");
    EXPECT_EQ(nameOf(1), "Own");
    for (const char* title : {"Kind", "", "Again"}) {
        build("<valuedefine name='v' type='int' title='" + std::string(title) + "'/>");
        EXPECT_EQ(nameOf(0), title) << "as the document says that was loaded last";
    }
    ValueRegistry::instance()->clear();
    EXPECT_EQ(nameOf(0), "") << "the registry is out of reach of the values that it gave up";
}

TEST_F(ValueRegistryTest, ANumberFollowsTheRangeOfAReload) {
    const std::tuple<int32_t, int32_t, int32_t> cases[] = {
        {-30, -20, -20}, {40, 50, 40}, {-3, 20, 4}, {0, 3, 3}, {5, 2, 5}};
    for (const auto& [min, max, expected] : cases) {
        ValueRegistry::instance()->clear();
        build("<valuedefine name='v' type='int' min='0' max='10' default='4'/>");
        build("<valuedefine name='v' type='int' min='" + std::to_string(min) + "' max='" +
              std::to_string(max) + "'/>");
        EXPECT_EQ(ValueRegistry::instance()->find("v", nullptr)->getValue(), expected) << min << ".." << max;
    }
}

TEST_F(ValueRegistryTest, TakesTheRangeOnceThereIsMemoryForTheTitle) {
    failEachAllocation([this](FailingAllocation& allocation) {
        ValueRegistry::instance()->clear();
        build("<valuedefine name='v' type='int' max='10'/>");
        load("<template name='T'><valuedefine name='v' type='int' max='20' title='a long one for the user'/>"
             "</template>");
        const auto view = allocation.during([this] { return wizard().createView("T", nullptr, nullptr); });
        if (!view)
            wizard().createView("T", nullptr, nullptr);
        EXPECT_EQ(ValueRegistry::instance()->find("v", nullptr)->getMax(), 20);
    });
}

TEST_F(ValueRegistryTest, AControllerEndsWithoutMemoryForWhatItKeeps) {
    FGlobalDefaultPool& pool = *FGlobalDefaultPool::instance();
    failEachAllocation([&](FailingAllocation& allocation) {
        pool.clear();
        controller_ = make<TestController>();
        build(
            "<valuedefine name='v' type='int' scope='local' persistence='a key too long for the string'/>"
            "<valuedefine name='s' type='string' scope='local' persistence='another one' default='words'/>");
        allocation.during([this] {
            controller_ = nullptr;
            return true;
        });
    });
    pool.clear();
}

TEST_F(ValueRegistryTest, AControllerMayEndWithTheValueOfAnother) {
    constexpr const char* defined = "<for variable='[i]' range='0,9'><valuedefine name='v[i]' type='int' "
                                    "scope='local'/></for>";
    ValueRegistry& registry = *ValueRegistry::instance();
    for (const bool atOnce : {false, true}) {
        for (int i = 0; i < 10; ++i) {
            const auto inner = std::exchange(controller_, make<TestController>());
            build(defined);
            registry.find("v" + std::to_string(i), controller_.get())->setTarget(inner.get(), 0, true);
        }
        const IController* const last = controller_.get();
        if (atOnce) {
            const auto kept = std::exchange(controller_, make<TestController>());
            registry.clear();
            EXPECT_FALSE(registry.find("v0", kept.get()));
        } else {
            controller_ = make<TestController>();
            EXPECT_FALSE(registry.find("v0", last));
        }
    }
}

} // namespace
} // namespace qorl::testing
