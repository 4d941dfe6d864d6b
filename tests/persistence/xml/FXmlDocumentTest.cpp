#include "persistence/xml/FXmlDocument.h"

#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/GraphNode.h"
#include "support/XmlLines.h"

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

/// The document with that body; "ID" stands for the number of `object`.
std::string document(const std::string& body, CmObject* object = nullptr) {
    return xmlLines("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<State>\n" + body + "</State>\n",
                    {{"'ID'", object}});
}

constexpr char narrow[] = "a<\"b\"> $^`\n\xC3\xA4";

void setEachKind(FAttributes& attributes, const Ref<CmString>& object) {
    attributes.setInteger("int", INT64_MIN);
    attributes.setFloat("float", 0.5);
    attributes.setFloat("exact", 0.1);
    attributes.setText8("narrow", narrow);
    attributes.setText16("wide", u"<'\u00E4'>&\"");
    attributes.setObject("nested", new FAttributes, Hold::adopt);
    attributes.getAttributes("nested")->setInteger("deep", 1);
    attributes.setBinary("bytes", "\x01\xAB", 2, true);
    attributes.appendInteger("ints", 7);
    attributes.appendFloat("floats", -1e300);
    attributes.appendText8("texts", "t&");
    attributes.appendAttributes("subs", make<FAttributes>());
    attributes.nextAttributes("subs")->setInteger("n", 3);
    attributes.resetAllCursors();
    attributes.setObject("first", object.get(), Hold::retain);
    attributes.setObject("second", object.get(), Hold::retain);
    attributes.appendObject("objects", object);
    attributes.setObject("none", new FIntList, Hold::adopt);
}

TEST(FXmlDocument, WritesAndReadsEachKindInItsForm) {
    FAttributes attributes;
    const auto object = make<CmString>("one");
    setEachKind(attributes, object);
    const std::string text = written(attributes);
    EXPECT_EQ(text, document(R"(   <int name="int" value="-9223372036854775808"/>
   <float name="float" value="0.5"/>
   <float name="exact" value="0.1000000000000000055511151231257827021181583404541"/>
   <string name="narrow" value="a&lt;&quot;b&quot;&gt; &dollar;&circ;&grave;&nl;&Atilde;&curren;"/>
   <string name="wide" value="&lt;')"
                             "\xC3\xA4"
                             R"('&gt;&amp;&quot;" wide="true"/>
   <member name="nested">
      <int name="deep" value="1"/>
   </member>
   <bin name="bytes">
		01AB
   </bin>
   <list name="ints" type="int">
      <item value="7"/>
   </list>
   <list name="floats" type="float">
      <item value="-1.0000000000000000525047602552044202487044685811082e+300"/>
   </list>
   <list name="texts" type="string">
      <item value="t&amp;"/>
   </list>
   <list name="subs" type="list">
      <item>
         <int name="n" value="3"/>
      </item>
   </list>
   <obj class="CmString" name="first" ID="'ID'">
      <string name="s" value="one"/>
   </obj>
   <obj name="second" ID="'ID'"/>
   <list name="objects" type="obj">
      <item value="'ID'"/>
   </list>
)",
                             object.get()));
    FAttributes read;
    ASSERT_TRUE(readDocument(text, read));
    EXPECT_EQ(std::u16string(read.getText16("narrow")), u"a<\"b\"> $^`\n\u00E4");
    read.setText8("narrow", narrow);
    EXPECT_EQ(written(read), text) << "all else comes back as it was";
    const auto first = read.getObject("first", "CmString");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(read.getObject("second"), first);
    EXPECT_EQ(read.nextObject("objects"), first);
    EXPECT_EQ(cast<CmString>(first)->string(), ConstString("one"));
}

TEST(FXmlDocument, ReadsBackBinariesOfAllNumbersOfLines) {
    std::string every;
    for (int byte = 0; byte < 256; ++byte)
        every += static_cast<char>(byte);
    for (const size_t size : {31, 32, 33, 64, 127, 256}) {
        FAttributes attributes;
        attributes.setBinary("bytes", every.data(), static_cast<int64_t>(size), true);
        FAttributes read;
        ASSERT_TRUE(readDocument(written(attributes), read)) << size;
        ASSERT_EQ(read.getBinarySize("bytes"), static_cast<int64_t>(size));
        EXPECT_EQ(std::string(static_cast<const char*>(read.getBinaryAddress("bytes")), size),
                  every.substr(0, size));
    }
}

TEST(FXmlDocument, SaysWhatItCannotRead) {
    // Longer than the parser's buffer, which gives way to a larger one while the object is passed over.
    const std::string openInside = "<State><obj class='A'><" + std::string(9000, 'x');
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
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
                             "<list name='i' type='int'><obj class='CmString' ID='7'>"
                             "<string name='s' value='seven'/></obj><obj ID='7'/><item value='1'/></list>"
                             "<obj name='elsewhere' ID='7'/>"
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
    EXPECT_EQ(read.count("i"), 1) << "no list of objects";
    EXPECT_EQ(cast<CmString>(read.getObject("elsewhere"))->string(), ConstString("seven"));
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
    const std::string padded[] = {pad,
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
                                  "]]>" + pad + "&#65;"};
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
    // A name of a file that is no UTF-8 holds lone surrogates.
    const std::u16string odd = u"caf\xDCE9 \xD83D<\xDE00\xD83D\xDE00\u20AC\xD800";
    for (const std::u16string& text :
         {odd, std::u16string(2048, u'\xDC80'), std::u16string(3000, u'\xDFFF') + odd,
          std::u16string(4095, u'x') + u"\U0001F600"}) {
        attributes.append("odd").setString(ConstString(std::u16string_view(text)));
        attributes.appendString("list", ConstString(std::u16string_view(text)));
    }
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
        const std::string inPlace = indent + "<obj class=\"CmString\" name=\"o\" ID=\"'ID'\">\n" + indent +
                                    "   <string name=\"s\" value=\"deep\"/>\n" + indent + "</obj>\n" + close;
        const std::string queued = indent + "<obj name=\"o\" ID=\"'ID'\"/>\n" + close +
                                   "\n   <obj class=\"CmString\" ID=\"'ID'\">\n"
                                   "      <string name=\"s\" value=\"deep\"/>\n"
                                   "   </obj>\n\n";
        EXPECT_EQ(written(*attributes), document(open + (level < 8 ? inPlace : queued), object.get()));
    }
}

