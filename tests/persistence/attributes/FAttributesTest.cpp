#include "persistence/attributes/FAttributes.h"

#include "foundation/Cast.h"
#include "foundation/containers/CmBuffer.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "support/Objects.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

using Hold = FAttributes::Hold;

TEST(FAttributes, RemovesTheEntryOfANull) {
    FAttributes attributes;
    EXPECT_EQ(attributes.getInteger("none", 7), 7);
    for (const char* key : {"a", "b", "c"})
        attributes.setInteger(key, 1);
    EXPECT_FALSE(attributes.contains("B"));
    EXPECT_EQ(attributes.at(3), nullptr);
    attributes.setText8("a", nullptr);
    attributes.setText16("b", nullptr);
    attributes.setObject("c", nullptr, Hold::retain);
    EXPECT_TRUE(attributes.isEmpty());
}

TEST(FAttributes, ConvertsWhatItReads) {
    FAttributes attributes;
    attributes.setText8("number", "12.75 dB");
    attributes.setFloat("real", -3.9);
    attributes.setFloat("huge", 1e300);
    attributes.setInteger("whole", 5);
    attributes.setText16("wide", u"77");
    EXPECT_EQ(attributes.getInteger("number"), 12);
    EXPECT_EQ(attributes.getFloat("number"), 12.75);
    EXPECT_EQ(attributes.getInteger("real"), -3);
    EXPECT_EQ(attributes.getInteger("huge"), INT64_MAX);
    EXPECT_EQ(attributes.getFloat("whole"), 5.0);
    EXPECT_EQ(attributes.getInteger("wide"), 77);
    EXPECT_EQ(attributes.getText8("whole"), nullptr);
    EXPECT_EQ(std::u16string(attributes.getText16("number")), u"12.75 dB");
    EXPECT_EQ(attributes.getText8("none"), nullptr);
    attributes.setObject("text", make<CmString>("inside").get(), Hold::retain);
    EXPECT_STREQ(attributes.getText8("text"), "inside");

    FAttributeValue reference;
    reference.referToText("foreign");
    EXPECT_STREQ(reference.getText8(), "foreign");
    EXPECT_EQ(std::u16string(reference.getText16()), u"foreign");
    EXPECT_TRUE(reference.isWide());
}

TEST(FAttributes, HoldsObjectsAsItIsTold) {
    const auto object = make<CmString>("held");
    {
        FAttributes attributes;
        attributes.setObject("plain", object.get(), Hold::plain);
        EXPECT_EQ(referencesOn(object.get()), 1u);
        attributes.setObject("retained", object.get(), Hold::retain);
        EXPECT_EQ(referencesOn(object.get()), 2u);
        attributes.setObject("retained", object.get(), Hold::retain);
        EXPECT_EQ(referencesOn(object.get()), 2u);
        object->addRef();
        attributes.setObject("adopted", object.get(), Hold::adopt);
        EXPECT_EQ(referencesOn(object.get()), 3u);
        const FAttributes copy(attributes);
        EXPECT_EQ(referencesOn(object.get()), 5u);
        attributes.setInteger("retained", 1);
        EXPECT_EQ(referencesOn(object.get()), 4u);
        EXPECT_EQ(attributes.getObject("adopted", "CmString"), object.get());
        EXPECT_EQ(attributes.getObject("adopted", "FAttributes"), nullptr);
    }
    EXPECT_EQ(referencesOn(object.get()), 1u);
}

/// Takes itself out of the attributes that hold it when it goes.
class Leaver : public CmObject {
public:
    explicit Leaver(FAttributes& attributes) : attributes_(attributes) {}
    ~Leaver() override { attributes_.setInteger("left", attributes_.getInteger("left") + 1); }

private:
    FAttributes& attributes_;
};

TEST(FAttributes, StandsAnObjectThatComesBackAsItGoes) {
    FAttributes attributes;
    attributes.setObject("x", new Leaver(attributes), Hold::adopt);
    attributes.setInteger("x", 3);
    EXPECT_EQ(attributes.getInteger("x"), 3);
    attributes.setObject("y", new Leaver(attributes), Hold::adopt);
    attributes.remove("y");
    attributes.setObject("z", new Leaver(attributes), Hold::adopt);
    attributes.removeAll();
    EXPECT_EQ(attributes.getInteger("left"), 1);
    EXPECT_EQ(attributes.count(), 1);
}

