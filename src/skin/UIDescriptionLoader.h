#pragma once

#include "foundation/Diagnostic.h"
#include "persistence/files/FFileSystem.h"
#include "persistence/urls/FUrl.h"
#include "skin/UIDescription.h"
#include "skin/UIDescriptionParser.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>

namespace qorl {

/// Loads documents with what they include. Each wizard has one; it keeps the current document.
///
/// A load that fails, for want of memory too, leaves the current document and the main scheme as they were;
/// `diagnostics` then tells why. Threading: user-interface thread.
class UIDescriptionLoader {
public:
    enum class Merge : uint8_t { replace, add };
    using Misplaced = UIDescriptionParser::Misplaced;
    using Validation = UIDescriptionParser::Validation;

    /// `conditions` decides includes and variants; it outlives the loader and may be null.
    explicit UIDescriptionLoader(ConditionNames* conditions) : conditions_(conditions) {}

    /// Opens, parses, merges includes, evaluates sizes and makes the document current.
    bool load(const FUrl& url, Ref<FFileSystem> fileSystem = nullptr);
    /// A document or templates from inside the program. `name` stands in diagnostics.
    bool loadFromString(std::string_view text, Merge merge = Merge::replace,
                        std::string_view name = "(text)");
    /// Reads the current document again from where it came.
    bool reload();

    /// Sections that are read, as bits of `UIDescriptionParser::Section`; the header alone for a list of
    /// skins.
    void setSectionMask(uint32_t mask) { sectionMask_ = mask; }
    void setMisplaced(Misplaced misplaced) { misplaced_ = misplaced; }
    /// For whoever makes a document; programs read without it.
    void setValidation(Validation validation) { validation_ = validation; }

    UIDescription* current() const { return current_.get(); }
    void setCurrent(Ref<UIDescription> description) { current_ = std::move(description); }

    const std::string& getErrorText() const { return errorText_; }
    SourcePosition getErrorPosition() const { return errorPosition_; }
    /// 5 when an element stood in a wrong place, the XML parser's code for what is not well formed, 0 for all
    /// else.
    int32_t getErrorCode() const { return errorCode_; }
    /// Everything found by the last load, whether it succeeded or not.
    const std::vector<Diagnostic>& diagnostics() const { return diagnostics_.all(); }

private:
    struct Load;

    /// `folder` is the one of the file, relative to that of the document.
    Ref<UIDescription> loadFile(Load& load, const std::string& path, const std::string& folder,
                                SourceMark includedFrom, int32_t level);
    void begin();
    Ref<UIDescriptionParser> createParser(UIDescription& document, uint32_t file) const;
    bool loadIncludes(Load& load, UIDescription& into, const std::string& folder, int32_t level);
    bool finish(Ref<UIDescription> document);
    void takeFindings(const UIDescription& document);
    void fail(SourceMark mark, std::string text);
    bool failForMemory();

    ConditionNames* conditions_;
    Ref<UIDescription> current_;
    std::string errorText_;
    SourcePosition errorPosition_;
    int32_t errorCode_ = 0;
    DiagnosticList diagnostics_;
    uint32_t sectionMask_ = UIDescriptionParser::allSections;
    Misplaced misplaced_ = Misplaced::stops;
    Validation validation_ = Validation::off;
};

} // namespace qorl
