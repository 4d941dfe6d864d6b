#include "persistence/xml/FXmlParser.h"

#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/LittleCost.h"
#include "support/ShakyStream.h"
#include "support/Slots.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace qorl {
namespace {

/// Writes down what it hears, and does with some elements what their names say.
class Recorder : public FXmlParser {
public:
    explicit Recorder(FBinaryStream& stream, uint32_t options = 0) : FXmlParser(stream, options) {}

    bool startTag(std::string_view name, const FXmlAttributes& attributes, bool isEmpty,
                  void* context) override {
        note('<' + std::string(name), context);
        for (const auto& view : attributes)
            events +=
                ' ' + std::string(view.name) + '=' + std::string(view.value) + (view.isWide ? "(wide)" : "");
        events += isEmpty ? "/>" : ">";
        if (name == "skip")
            return skipElement();
        if (name == "inner")
            return parse(const_cast<char*>("inner"));
        if (name == "stop")
            stop();
        return name != "bad";
    }
    void endTag(std::string_view name, void* context) override {
        note("</" + std::string(name) + '>', context);
    }
    void text(const char* data, int32_t length, void*) override {
        open_.append(data, static_cast<size_t>(length));
        longest = std::max(longest, length);
        if (length > 0)
            return;
        events += '[' + open_ + ']';
        open_.clear();
    }
    void comment(std::string_view text, void*, bool isEnd) override {
        open_ += text;
        if (!isEnd)
            return;
        events += '!' + open_ + '!';
        open_.clear();
    }

    std::string events;
    int32_t longest = 0;

private:
    void note(const std::string& event, void* context) {
        events += context ? static_cast<const char*>(context) + (':' + event) : event;
    }