TEST(FXmlDocument, SavesNothingThatCannotBeReadAgain) {
    auto chain = make<GraphNode>();
    for (int i = 0; i < 5000; ++i) {
        const auto next = make<GraphNode>();
        next->links = {std::exchange(chain, next)};
    }
    FAttributes links;
    links.setObject("chain", chain.get(), Hold::retain);
    FAttributes read;
    EXPECT_TRUE(readDocument(written(links), read)) << "a chain of objects has no end";
    GraphNode::cutAll();

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

TEST(FXmlDocument, WritesNoTopElementThatNoParserFinds) {
    const std::string longest(4096, 't');
    const std::pair<std::string, bool> tops[] = {
        {"_", true},  {"a:b!-1\xC3\xA4<", true}, {longest, true}, {longest + 't', false}, {"", false},
        {"1", false}, {"my state", false},       {"a/b", false},  {"\xC3\xA4", false},    {"!x", false},
    };
    for (const auto& [tag, isName] : tops) {
        SCOPED_TRACE(tag.substr(0, 20));
        FMemoryStream top;
        FXmlDocument topped(&top, Mode::write);
        EXPECT_EQ(topped.storeAttributes(tag, FAttributes()), isName);
        EXPECT_EQ(topped.errorText().find("the top element can't be named \"" + tag.substr(0, 64)) == 0,
                  !isName);
        EXPECT_EQ(top.size() > 0, isName);
        top.rewind();
        FAttributes back;
        EXPECT_EQ(FXmlDocument(&top, Mode::read).restoreAttributes(tag, back), isName);
    }
}

TEST(FXmlDocument, KeepsOddNames) {
    const struct {
        const char* key;
        const char* className;
    } cases[] = {
        {"", "A"},        {"", ""},       {" ", "A<B>"},   {"a\"<\n\xE4\xFF&amp;", "a\"b&lt;c"},
        {"\t'\r\n", " "}, {"&#65;", "&"}, {"/>", "A'B/>"},
    };
    FAttributes attributes;
    for (const auto& c : cases) {
        attributes.append(c.key).setInteger(2);
        const auto object = make<FXmlInstance>(1, ConstString(c.className), make<FAttributes>());
        attributes.append(c.key).setObject(object.get(), Hold::retain);
    }
    FAttributes read;
    std::string error;
    ASSERT_TRUE(readDocument(written(attributes), read, &error)) << error;
    ASSERT_EQ(read.count(), attributes.count());
    int32_t place = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(place);
        EXPECT_EQ(std::string_view(read.at(place)->key()), c.key);
        EXPECT_EQ(read.at(place++)->getInteger(), 2);
        EXPECT_EQ(std::string_view(read.at(place)->key()), c.key);
        const auto* stored = cast<FXmlInstance>(read.at(place++)->getObject());
        ASSERT_NE(stored, nullptr);
        EXPECT_EQ(stored->className8().string(), ConstString(c.className));
    }
}

TEST(FXmlDocument, ReadsNumbersAsTheyAreWrittenByHand) {
    const std::string zeros(400, '0');
    const std::pair<std::string, double> reals[] = {
        {"1.5", 1.5},
        {" \t+2", 2},
        {"-1e3x", -1000},
        {"1e400", HUGE_VAL},
        {"-1e400", -HUGE_VAL},
        {"1e-400", 0},
        {"0x1.8p1", 3.0},
        {"-0X10", -16},
        {"inf", HUGE_VAL},
        {"", 0},
        {"none", 0},
        {"1E+2", 100},
        {"-1" + zeros, -HUGE_VAL},
        {"1" + zeros + "e-50", HUGE_VAL},
        {"0." + zeros + "1", 0},
        {"0." + zeros + "1e+5", 0},
        {"1e9999999999999999999", HUGE_VAL},
        {".1e-9999999999999999999", 0},
    };
    const std::pair<std::string, int64_t> integers[] = {{"9223372036854775807", INT64_MAX},
                                                        {"9223372036854775808", INT64_MAX},
                                                        {"-9223372036854775809", INT64_MIN},
                                                        {" +5", 5},
                                                        {"-0", 0},
                                                        {"12abc", 12},
                                                        {"", 0}};
    const auto valueOf = [](const std::string& element, const std::string& text, FAttributes& read) {
        EXPECT_TRUE(readDocument("<State><" + element + " name='n' value='" + text + "'/></State>", read));
    };
    for (const auto& [text, expected] : reals) {
        FAttributes read;
        valueOf("float", text, read);
        EXPECT_EQ(read.getFloat("n"), expected) << text;
    }
    for (const auto& [text, expected] : integers) {
        FAttributes read;
        valueOf("int", text, read);
        EXPECT_EQ(read.getInteger("n"), expected) << text;
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
