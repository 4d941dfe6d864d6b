#include "persistence/xml/FXmlParser2.h"

#include "foundation/text/StringObject.h"
#include "persistence/streams/FCompressionStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/FailingAllocation.h"
#include "support/LittleCost.h"
#include "support/ShakyStream.h"
#include "support/StreamBytes.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace qorl {
namespace {

/// Writes down what it hears, one word an event, and stops or suspends where the test wants it.
class Recorder : public IXmlHandler {
public:
    explicit Recorder(FXmlParser2& parser) : parser_(parser) { parser.setHandler(this); }

    void startElement(IXmlParser*, const char* name, const char** attributes) override {
        const XmlPosition position = parser_.position();
        events += '<' + std::string(name);
        for (; *attributes; attributes += 2)
            events += ' ' + std::string(attributes[0]) + '=' + attributes[1];
        events += '>';
        places += std::to_string(position.line) + ':' + std::to_string(position.column) + '@' +
                  std::to_string(position.byteOffset) + ' ';
        deepest = std::max(deepest, parser_.depth());
        if (name == stopAt)
            parser_.stop("no " + stopAt + " here");
        if (name == suspendAt)
            parser_.suspend();
        if (name == enters) {
            EXPECT_FALSE(parser_.parse(std::string_view("<x/>")));
            EXPECT_FALSE(parser_.reset(nullptr));
            entered = parser_.errorMessage();
        }
    }
    void endElement(IXmlParser*, const char* name) override { events += "</" + std::string(name) + '>'; }
    void characterData(IXmlParser*, const char* text, int32_t length) override {
        events.append(text, static_cast<size_t>(length));
    }
    void comment(IXmlParser*, const char* text) override { events += '!' + std::string(text) + '!'; }