    std::string open_;
};

struct Parsed {
    std::string events;
    bool isGood;
    std::string text; ///< "line:column error detail"
};

Parsed parse(std::string_view document, uint32_t options = 0, int64_t pieces = 1 << 20) {
    // Of a stream that gives few bytes at a time, everything lies across the borders of pieces.
    ShakyStream stream{std::string(document)};
    stream.atOnce = pieces;
    Recorder recorder(stream, options);
    recorder.setReporting(FXmlParser::Reporting::off);
    const bool isGood = recorder.parse();
    return {recorder.events, isGood,
            std::to_string(recorder.line()) + ':' + std::to_string(recorder.column()) + ' ' +
                recorder.getErrorText() + '|' + recorder.errorDetail()};
}

using P = FXmlParser;

TEST(FXmlParser, TellsWhatItFindsHoweverTheStreamIsCut) {
    const struct {
        const char* name;
        const char* document;
        const char* expected;
        uint32_t options = 0;
    } cases[] = {
        {"mark and declaration", "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a/>", "<a/>"},
        {"both quotes", "<a b='1' c = \"2'\" />", "<a b=1 c=2'/>"},
        {"entities", "<a b='&lt;&nosuch;&#x41;&#0;'>&amp;&half;</a>", "<a b=<&nosuch;A&#0;>[&\xBD]</a>"},
        {"stray signs", "<a>1 < 2 <3 <</a>", "<a>[1 < 2 <3 <]</a>"},
        {"names", "<_a/><Zz.y-1/>", "<_a/><Zz.y-1/>"},
        {"a name that begins otherwise", "<a><\xC3\xA4/></a>", "<a>[<\xC3\xA4/>]</a>"},
        {"comments nest", "<a><!-- x <!-- y --> z --></a>", "<a>! x <!-- y --> z !</a>", P::giveComments},
        {"flat comments", "<a><!-- <!-- y --> z</a>", "<a>! <!-- y ![ z]</a>",
         P::giveComments | P::flatComments},
        {"comments are passed over", "<a><!-- x --></a>", "<a></a>"},
        {"short comments", "<a><!----><!-- - --></a>", "<a>!!! - !</a>", P::giveComments},
        {"CDATA is passed over", "<a>x<![CDATA[<b>]]]]>y</a>", "<a>[x][y]</a>"},
        {"document type", "<!DOCTYPE a [<!ENTITY b '>]'><!-- don't --><?x don't?>] \">\"><a/>", "<a/>"},
        {"instructions", "<?one <a> ?x?><a/>", "<a/>"},
        {"backslash", "<a b='it\\'s'/>", "<a b=it's/>", P::backslashQuotes},
        {"backslash at the end", "<a b='c:\\x' d='\\\\\"'/>", "<a b=c:\\x d=\\\"/>", P::backslashQuotes},
        {"blanks stay", "<a> \r\n <b/>\t</a>", "<a>[ \r\n ]<b/>[\t]</a>"},
        {"blanks dropped", "<a> \r\n <b/>\t x </a>", "<a><b/>[x ]</a>", P::dropBlanks},
        {"skipped", "<a><skip x='1'><b>t<!-- --></b></skip><skip/>u</a>", "<a><skip x=1><skip/>[u]</a>"},
        {"nested calls", "<a><inner><b><inner/></b>t</inner><c/></a>",
         "<a><inner>inner:<b>inner:<inner/>inner:</b>[t]inner:</inner><c/></a>"},
        {"stopped", "<a><stop/><b></a>", "<a><stop/>"},
        {"Macintosh", "<a b='&Auml;&half;'/>", "<a b=\x80\xFF/>", P::macintoshEntities},
        {"wide values", "<a b='&auml;' c='&#xe4;' d='&amp;'/>", "<a b=\xE4(wide) c=\xE4 d=&/>",
         P::wideNamedValues},
        {"text outside", "x<a/>y", "[x]<a/>[y]"},
        {"line ends in values", "<a b='1\r\n2'/>", "<a b=1\r\n2/>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        for (const int64_t pieces : {1 << 20, 7, 1}) {
            const Parsed parsed = parse(c.document, c.options, pieces);
            EXPECT_EQ(parsed.events, c.expected) << "in pieces of " << pieces;
            EXPECT_TRUE(parsed.isGood) << parsed.text;
        }
    }
}

TEST(FXmlParser, KeepsZeroBytes) {
    using std::string_view_literals::operator""sv;
    EXPECT_EQ(parse("<a b='1\0\0'>\0</a>"sv, 0, 3).events, "<a b=1\0\0>[\0]</a>"sv);
}

TEST(FXmlParser, SaysWhatIsWrongAndWhere) {
    const struct {
        const char* document;
        const char* expected;
    } cases[] = {
        {"<a>\n <b></c></a>", "2:5 Xml data malformed!|</b> is missing here"},
        {"<a/>\r\n</a>", "2:1 Xml data malformed!|an end tag has no start tag"},
        {"<a>\r<b c=1/></a>", "2:1 Xml data malformed!|an attribute's value must stand in quotes"},
        {"<a>\n\r<b c/></a>", "2:1 Xml data malformed!|an attribute's value must stand in quotes"},
        {"<a ='1'/>", "1:1 Xml data malformed!|an attribute's name is missing"},
        {"<a / >", "1:1 Xml data malformed!|an attribute's name is missing"},
        {"<a>\n\n<bad/></a>", "3:1 Unexpected tag or invalid attributes!|"},
        {"<a>\n<b>", "2:4 Unexpected end of file!|<b> has no end tag"},
        {"<a b='", "1:1 Unexpected end of file!|a tag is not closed"},
        {"<a></a", "1:4 Unexpected end of file!|a tag is not closed"},
        {"<a>\n<!-- x", "2:1 Unexpected end of file!|a comment has no end"},
        {"<a>\n<![CDATA[ ]>", "2:1 Unexpected end of file!|a CDATA section has no end"},
        {"\n<?xml ?", "2:1 Unexpected end of file!|a processing instruction has no end"},
        {"<!DOCTYPE [ '>'", "1:1 Unexpected end of file!|a document type has no end"},
        {"<!DOCTYPE [ <?x ", "1:1 Unexpected end of file!|a processing instruction has no end"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.document);
        for (const int64_t pieces : {1 << 20, 1}) {
            const Parsed parsed = parse(c.document, 0, pieces);
            EXPECT_FALSE(parsed.isGood);
            EXPECT_EQ(parsed.text, c.expected);
        }
    }
}

TEST(FXmlParser, SaysWhenItsStreamCantBeRead) {
    for (const char* document : {"", "<a", "<a>", "<a>text", "<a/>", "<a/> "}) {
        ShakyStream stream{document};
        stream.failAt = 1 + (*document != 0);
        Recorder recorder(stream);
        EXPECT_FALSE(recorder.parse()) << document;
        EXPECT_EQ(recorder.error(), FXmlParser::Error::unexpectedEnd);
        EXPECT_EQ(recorder.errorDetail(), "the stream can't be read") << document;
    }
}

TEST(FXmlParser, CountsEachKindOfLineEndOnce) {
    for (const int64_t pieces : {1 << 20, 1}) {
        ShakyStream stream("a\rb\nc\r\nd\n\re\n\nf\r\r\n\n\rg");
        stream.atOnce = pieces;
        Recorder recorder(stream);
        EXPECT_TRUE(recorder.parse());
        EXPECT_EQ(recorder.getLineText(), "Line 10");
        EXPECT_EQ(recorder.column(), 2);
    }
}

TEST(FXmlParser, LimitsWhatADocumentCanMakeOfIt) {
    const std::string longest(2048, 'x');
    std::string wide;
    std::string escaped;
    for (int i = 0; i < 2048; ++i) {
        wide += "\xE2\x82\xAC";
        escaped += "&Atilde;";
    }
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<a>";
    const std::string name48(48, 'n');
    const struct {
        const char* name;
        std::string document;
        const char* detail;
    } cases[] = {
        {"value of 2048", "<a b='" + longest + "'/>", ""},
        {"value of 2049", "<a b='" + longest + "x'/>", "an attribute's value is longer than 2048 characters"},
        {"2048 wide characters", "<a b='" + wide + "'/>", ""},
        {"2049 wide characters", "<a b='" + wide + "y'/>",
         "an attribute's value is longer than 2048 characters"},
        {"2048 entities", "<a b='" + escaped + "'/>", ""},
        {"bytes that are no characters", "<a b='" + std::string(7000, '\x80') + "'/>",
         "an attribute's value is longer than 2048 characters"},
        {"tag name of 4096", "<" + longest + longest + "/>", ""},
        {"tag name of 4097", "<n" + longest + longest + "/>", "a tag's name is longer than 4096 bytes"},
        {"name of 48", "<a " + name48 + "='1'/>", ""},
        {"name of 49", "<a n" + name48 + "='1'/>", "an attribute's name is longer than 48 bytes"},
        {"deep", deep, "elements are nested deeper than 1000"},
        {"deep and skipped", "<skip>" + deep, "elements are nested deeper than 1000"},
        {"endless tag", "<a b='" + std::string(3 << 20, 'x'), "a tag is longer than 1 MB"},
        {"endless name", "<" + std::string(3 << 20, 'x'), "a tag is longer than 1 MB"},
        {"endless end tag", "</" + std::string(3 << 20, 'x'), "a tag is longer than 1 MB"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const LittleCost cost(c.document.size());
        const Parsed parsed = parse(c.document);
        EXPECT_EQ(parsed.text.substr(parsed.text.find('|') + 1), c.detail);
    }
}

TEST(FXmlParser, GivesLongTextsInPieces) {
    const std::string text(100000, 'x');
    const std::string document = "<a>" + text + "<!--" + text + "--></a>";
    FMemoryStream stream{std::string_view(document)};
    Recorder recorder(stream, FXmlParser::giveComments);
    EXPECT_TRUE(recorder.parse());
    EXPECT_EQ(recorder.events, "<a>[" + text + "]!" + text + "!</a>");
    EXPECT_LE(recorder.longest, 4096);
}

TEST(FXmlParser, MakesAttributesThatStay) {
    class Keeper : public FXmlParser {
    public:
        using FXmlParser::FXmlParser;
        bool startTag(std::string_view, const FXmlAttributes& attributes, bool, void*) override {
            for (size_t i = 0; i < attributes.size(); ++i)
                kept.push_back(attributes.attribute(i));
            return true;
        }
        std::vector<Ref<FXmlAttribute>> kept;
    };
    const std::string document = "<a n='&amp;v' w='\xC3&curren;'/><b>" + std::string(10000, 'x') + "</b>";
    FMemoryStream stream{std::string_view(document)};
    Keeper keeper(stream, FXmlParser::wideNamedValues);
    EXPECT_TRUE(keeper.parse());
    ASSERT_EQ(keeper.kept.size(), 2u);
    EXPECT_STREQ(keeper.kept[0]->name().text8(), "n");
    EXPECT_STREQ(keeper.kept[0]->value().text8(), "&v");
    EXPECT_TRUE(keeper.kept[1]->value().string().isWide());
    EXPECT_EQ(keeper.kept[1]->value().string(), ConstString(u"\u00E4"));
}

TEST(FXmlParser, TellsTheLogSinkOfDamage) {
    struct Sink : XmlLogSink {
        void write(std::string_view text) override { texts.emplace_back(text); }
        std::vector<std::string> texts;
    } sink;
    FXmlParser::setLogSink(&sink);
    const std::string_view documents[] = {"<a><b></c> rest<d/>", "<a", "<bad/>"};
    for (const auto& document : documents) {
        FMemoryStream stream(document);
        Recorder(stream).parse();
        parse(document); // with reporting off
    }
    FXmlParser::setLogSink(nullptr);
    ASSERT_EQ(sink.texts.size(), 1u) << "only damage that the parser itself finds is told";
    EXPECT_EQ(sink.texts[0], "Error Message:     Xml data malformed!\r\n"
                             "Current Start Tag: b\r\n"
                             "Current Token:     </c>\r\n" +
                                 std::string(72, '-') + "\r\n\r\n rest<d/>");
}

TEST(FXmlParser, ReturnsAtTheCloseOfTheElementItWasCalledIn) {
    const std::string_view document = "<a><stop/><b/></a><c/>";
    for (const uint32_t options : {0u, uint32_t{FXmlParser::returnAtClose}}) {
        FMemoryStream stream(document);
        Recorder recorder(stream, options);
        EXPECT_TRUE(recorder.parse());
        EXPECT_TRUE(recorder.parse());
        EXPECT_EQ(recorder.events, options ? "<a><stop/><b/></a>" : "<a><stop/><b/></a><c/>");
    }
}

TEST(FXmlParser, KnowsWhatEncodingADocumentDeclares) {
    const std::pair<const char*, bool> cases[] = {
        {"<?xml version='1.0' encoding='utf-8'?><a/>", true},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone='yes'?><a/>", true},
        {"<?xml encoding='iso-8859-1'?><a/>", false},
        {"<?xml version='1.0'?><a/>", false},
        {"<?xmlx encoding='utf-8'?><a/>", false},
        {"<a/>", false},
    };
    for (const auto& [document, isUtf8] : cases) {
        FMemoryStream stream{std::string_view(document)};
        Recorder recorder(stream);
        EXPECT_TRUE(recorder.parse());
        EXPECT_EQ(recorder.isUtf8Declared(), isUtf8) << document;
        EXPECT_EQ(recorder.events, "<a/>");
    }
}

TEST(FXmlParser, MayCallItselfAsDeepAsElementsGo) {
    std::string document;
    for (size_t i = 0; i < FXmlParser::maxDepth; ++i)
        document += "<inner>";
    for (size_t i = 0; i < FXmlParser::maxDepth; ++i)
        document += "</inner>";
    EXPECT_TRUE(parse(document).isGood);
    EXPECT_FALSE(parse("<inner>" + document).isGood);
}

TEST(FXmlParser, KeepsItsSlots) {
    testing::expectEntries({ENTRY(FXmlParser, startTag), ENTRY(FXmlParser, endTag), ENTRY(FXmlParser, text),
                            ENTRY(FXmlParser, comment)},
                           testing::behindDestructor);
}

TEST(FXmlParser, FailsWithoutMemory) {
    const std::string document = "<?xml encoding='utf-8'?><a b='&amp;" + std::string(2000, 'x') +
                                 "'>&lt;<!-- c --><inner><b/></inner><skip><b/></skip><b>" +
                                 std::string(5000, 'y') + "</b></a>";
    const std::string detail(100, 'd');
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream stream{std::string_view(document)};
        Recorder parser(stream, FXmlParser::giveComments);
        const bool isGood = allocation.during([&] {
            const bool isParsed = parser.parse();
            parser.setError(FXmlParser::Error::wrongTag, detail);
            return isParsed;
        });
        EXPECT_TRUE(isGood || allocation.hasFailed());
        EXPECT_STREQ(parser.getErrorText(), allocation.hasFailed() ? "Out of memory!" : "Unexpected Tag!");
        EXPECT_EQ(parser.errorDetail(), allocation.hasFailed() ? "" : detail);
    });
    // A fault that there is no memory to tell of counts as that.
    class Deaf : public XmlLogSink {
        void write(std::string_view) override {}
    } sink;
    FXmlParser::setLogSink(&sink);
    failEachAllocation([&](FailingAllocation& allocation) {
        FMemoryStream stream{std::string_view("<a></b>")};
        FXmlParser parser(stream);
        EXPECT_FALSE(allocation.during([&] { return parser.parse(); }));
        EXPECT_STREQ(parser.getErrorText(),
                     allocation.hasFailed() ? "Out of memory!" : "Xml data malformed!");
        EXPECT_EQ(parser.errorDetail(), allocation.hasFailed() ? "" : "</a> is missing here");
    });
    FXmlParser::setLogSink(nullptr);
}

} // namespace
} // namespace qorl
