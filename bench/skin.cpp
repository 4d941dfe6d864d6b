#include "schemes/GlobalSchemes.h"
#include "skin/UIWizard.h"
#include "skin/ValueRegistry.h"
#include "support/PanelDocument.h"
#include "support/Ratio.h"
#include "views/UView.h"

#include <expat.h>
#include <string>

namespace qorl::bench {
namespace {

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
    const std::string& text = panelDocument(state.range(0));
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
    const std::string& text = panelDocument(state.range(0));
    for (auto _ : state) {
        const auto wizard = make<UIWizard>();
        benchmark::DoNotOptimize(wizard->loadFromString(text));
    }
    perElement(state);
}
QORL_RATIO(readDocument, expatAlone, 2.5, 1000, 10000);

void readAndBuild(benchmark::State& state) {
    prepare();
    const std::string& text = panelDocument(state.range(0));
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
