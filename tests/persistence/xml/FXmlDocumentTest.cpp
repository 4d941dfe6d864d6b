#include "persistence/xml/FXmlDocument.h"

#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/LittleCost.h"
#include "support/Objects.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

namespace qorl {
namespace {

using Hold = FAttributes::Hold;

using Mode = FXmlDocument::Mode;

std::string written(const FAttributes& attributes) {
    FMemoryStream stream;
    FXmlDocument document(&stream, Mode::write);
    EXPECT_TRUE(document.storeAttributes("State", attributes)) << document.errorText();
    return std::string(stream.bytes());
}

bool readDocument(std::string_view text, FAttributes& attributes, std::string* error = nullptr) {
    FMemoryStream stream(text);
    FXmlDocument document(&stream, Mode::read);
    const bool isRead = document.restoreAttributes("State", attributes);
    if (error)
        *error = document.errorText();
    return isRead;
}

/// The body of a document in lines that end in CR LF.
std::string document(const std::string& body) {
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<State>\n" + body + "</State>\n";
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.insert(at, "\r");
    return text;
}

TEST(FXmlDocument, WritesEachKindInItsForm) {
    FAttributes attributes;
    attributes.setInteger("int", -5);
    attributes.setFloat("float", 0.5);
    attributes.setFloat("exact", 0.1);
    attributes.setText8("narrow", "a<\"b\"> $^`\n\xC3\xA4");
    attributes.setText16("wide", u"<'\u00E4'>&\"");
    attributes.setObject("nested", new FAttributes, Hold::adopt);
    attributes.getAttributes("nested")->setInteger("deep", 1);
    attributes.setBinary("bytes", "\x01\xAB", 2, true);
    attributes.appendInteger("ints", 7);
    attributes.appendFloat("floats", 1.5);
    attributes.appendText8("texts", "t&");
    attributes.appendAttributes("subs", make<FAttributes>());
    attributes.setObject("none", new FIntList, Hold::adopt);
    EXPECT_EQ(
        written(attributes),
        document("   <int name=\"int\" value=\"-5\"/>\n"
                 "   <float name=\"float\" value=\"0.5\"/>\n"
                 "   <float name=\"exact\" value=\"0.1000000000000000055511151231257827021181583404541\"/>\n"
                 "   <string name=\"narrow\" value=\"a&lt;&quot;b&quot;&gt; &dollar;&circ;&grave;&nl;&Atilde;"
                 "&curren;\"/>\n"
                 "   <string name=\"wide\" value=\"&lt;'\xC3\xA4'&gt;&amp;&quot;\" wide=\"true\"/>\n"
                 "   <member name=\"nested\">\n"
                 "      <int name=\"deep\" value=\"1\"/>\n"
                 "   </member>\n"
                 "   <bin name=\"bytes\">\n"
                 "\t\t01AB\n"
                 "   </bin>\n"
                 "   <list name=\"ints\" type=\"int\">\n"
                 "      <item value=\"7\"/>\n"
                 "   </list>\n"
                 "   <list name=\"floats\" type=\"float\">\n"
                 "      <item value=\"1.5\"/>\n"
                 "   </list>\n"
                 "   <list name=\"texts\" type=\"string\">\n"
                 "      <item value=\"t&amp;\"/>\n"
                 "   </list>\n"
                 "   <list name=\"subs\" type=\"list\">\n"
                 "      <item>\n"
                 "      </item>\n"
                 "   </list>\n"));
}

TEST(FXmlDocument, ReadsBackWhatItWrote) {
    FAttributes attributes;
    std::string every;
    for (int byte = 1; byte < 128; ++byte)
        every += byte == '\t' || byte >= ' ' || byte == '\n' || byte == '\r' ? static_cast<char>(byte) : '.';
    attributes.setText8("key \xC3\xA4", (every + "\xC3\xA4\xE2\x82\xAC").c_str());
    attributes.setFloat("float", 0.1);
    attributes.setInteger("least", INT64_MIN);
    attributes.setBinary("bytes", every.data(), static_cast<int64_t>(every.size()), true);
    attributes.appendFloat("floats", -1e300);
    attributes.appendAttributes("subs", make<FAttributes>());
    attributes.nextAttributes("subs")->setInteger("n", 3);
    FAttributes read;
    std::string error;
    ASSERT_TRUE(readDocument(written(attributes), read, &error)) << error;
    EXPECT_EQ(std::u16string(read.getText16("key \xC3\xA4")),
              ConstString(std::string_view(every)).toUtf16() + u"\u00E4\u20AC");
    EXPECT_EQ(read.getFloat("float"), 0.1);
    EXPECT_EQ(read.getInteger("least"), INT64_MIN);
    ASSERT_EQ(read.getBinarySize("bytes"), static_cast<int64_t>(every.size()));
    EXPECT_EQ(std::string(static_cast<const char*>(read.getBinaryAddress("bytes")), every.size()), every);
    double number = 0;
    EXPECT_TRUE(read.nextFloat("floats", number));
    EXPECT_EQ(number, -1e300);
    EXPECT_EQ(read.nextAttributes("subs")->getInteger("n"), 3);
}

TEST(FXmlDocument, StoresAnObjectOnceAndFindsItAgain) {
    FAttributes attributes;
    const auto object = make<CmString>("one");
    attributes.setObject("first", object.get(), Hold::retain);
    attributes.setObject("second", object.get(), Hold::retain);
    attributes.appendObject("list", object);
    attributes.appendObject("list", make<CmString>("two"));
    const std::string text = written(attributes);
    EXPECT_EQ(text.find("class=\"CmString\""), text.rfind("class=\"CmString\" name=\"first\"") + 0);
    FAttributes read;
    ASSERT_TRUE(readDocument(text, read));
    const auto first = read.getObject("first", "CmString");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(read.getObject("second"), first);
    EXPECT_EQ(read.nextObject("list"), first);
    EXPECT_EQ(cast<CmString>(read.nextObject("list"))->string(), ConstString("two"));
}

TEST(FXmlDocument, StopsAtADepthThatNobodyWrites) {
    std::string deep = "<State>";
    for (int i = 0; i < 100000; ++i)
        deep += "<member name='m'>";
    const LittleCost cost(deep.size());
    FAttributes read;
    std::string error;
    EXPECT_FALSE(readDocument(deep, read, &error));
    EXPECT_EQ(error, "1:16991: Xml data malformed! (elements are nested deeper than 1000)");
}

struct BadDocument {
    const char* text;
    const char* error;
};

TEST(FXmlDocument, SaysWhatItCannotRead) {
    // Longer than the parser's buffer, which gives way to a larger one while the object is passed over.
    const std::string openInside = "<State><obj class='A'><" + std::string(9000, 'x');
    const BadDocument cases[] = {
        {openInside.c_str(), "1:23: Unexpected end of file! (a tag is not closed)"},
        {"<Other/>", "1:1: Xml data malformed! (the top element must be <State>)"},
        {"<State/>\r\n<State/>", "2:1: Xml data malformed! (a document has one top element only)"},
        {"<State>\n <nosuch/></State>",
         "2:2: Unexpected tag or invalid attributes! (<nosuch> can't stand here)"},
        {"<State><string name='s'>a<int name='n' value='1'/>b</string></State>",
         "1:26: Unexpected tag or invalid attributes! (<int> can't stand here)"},
        {"<State><list name='s' type='string'><item>a<item>b</item></item></list></State>",
         "1:44: Unexpected tag or invalid attributes! (<item> can't stand here)"},
        {"<State>\n <int name='a' value='1'></State>", "2:26: Xml data malformed! (</int> is missing here)"},
        {"<State><item value='1'/></State>",
         "1:8: Unexpected tag or invalid attributes! (<item> can't stand here)"},
        {"<State>\r\r<int name=a/></State>",
         "3:1: Xml data malformed! (an attribute's value must stand in quotes)"},
        {"<State>\n<!-- <!-- --> </State>", "2:1: Unexpected end of file! (a comment has no end)"},
        {"<State><int name='a", "1:8: Unexpected end of file! (a tag is not closed)"},
        {"<State>", "1:8: Unexpected end of file! (<State> has no end tag)"},
        {"", "1:1: Unexpected end of file! (the top element <State> is missing)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        FAttributes read;
        std::string error;
        EXPECT_FALSE(readDocument(c.text, read, &error));
        EXPECT_EQ(error, c.error);
    }
}

TEST(FXmlDocument, PassesOverWhatIsOdd) {
    FAttributes read;
    ASSERT_TRUE(readDocument("<State>"
                             "<list name='x' type='other'><item value='1'/><nosuch/></list>"
                             "<obj class='CmString' ID='0'><nosuch/></obj>"
                             "<obj name='none' ID='0'/>"
                             "<obj name='lost' ID='99'/>"
                             "<obj class='NoSuchClass' name='gone' ID='-1'><int name='n' value='5'/></obj>"
                             "<obj name='again' ID='4294967295'/>"
                             "<!-- a <!-- comment --> in a comment --><!DOCTYPE x [ <!ENTITY a '>'> ]>"
                             "<string name='s'>a &amp; b &nosuch; &#x41;&#65;&#0; <5</string>"
                             "<string name='lines' value='a\tb\r\nc' wide='1'/>"
                             "<bin name='b'>0 1\n2g3</bin>"
                             "</State> ",
                             read));
    EXPECT_FALSE(read.contains("x"));
    EXPECT_EQ(read.getObject("lost"), nullptr);
    EXPECT_NE(cast<FXmlReference>(read.find("none")->getObject()), nullptr) << "of nothing";
    EXPECT_EQ(read.findAttributes("gone")->getInteger("n"), 5);
    EXPECT_EQ(cast<FXmlReference>(read.find("again")->getObject())->target(), read.find("gone")->getObject());
    EXPECT_STREQ(read.getText8("s"), "a & b &nosuch; AA&#0; <5");
    EXPECT_EQ(std::u16string(read.getText16("lines")), u"a\tb\r\nc");
    EXPECT_EQ(read.getBinarySize("b"), 2);
}

TEST(FXmlDocument, IsReleasedWhateverItsReferencesNameInIt) {
    // 1 names itself and 2, which stands nowhere else; 2 names 1 and has a part that names 2.
    constexpr std::string_view document =
        "<State>"
        "<obj name='early' ID='1'/>"
        "<obj class='X' name='a' ID='1'><obj name='self' ID='1'/>"
        "<obj name='b' ID='2'/></obj>"
        "<obj class='X' ID='2'><obj name='owner' ID='1'/>"
        "<obj class='X' name='part' ID='3'><obj name='b' ID='2'/></obj></obj>"
        "</State>";
    auto read = make<FAttributes>();
    ASSERT_TRUE(readDocument(document, *read));
    auto target = [](FAttributes* attributes, const char* name) {
        auto* object = cast<FXmlObject>(attributes->find(name)->getObject());
        return object->getAttributes();
    };
    Ref<FAttributes> a = retain(target(read.get(), "a"));
    Ref<FAttributes> b = retain(target(a.get(), "b"));
    ASSERT_NE(b, nullptr);
    const Ref<FAttributes> part = retain(target(b.get(), "part"));
    EXPECT_EQ(target(read.get(), "early"), a.get());
    EXPECT_EQ(target(a.get(), "self"), a.get());
    EXPECT_EQ(target(b.get(), "owner"), a.get());
    EXPECT_EQ(target(part.get(), "b"), b.get());
    Ref<CmObject> early = retain(read->find("early")->getObject());
    read.reset();
    EXPECT_EQ(cast<FXmlReference>(early)->getAttributes(), a.get()) << "a reference holds what it names";
    EXPECT_EQ(target(b.get(), "owner"), a.get());
    early.reset();
    EXPECT_EQ(target(a.get(), "self"), nullptr) << "the object itself is gone";
    EXPECT_EQ(referencesOn(a.get()), 1u);
    a.reset();
    EXPECT_EQ(referencesOn(b.get()), 1u);
    b.reset();
    EXPECT_EQ(referencesOn(part.get()), 1u);
}

TEST(FXmlDocument, ReleasesAChainOfAnyLength) {
    constexpr int32_t length = 30'000;
    std::string document = "<State><obj name='first' ID='1'/>";
    for (int32_t i = 1; i <= length; ++i)
        document += "<obj class='X' ID='" + std::to_string(i) + "'><obj name='next' ID='" +
                    std::to_string(i + 1) + "'/></obj>";
    auto read = make<FAttributes>();
    ASSERT_TRUE(readDocument(document + "</State>", *read));
    Ref<FAttributes> last = read;
    int32_t hops = 0;
    const char* name = "first";
    for (FAttributes* next = nullptr;
         (next = cast<FXmlObject>(last->find(name)->getObject())->getAttributes()); name = "next", ++hops)
        last = retain(next);
    EXPECT_EQ(hops, length);
    read.reset();
    EXPECT_EQ(referencesOn(last.get()), 1u);
}

TEST(FXmlDocument, ReadsBackEveryText) {
    std::string bytes;
    for (int byte = 0; byte < 0x80; ++byte)
        bytes += static_cast<char>(byte);
    const std::string pad(2048, 'p');
    const std::string padded[] = {
        pad,
        pad + 'q',
        "\r\n" + pad,
        pad + "\r\n",
        "\n" + pad + '\n',
        "\r" + pad + '\r',
        "  " + pad,
        pad + "\n   ",
        "\r\n\r\n" + pad,
        pad + "\n\r\n ",
        "\t" + pad + '\t',
        pad + "</string>",
        pad + "&amp;",
        pad + "<!-- -->",
        bytes + pad + bytes,
        pad + pad,
        pad + "&",
        "]]>" + pad + "&#65;",
    };
    FAttributes attributes;
    for (const std::string& text : padded) {
        const ConstString narrow{std::string_view(text)};
        const std::u16string wide = narrow.toUtf16();
        attributes.append("narrow").setString(narrow);
        attributes.append("wide").setString(ConstString(std::u16string_view(wide)));
        attributes.append("far").setString(ConstString(std::u16string_view(wide + u"\u20AC\U0001F600")));
        attributes.appendString("list", ConstString(std::u16string_view(wide)));
    }
    attributes.appendString("list", ConstString(u""));
    attributes.append("empty").setString(ConstString(""));
    FAttributes read;
    std::string error;
    ASSERT_TRUE(readDocument(written(attributes), read, &error)) << error;
    ASSERT_EQ(read.count(), attributes.count());
    for (int32_t i = 0; i < read.count(); ++i) {
        EXPECT_EQ(read.at(i)->key(), attributes.at(i)->key());
        EXPECT_EQ(read.at(i)->isWide(), attributes.at(i)->isWide()) << i;
        EXPECT_TRUE(read.at(i)->getString().toUtf16() == attributes.at(i)->getString().toUtf16()) << i;
    }
    ConstString expected;
    ConstString item;
    while (attributes.nextText("list", expected)) {
        ASSERT_TRUE(read.nextText("list", item));
        EXPECT_TRUE(item.toUtf16() == expected.toUtf16());
    }
    EXPECT_FALSE(read.nextText("list", item));
}

TEST(FXmlDocument, KeepsLoneSurrogates) {
    // A name of a file that is no UTF-8 holds such.
    const std::u16string odd = u"caf\xDCE9 \xD83D<\xDE00\xD83D\xDE00\u20AC\xD800";
    const std::u16string texts[] = {odd, std::u16string(2048, u'\xDC80'),
                                    std::u16string(3000, u'\xDFFF') + odd,
                                    std::u16string(4095, u'x') + u"\U0001F600"};
    FAttributes attributes;
    for (const std::u16string& text : texts) {
        attributes.append("s").setString(ConstString(std::u16string_view(text)));
        attributes.appendString("list", ConstString(std::u16string_view(text)));
    }
    FAttributes read;
    ASSERT_TRUE(readDocument(written(attributes), read));
    for (const int32_t i : {0, 2, 3, 4})
        EXPECT_TRUE(read.at(i)->getString().view16() == attributes.at(i)->getString().view16()) << i;
    for (const std::u16string& text : texts) {
        ConstString item;
        ASSERT_TRUE(read.nextText("list", item));
        EXPECT_TRUE(item.view16() == text);
    }
}

TEST(FXmlDocument, KeepsThePlaceOfAnItemThatIsNothing) {
    const auto list = make<FObjectList>();
    list->add(make<CmString>("a"));
    list->add(nullptr);
    list->add(make<CmString>("b"));
    FAttributes attributes;
    attributes.setObject("list", list.get(), Hold::retain);
    FAttributes read;
    ASSERT_TRUE(readDocument(written(attributes), read));
    const auto* back = cast<FObjectList>(read.find("list")->getObject());
    ASSERT_EQ(back->count(), 3);
    EXPECT_EQ(back->at(1), nullptr);
    EXPECT_EQ(cast<CmString>(cast<FXmlObject>(back->at(2))->getObject())->string(), ConstString("b"));
}

TEST(FXmlDocument, WritesALongTextAsContent) {
    const std::string longest(2048, 'x');
    FAttributes attributes;
    attributes.setString("a", ConstString(std::string_view(longest)));
    attributes.setString("b", ConstString(std::string_view(longest + '\n')));
    attributes.setString("c", ConstString(std::u16string_view(std::u16string(2049, u'\u00E4'))));
    std::string wide;
    for (int i = 0; i < 2049; ++i)
        wide += "\xC3\xA4";
    EXPECT_EQ(written(attributes), document("   <string name=\"a\" value=\"" + longest +
                                            "\"/>\n"
                                            "   <string name=\"b\">\n" +
                                            longest +
                                            "&nl;\n"
                                            "   </string>\n"
                                            "   <string name=\"c\" wide=\"true\">\n" +
                                            wide +
                                            "\n"
                                            "   </string>\n"));
}

TEST(FXmlDocument, PutsDeepObjectsBehindTheBody) {
    const auto object = make<CmString>("deep");
    const std::string id = std::to_string(reinterpret_cast<uintptr_t>(object.get()));
    for (const int level : {7, 8}) {
        auto attributes = make<FAttributes>();
        attributes->setObject("o", object.get(), Hold::retain);
        std::string open;
        std::string close;
        for (int i = level - 1; i > 0; --i) {
            const auto outer = make<FAttributes>();
            outer->setObject("m", attributes.get(), Hold::retain);
            attributes = outer;
            const std::string indent(static_cast<size_t>(i) * 3, ' ');
            open = indent + "<member name=\"m\">\n" + open;
            close += indent + "</member>\n";
        }
        const std::string indent(static_cast<size_t>(level) * 3, ' ');
        const std::string inPlace = indent + "<obj class=\"CmString\" name=\"o\" ID=\"" + id + "\">\n" +
                                    indent + "   <string name=\"s\" value=\"deep\"/>\n" + indent + "</obj>\n";
        const std::string queued = "\n   <obj class=\"CmString\" ID=\"" + id +
                                   "\">\n"
                                   "      <string name=\"s\" value=\"deep\"/>\n"
                                   "   </obj>\n\n";
        EXPECT_EQ(written(*attributes), document(level < 8 ? open + inPlace + close
                                                           : open + indent + "<obj name=\"o\" ID=\"" + id +
                                                                 "\"/>\n" + close + queued));
    }
}

/// Holds another one in a list, so that a chain of them goes ever deeper.
class Link : public CmObject {
    QORL_CLASS(Link, CmObject)

public:
    explicit Link(Ref<CmObject> next) : next_(std::move(next)) {}
    bool storeAttributes(FAttributes* attributes) override {
        if (next_)
            attributes->appendObject("list", next_);
        return true;
    }

private:
    Ref<CmObject> next_;
};

TEST(FXmlDocument, SavesNothingThatCannotBeReadAgain) {
    Ref<Link> chain;
    for (int i = 0; i < 5000; ++i)
        chain = make<Link>(chain);
    FAttributes links;
    links.setObject("chain", chain.get(), Hold::retain);
    FAttributes read;
    EXPECT_TRUE(readDocument(written(links), read)) << "a chain of objects has no end";

    for (const bool isList : {false, true}) {
        const int most = isList ? 997 : 998; // Its items stand one level deeper.
        for (const int depth : {most, most + 1}) {
            auto nested = make<FAttributes>();
            if (isList)
                nested->appendInteger("n", 1);
            else
                nested->setInteger("n", 1);
            for (int i = 0; i < depth; ++i) {
                const auto outer = make<FAttributes>();
                outer->setObject("m", nested.get(), Hold::retain);
                nested = outer;
            }
            FMemoryStream stream;
            FXmlDocument document(&stream, Mode::write);
            EXPECT_EQ(document.storeAttributes("State", *nested), depth == most);
            EXPECT_EQ(document.errorText(), depth == most ? ""
                                            : isList      ? "the list \"n\" is nested deeper than 1000"
                                                          : "attributes are nested deeper than 1000");
            FAttributes back;
            EXPECT_EQ(readDocument(stream.bytes(), back), depth == most);
        }
    }

    FAttributes named;
    named.setInteger(std::string(2049, 'k'), 1);
    FMemoryStream stream;
    FXmlDocument document(&stream, Mode::write);
    EXPECT_FALSE(document.storeAttributes("State", named));
    EXPECT_EQ(document.errorText(), "the key \"" + std::string(64, 'k') + "...\" is longer than 2048 bytes");
}

TEST(FXmlDocument, KeepsOddNames) {
    FAttributes attributes;
    attributes.setInteger("", 1);
    attributes.setInteger("a\"<\n\xE4\xFF&amp;", 2);
    for (const char* className : {"", "A<B>", "a\"b&lt;c"}) {
        const auto state = make<FAttributes>();
        state->setInteger("n", 3);
        attributes.append("").setObject(make<FXmlInstance>(1, ConstString(className), state).get(),
                                        Hold::retain);
    }
    FAttributes read;
    std::string error;
    ASSERT_TRUE(readDocument(written(attributes), read, &error)) << error;
    ASSERT_EQ(read.count(), attributes.count());
    for (int32_t i = 0; i < read.count(); ++i)
        EXPECT_EQ(read.at(i)->key(), attributes.at(i)->key());
    EXPECT_EQ(read.getInteger("a\"<\n\xE4\xFF&amp;"), 2);
    for (int32_t i = 2; i < read.count(); ++i) {
        const auto* stored = cast<FXmlInstance>(read.at(i)->getObject());
        const auto* original = cast<FXmlInstance>(attributes.at(i)->getObject());
        ASSERT_NE(stored, nullptr);
        EXPECT_EQ(stored->className8().string(), original->className8().string());
    }
}

TEST(FXmlDocument, ReadsNumbersAsTheyAreWrittenByHand) {
    const std::pair<const char*, double> reals[] = {
        {"1.5", 1.5},          {" \t+2", 2},  {"-1e3x", -1000}, {"1e400", HUGE_VAL},
        {"-1e400", -HUGE_VAL}, {"1e-400", 0}, {"0x1.8p1", 3.0}, {"-0X10", -16},
        {"inf", HUGE_VAL},     {"", 0},       {"none", 0},      {"1E+2", 100},
    };
    for (const auto& [text, expected] : reals) {
        FAttributes read;
        EXPECT_TRUE(readDocument("<State><float name='f' value='" + std::string(text) + "'/></State>", read));
        EXPECT_EQ(read.getFloat("f"), expected) << text;
    }
    const std::pair<const char*, int64_t> integers[] = {
        {"9223372036854775807", INT64_MAX},
        {"9223372036854775808", INT64_MAX},
        {"-9223372036854775809", INT64_MIN},
        {" +5", 5},
        {"-0", 0},
        {"12abc", 12},
        {"", 0},
    };
    for (const auto& [text, expected] : integers) {
        FAttributes read;
        EXPECT_TRUE(readDocument("<State><int name='i' value='" + std::string(text) + "'/></State>", read));
        EXPECT_EQ(read.getInteger("i"), expected) << text;
    }
}

TEST(FXmlDocument, KeepsWhatStoodInFrontOfACut) {
    FAttributes attributes;
    attributes.setInteger("n", 5);
    attributes.setBinary("b", "\x01\x02\x03", 3, true);
    attributes.appendText8("l", "text");
    attributes.setObject("o", new CmString("object"), Hold::adopt);
    const std::string text = written(attributes);
    const size_t afterFirst = text.find("<bin");
    const size_t end = text.find("</State>") + 8;
    for (size_t length = 0; length <= text.size(); ++length) {
        SCOPED_TRACE(length);
        FAttributes read;
        EXPECT_EQ(readDocument(std::string_view(text).substr(0, length), read), length >= end);
        EXPECT_EQ(read.contains("n"), length >= afterFirst - 5);
    }
}

TEST(FXmlDocument, FailsWithoutMemory) {
    FAttributes attributes;
    attributes.setText8("narrow", "text & more of it than fits anywhere");
    attributes.setText16("wide", u"\u00E4 wide");
    attributes.setObject("nested", new FAttributes, Hold::adopt);
    attributes.setBinary("bytes", "0123456789", 10, true);
    attributes.appendInteger("ints", 1);
    attributes.appendText8("texts", "item");
    const auto shared = make<CmString>("shared");
    attributes.setObject("one", shared.get(), Hold::retain);
    attributes.appendObject("objects", shared);
    const std::string text = written(attributes);
    // What finds another way is whole, too.
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream stream;
        FXmlDocument document(&stream, Mode::write);
        const bool isStored =
            allocation.during([&] { return document.storeAttributes("State", attributes); });
        EXPECT_TRUE(isStored || allocation.hasFailed());
        EXPECT_EQ(isStored, stream.bytes() == text);
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream stream{std::string_view(text)};
        FXmlDocument document(&stream, Mode::read);
        FAttributes read;
        const bool isRead = allocation.during([&] { return document.restoreAttributes("State", read); });
        EXPECT_TRUE(isRead || allocation.hasFailed());
        EXPECT_EQ(document.errorText().empty(), isRead);
        EXPECT_TRUE(!isRead || written(read) == text);
    });
}

} // namespace
} // namespace qorl
