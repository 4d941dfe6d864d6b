#pragma once

#include "foundation/CmObject.h"

#include <string>
#include <string_view>

namespace qorl {

/// A name that stands for a number or a text while a part of a template is built. The name is any text:
/// wherever it occurs in a name, title, condition or the like, the value takes its place.
class UIWizardVariable final : public CmObject {
    QORL_CLASS(UIWizardVariable, CmObject)

public:
    UIWizardVariable(std::string_view name, int64_t number) : name_(name) { setNumber(number); }
    UIWizardVariable(std::string_view name, std::string_view text) : name_(name), value_(text) {}

    const std::string& name() const { return name_; }
    /// Integers in decimal.
    const std::string& value() const { return value_; }
    void setNumber(int64_t number) { value_ = std::to_string(number); }

    /// A variable without a name, or with its own name in its value, could be replaced for ever.
    bool isReplaceable() const { return !name_.empty() && value_.find(name_) == std::string::npos; }

private:
    std::string name_;
    std::string value_;
};

} // namespace qorl