TEST(FAttributes, CopiesAreApart) {
    FAttributes original;
    original.appendInteger("list", 1);
    original.setObject("nested", new FAttributes, Hold::adopt);
    original.setBinary("bytes", "abc", 3, true);
    original.appendAttributes("subs", make<FAttributes>());
    original.appendAttributes("subs", make<FAttributes>());
    original.nextAttributes("subs");
    for (int32_t i = 0; i < original.count(); ++i)
        original.at(i)->setForeign();
    FAttributes copy(original);
    for (int32_t i = 0; i < copy.count(); ++i)
        EXPECT_TRUE(copy.at(i)->isHidden()) << copy.at(i)->key();
    EXPECT_EQ(cast<FMemoryStream>(copy.find("bytes")->getObject())->tell(), 0);
    EXPECT_NE(copy.nextAttributes("subs"), nullptr);
    EXPECT_EQ(copy.nextAttributes("subs"), nullptr) << "it goes on where the original is";
    original.appendInteger("list", 2);
    original.getAttributes("nested")->setInteger("n", 1);
    EXPECT_EQ(copy.count("list"), 1);
    EXPECT_TRUE(copy.getAttributes("nested")->isEmpty());
    FAttributes sharer;
    original.shareWith(sharer);
    sharer.setInteger("through", 1);
    EXPECT_TRUE(original.contains("through"));
    EXPECT_FALSE(copy.contains("through"));
}

TEST(FAttributes, QueuesValuesOfOneKind) {
    FAttributes attributes;
    for (const int64_t value : {3, 1, 2})
        EXPECT_TRUE(attributes.appendInteger("n", value));
    EXPECT_FALSE(attributes.appendFloat("n", 1));
    EXPECT_EQ(attributes.count("n"), 3);
    int64_t value = 0;
    for (int round = 0; round < 2; ++round) {
        std::string read;
        while (attributes.nextInteger("n", value))
            read += std::to_string(value);
        EXPECT_EQ(read, "312") << "the end starts the list over";
    }
    EXPECT_TRUE(attributes.appendText8("t", "a"));
    EXPECT_FALSE(attributes.appendText16("t", u"a"));
    const auto object = make<CmString>("o");
    EXPECT_TRUE(attributes.appendWatched("o", object.get()));
    EXPECT_FALSE(attributes.appendObject("o", object));
    EXPECT_EQ(referencesOn(object.get()), 1u);
    EXPECT_EQ(attributes.nextObject("o", "FAttributes"), nullptr);
    EXPECT_EQ(attributes.nextObject("o"), object.get());
    EXPECT_EQ(attributes.nextObject("o"), nullptr);

    const auto inner = make<FAttributes>();
    inner->appendInteger("inner", 9);
    attributes.appendAttributes("sub", inner);
    EXPECT_EQ(attributes.nextAttributes("sub"), inner.get());
    EXPECT_TRUE(inner->nextInteger("inner", value) && attributes.nextInteger("n", value));
    attributes.resetAllCursors();
    EXPECT_TRUE(attributes.nextInteger("n", value) && value == 3);
    EXPECT_EQ(attributes.nextAttributes("sub"), inner.get());
    EXPECT_TRUE(inner->nextInteger("inner", value)) << "those of nested lists, too";
}

TEST(FAttributes, GivesBinaryValuesWithinTheirSize) {
    FAttributes attributes;
    char foreign[] = "foreign";
    attributes.setBinary("foreign", foreign, 7, false);
    attributes.setBinary("copy", foreign, 7, true);
    foreign[0] = 'F';
    char buffer[8] = {};
    EXPECT_TRUE(attributes.getBinaryData("foreign", buffer, 7));
    EXPECT_STREQ(buffer, "Foreign");
    EXPECT_TRUE(attributes.getBinaryData("copy", buffer, 3));
    EXPECT_STREQ(buffer, "foreign");
    EXPECT_FALSE(attributes.getBinaryData("copy", buffer, 8));
    EXPECT_FALSE(attributes.getBinaryData("copy", buffer, -1));
    EXPECT_EQ(attributes.getBinaryAddress("foreign"), foreign);
    EXPECT_EQ(attributes.getBinarySize("none"), 0);
    EXPECT_EQ(attributes.getBinaryAddress("none"), nullptr);
}

