#include "Session.h"
#include "foundation/DiagnosticJson.h"
#include "persistence/files/FNPath.h"
#include "skin/SkinLimits.h"
#include "skin/UIWizard.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>

namespace qorl::tool {

namespace {

constexpr OptionSpec options[] = {
    {"--strict", nullptr, nullptr, "warnings are errors"},
    {"--json", nullptr, nullptr, "prints {\"diagnostics\": […]} on standard output instead of lines of text"},
    SessionOption::condition,
};

/// Answers every condition in the same way, so that building comes into all branches.
class EveryBranch : public FController {
    QORL_CLASS(EveryBranch, FController)

public:
    explicit EveryBranch(bool truth) : truth_(truth) {}
    Binding::Value* getValue(const char* name) override { return values_->getValue(name); }
    bool getCondition(const char*) override { return truth_; }
    IController* getSubController(const char*) override { return this; }

private:
    Ref<PreviewController> values_ = make<PreviewController>();
    bool truth_;
};

/// Findings of several passes, each told once, in the order of the document.
class Findings {
public:
    void add(const std::vector<Diagnostic>& diagnostics) {
        for (const Diagnostic& diagnostic : diagnostics)
            if (known_.insert(toText(diagnostic)).second)
                all_.push_back(diagnostic);
    }

    /// Hands them on. True when something is wrong enough to refuse the document.
    bool tell(bool strict, DiagnosticSink& sink) {
        std::stable_sort(all_.begin(), all_.end(), [](const Diagnostic& a, const Diagnostic& b) {
            return a.position.file == b.position.file && a.position.line < b.position.line;
        });
        bool refused = false;
        for (Diagnostic& diagnostic : all_) {
            if (strict && diagnostic.severity == Severity::warning)
                diagnostic.severity = Severity::error;
            refused |= diagnostic.severity == Severity::error;
            sink.report(diagnostic);
        }
        return refused;
    }

private:
    std::vector<Diagnostic> all_;
    std::set<std::string> known_;
};

/// Prints each on standard error.
class Lines final : public DiagnosticSink {
public:
    void report(const Diagnostic& diagnostic) override {
        std::fprintf(stderr, "%s\n", toText(diagnostic).c_str());
    }
};

void printJson(const std::vector<Diagnostic>& diagnostics) {
    JsonWriter json;
    json.beginObject();
    json.key("diagnostics");
    json.beginArray();
    for (const Diagnostic& diagnostic : diagnostics)
        writeJson(json, diagnostic);
    json.endArray();
    json.endObject();
    std::printf("%s\n", json.text().c_str());
}

/// Each template by itself. False when together they cost more than one may: each may hold the others many
/// times.
bool buildEverything(UIWizard& wizard, bool truth) {
    const SkinElement* templates = wizard.description()->peekSection(UIDescription::Section::templates);
    if (!templates)
        return true;
    const int64_t mostWork = wizard.workDone() + SkinLimits::buildSteps;
    const auto controller = make<EveryBranch>(truth);
    for (const SkinElement* element : templates->children()) {
        if (wizard.workDone() > mostWork) {
            wizard.report(Severity::error, element->mark(),
                          "the templates before are made of more than " +
                              std::to_string(SkinLimits::buildSteps) +
                              " elements and rounds together: this and the rest are not checked");
            return false;
        }
        wizard.createView(element->name(), controller.get(), nullptr);
    }
    return true;
}

bool checkOne(UIWizard& wizard, const std::string& path, bool strict, DiagnosticSink& sink) {
    Findings findings;
    wizard.loader().setMisplaced(UIDescriptionLoader::Misplaced::isSkipped);
    wizard.loader().setValidation(UIDescriptionLoader::Validation::on);
    const bool loaded = wizard.load(FUrl(FNPath(ConstString(path.c_str()))));
    findings.add(wizard.loader().diagnostics());
    if (loaded) {
        wizard.clearDiagnostics();
        if (buildEverything(wizard, false))
            buildEverything(wizard, true);
        findings.add(wizard.description()->diagnostics());
        findings.add(wizard.diagnostics());
    }
    return !findings.tell(strict, sink) && loaded;
}

int check(const CommandLine& line) {
    Session session;
    if (const int status = session.start(line, Session::Screen::headless))
        return status;
    UIWizard& wizard = *UIWizard::instance();
    for (const std::string& condition : line.allOf("--condition"))
        wizard.setCondition(condition);
    Lines lines;
    DiagnosticList list;
    const bool asJson = line.has("--json");
    DiagnosticSink& sink = asJson ? static_cast<DiagnosticSink&>(list) : lines;
    bool allGood = true;
    for (const std::string& path : line.positional())
        allGood &= checkOne(wizard, path, line.has("--strict"), sink);
    if (asJson)
        printJson(list.all());
    return allGood ? ExitStatus::success : ExitStatus::badInput;
}

} // namespace

const Command checkCommand{
    "check",
    "SKIN…",
    "Reads skins with their includes and tells every fault with its place.",
    "  qorl check skin.xml\n  qorl check --strict skins/*/skin.xml\n  qorl check --json skin.xml\n",
    options,
    1,
    1000,
    &check,
};

} // namespace qorl::tool
