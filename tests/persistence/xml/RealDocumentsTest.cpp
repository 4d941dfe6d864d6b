#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlParser.h"
#include "persistence/xml/FXmlParser2.h"

#include <algorithm>
#include <expat.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace qorl {
namespace {

/// What a parser found, in a form in which two of them can be compared.
struct Found {
    std::string elements; ///< Tags and the names of attributes.
    std::string texts;    ///< Values and texts.
    bool isGood = false;
    std::string error;

    void start(std::string_view name) { elements.append(1, '<').append(name); }
    void attribute(std::string_view name, std::string_view value) {
        elements.append(1, ' ').append(name);
        texts.append(1, '"');
        // Line ends and tabs in a value count as blanks.
        std::string blanks;
        for (size_t i = 0; i < value.size(); ++i) {
            const char c = value[i];
            if (c == '\r' && i + 1 < value.size() && value[i + 1] == '\n')
                continue;
            blanks += c == '\r' || c == '\n' || c == '\t' ? ' ' : c;
        }
        texts += blanks;
    }
    void end(std::string_view name) { elements.append(1, '>').append(name); }
    void text(std::string_view text) {
        // CR LF counts as LF, wherever pieces end.
        for (const char c : text)
            if (c != '\r')
                texts += c;
    }
};

/// Expat gives what a document type adds behind the attributes that stand in the tag.
struct ExpatFound {
    Found all;
    Found written;
    XML_Parser parser;

    void start(const char* name, const char** attributes) {
        all.start(name);
        written.start(name);
        for (int i = 0; attributes[i]; i += 2) {
            all.attribute(attributes[i], attributes[i + 1]);
            if (i < XML_GetSpecifiedAttributeCount(parser))
                written.attribute(attributes[i], attributes[i + 1]);
        }
    }
    void end(const char* name) {
        all.end(name);
        written.end(name);
    }
    void text(std::string_view text) {
        all.text(text);
        written.text(text);
    }
};

ExpatFound readByExpat(const std::string& bytes) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    ExpatFound found{{}, {}, parser};
    XML_SetUserData(parser, &found);
    XML_SetElementHandler(
        parser,
        [](void* user, const char* name, const char** attributes) {
            static_cast<ExpatFound*>(user)->start(name, attributes);
        },
        [](void* user, const char* name) { static_cast<ExpatFound*>(user)->end(name); });
    XML_SetCharacterDataHandler(parser, [](void* user, const char* text, int length) {
        static_cast<ExpatFound*>(user)->text({text, static_cast<size_t>(length)});
    });
    found.all.isGood =
        XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) == XML_STATUS_OK;
    found.all.error = found.all.isGood ? "" : XML_ErrorString(XML_GetErrorCode(parser));
    XML_ParserFree(parser);
    return found;
}

class EventParser : public IXmlHandler {
public:
    explicit EventParser(const std::string& bytes) {
        FMemoryStream stream{std::string_view(bytes)};
        FXmlParser2 parser;
        parser.setHandler(this);
        found.isGood = parser.parse(&stream);
        found.error = parser.errorMessage();
    }

    void startElement(IXmlParser*, const char* name, const char** attributes) override {
        found.start(name);
        for (; *attributes; attributes += 2)
            found.attribute(attributes[0], attributes[1]);
    }
    void endElement(IXmlParser*, const char* name) override { found.end(name); }
    void characterData(IXmlParser*, const char* text, int32_t length) override {
        found.text({text, static_cast<size_t>(length)});
    }
    void comment(IXmlParser*, const char*) override {}

    Found found;
};

class TolerantParser : public FXmlParser {
public:
    explicit TolerantParser(FBinaryStream& stream) : FXmlParser(stream) {
        setReporting(Reporting::off);
        found.isGood = parse();
        found.error = getErrorText() + ('|' + errorDetail());
    }

    bool startTag(std::string_view name, const FXmlAttributes& attributes, bool isEmpty, void*) override {
        ++depth_;
        found.start(name);
        for (const auto& view : attributes)
            found.attribute(view.name, view.value);
        if (isEmpty)
            endTag(name, nullptr);
        return true;
    }
    void endTag(std::string_view name, void*) override {
        --depth_;
        found.end(name);
    }
    void text(const char* data, int32_t length, void*) override {
        // Expat says nothing of blanks outside of the top element.
        if (depth_ > 0)
            found.text({data, static_cast<size_t>(length)});
    }

    Found found;

private:
    int32_t depth_ = 0;
};

bool contains(const std::string& bytes, std::string_view text) {
    return bytes.find(text) != std::string::npos;
}

/// A reference that does not stand for one byte of ASCII.
bool hasWideReference(const std::string& bytes) {
    constexpr std::string_view plain[] = {"&lt;", "&gt;", "&amp;", "&quot;", "&apos;"};
    for (size_t at = bytes.find('&'); at != std::string::npos; at = bytes.find('&', at + 1)) {
        const bool isPlain = std::any_of(std::begin(plain), std::end(plain), [&](std::string_view reference) {
            return std::string_view(bytes).substr(at).starts_with(reference);
        });
        if (!isPlain)
            return true;
    }
    return false;
}

/// Where the tolerant parser is told to be another than Expat: what a document must hold for that, and what
/// is compared all the same.
struct Difference {
    const char* reason;
    bool (*applies)(const std::string& bytes, const Found& ours);
    enum class Compared { elementsUntilThere, elements } compared;
};

constexpr Difference differences[] = {
    {"values have at most 2048 characters",
     [](const std::string&, const Found& ours) {
         return ours.error == "Xml data malformed!|an attribute's value is longer than 2048 characters";
     },
     Difference::Compared::elementsUntilThere},
    {"CDATA sections are passed over",
     [](const std::string& bytes, const Found&) { return contains(bytes, "<![CDATA["); },
     Difference::Compared::elements},
    {"references stand for one byte, and entities of the document are not known",
     [](const std::string& bytes, const Found&) { return hasWideReference(bytes); },
     Difference::Compared::elements},
};

