#pragma once

#include "platform/System.h"

#include <string>
#include <string_view>

namespace qorl {

/// Catches what developers are told, as long as it lives.
class DebugOutput {
public:
    DebugOutput() {
        platform::setDebugOutput(
            [](std::string_view line, void* output) {
                static_cast<DebugOutput*>(output)->text.append(line) += '\n';
            },
            this);
    }
    DebugOutput(const DebugOutput&) = delete;
    ~DebugOutput() { platform::setDebugOutput(nullptr, nullptr); }

    bool mentions(std::string_view part) const { return text.find(part) != std::string::npos; }

    /// Lines, each with its end.
    std::string text;
};

} // namespace qorl
