#include "binding/Value.h"

#include "binding/IntValue.h"
#include "binding/StringValue.h"
#include "binding/UColorValue.h"
#include "binding/UPlugTarget.h"
#include "binding/ValueActivity.h"
#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/UpdateHandler.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"
#include "support/FailingAllocation.h"
#include "support/Objects.h"
#include "support/Poisoned.h"
#include "support/StoredBytes.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace qorl::Binding {
namespace {

/// Writes down what it hears, as a dependent and as a target.
class Witness : public CmObject {
    QORL_CLASS(Witness, CmObject)

public:
    void notify(CmObject*, int32_t message) override { heard += std::to_string(message) + " "; }
    int32_t handleMessage(FMessage* message) override {
        heard += message->getName().text8();
        heard += cast<Value>(message->getObject("Value")) ? " " : "(no value) ";
        return 1;
    }
    std::string take() { return std::exchange(heard, {}); }

    std::string heard;
};

class PlugComponent : public FObject, public IValueTarget, public IValueEditTarget {
    QORL_CLASS(PlugComponent, FObject)

public:
    Result queryInterface(const InterfaceId& id, void** out) override {
        if (id != IValueEditTarget::iid)
            return FObject::queryInterface(id, out);
        *out = static_cast<IValueEditTarget*>(this);
        addRef();
        return Result::ok;
    }
    uint32_t addRef() override { return FObject::addRef(); }
    uint32_t release() override { return FObject::release(); }
    void reserved() override { heard += "reserved "; }
    void valueEdited(IBoundValue* value, int32_t tag) override {
        heard += std::to_string(tag) + "=" + std::to_string(value->getValue()) + " ";
    }
    void beginEdit(IBoundValue*) override { heard += "begin "; }
    void endEdit(IBoundValue*) override { heard += "end "; }

    std::string heard;
};

class ValueTest : public ::testing::Test {
protected:
    // Nobody can depend on anything before there is a handler.
    ValueTest() { UpdateHandler::instance(); }
    ~ValueTest() override {
        if (value)
            value->removeDependent(nullptr);
    }
    /// From now on the witness hears of each change at once.
    void watch() {
        value->setImmediateUpdates(true);
        value->addDependent(witness.get());
    }
    void deliver() { UpdateHandler::instance()->triggerDeferredUpdates(nullptr); }
    static std::string textOf(Value& value) {
        String text;
        value.toString(text);
        return text.text8();
    }

