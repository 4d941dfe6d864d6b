#include "persistence/attributes/AttributesStream.h"

#include "BodyBytes.h"
#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/archive/ArchiveTesting.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/LittleCost.h"
#include "support/Objects.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>
#include <string>

namespace qorl {
namespace {

using Hold = FAttributes::Hold;

constexpr uint16_t byteOrders[] = {0, 1};

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
    const std::string reversed("\0\0\0\x03"
                               "\0\0\0\x02i\0\0\x01\0\0\0\0\0\0\x01\x02"
                               "\0\0\0\x02s\0\0\x08\0\0\0\x05x\0\xEF\xBB\xBF"
                               "\0\0\0\x02l\0\0\x02\0\x02\0\0\0\x01\0\0\0\0\0\0\0\x03",
                               59);
    EXPECT_EQ(stored(attributes, 1), reversed);
}

struct SubkindCase {
    const char* name;
    void (*fill)(FAttributes& attributes);
    void (*spell)(BodyBytes& bytes);
};

Ref<FAttributes> one(const char* key, int64_t value) {
    auto attributes = make<FAttributes>();
    attributes->setInteger(key, value);
    return attributes;
}

/// What is read back is written with the same bytes, so each row holds both ways.
const SubkindCase subkinds[] = {
    {"integer and float",
     [](FAttributes& a) {
         a.setInteger("i", -2);
         a.setFloat("f", 0.1);
     },
     [](BodyBytes& b) { b.int32(2).text("i").word(1).int64(-2).text("f").word(4).real(0.1); }},
    {"texts of both widths",
     [](FAttributes& a) {
         a.setText8("n", "\xC3\xA4");
         a.setText16("w", u"\u00E4");
     },
     [](BodyBytes& b) { b.int32(2).text("n").word(8).text("\xC3\xA4").text("w").word(8).wide("\xC3\xA4"); }},
    {"lone surrogates",
     [](FAttributes& a) {
         a.setText16("w", u"\xDCE4.txt");
         a.appendText16("l", u"\xD83D");
     },
     [](BodyBytes& b) {
         b.int32(2).text("w").word(8).wide("\xED\xB3\xA4.txt").object("l", 4).int32(1).wide("\xED\xA0\xBD");
     }},
    {"zeros within wide text",
     [](FAttributes& a) { a.setString("w", ConstString(std::u16string_view(u"\0b\0", 3))); },
     [](BodyBytes& b) { b.int32(1).text("w").word(8).wide(std::string_view("\0b\0", 3)); }},
    {"an empty key", [](FAttributes& a) { a.setInteger("", 1); },
     [](BodyBytes& b) { b.int32(1).int32(0).word(1).int64(1); }},
    {"equal keys",
     [](FAttributes& a) {
         a.append("k").setInteger(1);
         a.append("k").setInteger(2);
     },
     [](BodyBytes& b) { b.int32(2).text("k").word(1).int64(1).text("k").word(1).int64(2); }},
    {"lists of numbers",
     [](FAttributes& a) {
         a.appendInteger("i", 1);
         a.appendInteger("i", INT64_MIN);
         a.appendFloat("f", -1.5);
     },
     [](BodyBytes& b) {
         b.int32(2).object("i", 2).int32(2).int64(1).int64(INT64_MIN).object("f", 3).int32(1).real(-1.5);
     }},
    {"texts",
     [](FAttributes& a) {
         a.appendText16("l", u"t");
         a.appendText16("l", u"");
     },
     [](BodyBytes& b) { b.int32(1).object("l", 4).int32(2).wide("t").int32(0); }},
    {"lists of attributes",
     [](FAttributes& a) {
         a.appendAttributes("l", one("x", 7));
         a.appendAttributes("l", make<FAttributes>());
     },
     [](BodyBytes& b) { b.int32(1).object("l", 5).int32(2).int32(1).text("x").word(1).int64(7).int32(0); }},
    {"nested attributes",
     [](FAttributes& a) {
         a.setObject("n", one("x", 7).get(), Hold::retain);
         a.setInteger("behind", 1);
     },
     [](BodyBytes& b) {
         b.int32(2).object("n", 6).int32(1).text("x").word(1).int64(7).text("behind").word(1).int64(1);
     }},
    {"bytes, and none",
     [](FAttributes& a) {
         a.setBinary("b", "a\0c", 3, true);
         a.setBinary("n", nullptr, 0, true);
     },
     [](BodyBytes& b) {
         b.int32(2).object("b", 7).int32(3).raw(std::string_view("a\0c", 3)).object("n", 7).int32(0);
     }},
    {"an object twice",
     [](FAttributes& a) {
         const auto instance = make<FXmlInstance>(77, "Gone", one("x", 7));
         a.setObject("o", instance.get(), Hold::retain);
         a.setObject("again", instance.get(), Hold::retain);
     },
     [](BodyBytes& b) {
         b.int32(2).object("o", 20).text("Gone").int64(77).int32(1).text("x").word(1).int64(7);
         b.object("again", 21).int64(77);
     }},
    {"a list with nothing and with an object twice",
     [](FAttributes& a) {
         const auto instance = make<FXmlInstance>(77, "Gone", make<FAttributes>());
         const auto list = make<FObjectList>();
         for (const Ref<CmObject>& item : std::initializer_list<Ref<CmObject>>{nullptr, instance, instance})
             list->add(item);
         a.setObject("l", list.get(), Hold::retain);
         a.setInteger("behind", 1);
     },
     [](BodyBytes& b) {
         b.int32(2).object("l", 201).int32(3).word(21).int64(0);
         b.word(20).text("Gone").int64(77).int32(0).word(21).int64(77).text("behind").word(1).int64(1);
     }},
    {"a reference to nothing", [](FAttributes& a) { a.setObject("r", new FXmlReference(5), Hold::adopt); },
     [](BodyBytes& b) { b.int32(1).object("r", 21).int64(5); }},
};

TEST(AttributesStream, StoresEachKindAsItIsTold) {
    for (const auto& c : subkinds)
        for (const uint16_t byteOrder : byteOrders) {
            SCOPED_TRACE(::testing::Message() << c.name << ", byte order " << byteOrder);
            FAttributes attributes;
            c.fill(attributes);
            BodyBytes expected(byteOrder);
            c.spell(expected);
            EXPECT_EQ(stored(attributes, byteOrder), expected.bytes());
            FAttributes read;
            EXPECT_TRUE(load(expected.bytes(), read, byteOrder));
            EXPECT_EQ(stored(read, byteOrder), expected.bytes()) << "read and written again";
        }
}

TEST(AttributesStream, StoresLiveObjectsByClassAndAddress) {
    const auto text = make<CmString>("live");
    const auto nested = one("x", 1);
    FAttributes attributes;
    attributes.setObject("o", text.get(), Hold::plain);
    attributes.appendWatched("l", text.get());
    attributes.appendWatched("l", nested.get());
    BodyBytes expected(0);
    expected.int32(2).object("o", 20).text("CmString").int64(static_cast<int64_t>(idOf(text.get())));
    expected.int32(1).text("s").word(8).text("live");
    expected.object("l", 201).int32(2).word(21).int64(static_cast<int64_t>(idOf(text.get())));
    expected.word(20).text("Attributes").int64(static_cast<int64_t>(idOf(nested.get())));
    expected.int32(1).text("x").word(1).int64(1);
    EXPECT_EQ(stored(attributes), expected.bytes());
    FAttributes read;
    ASSERT_TRUE(load(expected.bytes(), read));
    const Ref<CmObject> object = read.getObject("o", "CmString");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(cast<CmString>(object)->string(), ConstString("live"));
    EXPECT_EQ(read.nextObject("l"), object) << "one object, met twice";
    EXPECT_EQ(cast<FAttributes>(read.nextObject("l"))->getInteger("x"), 1);
    EXPECT_EQ(stored(read), expected.bytes()) << "objects that live by now keep their numbers";
}

class AttributesInEachOrder : public ::testing::TestWithParam<uint16_t> {};
INSTANTIATE_TEST_SUITE_P(ByteOrders, AttributesInEachOrder, ::testing::ValuesIn(byteOrders),
                         [](const auto& order) { return order.param ? "HighFirst" : "LowFirst"; });

TEST_P(AttributesInEachOrder, ReadsOnBehindWhatHasNoValue) {
    BodyBytes bytes(GetParam());
    bytes.int32(9);
    for (const uint16_t kind : {0, 3, 0x100, 0x201, 0xFFFF})
        bytes.text("nothing").word(kind);
    bytes.text("empty").word(8).int32(0);
    bytes.object("skipped", 9).object("beyond", 202);
    bytes.text("last").word(1).int64(1);
    FAttributes read;
    ASSERT_TRUE(load(bytes.bytes(), read, GetParam()));
    EXPECT_EQ(read.count(), 1);
    EXPECT_EQ(read.getInteger("last"), 1);

    FAttributes attributes;
    attributes.setText8("empty", "");
    attributes.setInteger("foreign", 7);
    attributes.find("foreign")->setForeign();
    attributes.entry("face").setInterface(nullptr, Hold::plain);
    BodyBytes expected(GetParam());
    expected.int32(3).text("empty").word(8).int32(0).text("foreign").word(0x201).text("face").word(0x100);
    EXPECT_EQ(stored(attributes, GetParam()), expected.bytes());
}

TEST(AttributesStream, CutsKeysAtTheirZeroByte) {
    BodyBytes bytes(0);
    bytes.int32(2).wide("\xC3\xA4").word(1).int64(1);
    bytes.int32(4).raw(std::string_view("a\0b\0", 4)).word(1).int64(2);
    FAttributes read;
    ASSERT_TRUE(load(bytes.bytes(), read));
    EXPECT_EQ(read.getInteger("\xC3\xA4"), 1);
    EXPECT_EQ(read.getInteger("a"), 2);
}

/// What only old files have, less what their archives read.
std::string oldBody(uint16_t byteOrder) {
    BodyBytes bytes(byteOrder);
    bytes.int32(4).text("int").word(1).int64(-1).object("texts", 41).int32(1).text("\xC3\xA4");
    bytes.object("list", 101).int32(1).text("CmString").int32(1).text("s").word(8).text("one");
    bytes.object("object", 108).text("CmString").int32(1).text("s").word(8).text("two");
    return bytes.bytes();
}

TEST_P(AttributesInEachOrder, FailsWhereTheBytesEndAndKeepsWhatItHas) {
    FAttributes attributes;
    fillWithAllKinds(attributes, "text");
    for (const std::string& bytes : {stored(attributes, GetParam()), oldBody(GetParam())})
        for (size_t length = 0; length < bytes.size(); ++length) {
            SCOPED_TRACE(::testing::Message() << "cut at " << length << " of " << bytes.size());
            FAttributes read;
            std::string fault;
            EXPECT_FALSE(load(bytes.substr(0, length), read, GetParam(), &fault));
            EXPECT_FALSE(fault.empty());
            if (length > 40) {
                EXPECT_EQ(read.getInteger("int"), -1);
            }
        }
}

TEST(AttributesStream, ReadsDamagedCountsToTheirEnd) {
    FAttributes attributes;
    fillWithAllKinds(attributes, "text");
    for (const std::string& bytes : {stored(attributes), oldBody(0)})
        for (size_t place = 0; place + 4 <= bytes.size(); ++place)
            for (const int32_t count : {-1, 0, 50001, std::numeric_limits<int32_t>::max()}) {
                SCOPED_TRACE(::testing::Message() << count << " at byte " << place << " of " << bytes.size());
                std::string damaged = bytes;
                damaged.replace(place, 4, BodyBytes(0).int32(count).bytes());
                const LittleCost cost(damaged.size());
                FAttributes read;
                load(damaged, read);
                // What came in goes out again.
                stored(read);
            }
}

TEST(AttributesStream, TakesNoCountOnTrust) {
    struct Case {
        const char* name;
        void (*spell)(BodyBytes& bytes, int32_t count);
    };
    const Case cases[] = {
        {"entries", [](BodyBytes& b, int32_t n) { b.int32(n); }},
        {"key", [](BodyBytes& b, int32_t n) { b.int32(1).int32(n).raw("key").word(1).int64(1); }},
        {"text", [](BodyBytes& b, int32_t n) { b.int32(1).text("t").word(8).int32(n).raw("text"); }},
        {"integers", [](BodyBytes& b, int32_t n) { b.int32(1).object("l", 2).int32(n).int64(1); }},
        {"floats", [](BodyBytes& b, int32_t n) { b.int32(1).object("l", 3).int32(n).real(1); }},
        {"texts", [](BodyBytes& b, int32_t n) { b.int32(1).object("l", 4).int32(n).text("t"); }},
        {"lists", [](BodyBytes& b, int32_t n) { b.int32(1).object("l", 5).int32(n).int32(0); }},
        {"nested", [](BodyBytes& b, int32_t n) { b.int32(1).object("n", 6).int32(n); }},
        {"bytes", [](BodyBytes& b, int32_t n) { b.int32(1).object("b", 7).int32(n).raw("bytes"); }},
        {"class", [](BodyBytes& b, int32_t n) { b.int32(1).object("o", 20).int32(n).raw("x").int64(1); }},
        {"objects", [](BodyBytes& b, int32_t n) { b.int32(1).object("l", 201).int32(n).word(21).int64(1); }},
        {"old objects", [](BodyBytes& b, int32_t n) { b.int32(1).object("l", 101).int32(n); }},
        {"archived objects", [](BodyBytes& b, int32_t n) { b.int32(1).object("l", 1).int32(n); }},
    };
    for (const auto& c : cases)
        for (const int32_t count :
             {-1, std::numeric_limits<int32_t>::min(), 50001, std::numeric_limits<int32_t>::max()}) {
            SCOPED_TRACE(::testing::Message() << c.name << ": " << count);
            BodyBytes bytes(0);
            c.spell(bytes, count);
            const LittleCost cost(bytes.bytes().size());
            FAttributes read;
            std::string fault;
            EXPECT_FALSE(load(bytes.bytes(), read, 0, &fault));
            EXPECT_FALSE(fault.empty());
        }
}

TEST(AttributesStream, SaysWhereABodyIsDamaged) {
    const std::string bytes = BodyBytes(0).int32(1).object("levels", 2).int32(-5).bytes();
    FAttributes read;
    std::string fault;
    EXPECT_FALSE(load(bytes, read, 0, &fault));
    EXPECT_EQ(fault, "before byte 23: a number of -5 items; at least 0 is right");
    EXPECT_FALSE(load(bytes.substr(0, 18), read, 0, &fault));
    EXPECT_EQ(fault, "before byte 18: the stream ends in the kind of an object");

    BodyBytes list(0);
    list.int32(1).object("l\x1B", 201).int32(2);
    list.word(20).text("A").int64(1).int32(1).text("inner").word(1).int64(1).word(21);
    EXPECT_FALSE(load(list.bytes(), read, 0, &fault));
    EXPECT_NE(fault.find("the value of \"l\\x1B\" is cut off"), std::string::npos) << fault;
}

TEST(AttributesStream, LeavesOutATextThatIsTooLongToRead) {
    BodyBytes bytes(0);
    bytes.int32(3).text("long").word(8).int32(50001).raw(std::string(50001, 'x'));
    bytes.object("l", 4).int32(2).int32(50001).raw(std::string(50001, 'x')).text("t");
    bytes.text("last").word(1).int64(1);
    FAttributes read;
    const GlobalReports log;
    EXPECT_TRUE(load(bytes.bytes(), read));
    EXPECT_EQ(log.text, "-97 a text of \"long\" is longer than 50000 bytes; "
                        "-97 a text of \"l\" is longer than 50000 bytes");
    EXPECT_FALSE(read.contains("long"));
    ConstString text;
    EXPECT_TRUE(read.nextText("l", text) && text == ConstString("t"));
    EXPECT_FALSE(read.nextText("l", text));
    EXPECT_EQ(read.getInteger("last"), 1);
    FAttributes none;
    EXPECT_FALSE(load(BodyBytes(0).int32(1).int32(50001).raw(std::string(60000, 'x')).bytes(), none))
        << "an entry without its key is nothing";
}

TEST(AttributesStream, WritesNothingOfWhatCouldNotBeReadBack) {
    struct Case {
        const char* name;
        void (*fill)(FAttributes& attributes, const std::string& text);
        const char* fault;
    };
    const Case cases[] = {
        {"text", [](FAttributes& a, const std::string& text) { a.setText8("t", text.c_str()); },
         "\"t\": the text"},
        {"text in a list",
         [](FAttributes& a, const std::string& text) {
             a.setObject("n", new FAttributes, Hold::adopt);
             a.getAttributes("n")->appendText8("l", text.c_str());
         },
         "\"n|l\": the text"},
        {"key", [](FAttributes& a, const std::string& text) { a.setInteger(text, 1); }, "\"xxx"},
        {"class name",
         [](FAttributes& a, const std::string& text) {
             a.setObject("o", new FXmlInstance(1, ConstString(std::string_view(text)), make<FAttributes>()),
                         Hold::adopt);
         },
         "\"o\": the class name"},
    };
    for (const auto& c : cases)
        for (const size_t length : {49999, 50000}) {
            SCOPED_TRACE(::testing::Message() << c.name << " of " << length);
            FAttributes attributes;
            attributes.setInteger("before", 1);
            c.fill(attributes, std::string(length, 'x'));
            FMemoryStream stream;
            std::string fault;
            EXPECT_EQ(writeAttributes(stream, attributes, &fault), length < 50000);
            EXPECT_EQ(stream.size() > 0, length < 50000);
            EXPECT_EQ(fault.starts_with(length < 50000 ? "" : c.fault), true) << fault.substr(0, 200);
        }
}

TEST(AttributesStream, FailsWhenTheStreamTakesTooLittle) {
    FAttributes attributes;
    fillWithAllKinds(attributes, "text");
    char room[20];
    FMemoryStream stream(room, sizeof room);
    std::string fault;
    EXPECT_FALSE(writeAttributes(stream, attributes, &fault));
    EXPECT_FALSE(fault.empty());
}

/// Sets values and a part, and then gives up.
class GivesUp : public CmObject {
    QORL_CLASS(GivesUp, CmObject)

public:
    bool storeAttributes(FAttributes* attributes) override {
        attributes->setInteger("half", 1);
        attributes->setObject("part", part, Hold::retain);
        attributes->setText8("text", "half");
        return false;
    }

