#include "persistence/attributes/FAttributes.h"

#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "persistence/xml/FXmlObject.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

using Hold = FAttributes::Hold;

/// The number of references on an object.
uint32_t references(CmObject* object) {
    object->addRef();
    return object->release();
}

TEST(FAttributes, KeepsTheOrderAndReplacesInPlace) {
    FAttributes attributes;
    EXPECT_EQ(attributes.count(), 0);
    EXPECT_EQ(attributes.getInteger("none", 7), 7);
    attributes.setInteger("b", 1);
    attributes.setFloat("a", 2.5);
    attributes.setText8("c", "text");
    attributes.setText16("b", u"\u00E4");
    EXPECT_EQ(attributes.count(), 3);
    EXPECT_EQ(attributes.at(0)->key(), "b");
    EXPECT_EQ(attributes.at(2)->key(), "c");
    EXPECT_EQ(attributes.at(3), nullptr);
    EXPECT_STREQ(attributes.getText8("b"), "\xC3\xA4");
    EXPECT_FALSE(attributes.contains("B"));
    EXPECT_TRUE(attributes.remove("a"));
    EXPECT_FALSE(attributes.remove("a"));
    attributes.setText8("c", nullptr);
    attributes.setObject("b", nullptr, Hold::retain);
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
        EXPECT_EQ(references(object.get()), 1u);
        attributes.setObject("retained", object.get(), Hold::retain);
        EXPECT_EQ(references(object.get()), 2u);
        attributes.setObject("retained", object.get(), Hold::retain);
        EXPECT_EQ(references(object.get()), 2u);
        object->addRef();
        attributes.setObject("adopted", object.get(), Hold::adopt);
        EXPECT_EQ(references(object.get()), 3u);
        const FAttributes copy(attributes);
        EXPECT_EQ(references(object.get()), 5u);
        attributes.setInteger("retained", 1);
        EXPECT_EQ(references(object.get()), 4u);
        EXPECT_EQ(attributes.getObject("adopted", "CmString"), object.get());
        EXPECT_EQ(attributes.getObject("adopted", "FAttributes"), nullptr);
    }
    EXPECT_EQ(references(object.get()), 1u);
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
    const FAttributes copy(original);
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
    for (int round = 0; round < 2; ++round) {
        std::string read;
        for (int64_t value = 0; attributes.nextInteger("n", value);)
            read += std::to_string(value);
        EXPECT_EQ(read, "312") << "the end starts the list over";
    }
    EXPECT_TRUE(attributes.appendText8("t", "a"));
    EXPECT_FALSE(attributes.appendText16("t", u"a"));
    const auto object = make<CmString>("o");
    EXPECT_TRUE(attributes.appendObject("o", object.get(), false));
    EXPECT_FALSE(attributes.appendObject("o", object.get(), true));
    EXPECT_EQ(references(object.get()), 1u);
    EXPECT_EQ(attributes.nextObject("o", "FAttributes"), nullptr);
    EXPECT_EQ(attributes.nextObject("o"), nullptr);
    EXPECT_EQ(attributes.nextObject("o"), object.get());

    attributes.appendAttributes("sub", make<FAttributes>());
    attributes.nextAttributes("sub")->appendInteger("inner", 9);
    int64_t value = 0;
    attributes.resetCursor("sub");
    EXPECT_TRUE(attributes.nextAttributes("sub")->nextInteger("inner", value));
    attributes.nextInteger("n", value);
    attributes.resetAllCursors();
    EXPECT_TRUE(attributes.nextInteger("n", value));
    EXPECT_EQ(value, 3);
    EXPECT_TRUE(attributes.nextAttributes("sub")->nextInteger("inner", value));
    EXPECT_EQ(value, 9);
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

