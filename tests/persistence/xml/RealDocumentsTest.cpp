#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlParser.h"
#include "persistence/xml/FXmlParser2.h"

#include <algorithm>
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
    std::string elements; ///< Their tags.
    std::string texts;    ///< Attributes and texts.
    bool isGood = false;
    std::string error;

    void start(std::string_view name) { elements.append(1, '<').append(name); }
    void attribute(std::string_view name, std::string_view value) {
        texts.append(1, ' ').append(name).append(1, '"');
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

/// The strict parser, which is Expat's.
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
        // The strict one says nothing of blanks outside of the top element.
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

/// Where the tolerant parser is told to be another than the strict one: what a document must hold for that,
/// and what is compared all the same.
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
    {"a document type adds no attributes",
     [](const std::string& bytes, const Found&) { return contains(bytes, "<!ATTLIST"); },
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

void compareTolerant(const std::string& bytes, const Found& strict, std::map<std::string, int>& counts) {
    FMemoryStream stream{std::string_view(bytes)};
    const Found ours = TolerantParser(stream).found;
    for (const Difference& difference : differences) {
        if (!difference.applies(bytes, ours))
            continue;
        ++counts[difference.reason];
        const bool isWhole = difference.compared == Difference::Compared::elements;
        EXPECT_EQ(ours.isGood, isWhole) << ours.error;
        EXPECT_TRUE(isWhole ? ours.elements == strict.elements : strict.elements.starts_with(ours.elements))
            << divergence(strict.elements, ours.elements);
        return;
    }
    ++counts["equal"];
    EXPECT_TRUE(ours.isGood) << ours.error;
    EXPECT_TRUE(ours.elements == strict.elements) << divergence(strict.elements, ours.elements);
    EXPECT_TRUE(ours.texts == strict.texts) << divergence(strict.texts, ours.texts);
}

bool isTaken(const std::string& bytes) {
    FMemoryStream stream{std::string_view(bytes)};
    return TolerantParser(stream).found.isGood;
}

void expectRefused(const std::string& bytes) {
    EXPECT_FALSE(EventParser(bytes).found.isGood);
    EXPECT_FALSE(isTaken(bytes));
}

TEST(RealDocuments, AreReadAlikeByBothParsers) {
    std::map<std::string, int> counts;
    for (const Folder& folder : folders) {
        const auto files = filesOf(folder);
        EXPECT_GE(files.size(), folder.fewest)
            << "too few documents in " << folder.path << ": install " << folder.package;
        for (const auto& path : files) {
            SCOPED_TRACE(path);
            std::ifstream file(path, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            const Found strict = EventParser(bytes).found;
            EXPECT_TRUE(strict.isGood) << strict.error;
            compareTolerant(bytes, strict, counts);
            const std::string cut = bytes.substr(0, std::min(bytes.rfind("</"), bytes.rfind('>')));
            expectRefused(cut);
            expectRefused(cut + "</other>");
        }
    }
    // Most documents are nothing out of the ordinary.
    EXPECT_GE(counts["equal"], 1400);
    for (const auto& [reason, count] : counts)
        RecordProperty(reason.substr(0, 30), count);
}

/// All that the tolerant parser takes although it is not well-formed, and by it what it refuses.
TEST(RealDocuments, AreTakenWithTheFaultsThatAreToldOnly) {
    const struct {
        const char* name;
        std::string document;
        bool isTaken;
        bool endsAtOnce = false; ///< The strict parser leaves what stands behind the document.
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
        EXPECT_EQ(EventParser(c.document).found.isGood, c.endsAtOnce);
        EXPECT_EQ(isTaken(c.document), c.isTaken);
    }
}

} // namespace
} // namespace qorl
