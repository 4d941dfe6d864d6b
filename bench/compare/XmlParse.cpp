#include "compare/XmlParse.h"

#include "compare/Measure.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "persistence/xml/FXmlParser2.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

namespace qorl::bench {

namespace {

constexpr double bytesPerMegabyte = 1e6;
constexpr double nanosecondsPerSecond = 1e9;

[[noreturn]] void giveUp(const char* what) {
    std::fprintf(stderr, "compare: %s\n", what);
    std::exit(1);
}

class Toucher : public IXmlHandler {
public:
    void startElement(IXmlParser*, const char*, const char** attributes) override {
        for (; *attributes; attributes += 2)
            bytes += std::strlen(attributes[1]);
    }
    void endElement(IXmlParser*, const char*) override {}
    void characterData(IXmlParser*, const char*, int32_t length) override {
        bytes += static_cast<size_t>(length);
    }
    void comment(IXmlParser*, const char*) override {}

    size_t bytes = 0;
};

/// Takes the settings out of the document: groups with typed values and texts.
class Settings : public IXmlHandler {
public:
    explicit Settings(FAttributes& attributes) : attributes_(attributes) {}

    void startElement(IXmlParser*, const char* name, const char** attributes) override {
        const auto value = [&](const char* key) {
            for (const char** at = attributes; *at; at += 2)
                if (std::strcmp(at[0], key) == 0)
                    return std::string_view(at[1]);
            return std::string_view();
        };
        text_.clear();
        if (std::strcmp(name, "group") == 0) {
            group_ = new FAttributes;
            attributes_.append(value("name")).setObject(group_, FAttributes::Hold::adopt);
        } else if (group_) {
            auto& entry = group_->append(value("name"));
            if (value("type") == "float")
                entry.setFloat(number<double>(value("value")));
            else if (value("type") == "int")
                entry.setInteger(number<int64_t>(value("value")));
            else
                entry.setString(ConstString(value("value")));
            last_ = value("name");
        }
    }
    void endElement(IXmlParser*, const char* name) override {
        if (std::strcmp(name, "text") == 0)
            group_->entry(last_).setString(ConstString(std::string_view(text_)));
    }
    void characterData(IXmlParser*, const char* text, int32_t length) override {
        text_.append(text, static_cast<size_t>(length));
    }
    void comment(IXmlParser*, const char*) override {}

private:
    template <typename Number>
    static Number number(std::string_view text) {
        Number result = 0;
        std::from_chars(text.data(), text.data() + text.size(), result);
        return result;
    }

    FAttributes& attributes_;
    FAttributes* group_ = nullptr;
    std::string last_;
    std::string text_;
};

void reportSpeed(const char* metric, size_t bytes, double nanoseconds) {
    report("xml_parse", metric,
           static_cast<double>(bytes) / bytesPerMegabyte / (nanoseconds / nanosecondsPerSecond), "MB/s");
}

} // namespace

void measureXml(const std::string& documents) {
    std::ifstream file(documents + "/settings_10mb.xml", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.empty())
        giveUp("cannot read settings_10mb.xml");
    const auto parseEvents = [&] {
        FXmlParser2 parser;
        Toucher toucher;
        parser.setHandler(&toucher);
        if (!parser.parse(text) || toucher.bytes == 0)
            giveUp("settings_10mb.xml can't be parsed");
    };
    // Once to warm up, then five times, as the others are measured.
    parseEvents();
    reportSpeed("events", text.size(), medianOf(5, parseEvents));

    FAttributes attributes;
    Settings settings(attributes);
    FXmlParser2 parser;
    parser.setHandler(&settings);
    if (!parser.parse(text))
        giveUp("settings_10mb.xml can't be parsed");
    std::string saved;
    const double save = medianOf(3, [&] {
        FMemoryStream stream;
        if (!FXmlDocument(&stream, FXmlDocument::Mode::write).storeAttributes("settings", attributes))
            giveUp("the object form can't be written");
        saved = stream.bytes();
    });
    reportSpeed("own_tree_save", saved.size(), save);
    std::vector<double> loads;
    for (int i = 0; i < 3; ++i) {
        FAttributes back;
        loads.push_back(timeOf([&] {
            FMemoryStream stream{std::string_view(saved)};
            if (!FXmlDocument(&stream, FXmlDocument::Mode::read).restoreAttributes("settings", back))
                giveUp("the object form can't be read");
        }));
    }
    reportSpeed("own_tree", saved.size(), median(std::move(loads)));
}

} // namespace qorl::bench
