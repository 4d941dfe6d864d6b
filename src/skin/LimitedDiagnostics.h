#pragma once

#include "foundation/Diagnostic.h"
#include "skin/SkinLimits.h"

namespace qorl {

/// Keeps what is reported, up to `SkinLimits::diagnostics` errors and as many other findings: a document from
/// anywhere may have millions of faults.
class LimitedDiagnostics final : public DiagnosticSink {
public:
    void report(const Diagnostic& diagnostic) override {
        size_t& count = diagnostic.severity == Severity::error ? errors_ : others_;
        if (++count <= SkinLimits::diagnostics)
            list_.report(diagnostic.text.size() <= SkinLimits::diagnosticBytes ? diagnostic
                                                                               : shortened(diagnostic));
        else if (count == SkinLimits::diagnostics + 1)
            list_.report(
                {Severity::note, diagnostic.position, {}, "more of these follow; they are left out"});
    }

    /// Whether a finding of that kind would be dropped, so that nobody needs to word it.
    bool isFull(Severity severity) const {
        return (severity == Severity::error ? errors_ : others_) > SkinLimits::diagnostics;
    }
    const std::vector<Diagnostic>& all() const { return list_.all(); }
    bool hasErrors() const { return errors_ > 0; }
    void clear() { *this = {}; }

private:
    /// Cut between characters.
    static Diagnostic shortened(const Diagnostic& diagnostic) {
        size_t end = SkinLimits::diagnosticBytes;
        while (end > 0 && (diagnostic.text[end] & 0xC0) == 0x80)
            --end;
        return {diagnostic.severity, diagnostic.position, diagnostic.includes,
                diagnostic.text.substr(0, end) + " ..."};
    }

    DiagnosticList list_;
    size_t errors_ = 0;
    size_t others_ = 0;
};

} // namespace qorl
