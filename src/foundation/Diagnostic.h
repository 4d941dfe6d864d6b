#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qorl {

enum class Severity : uint8_t { note, warning, error };

/// A place in a document. Cheap to copy: the file name is interned and lives as long as the library.
struct SourcePosition {
    const char* file = nullptr; ///< UTF-8, from `internFileName`; null when unknown.
    uint32_t line = 0;          ///< From 1; 0 when unknown.
    uint32_t column = 0;        ///< In characters, from 1; 0 when unknown.

    friend bool operator==(const SourcePosition& a, const SourcePosition& b) = default;
};

/// The one copy of `name` that source positions point to. Any thread. Null after the singletons are gone.
const char* internFileName(std::string_view name);

/// One thing that is wrong with a document, or worth knowing: where, how it was reached, and what.
struct Diagnostic {
    Severity severity = Severity::error;
    SourcePosition position;
    std::vector<SourcePosition> includes; ///< The elements that led into this file, nearest first.
    std::string text;                     ///< UTF-8, without position and line feed.
};

/// Receives diagnostics in the order in which they are found.
class DiagnosticSink {
public:
    virtual void report(const Diagnostic& diagnostic) = 0;

protected:
    ~DiagnosticSink() = default;
};

/// Keeps what is reported.
class DiagnosticList final : public DiagnosticSink {
public:
    void report(const Diagnostic& diagnostic) override;

    const std::vector<Diagnostic>& all() const { return diagnostics_; }
    size_t count(Severity severity) const;
    bool hasErrors() const { return count(Severity::error) > 0; }
    void clear() { diagnostics_.clear(); }

private:
    std::vector<Diagnostic> diagnostics_;
};

/// "note", "warning" or "error".
const char* nameOf(Severity severity);

/// "file:line:column"; without what is unknown.
std::string toText(const SourcePosition& position);

/// "file:line:column: error: text", and a line "  included from file:line:column" for each include. No
/// line feed at the end.
std::string toText(const Diagnostic& diagnostic);

} // namespace qorl