TEST(FAttributes, FindsNestedValues) {
    FAttributes root;
    auto* outer = new FAttributes;
    auto* inner = new FAttributes;
    root.setInteger("a", 1);
    root.setObject("outer", outer, Hold::adopt);
    outer->setText16("name", u"deep");
    outer->setObject("inner", inner, Hold::adopt);
    inner->setInteger("a", 2);
    auto listed = make<FAttributes>();
    listed->setFloat("gain", 0.5);
    root.appendAttributes("list", listed);

    EXPECT_EQ(root.findAttributes("inner"), inner);
    EXPECT_EQ(root.findAttributes("outer|inner"), inner);
    EXPECT_EQ(root.findAttributes("nowhere"), nullptr);
    FAttributeVariant value;
    EXPECT_TRUE(root.findValue("a", value));
    EXPECT_EQ(value.integerValue, 1);
    EXPECT_TRUE(root.findValue("inner|a", value));
    EXPECT_EQ(value.integerValue, 2);
    EXPECT_TRUE(root.findValue("name", value));
    EXPECT_EQ(ConstString(value), ConstString("deep"));
    EXPECT_TRUE(root.findValue("gain", value));
    EXPECT_EQ(value.realValue, 0.5);
    EXPECT_FALSE(root.findValue("list|nothing", value));
}

TEST(FAttributes, GivesTheItemsBehindOneThatCantBeGiven) {
    FAttributes attributes;
    const auto state = make<FAttributes>();
    state->setText8("s", "x");
    const auto list = make<FObjectList>();
    for (const Ref<CmObject>& object : std::initializer_list<Ref<CmObject>>{
             make<FXmlInstance>(1, "NoSuchClass", make<FAttributes>()), make<CmString>("one"),
             make<FXmlReference>(9), make<FXmlInstance>(2, "CmString", state), nullptr, make<CmString>("two"),
             make<FXmlInstance>(3, "NoSuchClass", make<FAttributes>())})
        list->add(object);
    attributes.setObject("l", list.get(), Hold::retain);
    for (int round = 0; round < 2; ++round) {
        EXPECT_NE(attributes.nextXmlAttributes("l", "CmString"), nullptr);
        EXPECT_EQ(attributes.nextXmlAttributes("l", "CmString"), nullptr);
    }
    FAttributeVariant value;
    for (int round = 0; round < 2; ++round) {
        int given = 0;
        for (; attributes.unqueue("l", value) == Result::ok; ++given)
            value.clear();
        EXPECT_EQ(given, 3) << "the end starts the list over";
    }
}

TEST(FAttributes, FindsItsWayThroughStoredObjects) {
    const auto state = make<FAttributes>();
    const auto instance = make<FXmlInstance>(1, "C", state);
    const auto reference = make<FXmlReference>(1);
    reference->bind(instance.get(), FXmlReference::Binding::watch);
    state->setInteger("x", 7);
    // A ring: the object's own list leads back to it.
    state->appendWatched("back", reference.get());
    FAttributes root;
    root.setObject("first", reference.get(), Hold::plain);
    FAttributeVariant value{};
    EXPECT_FALSE(root.findValue("x", value)) << "a reference stands for nothing but in a list";
    EXPECT_EQ(root.findAttributes("first"), nullptr);
    root.appendWatched("list", reference.get());
    EXPECT_TRUE(root.findValue("list|x", value));
    EXPECT_EQ(value.integerValue, 7);
    EXPECT_FALSE(root.findValue("nothing", value));
    root.setObject("second", instance.get(), Hold::plain);
    EXPECT_EQ(root.findAttributes("second"), state.get());
    root.setInteger("a", 1);
    EXPECT_FALSE(root.findValue("a|x", value)) << "what stands before the first part is no way to the second";
    root.setObject("third", instance.get(), Hold::plain);
    EXPECT_TRUE(root.findValue("a|x", value)) << "an entry of any kind is the first part";
}

