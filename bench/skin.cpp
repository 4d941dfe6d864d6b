#include "schemes/GlobalSchemes.h"
#include "skin/UIWizard.h"
#include "skin/ValueRegistry.h"
#include "support/Ratio.h"
#include "views/UView.h"

#include <expat.h>
#include <string>

namespace qorl::bench {
namespace {

/// A document of `count` elements: rows of labelled controls, as device panels have them, each with its
/// value.
const std::string& document(int64_t count) {
    static std::string text;
    static int64_t made = 0;
    if (made == count)
        return text;
    made = count;
    std::string values, rows;
    for (int64_t i = 0; i < count / 5; ++i) {
        const std::string id = std::to_string(i);
        const std::string place = "\" size=\"0,0,44,17\" attach=\"all\"/>\n";
        values += "<valuedefine name=\"s" + id +
                  "\" type=\"int\" scope=\"global\" min=\"0\" max=\"100\" default=\"" +
                  std::to_string(i % 100) + "\"/>\n";
        values += "<valuedefine name=\"c" + id + "\" type=\"bool\" scope=\"global\" default=\"1\"/>\n";
        rows += "<rowcol id=\"r" + id +
                "\" style=\"horizontal|fitinparent\" spacing=\"0,0,1,1\" size=\"0,0,300,20\" " +
                "attach=\"all\">\n<label id=\"l" + id + "\" titleNT=\"Level " + id + place +
                "<button id=\"b" + id + "\" titleNT=\"Reset" + place + "<slider id=\"s" + id + "\" name=\"s" +
                id + "\" style=\"horizontal" + place + "<checkbox id=\"c" + id + "\" name=\"c" + id +
                "\" titleNT=\"On" + place + "</rowcol>\n";
    }
    text = "<skin><templates><template name=\"Main\" size=\"0,0,1280,800\">\n" + values + rows +
           "</template></templates></skin>\n";
    return text;
}

void prepare() {
    if (!GlobalSchemes::main()) {
        GlobalSchemes::createForLibrary();
        GlobalSchemes::resetAll();
    }
}

void perElement(benchmark::State& state) {
    state.counters["ns/element"] =
        benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)) / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// Expat with handlers that do nothing, over the same bytes.
void expatAlone(benchmark::State& state) {
    const std::string& text = document(state.range(0));
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetElementHandler(
            parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
        benchmark::DoNotOptimize(XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE));
        XML_ParserFree(parser);
    }
    perElement(state);
}

void readDocument(benchmark::State& state) {
    prepare();
    const std::string& text = document(state.range(0));
    for (auto _ : state) {
        const auto wizard = make<UIWizard>();
        benchmark::DoNotOptimize(wizard->loadFromString(text));
    }
    perElement(state);
}
QORL_RATIO(readDocument, expatAlone, 2.5, 1000, 10000);

void readAndBuild(benchmark::State& state) {
    prepare();
    const std::string& text = document(state.range(0));
    for (auto _ : state) {
        const auto wizard = make<UIWizard>();
        wizard->loadFromString(text);
        const Ref<UView> view = wizard->createView("Main", nullptr, nullptr);
        benchmark::DoNotOptimize(view.get());
        state.PauseTiming();
        ValueRegistry::instance()->clear();
        state.ResumeTiming();
    }
    perElement(state);
}
QORL_RATIO(readAndBuild, expatAlone, 8, 1000, 10000);

} // namespace
} // namespace qorl::bench