    CmObject* part = nullptr;
};

TEST(AttributesStream, LeavesNothingHalfOfAnObjectThatGivesUp) {
    const auto part = make<FXmlInstance>(77, "Part", one("x", 7));
    const auto half = make<GivesUp>();
    half->part = part.get();
    const auto outer = one("n", 1);
    outer->setObject("inner", half.get(), Hold::retain);
    FAttributes attributes;
    attributes.setInteger("before", 1);
    attributes.setObject("o", half.get(), Hold::retain);
    attributes.appendWatched("l", half.get());
    attributes.appendWatched("l", half.get());
    attributes.setObject("outer", new FXmlInstance(5, "Outer", outer), Hold::adopt);
    // It was met first by who gave up, and stands in full nevertheless.
    attributes.setObject("part", part.get(), Hold::retain);
    attributes.setObject("again", part.get(), Hold::retain);
    const auto failed = make<FXmlInstance>(3, "FAttributeValue", make<FAttributes>());
    EXPECT_EQ(failed->getObject(), nullptr);
    attributes.setObject("failed", failed.get(), Hold::retain);
    attributes.setInteger("behind", 2);
    BodyBytes expected(0);
    expected.int32(6).text("before").word(1).int64(1).object("l", 201).int32(0);
    expected.object("outer", 20).text("Outer").int64(5).int32(1).text("n").word(1).int64(1);
    expected.object("part", 20).text("Part").int64(77).int32(1).text("x").word(1).int64(7);
    expected.object("again", 21).int64(77).text("behind").word(1).int64(2);
    EXPECT_EQ(stored(attributes), expected.bytes());
}

TEST(AttributesStream, GivesNoObjectTheNumberOfAReferenceThatLeadsNowhere) {
    FAttributes attributes;
    attributes.setObject("first", new FXmlReference(5), Hold::adopt);
    // The second object gets a number that is free then, 1.
    for (const char* key : {"a", "b"})
        attributes.setObject(key, new FXmlInstance(5, "CmString", one("s", 1)), Hold::adopt);
    attributes.setObject("second", new FXmlReference(5), Hold::adopt);
    attributes.setObject("third", new FXmlReference(1), Hold::adopt);
    FAttributes read;
    ASSERT_TRUE(load(stored(attributes), read));
    uint64_t numbers[3];
    const char* keys[] = {"first", "second", "third"};
    for (int i = 0; i < 3; ++i) {
        const auto* reference = cast<FXmlReference>(read.find(keys[i])->getObject());
        EXPECT_EQ(reference->target(), nullptr) << keys[i];
        numbers[i] = reference->id();
    }
    EXPECT_EQ(numbers[0], numbers[1]) << "what was one thing stays one";
    EXPECT_NE(numbers[0], numbers[2]);
}

TEST(AttributesStream, KeepsObjectsOfUnknownClasses) {
    FAttributes attributes;
    attributes.setObject("gone", new FXmlInstance(77, "NoSuchClass", one("x", 1)), Hold::adopt);
    attributes.setObject("again", attributes.find("gone")->getObject(), Hold::retain);
    const std::string bytes = stored(attributes);
    FAttributes read;
    ASSERT_TRUE(load(bytes, read));
    EXPECT_EQ(cast<FXmlReference>(read.at(1)->getObject())->target(), read.at(0)->getObject());
    for (const char* key : {"gone", "again", "gone"})
        EXPECT_EQ(read.getObject(key), nullptr) << key;
    EXPECT_EQ(stored(read), bytes) << "the class may be there in the next run";
}

TEST(AttributesStream, TellsObjectsApartThatHaveOneNumber) {
    const auto live = make<CmString>("live");
    FAttributes attributes;
    attributes.setObject("live", live.get(), Hold::retain);
    attributes.setObject("a", new FXmlInstance(7, "A", one("x", 1)), Hold::adopt);
    attributes.setObject("b", new FXmlInstance(7, "B", one("x", 2)), Hold::adopt);
    attributes.setObject("c", new FXmlInstance(idOf(live.get()), "C", one("x", 3)), Hold::adopt);
    attributes.setObject("d", new FXmlInstance(0, "D", one("x", 4)), Hold::adopt);
    attributes.setObject("again", attributes.find("b")->getObject(), Hold::retain);
    FAttributes read;
    ASSERT_TRUE(load(stored(attributes), read));
    for (const auto& [key, value] :
         {std::pair("a", 1), std::pair("b", 2), std::pair("c", 3), std::pair("d", 4)}) {
        const auto* instance = cast<FXmlInstance>(read.find(key)->getObject());
        ASSERT_NE(instance, nullptr) << key;
        EXPECT_EQ(const_cast<FXmlInstance*>(instance)->getAttributes()->getInteger("x"), value);
        EXPECT_NE(instance->id(), 0u);
    }
    EXPECT_EQ(cast<FXmlReference>(read.find("again")->getObject())->target(), read.find("b")->getObject());
}

TEST(AttributesStream, BindsRingsThatCanGo) {
    BodyBytes bytes(0);
    bytes.int32(2).object("a", 20).text("A").int64(1).int32(2).object("self", 21).int64(1);
    bytes.object("b", 21).int64(2);
    bytes.object("b", 20).text("B").int64(2).int32(1).object("a", 21).int64(1);
    Ref<FAttributes> inner;
    {
        FAttributes read;
        ASSERT_TRUE(load(bytes.bytes(), read));
        FAttributes again;
        EXPECT_TRUE(load(stored(read), again));
        EXPECT_EQ(stored(again), stored(read));
        auto* a = cast<FXmlInstance>(read.find("a")->getObject());
        inner = retain(a->getAttributes());
        EXPECT_EQ(cast<FXmlReference>(inner->find("self")->getObject())->target(), a);
        EXPECT_EQ(cast<FXmlReference>(inner->find("b")->getObject())->target(), read.find("b")->getObject());
    }
    EXPECT_EQ(cast<FXmlReference>(inner->find("self")->getObject())->target(), nullptr);
}

} // namespace
} // namespace qorl
