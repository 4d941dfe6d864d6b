#include "foundation/Diagnostic.h"

#include "foundation/FObject.h"
#include "foundation/Singleton.h"
#include "foundation/threads/FLock.h"

#include <algorithm>
#include <set>

namespace qorl {

namespace {

/// Nodes of the set stay where they are, so their texts can be pointed to.
class FileNames : public FObject {
public:
    const char* intern(std::string_view name) {
        const FGuard guard(lock_);
        const auto found = names_.find(name);
        return (found != names_.end() ? *found : *names_.emplace(name).first).c_str();
    }

private:
    FLock lock_{"FLock"};
    std::set<std::string, std::less<>> names_;
};

constinit Singleton<FileNames> fileNames;

} // namespace

const char* internFileName(std::string_view name) {
    FileNames* names = fileNames.get();
    return names ? names->intern(name) : nullptr;
}

void DiagnosticList::report(const Diagnostic& diagnostic) {
    diagnostics_.push_back(diagnostic);
}

size_t DiagnosticList::count(Severity severity) const {
    return static_cast<size_t>(std::count_if(diagnostics_.begin(), diagnostics_.end(),
                                             [&](const Diagnostic& d) { return d.severity == severity; }));
}

const char* nameOf(Severity severity) {
    constexpr const char* names[] = {"note", "warning", "error"};
    return names[static_cast<size_t>(severity)];
}

std::string toText(const SourcePosition& position) {
    std::string text = position.file ? position.file : "";
    for (const uint32_t number : {position.line, position.column}) {
        if (number == 0)
            break;
        if (!text.empty())
            text += ':';
        text += std::to_string(number);
    }
    return text;
}

std::string toText(const Diagnostic& diagnostic) {
    std::string text = toText(diagnostic.position);
    if (!text.empty())
        text += ": ";
    text.append(nameOf(diagnostic.severity)).append(": ").append(diagnostic.text);
    for (const SourcePosition& include : diagnostic.includes)
        text.append("\n  included from ").append(toText(include));
    return text;
}

} // namespace qorl
