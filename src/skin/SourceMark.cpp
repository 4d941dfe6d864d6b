#include "skin/SourceMark.h"

#include "foundation/ClassMacros.h"
#include "foundation/CmObject.h"
#include "foundation/Singleton.h"
#include "foundation/threads/FLock.h"

#include <string>

namespace qorl {

namespace {

struct SourceFile {
    const char* name;
    SourceMark includedFrom;
};

/// All files that elements came from. File 0 is the unknown one.
class SourceFiles final : public CmObject {
    QORL_CLASS(SourceFiles, CmObject)

public:
    uint32_t add(std::string_view name, SourceMark includedFrom) {
        const FGuard guard(lock_);
        const char* interned = internFileName(name);
        for (size_t i = 1; i < files_.size(); ++i)
            if (files_[i].name == interned && files_[i].includedFrom == includedFrom)
                return static_cast<uint32_t>(i);
        if (files_.size() == SourceMark::maximumFiles)
            return 0;
        files_.push_back({interned, includedFrom});
        return static_cast<uint32_t>(files_.size() - 1);
    }

    SourceFile get(uint32_t file) {
        const FGuard guard(lock_);
        return file < files_.size() ? files_[file] : SourceFile{};
    }

private:
    FLock lock_{"FLock"};
    std::vector<SourceFile> files_{SourceFile{}};
};

constinit Singleton<SourceFiles> sourceFiles;

SourceFile sourceFile(uint32_t file) {
    SourceFiles* files = sourceFiles.get();
    return files ? files->get(file) : SourceFile{};
}

} // namespace

uint32_t SourceMark::addFile(std::string_view name, SourceMark includedFrom) {
    SourceFiles* files = sourceFiles.get();
    return files ? files->add(name, includedFrom) : 0;
}

SourcePosition SourceMark::position() const {
    return {sourceFile(file()).name, line(), column()};
}

std::vector<SourcePosition> SourceMark::includes() const {
    std::vector<SourcePosition> result;
    for (SourceMark mark = sourceFile(file()).includedFrom; mark.isKnown();
         mark = sourceFile(mark.file()).includedFrom)
        result.push_back(mark.position());
    return result;
}

Diagnostic SourceMark::finding(Severity severity, std::string text) const {
    return {severity, position(), includes(), std::move(text)};
}

} // namespace qorl