TEST(FAttributes, TakesOnlyValuesAcrossToNumberedLists) {
    using Entry = FIntIDAttribute;
    const auto instance = [](const char* className) {
        return make<FXmlInstance>(1, className, make<FAttributes>());
    };
    std::vector<Entry> values;
    values.emplace_back(0u).setInteger(1);
    values.emplace_back(0x41424344u).setInteger(2);
    values.emplace_back(0x41004142u).setFloat(0.5);
    values.emplace_back(0x00C34142u).setString("two");
    values.emplace_back(0x80u, Entry::secondFlag).setInteger(2);
    values.emplace_back(7u, Entry::firstFlag).setInteger(3);
    values.emplace_back(1u).setForeign();
    values.emplace_back(2u).setInterface(nullptr, Hold::plain);
    values.emplace_back(3u);
    values.emplace_back(0x42u).setObject(instance("CmString").get(), Hold::retain);
    values.emplace_back(0x43u).setObject(instance("NoSuchClass").get(), Hold::retain);
    FAttributes attributes;
    attributes.saveIntKeyAttributes(values);
    std::string keys;
    const FAttributes* nested = attributes.getAttributes("Additional Attributes");
    for (int32_t i = 0; i < nested->count(); ++i)
        keys += nested->at(i)->key() + ',';
    EXPECT_EQ(keys, ",DCBA,BA,IntID:12796226,IntID:128,B,C,");
    std::vector<Entry> loaded;
    ASSERT_TRUE(attributes.loadIntKeyAttributes(loaded));
    ASSERT_EQ(loaded.size(), 7u);
    const uint32_t numbers[] = {0, 0x41424344, 0x4142, 0x00C34142, 0x80, 0x42, 0x43};
    for (size_t i = 0; i < 7; ++i)
        EXPECT_EQ(loaded[i].key(), numbers[i]);
    EXPECT_STREQ(loaded[3].getText8(), "two");
    EXPECT_NE(cast<CmString>(loaded[5].getObject()), nullptr) << "the live object, not the stored one";
    EXPECT_NE(cast<FXmlInstance>(loaded[6].getObject()), nullptr) << "its class may come with a module";
    EXPECT_FALSE(attributes.loadIntKeyAttributes(loaded, "other"));
    FAttributes none;
    none.saveIntKeyAttributes({});
    EXPECT_TRUE(none.isEmpty());
}

TEST(FAttributes, LoadsListsOfOthersAsTheyAllowIt) {
    struct Case {
        const char* name;
        FAttributes::OldValues oldValues;
        const char* before;
        const char* after;
    };
    using OldValues = FAttributes::OldValues;
    const Case cases[] = {
        {"an empty list takes equal keys", OldValues::replaced, "", "A1 A2 B3 "},
        {"a filled one does not", OldValues::replaced, "B", "B3 A2 "},
        {"but where it is allowed", OldValues::besideNew, "B", "B0 A1 A2 B3 "},
        {"kept ones stay", OldValues::kept, "B", "B0 A1 "},
        {"and empty ones are searched", OldValues::kept, "", "A1 B3 "},
    };
    FAttributes stored;
    stored.append("A").setInteger(1);
    stored.append("A").setInteger(2);
    stored.append("B").setInteger(3);
    stored.append("hidden").setEntryFlags(FAttributeValue::entryFlag1);
    stored.find("hidden")->setInteger(4);
    FAttributes attributes;
    attributes.saveExtraAttributes(stored);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FAttributes extra;
        std::vector<FIntIDAttribute> numbered;
        if (*c.before) {
            extra.setInteger(c.before, 0);
            numbered.emplace_back(static_cast<uint32_t>(*c.before)).setInteger(0);
        }
        EXPECT_TRUE(attributes.loadExtraAttributes(extra, {}, c.oldValues));
        EXPECT_TRUE(attributes.loadIntKeyAttributes(numbered, {}, c.oldValues));
        std::string found[2];
        for (int32_t i = 0; i < extra.count(); ++i)
            found[0] += extra.at(i)->key() + std::to_string(extra.at(i)->getInteger()) + ' ';
        for (const auto& value : numbered)
            found[1] += static_cast<char>(value.key()) + std::to_string(value.getInteger()) + ' ';
        EXPECT_EQ(found[0], c.after);
        EXPECT_EQ(found[1], c.after);
    }
}

