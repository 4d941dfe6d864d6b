#include "AttributesJson.h"
#include "Session.h"
#include "foundation/Cast.h"
#include "foundation/text/ShownText.h"
#include "foundation/text/TextConversion.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "persistence/xml/FXmlParser.h"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace qorl::tool {

namespace {

constexpr const char* standardTag = "Attributes";

constexpr OptionSpec options[] = {
    {"--tag", nullptr, "NAME", "the top element of a converted XML document; \"Attributes\" unless given"},
    {"--json", nullptr, nullptr, "a dump is JSON anyway"},
};

/// The top element of a document, and whether it is one of root objects.
class TopElements final : public FXmlParser {
public:
    explicit TopElements(FBinaryStream& stream) : FXmlParser(stream) { parse(); }

    bool startTag(std::string_view name, const FXmlAttributes&, bool, void*) override {
        if (tag.empty()) {
            tag = name;
            return true;
        }
        hasRoots = name == "rootObjects";
        stop();
        return true;
    }

    std::string tag;
    bool hasRoots = false;
};

/// A document in either form, as attributes.
struct Document {
    /// Only in XML.
    std::optional<std::string> tag;
    bool hasRoots = false;
    /// What the file has and `attributes` don't.
    int64_t leftOut = 0;
    Ref<FAttributes> attributes = make<FAttributes>();
};

bool isXml(std::string_view bytes) {
    if (bytes.starts_with(text::utf8Mark))
        bytes.remove_prefix(text::utf8Mark.size());
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
    // A body begins with its count, whose highest byte is 0 in any that fits in memory; XML has no such byte.
    return bytes.starts_with('<') && bytes.substr(0, 4).find('\0') == std::string_view::npos;
}

bool complainAt(const std::string& path, const std::string& place, const std::string& text) {
    std::fprintf(stderr, "%s:%s: error: %s\n", path.c_str(), place.c_str(), text.c_str());
    return false;
}

/// A place in bytes stands as a column of the one line that there is.
bool complainAtByte(const std::string& path, int64_t offset, const std::string& text) {
    return complainAt(path, "1:" + std::to_string(offset + 1), text);
}

/// Tells of each part of a body that the reader leaves out.
class Losses final : public ArchiveListener {
public:
    Losses(const std::string& path, FMemoryStream& stream) : path_(path), stream_(stream) {
        FObjectArchive::setGlobalListener(this);
    }
    Losses(const Losses&) = delete;
    ~Losses() { FObjectArchive::setGlobalListener(nullptr); }

    void report(int32_t, const char* text) override {
        if (++count_ > mostTold)
            return;
        const int64_t offset = stream_.tell();
        const std::string what = text && *text ? text::printable(text) : "an object without a class";
        std::fprintf(stderr, "%s:1:%lld: warning: left out before byte %lld: %s\n", path_.c_str(),
                     static_cast<long long>(offset) + 1, static_cast<long long>(offset), what.c_str());
    }

    int64_t count() const { return count_; }

private:
    static constexpr int64_t mostTold = 20;