TEST(FAttributes, StoresNumbersAsKeys) {
    std::vector<FIntIDAttribute> values;
    values.emplace_back(0x41424344u).setInteger(1);
    values.emplace_back(0x00C34142u).setString("two");
    values.emplace_back(7u, 1u).setInteger(3); // hidden from conversions
    FAttributes attributes;
    attributes.saveIntKeyAttributes(values);
    const FAttributes* nested = attributes.getAttributes("Additional Attributes");
    ASSERT_NE(nested, nullptr);
    ASSERT_EQ(nested->count(), 2);
    EXPECT_EQ(nested->at(0)->key(), "DCBA");
    EXPECT_EQ(nested->at(1)->key(), "IntID:12796226");

    std::vector<FIntIDAttribute> loaded;
    loaded.emplace_back(0x41424344u).setInteger(99);
    EXPECT_TRUE(attributes.loadIntKeyAttributes(loaded, {}, true));
    ASSERT_EQ(loaded.size(), 2u);
    EXPECT_EQ(loaded[0].getInteger(), 99);
    EXPECT_EQ(loaded[1].key(), 0x00C34142u);
    EXPECT_STREQ(loaded[1].getText8(), "two");
    EXPECT_TRUE(attributes.loadIntKeyAttributes(loaded, {}, false));
    EXPECT_EQ(loaded[0].getInteger(), 1);
    EXPECT_FALSE(attributes.loadIntKeyAttributes(loaded, "other"));
}

std::string stored(const FAttributes& attributes) {
    FMemoryStream stream;
    EXPECT_TRUE(AttributesStream::write(stream, attributes));
    return std::string(stream.bytes());
}

TEST(AttributesStream, HasItsBytes) {
    FAttributes attributes;
    attributes.setInteger("i", 258);
    attributes.setText16("s", u"x");
    attributes.appendInteger("l", 3);
    const std::string expected("\x03\0\0\0"
                               "\x02\0\0\0i\0\x01\0\x02\x01\0\0\0\0\0\0"
                               "\x02\0\0\0s\0\x08\0\x05\0\0\0x\0\xEF\xBB\xBF"
                               "\x02\0\0\0l\0\x02\0\x02\0\x01\0\0\0\x03\0\0\0\0\0\0\0",
                               59);
    EXPECT_EQ(stored(attributes), expected);
}

/// Every kind of value once, an object twice.
void fill(FAttributes& attributes) {
    attributes.setInteger("int", -1);
    attributes.setFloat("float", 0.1);
    attributes.setText8("empty", "");
    attributes.setText16("text", u"\u00E4");
    attributes.appendFloat("floats", 1.5);
    attributes.appendText16("texts", u"t");
    attributes.setBinary("bytes", "ab", 2, true);
    attributes.setObject("nested", new FAttributes, Hold::adopt);
    attributes.getAttributes("nested")->setInteger("deep", 5);
    attributes.appendAttributes("subs", make<FAttributes>());
    auto object = make<CmString>("object");
    attributes.setObject("object", object.get(), Hold::retain);
    attributes.appendObject("objects", retain(object.get()).detach(), true);
}

TEST(AttributesStream, ReadsBackWhatItWrote) {
    FAttributes attributes;
    fill(attributes);
    FMemoryStream stream;
    ASSERT_TRUE(AttributesStream::write(stream, attributes));
    stream.rewind();
    FAttributes read;
    ASSERT_TRUE(AttributesStream::read(stream, read));
    EXPECT_FALSE(read.contains("empty")) << "an empty text does not survive";
    attributes.remove("empty");
    // Untouched objects are written as they were read, so the bytes are the same.
    EXPECT_EQ(stored(read), stored(attributes));

    EXPECT_EQ(read.getInteger("int"), -1);
    EXPECT_EQ(read.getFloat("float"), 0.1);
    EXPECT_EQ(std::u16string(read.getText16("text")), u"\u00E4");
    EXPECT_EQ(read.getBinarySize("bytes"), 2);
    EXPECT_EQ(read.getAttributes("nested")->getInteger("deep"), 5);
    EXPECT_EQ(read.count("subs"), 1);
    const Ref<CmObject> object = read.getObject("object", "CmString");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(cast<CmString>(object)->string(), ConstString("object"));
    EXPECT_EQ(read.nextObject("objects"), object.get()) << "one object, met twice";
}

TEST(AttributesStream, FailsWhereTheBytesEnd) {
    FAttributes attributes;
    fill(attributes);
    attributes.remove("empty");
    const std::string bytes = stored(attributes);
    for (size_t length = 0; length < bytes.size(); ++length) {
        FMemoryStream stream(std::string_view(bytes).substr(0, length));
        FAttributes read;
        EXPECT_FALSE(AttributesStream::read(stream, read)) << "cut at " << length;
    }
}