    Ref<Witness> witness = make<Witness>();
    Ref<IntValue> value = make<IntValue>(0, 100);
};

TEST_F(ValueTest, TellsManyChangesAsOneUnlessImmediate) {
    value->addDependent(witness.get());
    for (int i = 1; i <= 5; ++i)
        value->setValue(i);
    EXPECT_EQ(witness->take(), "");
    deliver();
    EXPECT_EQ(witness->take(), "1 ");

    value->setImmediateUpdates(true);
    value->setValue(6);
    value->setValue(6);
    value->setValue(7);
    EXPECT_EQ(witness->take(), "1 1 ");
}

TEST_F(ValueTest, HoldsSignalsUntilSomeoneDepends) {
    watch();
    value->setFlag(Value::signalsHeld, true);
    value->setValue(1);
    EXPECT_EQ(witness->take(), "");
    value->addDependent(witness.get());
    value->setValue(2);
    EXPECT_EQ(witness->take(), "1 1 ") << "added twice, heard twice";
}

TEST_F(ValueTest, LimitsByClampingOrWrapping) {
    const struct {
        int32_t min, max, number;
        bool wraps;
        int32_t expected;
    } cases[] = {
        {0, 10, 11, false, 10},
        {0, 10, -1, false, 0},
        {0, 10, 11, true, 0},
        {0, 10, -1, true, 10},
        {0, 10, 5, true, 5},
        {3, 3, 9, true, 3},
        {-5, 5, 6, true, -5},
        {-5, 5, -6, true, 5},
        {0, 10, 12, true, 1},
        {0, 1, 2, true, 0},
        {0, 1, -1, true, 1},
        {0, 10, 19, true, 8},
        {0, 10, 20, true, 9},
        {0, 10, 21, true, 0},
        {0, 10, -9, true, 2},
        {0, 10, -10, true, 1},
        {0, 10, -11, true, 10},
        {INT32_MAX - 1, INT32_MAX, INT32_MIN, true, INT32_MAX},
        {INT32_MIN, INT32_MAX, INT32_MAX, true, INT32_MAX},
    };
    for (const auto& c : cases) {
        const auto limited = make<IntValue>(c.min, c.max);
        limited->setWrapAround(c.wraps);
        EXPECT_EQ(limited->limitValue(c.number), c.expected)
            << c.min << ".." << c.max << " takes " << c.number << " wraps " << c.wraps;
    }
}

TEST_F(ValueTest, MovesTheNumberWithItsRange) {
    value->setValue(8);
    watch();
    value->setMax(5);
    EXPECT_EQ(value->getValue(), 5);
    EXPECT_EQ(witness->take(), "1 ") << "one signal, from the number";
    value->setMin(20);
    EXPECT_EQ(value->getMax(), 20) << "a minimum lifts the maximum";
    EXPECT_EQ(value->getValue(), 20);
}

TEST_F(ValueTest, StaysInTheRangeOfAllNumbers) {
    const auto wide = make<IntValue>(INT32_MIN, INT32_MAX);
    wide->setNormalized(1);
    EXPECT_EQ(wide->getValue(), INT32_MAX);
    wide->increment();
    EXPECT_EQ(wide->getValue(), INT32_MAX);
    wide->setNormalized(0);
    EXPECT_EQ(wide->getValue(), INT32_MIN);
    wide->decrement();
    EXPECT_EQ(wide->getValue(), INT32_MIN);
}

TEST_F(ValueTest, CalculatesFromTypedText) {
    const std::pair<const char16_t*, int32_t> cases[] = {
        {u"12", 12},    {u"12-", 28}, {u"-12", -12},       {u"2*", 80},
        {u"4/", 10},    {u"0/", 40},  {u"2,9", 2},         {u"abc", 0},
        {u"", 0},       {u"5+", 45},  {u"-2,5*", -100},    {u" 7", 7},
        {u"1e3", 1000}, {u"+9", 9},   {u"1e99", 1000000},  {u"nan", 0},
        {u"info", 0},   {u"-inf", 0}, {u"1e999", 1000000}, {u"-1e999", -1000000},
        {u"1e-999", 0}, {u"+-5", 0},  {u",5*", 20},        {u"x9", 0},
    };
    for (const auto& [text, expected] : cases) {
        const auto calculating = make<IntValue>(-1000000, 1000000);
        calculating->setValue(40);
        calculating->bound()->setValueText(text);
        EXPECT_EQ(calculating->getValue(), expected) << String(text).text8();
    }
}

TEST_F(ValueTest, BracketsEditsForTargetsThatTakeThem) {
    value->setTarget(witness.get(), 7, false);
    value->beginEdit();
    value->endEdit(true);
    EXPECT_EQ(witness->take(), "") << "a plain target hears no brackets";

    value->setFlag(Value::targetTakesEdits, true);
    value->setPerformOnEdit(true);
    value->beginEdit();
    EXPECT_EQ(witness->take(), "BeginEdit 1 ");
    value->endEdit(true);
    EXPECT_EQ(witness->take(), "EndEdit 1 ");
}

TEST_F(ValueTest, OutlivesTheEndOfItsEdit) {
    struct Owner : CmObject {
        explicit Owner(Ref<IntValue>& owned) : value(owned) {}
        int32_t handleMessage(FMessage* message) override {
            if (message->isNamed("EndEdit"))
                value.reset();
            return handled;
        }
        Ref<IntValue>& value;
    } owner{value};
    value->setTarget(&owner, 0, false);
    value->setFlag(Value::targetTakesEdits, true);
    value->setPerformOnEdit(true);
    value->beginEdit();
    value->endEdit(true);
    EXPECT_FALSE(value);
}

/// Holds the last reference on a value and lets go of it when it first hears of it.
struct LastHolder : CmObject, ValueActivityListener {
    void notify(CmObject*, int32_t) override { letGo(); }
    void valueChanged(IBoundValue*) override { letGo(); }
    void editStateChanged(IBoundValue*) override { letGo(); }
    void letGo() {
        if (held)
            held->removeDependent(this);
        held.reset();
    }
    Ref<Value> held;
};

TEST_F(ValueTest, OutlivesWhatItTellsOfAChange) {
    const std::pair<const char*, void (*)(Value&)> operations[] = {
        {"setValueAndPerform", [](Value& v) { v.bound()->setValueAndPerform(3); }},
        {"setValueMaybePerform", [](Value& v) { v.bound()->setValueMaybePerform(3, true); }},
        {"setNormalizedMaybePerform", [](Value& v) { v.bound()->setNormalizedMaybePerform(1, true); }},
        {"setValueText", [](Value& v) { v.bound()->setValueText(u"3"); }},
        {"setValueTextQuiet", [](Value& v) { v.bound()->setValueTextQuiet(u"3", false); }},
        {"resetToDefault", [](Value& v) { v.bound()->resetToDefault(); }},
        {"toggle", [](Value& v) { v.toggle(); }},
        {"beginEdit", [](Value& v) { v.beginEdit(); }},
        {"performUpdate", [](Value& v) { v.performUpdate(); }},
    };
    for (const bool isText : {false, true})
        for (const auto& [name, operate] : operations) {
            SCOPED_TRACE(name);
            LastHolder holder;
            if (isText)
                holder.held = make<testing::Poisoned<StringValue>>();
            else
                holder.held = make<testing::Poisoned<IntDefValue>>(0, 5, 4);
            holder.held->setImmediateUpdates(true);
            holder.held->setPerformOnEdit(true);
            holder.held->addDependent(&holder);
            setValueActivityListener(&holder);
            operate(*holder.held);
            setValueActivityListener(nullptr);
            EXPECT_TRUE(isText || !holder.held) << "a text has neither default nor range";
            holder.letGo();
        }
}

TEST_F(ValueTest, NoLackOfMemoryReachesOtherModules) {
    const std::u16string longText(300, u'1');
    const auto text = make<StringValue>(ConstString(longText.c_str()));
    const auto component = make<PlugComponent>();
    char16_t buffer[IBoundValue::valueTextCapacity];
    failEachAllocation([&](FailingAllocation& allocation) {
        value->bound()->setTargetInterface(nullptr, 0);
        value->setFlag(Value::targetTakesEdits, false);
        buffer[0] = u'?';
        int32_t size = 0;
        allocation.during([&] {
            text->bound()->getValueText(buffer);
            text->bound()->getValueTextSized(nullptr, size);
            for (Value* each : {static_cast<Value*>(value.get()), static_cast<Value*>(text.get())})
                each->bound()->setValueText(longText.c_str());
            value->bound()->setTargetInterface(static_cast<IValueTarget*>(component.get()), 5);
            value->bound()->setEditBracket(true);
            value->bound()->setEditBracket(false);
            return true;
        });
        const size_t length = std::u16string(buffer).size();
        EXPECT_TRUE(length == 127 || (allocation.hasFailed() && length == 0)) << length;
        EXPECT_EQ(value->has(Value::targetTakesEdits), value->target() != nullptr);
    });
    value->bound()->setTargetInterface(nullptr, 0);
}

TEST_F(ValueTest, MarksTheFinalUpdateOfAMinorEdit) {
    struct MinorWitness : CmObject {
        void notify(CmObject* object, int32_t) override {
            wasMinor = cast<Value>(object)->has(Value::minorEdit);
        }
        bool wasMinor = false;
    } target;
    value->setTarget(&target, 0, false);
    value->setFlag(Value::performOnEndEdit, true);
    value->beginEdit();
    value->endEdit(false);
    EXPECT_TRUE(target.wasMinor);
    EXPECT_FALSE(value->has(Value::minorEdit));
}

TEST_F(ValueTest, PlugTargetHearsBracketsAndEditsButNoUpdateFromBrackets) {
    const auto component = make<PlugComponent>();
    value->setPerformOnEdit(true);
    value->bound()->setTargetInterface(static_cast<IValueTarget*>(component.get()), 5);
    value->beginEdit();
    value->bound()->setValueAndPerform(3);
    value->endEdit(true);
    EXPECT_EQ(component->heard, "begin 5=3 end ");

    const auto question = make<FMessage>("IsPlugTarget");
    IPlugMessageTarget* face = nullptr;
    ASSERT_EQ(value->target()->queryInterface(IPlugMessageTarget::iid, reinterpret_cast<void**>(&face)),
              Result::ok);
    EXPECT_EQ(face->receiveMessage(static_cast<FDependent*>(question.get())), 1);
    face->release();

    value->bound()->setTargetInterface(nullptr, 0);
    EXPECT_EQ(value->target(), nullptr);
    EXPECT_TRUE(value->has(Value::targetTakesEdits)) << "taking the target away leaves the mark";
}

TEST_F(ValueTest, FormatsAnotherNumberWithoutTellingAnyone) {
    value->setValue(4);
    watch();
    String text;
    value->formatValue(77, text);
    EXPECT_STREQ(text.text8(), "77");
    EXPECT_EQ(value->getValue(), 4);
    EXPECT_EQ(witness->take(), "");
    value->setValue(5);
    EXPECT_EQ(witness->take(), "1 ") << "signals are on again";
}

TEST_F(ValueTest, ComesBackWholeFromTheFormatOfAFloat) {
    value->setMax(2'000'000'000);
    value->setValue(16'777'217);
    String text;
    value->formatValueFloat(5, text);
    EXPECT_STREQ(text.text8(), "5");
    EXPECT_EQ(value->getValue(), 16'777'217) << "a float has no place for all of its digits";
}

TEST_F(ValueTest, ACopySharesATargetThatIsNotOwned) {
    value->setTarget(witness.get(), 3, false);
    const auto copy = Ref<CmObject>::adopt(value->clone());
    value.reset();
    ASSERT_NE(cast<IntValue>(copy), nullptr);
    EXPECT_EQ(cast<IntValue>(copy)->tag(), 3);
    cast<IntValue>(copy)->performUpdate();
    EXPECT_EQ(witness->take(), "1 ");
}

TEST_F(ValueTest, AnOwnedTargetLivesAsLongAsTheLastValue) {
    value->setTarget(witness.get(), 3, true);
    auto copy = Ref<CmObject>::adopt(value->clone());
    EXPECT_EQ(referencesOn(witness.get()), 3U);
    value.reset();
    copy.reset();
    EXPECT_EQ(referencesOn(witness.get()), 1U);
}

TEST_F(ValueTest, TellsItsEndAtOnce) {
    value->addDependent(witness.get());
    value->setValue(5);
    value->removeDependent(nullptr);
    value->addDependent(witness.get());
    value.reset();
    EXPECT_EQ(witness->take(), "2 ");
    deliver();
    EXPECT_EQ(witness->take(), "") << "nothing deferred is left of a dead value";
}

TEST_F(ValueTest, StoresItsRangeBeforeItsNumber) {
    value->setMax(1000);
    value->setValue(750);
    const auto attributes = make<FAttributes>();
    EXPECT_TRUE(value->storeAttributes(attributes.get()));
    const auto other = make<IntValue>(0, 1);
    EXPECT_TRUE(other->restoreAttributes(attributes.get()));
    EXPECT_EQ(other->getValue(), 750);
    attributes->remove("Max");
    attributes->setInteger("Value", 3);
    EXPECT_TRUE(other->restoreAttributes(attributes.get()));
    EXPECT_EQ(other->getMax(), 1000) << "a missing key leaves the property";
    attributes->setInteger("Max", int64_t{1} << 40);
    EXPECT_TRUE(other->restoreAttributes(attributes.get()));
    EXPECT_EQ(other->getMax(), std::numeric_limits<int32_t>::max());
}

TEST_F(ValueTest, StoresItsNumberOrItsTextInAStream) {
    const auto number = make<IntValue>(0, 1000);
    number->setValue(0x123);
    EXPECT_EQ(testing::written(*number), std::string("\x23\x01\0\0", 4));
    const auto other = make<IntValue>(0, 500);
    other->setTarget(witness.get(), 0, false);
    EXPECT_TRUE(testing::read(*other, testing::written(*number)));
    EXPECT_EQ(other->getValue(), 0x123);
    EXPECT_FALSE(testing::read(*other, "\x05\0"));
    EXPECT_EQ(other->getValue(), 0x123) << "a cut number is none";
    EXPECT_EQ(witness->take(), "") << "nobody edited";

    const auto text = make<StringValue>(ConstString("level"));
    const auto copy = make<StringValue>();
    copy->setTarget(witness.get(), 0, false);
    EXPECT_TRUE(testing::read(*copy, testing::written(*text)));
    EXPECT_EQ(textOf(*copy), "level");
    EXPECT_EQ(witness->take(), "1 ");
    EXPECT_FALSE(testing::read(*copy, ""));
    EXPECT_EQ(textOf(*copy), "level");
}

TEST_F(ValueTest, NormalizedIsZeroInAnEmptyRange) {
    EXPECT_EQ(make<IntValue>(5, 5)->bound()->getNormalized(), 0.0F);
    const auto color = make<UColorValue>();
    color->setNormalized(0.5F);
    EXPECT_EQ(color->getValue(), 0) << "every value with a range, not integers alone";
}

TEST_F(ValueTest, BooleanStepsStopAtTheEnds) {
    const auto boolean = make<Value>();
    boolean->setTarget(witness.get(), 0, false);
    boolean->decrement();
    EXPECT_EQ(witness->take(), "");
    boolean->increment();
    boolean->increment();
    EXPECT_EQ(boolean->getValue(), 1);
    EXPECT_EQ(witness->take(), "1 ");
    EXPECT_EQ(textOf(*boolean), "On");
    boolean->bound()->setValueText(u"on");
    EXPECT_EQ(boolean->getValue(), 0) << "case counts";
    boolean->bound()->setValueText(u"On");
    EXPECT_EQ(boolean->getValue(), 1);
}

TEST_F(ValueTest, AQuietTextReachesNoTarget) {
    value->setTarget(witness.get(), 0, false);
    value->bound()->setValueTextQuiet(u"12", false);
    EXPECT_EQ(value->getValue(), 12);
    EXPECT_EQ(witness->take(), "");
    EXPECT_EQ(value->target(), witness.get());
    value->bound()->setValueTextQuiet(nullptr, true);
    EXPECT_EQ(value->getValue(), 12);
}

TEST_F(ValueTest, TextBuffersAreAlwaysTerminated) {
    const auto string = make<StringValue>(ConstString(std::u16string(300, u'x').c_str()));
    char16_t buffer[IBoundValue::valueTextCapacity + 1];
    buffer[IBoundValue::valueTextCapacity] = u'!';
    string->bound()->getValueText(buffer);
    EXPECT_EQ(std::u16string(buffer).size(), 127U);
    EXPECT_EQ(buffer[IBoundValue::valueTextCapacity], u'!');

    int32_t size = 0;
    string->bound()->getValueTextSized(nullptr, size);
    EXPECT_EQ(size, 301);
    size = 4;
    string->bound()->getValueTextSized(buffer, size);
    EXPECT_EQ(std::u16string(buffer), u"xxx");
}

TEST_F(ValueTest, CountsTheCharactersOfAnEightBitText) {
    const auto string = make<StringValue>(ConstString("\xC3\xA4\xC3\xB6\xC3\xBC"));
    char16_t buffer[IBoundValue::valueTextCapacity];
    string->bound()->getValueText(buffer);
    EXPECT_EQ(std::u16string(buffer), u"\u00E4\u00F6\u00FC");
    int32_t size = 0;
    string->bound()->getValueTextSized(nullptr, size);
    EXPECT_EQ(size, 4);
    String text;
    string->toStringTruncated(text, 2);
    EXPECT_EQ(text.toUtf16(), u"\u00E4\u00F6");
    string->setString(ConstString("\xFF\xFE\xFD"));
    string->bound()->getValueText(buffer);
    EXPECT_EQ(std::u16string(buffer), u"\uFFFD\uFFFD\uFFFD") << "no text in any width";
}

TEST_F(ValueTest, AStringAlwaysPerformsButSignalsDifferencesOnly) {
    const auto string = make<StringValue>();
    string->setImmediateUpdates(true);
    string->addDependent(witness.get());
    Witness target;
    string->setTarget(&target, 0, false);
    string->setString(ConstString("a"));
    string->setString(ConstString("a"));
    string->setString(ConstString("A"));
    EXPECT_EQ(witness->take(), "1 1 ");
    EXPECT_EQ(target.take(), "1 1 1 ");
    string->assign(value.get());
    EXPECT_EQ(textOf(*string), "A");
    string->removeDependent(nullptr);
}

TEST_F(ValueTest, OtherModulesGetTheInterfaceByClassId) {
    const auto id = InterfaceId::fromText("{037B1E33-F364-4539-92F2-09B82602C80B}");
    const Ref<FInterface> object = ClassFactory::instance()->createById(id);
    ASSERT_TRUE(object);
    Ref<IBoundValue> bound;
    ASSERT_EQ(object->queryInterface(IBoundValue::thirdIid, bound.out()), Result::ok);
    EXPECT_EQ(static_cast<FInterface*>(bound.get()), object.get()) << "the factory gives that face itself";
    bound->setMax(9);
    bound->setValueAndPerform(12);
    EXPECT_EQ(bound->getValue(), 9);
    auto* made = cast<IntDefValue>(object.get());
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->isWheelStepped());
    EXPECT_STREQ(made->getClassRecord()->name(), "UIntDefValue");
    EXPECT_STREQ(made->getClassName(), "Binding::IntDefValue");
}

TEST_F(ValueTest, TheActivityListenerHearsAllButSilentValues) {
    struct : ValueActivityListener {
        void valueChanged(IBoundValue*) override { ++changes; }
        void editStateChanged(IBoundValue*) override { ++edits; }
        int changes = 0;
        int edits = 0;
    } listener;
    setValueActivityListener(&listener);
    value->beginEdit();
    value->beginEdit();
    value->bound()->setValueAndPerform(1);
    value->endEdit(true);
    EXPECT_EQ(listener.changes, 1);
    EXPECT_EQ(listener.edits, 2) << "a second begin changes nothing";
    value->setFlag(Value::silentForListener, true);
    value->bound()->setValueAndPerform(2);
    EXPECT_EQ(listener.changes, 1);
    setValueActivityListener(nullptr);
}

TEST_F(ValueTest, ResetsToItsDefaultInsideABracket) {
    const auto with = make<IntDefValue>(0, 100, 50);
    EXPECT_EQ(with->getValue(), 0);
    with->setTarget(witness.get(), 0, false);
    EXPECT_TRUE(with->bound()->resetToDefault());
    EXPECT_EQ(with->getValue(), 50);
    EXPECT_EQ(witness->take(), "1 ");
    EXPECT_FALSE(value->bound()->resetToDefault()) << "it has none";
}

} // namespace
} // namespace qorl::Binding