    const std::string& path_;
    FMemoryStream& stream_;
    int64_t count_ = 0;
};

/// Root objects and further attributes become entries of one list, by their names.
void addAll(const FAttributes& source, FAttributes& target) {
    for (int32_t i = 0; i < source.count(); ++i)
        target.append(source.at(i)->key()).setObject(source.at(i)->getObject(), FAttributes::Hold::retain);
}

bool readXml(const std::string& path, const std::string& bytes, Document& document) {
    const auto stream = make<FMemoryStream>(std::string_view(bytes));
    const TopElements top(*stream);
    stream->rewind();
    document.tag = top.tag;
    document.hasRoots = top.hasRoots;
    FXmlDocument xml(stream.get(), FXmlDocument::Mode::read);
    const bool isRead =
        top.hasRoots ? xml.load(top.tag) : xml.restoreAttributes(top.tag, *document.attributes);
    if (top.hasRoots) {
        addAll(xml.objects(), *document.attributes);
        addAll(xml.data(), *document.attributes);
    }
    if (isRead)
        return true;
    // "LINE:COLUMN: reason"
    std::string text = xml.errorText();
    const size_t reason = text.find(": ");
    if (reason == std::string::npos)
        return complainAt(path, "1:1", text);
    return complainAt(path, text.substr(0, reason), text.substr(reason + 2));
}

bool readBody(const std::string& path, const std::string& bytes, Document& document) {
    FMemoryStream stream{std::string_view(bytes)};
    std::string fault;
    const Losses losses(path, stream);
    // Objects of any class go from form to form, so none is created.
    const bool isRead = readAttributes(stream, *document.attributes, nullptr, &fault, OldObjects::kept);
    document.leftOut = losses.count();
    if (!isRead)
        return complainAtByte(path, stream.tell(), fault);
    const int64_t end = stream.tell();
    if (end == stream.size())
        return true;
    return complainAtByte(path, end,
                          "at byte " + std::to_string(end) + ": the attribute body ends here, but " +
                              std::to_string(stream.size() - end) + " bytes follow");
}

bool readDocument(const std::string& path, std::string& bytes, Document& document) {
    if (!loadText(path, bytes, longestDocument))
        return false;
    return isXml(bytes) ? readXml(path, bytes, document) : readBody(path, bytes, document);
}

int dump(const std::string& path) {
    std::string bytes;
    Document document;
    const bool isRead = readDocument(path, bytes, document);
    if (isRead || document.attributes->count() > 0) {
        JsonWriter json;
        json.beginObject();
        if (document.tag)
            json.member("tag", *document.tag);
        AttributesJson(json).writeAttributes(document.attributes);
        std::printf("%s\n", json.text().c_str());
    }
    return isRead && document.leftOut == 0 ? ExitStatus::success : ExitStatus::badInput;
}

int convert(const std::string& from, const std::string& to, const std::string& tag) {
    std::string bytes;
    Document document;
    if (!readDocument(from, bytes, document))
        return ExitStatus::badInput;
    const auto stream = make<FMemoryStream>();
    if (document.tag) {
        std::string fault;
        if (!writeAttributes(*stream, *document.attributes, &fault))
            return complain(ExitStatus::badInput, from + ": has no binary form: " + fault);
    } else {
        FXmlDocument xml(stream.get(), FXmlDocument::Mode::write);
        if (!xml.storeAttributes(tag, *document.attributes))
            return complain(ExitStatus::badInput, from + ": has no XML form: " + xml.errorText());
    }
    if (document.hasRoots)
        std::fprintf(
            stderr,
            "%s: warning: the root objects are plain entries in the binary form; converted back, they "
            "stay that\n",
            from.c_str());
    const int status = saveText(to, stream->bytes());
    if (status != ExitStatus::success || document.leftOut == 0)
        return status;
    return complain(ExitStatus::badInput, to + ": is written without " + std::to_string(document.leftOut) +
                                              " parts of " + from + " that could not be read");
}

/// For strict parsers too.
bool isElementName(std::string_view name) {
    return FXmlParser::isTagName(name) && std::ranges::all_of(name, [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '_' || c == '-' || c == '.' || static_cast<uint8_t>(c) >= 0x80;
           });
}

int runDocument(const CommandLine& line) {
    const auto& words = line.positional();
    const bool isDump = words[0] == "dump";
    const std::string tag = line.valueOf("--tag", standardTag);
    if (!isElementName(tag))
        return complain(
            ExitStatus::wrongUsage,
            "--tag is a name of at most 4096 letters, digits, \"_\", \"-\" and \".\" that begins with a "
            "letter from A to Z or \"_\", not \"" +
                tag + '"');
    if (words.size() != (isDump ? 2 : 3))
        return complain(ExitStatus::wrongUsage, isDump ? "dump takes one file" : "convert takes two files");
    return isDump ? dump(words[1]) : convert(words[1], words[2], tag);
}

} // namespace

const Command documentCommand{
    "document",
    "dump FILE | convert FROM TO",
    "Prints stored attributes, in XML or binary, as JSON, or converts them from either form to the other.",
    "  qorl document dump settings.xml | jq .attributes\n  qorl document dump layout.bin\n"
    "  qorl document convert settings.xml settings.bin\n"
    "  qorl document convert --tag Settings settings.bin settings.xml\n",
    options,
    1,
    3,
    &runDocument,
    "dump convert",
};

} // namespace qorl::tool