TEST(AttributesStream, KeepsObjectsOfUnknownClasses) {
    FAttributes attributes;
    auto state = make<FAttributes>();
    state->setInteger("x", 1);
    attributes.setObject("gone", new FXmlInstance(77, "NoSuchClass", state), Hold::adopt);
    attributes.setObject("again", new FXmlReference(uint64_t{77}), Hold::adopt);
    attributes.setObject("lost", new FXmlReference(uint64_t{78}), Hold::adopt);
    const std::string bytes = stored(attributes);
    FMemoryStream source{std::string_view(bytes)};
    FAttributes read;
    ASSERT_TRUE(AttributesStream::read(source, read));
    EXPECT_EQ(cast<FXmlReference>(read.at(1)->getObject())->target(), read.at(0)->getObject());
    EXPECT_EQ(read.findAttributes("gone")->getInteger("x"), 1);
    EXPECT_EQ(read.getObject("gone"), nullptr);
    EXPECT_EQ(read.getObject("again"), nullptr);
    EXPECT_EQ(read.getObject("gone"), nullptr) << "a failed object is not tried again";
}

/// Writes an object that nobody else holds, and itself when `part` has no number.
class Maker : public CmObject {
    QORL_CLASS(Maker, CmObject)

public:
    explicit Maker(int32_t number) : number_(number) {}

    bool storeAttributes(FAttributes* attributes) override {
        const auto part = make<CmString>(ConstString(std::string_view(std::to_string(number_))));
        attributes->setObject("part", number_ < 0 ? static_cast<CmObject*>(this) : part.get(), Hold::retain);
        return true;
    }

private:
    int32_t number_;
};

TEST(AttributesStream, TellsObjectsApartThatLiveOnlyWhileTheyAreWritten) {
    FAttributes attributes;
    for (int32_t i = 0; i < 20; ++i)
        attributes.appendObject("makers", new Maker(i), true);
    const std::string bytes = stored(attributes);
    FMemoryStream document;
    ASSERT_TRUE(FXmlDocument(&document, FXmlDocument::Mode::write).storeAttributes("State", attributes));
    document.rewind();
    FAttributes read[3];
    FMemoryStream source{std::string_view(bytes)};
    ASSERT_TRUE(AttributesStream::read(source, read[0]));
    ASSERT_TRUE(FXmlDocument(&document, FXmlDocument::Mode::read).restoreAttributes("State", read[1]));
    read[2] = attributes;
    read[2].detachObjects();
    for (FAttributes& one : read) {
        const auto* list = cast<FObjectList>(one.find("makers")->getObject());
        ASSERT_EQ(list->count(), 20);
        for (int32_t i = 0; i < 20; ++i) {
            auto* maker = cast<FXmlObject>(list->items[static_cast<size_t>(i)]);
            const Ref<CmObject> part = maker->getAttributes()->getObject("part", "CmString");
            ASSERT_NE(part, nullptr) << i;
            EXPECT_EQ(cast<CmString>(part)->string(), ConstString(std::string_view(std::to_string(i))));
        }
    }
}

TEST(AttributesStream, TellsThatAnObjectCouldNotBeStored) {
    FAttributes attributes;
    attributes.setObject("o", new CmObject, Hold::adopt);
    FMemoryStream stream;
    EXPECT_FALSE(AttributesStream::write(stream, attributes)) << "nobody could read on behind it";
    EXPECT_EQ(stream.bytes(), std::string_view("\x01\0\0\0\x02\0\0\0o\0\x02\0\x14\0", 14));

    auto deep = make<FAttributes>();
    for (int32_t i = 0; i < 200; ++i) {
        auto above = make<FAttributes>();
        above->setObject("nested", deep.get(), Hold::retain);
        deep = above;
    }
    EXPECT_FALSE(AttributesStream::write(stream, *deep)) << "deeper than it is read";
}

TEST(AttributesStream, ReadsOnBehindWhatHasNoValue) {
    FAttributes attributes;
    attributes.appendObject("objects", new CmString("x"), true);
    cast<FObjectList>(attributes.find("objects")->getObject())->items.push_back(nullptr);
    attributes.setInteger("foreign", 7);
    attributes.find("foreign")->setForeign();
    attributes.entry("face").setInterface(nullptr, Hold::plain);
    attributes.setInteger("last", 1);
    const std::string bytes = stored(attributes);
    FMemoryStream source{std::string_view(bytes)};
    FAttributes read;
    ASSERT_TRUE(AttributesStream::read(source, read));
    EXPECT_EQ(read.getInteger("last"), 1);
    EXPECT_FALSE(read.contains("foreign"));
    EXPECT_FALSE(read.contains("face"));
    EXPECT_EQ(read.count("objects"), 2);
}