    std::string events;
    std::string places;
    std::string stopAt;
    std::string suspendAt;
    std::string enters;
    std::string entered;
    int32_t deepest = 0;

private:
    FXmlParser2& parser_;
};

enum class Given { inMemory, byBytes };

bool parse(FXmlParser2& parser, const std::string& document, Given given) {
    const auto slow = make<ShakyStream>(document);
    slow->atOnce = 1;
    return given == Given::inMemory ? parser.parse(document) : parser.parse(slow.get());
}

std::string describe(const FXmlParser2& parser) {
    const XmlPosition position = parser.errorPosition();
    return std::to_string(position.line) + ':' + std::to_string(position.column) + ": " +
           parser.errorMessage();
}

TEST(FXmlParser2, TellsWhatItFindsAndWhere) {
    const std::string document = "<?xml version='1.0'?>\n<skin a='1' b=\"x&amp;y\">\n  t\xC3\xA4xt<row/>\n"
                                 "\xC3\xA4\xC3\xA4<col/><!--note--></skin>\n";
    const std::string expected =
        "<skin a=1 b=x&y>\n  t\xC3\xA4xt<row></row>\n\xC3\xA4\xC3\xA4<col></col>!note!</skin>";
    const std::string places = "2:1@22 3:7@54 4:3@65 ";
    for (const Given given : {Given::inMemory, Given::byBytes}) {
        FXmlParser2 parser;
        Recorder heard(parser);
        EXPECT_TRUE(parse(parser, document, given));
        EXPECT_EQ(heard.events, expected);
        EXPECT_EQ(heard.places, places);
        EXPECT_EQ(heard.deepest, 2);
    }
}

TEST(FXmlParser2, SaysWhatIsWrongAndWhere) {
    const struct {
        const char* document;
        const char* expected;
    } cases[] = {
        {"", "1:1: no element found"},
        {"<a>\n <b></c>\n</a>", "2:7: mismatched tag"},
        {"<a>\n<b", "2:1: unclosed token"},
        {"<a x='1' x='2'/>", "1:10: duplicate attribute"},
        {"<a>&nosuch;</a>", "1:4: undefined entity"},
        {"<a>\n  gr\xF6\xDF"
         "e</a>",
         "2:5: byte 0xF6 is no valid UTF-8: save the document as UTF-8, or declare its encoding"},
        {"<?xml version='1.0' encoding='klingon'?><a/>",
         "1:31: unknown encoding: save the document as UTF-8"},
        {"<a>\n", "2:1: no element found"},
        {"<a>\n<\xC3\x97/></a>", "2:2: not well-formed (invalid token)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.document);
        for (const Given given : {Given::inMemory, Given::byBytes}) {
            FXmlParser2 parser;
            EXPECT_FALSE(parse(parser, c.document, given));
            EXPECT_EQ(describe(parser), c.expected);
            EXPECT_FALSE(parser.parse(std::string_view("<a/>"))) << "a failed parser must be reset first";
            EXPECT_TRUE(parser.reset(nullptr));
            EXPECT_TRUE(parser.parse(std::string_view("<a/>")));
            EXPECT_FALSE(parser.hasFailed());
        }
    }
}

TEST(FXmlParser2, SaysWhenItsStreamCantBeRead) {
    for (const char* document : {"", "<a>", "<a/>"}) {
        const auto stream = make<ShakyStream>(document);
        stream->failAt = 1 + (*document != 0);
        FXmlParser2 parser;
        EXPECT_FALSE(parser.parse(stream.get())) << document;
        EXPECT_EQ(parser.errorMessage(), "the stream can't be read");
    }
}

TEST(FXmlParser2, WritesItsErrorTextIntoAString) {
    FXmlParser2 parser;
    parser.parse(std::string_view("<a>\n<b>\n</a>"));
    const auto text = make<StringObject>();
    parser.getErrorText(static_cast<FDependent*>(text.get()));
    EXPECT_EQ(text->string().toUtf8(), "Xml Error: mismatched tag \r\nLine: 3");

    FXmlParser2 stopped;
    Recorder recorder(stopped);
    recorder.stopAt = "b";
    EXPECT_FALSE(stopped.parse(std::string_view("<a>\n\n<b/></a>")));
    EXPECT_EQ(describe(stopped), "3:1: no b here");
    EXPECT_EQ(recorder.events, "<a>\n\n<b>") << "nothing more is told after a stop";
    stopped.getErrorText(static_cast<FDependent*>(text.get()));
    EXPECT_EQ(text->string().toUtf8(), "Xml Error: no b here \r\nLine: 2");
    FXmlParser2 large;
    large.setLimits({.documentBytes = 2});
    EXPECT_FALSE(large.parse(std::string_view("<b/>")));
    large.getErrorText(static_cast<FDependent*>(text.get()));
    EXPECT_EQ(text->string().toUtf8(), "Xml Error: the document is larger than 2 bytes \r\nLine: 1");
    stopped.reset(nullptr);
    EXPECT_FALSE(stopped.parse(std::string_view("<b/>")));
    stopped.getErrorText(static_cast<FDependent*>(text.get()));
    EXPECT_EQ(text->string().toUtf8(), "Xml Error: no b here \r\nLine: 0");
}

TEST(FXmlParser2, RefusesWhatGrowsWithoutEnd) {
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<a>";
    const LittleCost cost(deep.size());
    FXmlParser2 nested;
    Recorder recorder(nested);
    EXPECT_FALSE(nested.parse(deep));
    EXPECT_EQ(describe(nested), "1:3001: elements are nested deeper than 1000");
    EXPECT_EQ(recorder.deepest, 1000);

    const auto faultOf = [](const std::string& document, FXmlParser2::Limits limits = {}) {
        FXmlParser2 parser;
        parser.setLimits(limits);
        EXPECT_FALSE(parser.parse(memoryOf(document).get()));
        return describe(parser);
    };
    EXPECT_EQ(faultOf("<a>1234567</a>", {.documentBytes = 10}), "1:15: the document is larger than 10 bytes");
    EXPECT_EQ(faultOf("<a b='" + std::string(300000, 'x'), {.tokenBytes = 100000}),
              "1:1: a tag or text is longer than 100000 bytes");
    std::string laughs = "<!DOCTYPE a [<!ENTITY l0 'ha'>";
    for (int i = 1; i < 40; ++i)
        laughs += "<!ENTITY l" + std::to_string(i) + " '&l" + std::to_string(i - 1) + ";&l" +
                  std::to_string(i - 1) + ";'>";
    EXPECT_NE(faultOf(laughs + "]><a>&l39;</a>").find("amplification"), std::string::npos);

    const auto stream = make<FMemoryStream>(std::string_view("0123456789<a>123</a>"));
    stream->seek(10, FStream::fromStart);
    FXmlParser2 rest;
    rest.setLimits({.documentBytes = 10});
    EXPECT_TRUE(rest.parse(stream.get())) << "what stands in front of it doesn't count";
    const auto several = make<FMemoryStream>(std::string_view("<a/><b>1234567</b>"));
    rest.reset(nullptr);
    EXPECT_TRUE(rest.parse(several.get())) << "nor what stands behind it";
    rest.reset(nullptr);
    EXPECT_FALSE(rest.parse(several.get()));
}

TEST(FXmlParser2, EndsALackOfMemoryItself) {
    const std::string longText(3000, 'x');
    const struct {
        std::string document;
        const char* fault;
        const char* stopAt = "";
        const char* suspendAt = "";
    } cases[] = {
        {"<!DOCTYPE a [<!ENTITY e '" + longText + "'>]><a b='" + longText + "'>&e;<c/><!--" + longText +
             "--></a>",
         "", "", "c"},
        {"<a><b><c/></b></a>", "elements are nested deeper than 2"},
        {"<a>" + std::string(20'000, 'x') + "</a>", "the document is larger than 20000 bytes"},
        {"<a>\xF6</a>", "byte 0xF6 is no valid UTF-8: save the document as UTF-8, or declare its encoding"},
        {"<a><c>", "no c here", "c"},
    };
    for (const auto& c : cases)
        for (const bool isInMemory : {true, false})
            failEachAllocation([&](FailingAllocation& memory) {
                SCOPED_TRACE(c.fault);
                const auto stream = make<ShakyStream>(c.document);
                stream->atOnce = 1000;
                std::optional<FXmlParser2> parser;
                std::optional<Recorder> heard;
                const bool isGood = memory.during([&] {
                    parser.emplace().setLimits({.documentBytes = 20'000, .depth = 2});
                    heard.emplace(*parser);
                    heard->stopAt = c.stopAt;
                    heard->suspendAt = heard->enters = c.suspendAt;
                    return (isInMemory ? parser->parse(c.document) : parser->parse(stream.get())) &&
                           (heard->suspendAt.empty() || parser->resume(stream.get()));
                });
                const bool isOut = parser->errorCode() == FXmlParser2::noMemory;
                EXPECT_EQ(parser->errorMessage(), isOut ? "out of memory" : c.fault);
                EXPECT_EQ(isGood, parser->errorMessage().empty());
                EXPECT_TRUE(memory.hasFailed() || !isOut);
                parser->setHandler(nullptr);
                EXPECT_TRUE(parser->reset(nullptr) && parser->parse(std::string_view("<a/>")));
            });
    failEachAllocation([&](FailingAllocation& memory) {
        FXmlParser2 parser;
        Recorder heard(parser);
        const bool isReset = memory.during([&] { return parser.reset("ISO-8859-1"); });
        EXPECT_NE(isReset, memory.hasFailed());
        EXPECT_EQ(parser.parse(std::string_view("<a>\xE4</a>")), isReset);
        EXPECT_EQ(heard.events, isReset ? "<a>\xC3\xA4</a>" : "") << "not read as something else";
        const auto text = make<StringObject>();
        memory.during([&] {
            parser.getErrorText(static_cast<FDependent*>(text.get()));
            return true;
        });
    });
}

TEST(FXmlParser2, LeavesTheStreamBehindTheDocument) {
    const auto stream = make<FMemoryStream>(std::string_view("<a>1</a><b>2</b>rest"));
    for (const char* expected : {"<a>1</a>", "<b>2</b>"}) {
        FXmlParser2 parser;
        Recorder recorder(parser);
        EXPECT_TRUE(parser.parse(stream.get()));
        EXPECT_EQ(recorder.events, expected);
    }
    char rest[8] = {};
    EXPECT_EQ(stream->read(rest, sizeof rest), 4);
    EXPECT_STREQ(rest, "rest");

    const std::string_view two = "<a>1</a><b/>";
    const auto failing = make<ShakyStream>(std::string(two));
    failing->failAt = 2;
    const auto compressed = make<FMemoryStream>();
    ASSERT_TRUE(FCompressionStream::compress(*make<FMemoryStream>(two), compressed, nullptr, 1));
    compressed->rewind();
    const auto inflating = make<FCompressionStream>(compressed);
    ASSERT_TRUE(inflating->beginDecompression(static_cast<int64_t>(two.size())));
    for (FStream* oneWay : {static_cast<FStream*>(failing.get()), static_cast<FStream*>(inflating.get())}) {
        FXmlParser2 parser;
        EXPECT_FALSE(parser.parse(oneWay)) << "the second document would be lost";
        EXPECT_EQ(parser.errorMessage(),
                  "something follows the document, and the stream can't go back in front of it");
    }
}

TEST(FXmlParser2, SuspendsAndGoesOn) {
    const auto stream = make<FMemoryStream>(std::string_view("<a><b/><b/></a>"));
    FXmlParser2 parser;
    Recorder recorder(parser);
    recorder.suspendAt = "b";
    EXPECT_TRUE(parser.parse(stream.get()));
    EXPECT_EQ(recorder.events, "<a><b></b>");
    EXPECT_TRUE(parser.resume(stream.get()));
    EXPECT_EQ(recorder.events, "<a><b></b><b></b>");
    EXPECT_TRUE(parser.resume(stream.get()));
    EXPECT_EQ(recorder.events, "<a><b></b><b></b></a>");
    EXPECT_FALSE(parser.suspend());
    FXmlParser2 whole;
    Recorder heard(whole);
    heard.suspendAt = "b";
    EXPECT_TRUE(whole.parse(std::string_view("<a><b/>1</a>")));
    EXPECT_EQ(heard.events, "<a><b></b>");
    EXPECT_TRUE(whole.resume(nullptr)) << "all was given before";
    EXPECT_EQ(heard.events, "<a><b></b>1</a>");
}

TEST(FXmlParser2, OutlivesCallsAtAWrongTime) {
    const auto stream = make<FMemoryStream>(std::string_view("<a><b/></a>"));
    FXmlParser2 parser;
    Recorder recorder(parser);
    recorder.suspendAt = "b";
    recorder.enters = "a";
    EXPECT_FALSE(parser.resume(stream.get())) << "nothing was suspended";
    EXPECT_EQ(parser.errorMessage(), "parser not suspended");
    EXPECT_TRUE(parser.parse(stream.get()));
    EXPECT_EQ(recorder.entered, "the parser is in the midst of a document");
    EXPECT_FALSE(parser.parse(std::string_view("<c/>"))) << "it is suspended";
    EXPECT_FALSE(parser.resume(nullptr));
    EXPECT_EQ(parser.errorMessage(), "the rest of the document is in a stream, which is missing");
    EXPECT_FALSE(parser.hasFailed());
    EXPECT_TRUE(parser.resume(stream.get()));
    EXPECT_EQ(recorder.events, "<a><b></b></a>");
    EXPECT_EQ(parser.errorMessage(), "");
}

TEST(FXmlParser2, KnowsWhereItIsInDocumentsOfLongTags) {
    // Expat tells no place while it waits for the rest of a tag.
    std::string document = "<a>";
    for (int i = 0; i < 100; ++i)
        document += "<b c='" + std::string(100000, 'x') + "'/>";
    FXmlParser2 parser;
    EXPECT_TRUE(parser.parse(make<FMemoryStream>(std::string_view(document + "</a>")).get()))
        << parser.errorMessage();
}

TEST(FXmlParser2, ReadsAnEncodingThatTheCallerKnows) {
    FXmlParser2 parser;
    Recorder recorder(parser);
    EXPECT_TRUE(parser.setEncoding("ISO-8859-1"));
    EXPECT_TRUE(parser.parse(std::string_view("<a>\xE4</a>")));
    EXPECT_EQ(recorder.events, "<a>\xC3\xA4</a>");
}

} // namespace
} // namespace qorl