TEST(FAttributes, DetachesFromLiveObjectsAndLeavesOutWhatHasNoForm) {
    const auto object = make<CmString>("live");
    const auto formless = make<CmObject>();
    FAttributes attributes;
    attributes.setObject("formless", formless.get(), Hold::plain);
    const auto objects = make<FObjectList>(FObjectList::Items::watched);
    for (CmObject* item : {static_cast<CmObject*>(nullptr), static_cast<CmObject*>(object.get()),
                           formless.get(), static_cast<CmObject*>(object.get())})
        objects->watch(item);
    attributes.setObject("objects", objects.get(), Hold::retain);
    attributes.appendInteger("ints", 1);
    const auto buffer = make<CmBuffer>("xy", 2);
    attributes.setObject("buffer", buffer.get(), Hold::plain);
    attributes.entry("flags").setEntryFlags(FAttributeValue::entryFlag2);
    attributes.setObject("flags", object.get(), Hold::plain);
    attributes.find("flags")->setForeign();
    auto item = make<FAttributes>();
    char foreign[] = "abc";
    item->setBinary("bytes", foreign, 3, false);
    attributes.appendAttributes("subs", item);
    ASSERT_TRUE(attributes.detachObjects());
    EXPECT_EQ(referencesOn(formless.get()), 1u);
    EXPECT_EQ(referencesOn(object.get()), 1u);
    EXPECT_EQ(referencesOn(buffer.get()), 2u);
    EXPECT_FALSE(attributes.contains("formless"));
    const auto* list = cast<FObjectList>(attributes.find("objects")->getObject());
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->kind(), FObjectList::Items::owned);
    EXPECT_EQ(list->at(0), nullptr) << "an item that is nothing keeps its place";
    EXPECT_NE(cast<FXmlInstance>(list->at(1)), nullptr);
    EXPECT_EQ(cast<FXmlReference>(list->at(2))->target(), list->at(1));
    const FAttributeValue& flags = *attributes.find("flags");
    EXPECT_EQ(cast<FXmlReference>(flags.getObject())->target(), list->at(1));
    EXPECT_TRUE(flags.flags() & FAttributeValue::entryFlag2 && flags.flags() & FAttributeValue::foreign);
    EXPECT_NE(cast<FIntList>(attributes.find("ints")->getObject()), nullptr);
    foreign[0] = 'X';
    EXPECT_EQ(std::string_view(static_cast<const char*>(item->getBinaryAddress("bytes")), 3), "abc");
    const Ref<CmObject> again = attributes.getObject("flags", "CmString");
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(cast<CmString>(again)->string(), ConstString("live"));
    EXPECT_EQ(attributes.nextObject("objects"), again);
}

/// Removes what it is restored from out of the attributes that hold it, and reads from it.
class Remover : public CmObject {
    QORL_CLASS(Remover, CmObject)
    QORL_RECORD(Remover)

public:
    bool restoreAttributes(FAttributes* attributes) override {
        from->removeAll();
        return attributes->getInteger("x") == 7;
    }

    static inline FAttributes* from = nullptr;
};
QORL_REGISTER(Remover, "Remover", CmObject, 0)

TEST(FAttributes, StaysWhileAnObjectIsLoadedFromIt) {
    const auto nested = [] {
        auto attributes = make<FAttributes>();
        attributes->setInteger("x", 7);
        return attributes;
    };
    FAttributes attributes;
    Remover::from = &attributes;
    Remover remover;
    attributes.setObject("one", nested().get(), Hold::retain);
    EXPECT_TRUE(attributes.loadObject("one", &remover));
    attributes.appendAttributes("list", nested());
    EXPECT_TRUE(attributes.loadNextObject("list", &remover));
    attributes.setObject("o", new FXmlInstance(1, "Remover", nested()), Hold::adopt);
    EXPECT_NE(cast<Remover>(attributes.getObject("o", "Remover")), nullptr);
    const auto instance = make<FXmlInstance>(1, "Remover", nested());
    const auto reference = make<FXmlReference>(1);
    reference->bind(instance.get(), FXmlReference::Binding::hold);
    attributes.appendObject("l", reference);
    EXPECT_NE(cast<Remover>(attributes.nextObject("l", "Remover")), nullptr);
}

TEST(FAttributes, SavesAndLoadsObjects) {
    CmString text("saved");
    CmObject formless;
    FAttributes attributes;
    EXPECT_TRUE(attributes.saveObject("text", &text));
    EXPECT_FALSE(attributes.saveObject("text", &formless));
    EXPECT_TRUE(attributes.contains("text")) << "what was stored before stays";
    EXPECT_FALSE(attributes.saveObject("none", &formless));
    EXPECT_FALSE(attributes.contains("none"));
    for (const auto live : {FAttributes::LiveObjects::stay, FAttributes::LiveObjects::detached})
        EXPECT_TRUE(attributes.appendSavedObject("list", &text, live));
    EXPECT_FALSE(attributes.appendSavedObject("list", &formless));
    CmString loaded;
    EXPECT_TRUE(attributes.loadObject("text", &loaded));
    EXPECT_EQ(loaded.string(), ConstString("saved"));
    EXPECT_FALSE(attributes.loadObject("none", &loaded));
    for (int round = 0; round < 2; ++round) {
        loaded.string().clear();
        EXPECT_TRUE(attributes.loadNextObject("list", &loaded));
        EXPECT_EQ(loaded.string(), ConstString("saved"));
    }
    EXPECT_FALSE(attributes.loadNextObject("list", &loaded));
}

} // namespace
} // namespace qorl
