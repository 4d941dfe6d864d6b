#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlParser.h"
#include "persistence/xml/FXmlParser2.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
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

/// Where the tolerant parser is told to give other texts than the strict one: it passes over CDATA, adds no
/// attributes of a document type, and knows references that stand for one byte alone.
bool hasOtherTexts(std::string_view bytes) {
    constexpr std::string_view plain[] = {"&lt;", "&gt;", "&amp;", "&quot;", "&apos;"};
    for (size_t at = bytes.find('&'); at != std::string_view::npos; at = bytes.find('&', at + 1)) {
        const auto stands = [&](std::string_view reference) {
            return bytes.substr(at).starts_with(reference);
        };
        if (std::none_of(std::begin(plain), std::end(plain), stands))
            return true;
    }
    return bytes.find("<![CDATA[") != std::string_view::npos ||
           bytes.find("<!ATTLIST") != std::string_view::npos;
}

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

/// Whether texts were compared, too.
bool compareTolerant(const std::string& bytes, const Found& strict) {
    FMemoryStream stream{std::string_view(bytes)};
    const Found ours = TolerantParser(stream).found;
    if (ours.error == "Xml data malformed!|an attribute's value is longer than 2048 characters") {
        EXPECT_TRUE(strict.elements.starts_with(ours.elements)) << divergence(strict.elements, ours.elements);
        return false;
    }
    EXPECT_TRUE(ours.isGood) << ours.error;
    EXPECT_TRUE(ours.elements == strict.elements) << divergence(strict.elements, ours.elements);
    if (hasOtherTexts(bytes))
        return false;
    EXPECT_TRUE(ours.texts == strict.texts) << divergence(strict.texts, ours.texts);
    return true;
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
    int32_t equal = 0;
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
            equal += compareTolerant(bytes, strict) ? 1 : 0;
            const std::string cut = bytes.substr(0, std::min(bytes.rfind("</"), bytes.rfind('>')));
            expectRefused(cut);
            expectRefused(cut + "</other>");
        }
    }
    // Most documents are nothing out of the ordinary.
    EXPECT_GE(equal, 1400);
}

/// All that the tolerant parser takes although it is not well-formed.
TEST(RealDocuments, AreTakenWithTheFaultsThatAreToldOnly) {
    const struct {
        const char* name;
        std::string document;
        bool endsAtOnce = false; ///< The strict parser leaves what stands behind the document.
    } cases[] = {
        {"nothing", ""},
        {"text alone", "text"},
        {"two top elements", "<a/><b/>", true},
        {"text behind the top element", "<a/>text", true},
        {"a stray sign of a reference", "<a>x & y</a>"},
        {"an unknown entity", "<a>&unknown;</a>"},
        {"an open tag's sign in a value", "<a b='<'/>"},
        {"one attribute twice", "<a b='1' b='2'/>"},
        {"bytes that are no UTF-8", "<a>\xFF</a>"},
        {"comments in comments", "<a><!-- <!-- x --> --></a>"},
        {"control characters", "<a>\x01</a>"},
        {"a name that begins with a digit", "<1/>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(EventParser(c.document).found.isGood, c.endsAtOnce);
        EXPECT_TRUE(isTaken(c.document));
    }
}

} // namespace
} // namespace qorl
