#include "persistence/attributes/FAttributes.h"
#include "persistence/xml/FXmlParser2.h"
#include "support/Ratio.h"

#include <expat.h>
#include <map>
#include <string>

namespace qorl::bench {
namespace {

/// A skin of so many elements with the attributes that most of them have.
std::string skin(int64_t elements) {
    std::string text = "<skin>\n";
    for (int64_t i = 0; i < elements; ++i)
        text += "  <slider name=\"level" + std::to_string(i) +
                "\" style=\"horizontal\" size=\"0,0,200,20\" tooltip=\"Level\"/>\n";
    return text + "</skin>";
}

/// Asks for the place of each element, as a document does that keeps it.
class Placer : public IXmlHandler {
public:
    explicit Placer(FXmlParser2& parser) : parser_(parser) { parser.setHandler(this); }
    void startElement(IXmlParser*, const char*, const char**) override { lines += parser_.position().line; }
    void endElement(IXmlParser*, const char*) override {}
    void characterData(IXmlParser*, const char*, int32_t) override {}
    void comment(IXmlParser*, const char*) override {}

    int64_t lines = 0;

private:
    FXmlParser2& parser_;
};

void xmlEvents(benchmark::State& state) {
    const std::string text = skin(state.range(0));
    for (auto _ : state) {
        FXmlParser2 parser;
        Placer placer(parser);
        benchmark::DoNotOptimize(parser.parse(text));
        benchmark::DoNotOptimize(placer.lines);
    }
}
void xmlEventsFloor(benchmark::State& state) {
    const std::string text = skin(state.range(0));
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetElementHandler(
            parser, [](void*, const char*, const char**) {}, [](void*, const char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
        benchmark::DoNotOptimize(XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE));
        XML_ParserFree(parser);
    }
}
QORL_RATIO(xmlEvents, xmlEventsFloor, 1.3, 1000, 10000);

constexpr const char* keys[] = {"left", "top", "width", "height", "name", "visible"};

/// The few values of an object on their way through its attributes.
void attributeRoundTrip(benchmark::State& state) {
    for (auto _ : state) {
        FAttributes attributes;
        for (const char* key : keys)
            attributes.setInteger(key, 7);
        int64_t sum = 0;
        for (const char* key : keys)
            sum += attributes.getInteger(key);
        benchmark::DoNotOptimize(sum);
    }
}
void attributeRoundTripFloor(benchmark::State& state) {
    for (auto _ : state) {
        std::map<std::string, int64_t, std::less<>> attributes;
        for (const char* key : keys)
            attributes[key] = 7;
        int64_t sum = 0;
        for (const char* key : keys)
            sum += attributes.find(key)->second;
        benchmark::DoNotOptimize(sum);
    }
}
QORL_RATIO(attributeRoundTrip, attributeRoundTripFloor, 1.0);

} // namespace
} // namespace qorl::bench
