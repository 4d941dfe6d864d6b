#pragma once

#include "foundation/Diagnostic.h"
#include "skin/FController.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace qorl {

/// Brings a skin to life without its application: makes a value for every name that a control asks for, and
/// has a sub-controller for every name.
///
/// Values are numbers from 0 to 100 unless a values file or `setValue` says otherwise. Sub-controllers share
/// the values: "x" of the sub-controller "eq" is "eq/x" here. Whole names have at most 256 bytes, and there
/// are at most 10,000 sub-controllers; beyond that there is neither value nor sub-controller. Threading: the
/// user-interface thread.
class PreviewController final : public FController {
    QORL_CLASS(PreviewController, FController)

public:
    PreviewController();
    ~PreviewController() override;

    /// Lines `NAME = NUMBER`, `NAME = NUMBER in MIN..MAX` or `NAME = "TEXT"`; `#` begins a comment. Faults go
    /// to `sink` with their line; false if there were any. Lines without fault count all the same.
    bool readValues(std::string_view text, std::string_view fileName, DiagnosticSink& sink);
    /// A number or a text for a value, which is made if there is none. False if the value takes numbers only,
    /// or if there can be none of that name.
    bool setValue(std::string_view name, std::string_view text);

    /// The value if some control has asked for it, or it was set. Not counted.
    Binding::Value* findValue(std::string_view name) const;

    Binding::Value* getValue(const char* name) override;
    IController* getSubController(const char* name) override;

private:
    struct Shared;

    PreviewController(std::shared_ptr<Shared> shared, std::string prefix);
    bool readLine(std::string_view line, std::string& fault);

    std::shared_ptr<Shared> shared_;
    std::string prefix_;
    std::map<std::string, Ref<PreviewController>, std::less<>> subControllers_;
};

} // namespace qorl
