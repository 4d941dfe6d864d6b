#include "DriveScript.h"
#include "binding/Value.h"
#include "skin/PreviewController.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

using namespace qorl;

void require(bool holds) {
    if (!holds)
        std::abort();
}

void readScript(std::string_view text) {
    std::vector<tool::DriveStep> steps;
    tool::DriveError error;
    const bool isRead = tool::parseDriveScript(text, steps, error);
    uint32_t line = 0;
    for (const tool::DriveStep& step : steps) {
        require(step.line > line && !step.source.empty() && std::isfinite(step.amount));
        line = step.line;
        for (const int32_t place : {step.from.x, step.from.y, step.to.x, step.to.y})
            require(std::abs(int64_t{place}) <= 1'000'000);
    }
    require(isRead || (error.line > line && error.column > 0 && !error.text.empty()));
}

void readValues(std::string_view text) {
    const auto preview = make<PreviewController>();
    DiagnosticList faults;
    const bool isRead = preview->readValues(text, "values", faults);
    require(isRead == faults.all().empty());
    for (const Diagnostic& fault : faults.all())
        require(fault.position.line > 0 && !fault.text.empty());
    Binding::Value* value = preview->findValue("a");
    require(!value || (value->getMin() <= value->getValue() && value->getValue() <= value->getMax()));
}

} // namespace

// The text as a script that plays a user, and as a list of values.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    readScript(text);
    readValues(text);
    return 0;
}