TEST(FAttributes, LetsGoOfObjectsThatNameThemselves) {
    FAttributes attributes;
    attributes.setObject("ring", new Maker(-1), Hold::adopt);
    attributes.detachObjects();
    const Ref<FAttributes> state = retain(cast<FXmlObject>(attributes.at(0)->getObject())->getAttributes());
    EXPECT_EQ(cast<FXmlReference>(state->at(0)->getObject())->target(), attributes.at(0)->getObject());
    attributes.removeAll();
    EXPECT_EQ(references(state.get()), 1u);
    EXPECT_EQ(cast<FXmlReference>(state->at(0)->getObject())->target(), nullptr);
}

TEST(FAttributes, DetachesFromLiveObjects) {
    char foreign[] = "abc";
    FAttributes attributes;
    {
        const auto object = make<CmString>("live");
        attributes.setObject("object", object.get(), Hold::plain);
        attributes.setObject("same", object.get(), Hold::plain);
        attributes.setBinary("bytes", foreign, 3, false);
        attributes.detachObjects();
        EXPECT_EQ(references(object.get()), 1u);
    }
    foreign[0] = 'X';
    char buffer[4] = {};
    EXPECT_TRUE(attributes.getBinaryData("bytes", buffer, 3));
    EXPECT_STREQ(buffer, "abc");
    auto* instance = cast<FXmlInstance>(attributes.at(0)->getObject());
    ASSERT_NE(instance, nullptr);
    EXPECT_TRUE(instance->isClass("CmString"));
    EXPECT_EQ(cast<FXmlReference>(attributes.at(1)->getObject())->target(), instance);
    EXPECT_EQ(attributes.getObject("object"), attributes.getObject("same"));
    EXPECT_EQ(cast<CmString>(attributes.getObject("same"))->string(), ConstString("live"));
}

TEST(AttributesFace, MovesValuesAcross) {
    const auto attributes = make<FAttributes>();
    Ref<IAttributes> face;
    ASSERT_EQ(attributes->queryInterface(IAttributes::binaryIid, face.out()), Result::ok);
    FAttributeVariant value{};
    value.kind = FAttributeVariant::text8 | FAttributeVariant::ownedFlag;
    value.text8Value = static_cast<const char*>(std::memcpy(std::malloc(4), "own", 4));
    EXPECT_EQ(face->set("text", value), Result::ok);
    EXPECT_EQ(face->get("text", value), Result::ok);
    EXPECT_EQ(value.kind, FAttributeVariant::text8);
    EXPECT_STREQ(value.text8Value, "own");
    value = {};
    value.kind = FAttributeVariant::text16;
    EXPECT_EQ(face->set("text", value), Result::ok);
    EXPECT_EQ(face->get("text", value), Result::no) << "a null text removes the key";

    const auto object = make<CmString>("o");
    value = {};
    value.kind = FAttributeVariant::object | FAttributeVariant::ownedFlag;
    value.objectValue = static_cast<FDependent*>(retain(object.get()).detach());
    EXPECT_EQ(face->queue("objects", value), Result::ok);
    EXPECT_EQ(references(object.get()), 2u);
    EXPECT_EQ(face->getQueueItemCount("objects"), 1);
    EXPECT_EQ(face->unqueue("objects", value), Result::ok);
    EXPECT_EQ(value.kind, FAttributeVariant::object | FAttributeVariant::ownedFlag);
    value.objectValue->release();
    EXPECT_EQ(face->unqueue("objects", value), Result::no);

    value = {};
    EXPECT_EQ(face->set("nothing", value), Result::no);
    EXPECT_EQ(face->setBinary("b", "xyz", 3, true), Result::ok);
    EXPECT_EQ(face->getBinarySize("b"), 3u);
    EXPECT_EQ(face->getAttributeCount(), 2);
    EXPECT_STREQ(face->getAttributeName(1), "b");
    EXPECT_EQ(face->getAttributeName(2), nullptr);
}

} // namespace
} // namespace qorl
