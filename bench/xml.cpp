#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "persistence/xml/FXmlParser2.h"
#include "support/Ratio.h"
#include "support/SettingsDocument.h"

#include <charconv>
#include <cstring>
#include <expat.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qorl::bench {
namespace {

constexpr int64_t few = 17'000;
constexpr int64_t many = 170'000; // 10 MB and more

/// What every program does that reads values.
struct Touched {
    size_t attributes = 0;
    size_t bytes = 0;

    void touch(const char** values) {
        for (; *values; values += 2) {
            ++attributes;
            bytes += std::strlen(values[1]);
        }
    }
};

class Toucher : public IXmlHandler {
public:
    void startElement(IXmlParser*, const char*, const char** attributes) override {
        touched.touch(attributes);
    }
    void endElement(IXmlParser*, const char*) override {}
    void characterData(IXmlParser*, const char*, int32_t length) override {
        touched.bytes += static_cast<size_t>(length);
    }
    void comment(IXmlParser*, const char*) override {}

    Touched touched;
};

/// Asks for the place of each element, as a document does that keeps it.
class Placer : public Toucher {
public:
    explicit Placer(FXmlParser2& parser) : parser_(parser) {}
    void startElement(IXmlParser*, const char*, const char**) override { lines += parser_.position().line; }

    int64_t lines = 0;

private:
    FXmlParser2& parser_;
};

void xmlEvents(benchmark::State& state) {
    const std::string& text = settingsDocument(state.range(0));
    for (auto _ : state) {
        FXmlParser2 parser;
        Toucher toucher;
        parser.setHandler(&toucher);
        benchmark::DoNotOptimize(parser.parse(text));
        benchmark::DoNotOptimize(toucher.touched);
    }
}
void xmlPlaces(benchmark::State& state) {
    const std::string& text = settingsDocument(state.range(0));
    for (auto _ : state) {
        FXmlParser2 parser;
        Placer placer(parser);
        parser.setHandler(&placer);
        benchmark::DoNotOptimize(parser.parse(text));
        benchmark::DoNotOptimize(placer.lines);
    }
}
void expatEvents(benchmark::State& state) {
    const std::string& text = settingsDocument(state.range(0));
    for (auto _ : state) {
        Touched touched;
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &touched);
        XML_SetElementHandler(
            parser,
            [](void* user, const char*, const char** values) { static_cast<Touched*>(user)->touch(values); },
            [](void*, const char*) {});
        XML_SetCharacterDataHandler(parser, [](void* user, const char*, int length) {
            static_cast<Touched*>(user)->bytes += static_cast<size_t>(length);
        });
        benchmark::DoNotOptimize(XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE));
        XML_ParserFree(parser);
        benchmark::DoNotOptimize(touched);
    }
}
QORL_RATIO(xmlEvents, expatEvents, 1.05, few, many);
QORL_RATIO(xmlPlaces, expatEvents, 1.3, few, many);

/// The least tree that a program would make of a document.
struct Node {
    std::string name;
    std::string text;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::unique_ptr<Node>> children;
};

std::unique_ptr<Node> readTree(const std::string& text) {
    auto root = std::make_unique<Node>();
    std::vector<Node*> open{root.get()};
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &open);
    XML_SetElementHandler(
        parser,
        [](void* user, const char* name, const char** values) {
            auto& stack = *static_cast<std::vector<Node*>*>(user);
            auto node = std::make_unique<Node>();
            node->name = name;
            for (; *values; values += 2)
                node->attributes.emplace_back(values[0], values[1]);
            stack.back()->children.push_back(std::move(node));
            stack.push_back(stack.back()->children.back().get());
        },
        [](void* user, const char*) { static_cast<std::vector<Node*>*>(user)->pop_back(); });
    XML_SetCharacterDataHandler(parser, [](void* user, const char* piece, int length) {
        static_cast<std::vector<Node*>*>(user)->back()->text.append(piece, static_cast<size_t>(length));
    });
    benchmark::DoNotOptimize(XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE));
    XML_ParserFree(parser);
    return root;
}

void objectLoad(benchmark::State& state) {
    const std::string& text = settingsDocument(state.range(0));
    for (auto _ : state) {
        FMemoryStream stream{std::string_view(text)};
        FAttributes attributes;
        if (!FXmlDocument(&stream, FXmlDocument::Mode::read).restoreAttributes("Settings", attributes))
            state.SkipWithError("not read");
        state.PauseTiming();
        attributes.removeAll();
        state.ResumeTiming();
    }
}
void expatTree(benchmark::State& state) {
    const std::string& text = settingsDocument(state.range(0));
    for (auto _ : state) {
        auto tree = readTree(text);
        benchmark::DoNotOptimize(tree.get());
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}
QORL_RATIO(objectLoad, expatTree, 1.25, few, many);

void putEscaped(std::string& out, std::string_view text) {
    for (const char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
}

/// The same elements by hand, out of plain values.
void writeByHand(std::string& out, const std::vector<PlainSetting>& settings) {
    char digits[80];
    const auto put = [&](const PlainSetting& setting, const char* element) {
        out += "      <";
        out += element;
        out += " name=\"";
        putEscaped(out, setting.name);
        out += "\" value=\"";
    };
    for (const PlainSetting& setting : settings) {
        if (setting.kind == PlainSetting::Kind::integer) {
            put(setting, "int");
            out.append(digits, std::to_chars(digits, digits + sizeof digits, setting.integer).ptr);
        } else if (setting.kind == PlainSetting::Kind::real) {
            put(setting, "float");
            out.append(digits, std::to_chars(digits, digits + sizeof digits, setting.real,
                                             std::chars_format::general, 50)
                                   .ptr);
        } else {
            put(setting, "string");
            putEscaped(out, setting.text);
        }
        out += "\"/>\r\n";
    }
}

void objectSave(benchmark::State& state) {
    FAttributes attributes;
    fillSettings(attributes, state.range(0));
    for (auto _ : state) {
        FMemoryStream stream;
        if (!FXmlDocument(&stream, FXmlDocument::Mode::write).storeAttributes("Settings", attributes))
            state.SkipWithError("not written");
        benchmark::DoNotOptimize(stream.data());
    }
}
void saveByHand(benchmark::State& state) {
    const std::vector<PlainSetting> settings = plainSettings(state.range(0));
    for (auto _ : state) {
        std::string out;
        writeByHand(out, settings);
        benchmark::DoNotOptimize(out.data());
    }
}
QORL_RATIO(objectSave, saveByHand, 1.5, few, many);

} // namespace
} // namespace qorl::bench