struct Folder {
    const char* path;
    const char* extension;
    size_t fewest;
    const char* package;
};

constexpr Folder folders[] = {
    {"/usr/share/icons/Adwaita", ".svg", 600, "adwaita-icon-theme"},
    {"/usr/share/icons/breeze", ".svg", 5000, "breeze-icon-theme"},
    {"/usr/share/mime", ".xml", 800, "shared-mime-info"},
    {"/usr/share/fontconfig", ".conf", 40, "fontconfig-config"},
    {"/usr/share/X11/xkb/rules", ".xml", 4, "xkb-data"},
};

std::vector<std::filesystem::path> filesOf(const Folder& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path, error))
        if (entry.is_regular_file(error) && entry.path().extension() == folder.extension)
            files.push_back(entry.path());
    return files;
}

/// The text of the two from where they begin to differ.
std::string divergence(const std::string& expected, const std::string& found) {
    const auto [a, b] = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
    constexpr ptrdiff_t shown = 60;
    return "expected \"" + std::string(a, std::min(a + shown, expected.end())) + "\", found \"" +
           std::string(b, std::min(b + shown, found.end())) + '"';
}

void compareTolerant(const std::string& bytes, const Found& expat, std::map<std::string, int>& counts) {
    FMemoryStream stream{std::string_view(bytes)};
    const Found ours = TolerantParser(stream).found;
    for (const Difference& difference : differences) {
        if (!difference.applies(bytes, ours))
            continue;
        ++counts[difference.reason];
        const bool isWhole = difference.compared == Difference::Compared::elements;
        EXPECT_EQ(ours.isGood, isWhole) << ours.error;
        EXPECT_TRUE(isWhole ? ours.elements == expat.elements : expat.elements.starts_with(ours.elements))
            << divergence(expat.elements, ours.elements);
        return;
    }
    ++counts["equal"];
    EXPECT_TRUE(ours.isGood) << ours.error;
    EXPECT_TRUE(ours.elements == expat.elements) << divergence(expat.elements, ours.elements);
    EXPECT_TRUE(ours.texts == expat.texts) << divergence(expat.texts, ours.texts);
}

bool isTaken(const std::string& bytes) {
    FMemoryStream stream{std::string_view(bytes)};
    return TolerantParser(stream).found.isGood;
}

void expectRefused(const std::string& bytes) {
    EXPECT_FALSE(readByExpat(bytes).all.isGood);
    EXPECT_FALSE(EventParser(bytes).found.isGood);
    EXPECT_FALSE(isTaken(bytes));
}

TEST(RealDocuments, AreReadAsExpatReadsThem) {
    std::map<std::string, int> counts;
    for (const Folder& folder : folders) {
        const auto files = filesOf(folder);
        EXPECT_GE(files.size(), folder.fewest)
            << "too few documents in " << folder.path << ": install " << folder.package;
        for (const auto& path : files) {
            SCOPED_TRACE(path);
            std::ifstream file(path, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            const ExpatFound found = readByExpat(bytes);
            const Found& expat = found.all;
            const Found events = EventParser(bytes).found;
            EXPECT_TRUE(expat.isGood && events.isGood) << events.error << expat.error;
            EXPECT_TRUE(events.elements == expat.elements) << divergence(expat.elements, events.elements);
            EXPECT_TRUE(events.texts == expat.texts) << divergence(expat.texts, events.texts);
            compareTolerant(bytes, found.written, counts);
            const std::string cut = bytes.substr(0, std::min(bytes.rfind("</"), bytes.rfind('>')));
            expectRefused(cut);
            expectRefused(cut + "</other>");
        }
    }
    // Most documents are nothing out of the ordinary.
    EXPECT_GE(counts["equal"], 6000);
    for (const auto& [reason, count] : counts)
        RecordProperty(reason.substr(0, 30), count);
}

/// All that the tolerant parser takes although it is not well-formed, and by it what it refuses.
TEST(RealDocuments, AreTakenWithTheFaultsThatAreToldOnly) {
    const struct {
        const char* name;
        std::string document;
        bool isTaken;
        bool endsAtOnce = false; ///< The parser over Expat leaves what stands behind the document.
    } cases[] = {
        {"nothing", "", true},
        {"text alone", "text", true},
        {"two top elements", "<a/><b/>", true, true},
        {"text behind the top element", "<a/>text", true, true},
        {"a stray sign of a reference", "<a>x & y</a>", true},
        {"an unknown entity", "<a>&unknown;</a>", true},
        {"an open tag's sign in a value", "<a b='<'/>", true},
        {"one attribute twice", "<a b='1' b='2'/>", true},
        {"bytes that are no UTF-8", "<a>\xFF</a>", true},
        {"comments in comments", "<a><!-- <!-- x --> --></a>", true},
        {"control characters", "<a>\x01</a>", true},
        {"a name that begins with a digit", "<1/>", true},
        {"a value without quotes", "<a b=c/>", false},
        {"an attribute without a value", "<a b/>", false},
        {"no end tag", "<a>", false},
        {"another end tag", "<a></b>", false},
        {"an end tag alone", "</a>", false},
        {"a cut tag", "<a b='", false},
        {"a cut comment", "<a><!--", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_FALSE(readByExpat(c.document).all.isGood);
        EXPECT_EQ(EventParser(c.document).found.isGood, c.endsAtOnce);
        EXPECT_EQ(isTaken(c.document), c.isTaken);
    }
}

} // namespace
} // namespace qorl
