#pragma once

#include "persistence/xml/FXmlParser2.h"
#include "skin/SkinAttributeReader.h"
#include "skin/SkinCondition.h"
#include "skin/UIDescription.h"

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// Reads the XML of a skin document into element records.
///
/// An element that the table does not know is skipped with its contents. One in a wrong place stops the
/// reading, or is skipped too. Variants outside of templates are decided here. All faults go to the
/// document's diagnostics.
class UIDescriptionParser : public FXmlParser2, private IXmlHandler {
    QORL_CLASS(UIDescriptionParser, FXmlParser2)

public:
    /// What the reader stands in. Each is also its bit in a section mask.
    enum Section : uint32_t {
        outside = 0,
        header = 1,
        resources = 2,
        scheme = 4,
        insideTemplate = 8,
        scripts = 16,
        definitions = 32,
        allSections = 0xFF,
    };
    enum class Misplaced : uint8_t { stops, isSkipped };
    enum class Validation : uint8_t { off, on };

    /// The error code of a document that was given up for an element in a wrong place.
    static constexpr int32_t unexpectedTag = 5;

    /// `file` is the number of the document's file. `conditions` decides variants; null makes all of them
    /// count.
    UIDescriptionParser(UIDescription& document, uint32_t file, ConditionNames* conditions);

    /// Sections whose bit is clear are skipped.
    void setSectionMask(uint32_t mask) { sectionMask_ = mask; }
    void setMisplaced(Misplaced misplaced) { misplaced_ = misplaced; }
    /// Asks each element's `afterParse`; what that drops is a warning. Off until it is set.
    void setValidation(Validation validation) { validation_ = validation; }

    /// False on an error, which stands among the document's diagnostics then.
    bool parseDocument(FStream& stream);
    /// The same for text in memory, which may also be several templates without a root around them.
    bool parseFragment(std::string_view text);

private:
    /// An element whose end tag is awaited.
    struct Open {
        SkinElement* element; ///< Takes the children; null for one whose children stand in its place.
        SkinElement* home;    ///< Takes the element itself; null for the element that it stands in.
        bool isRecord;        ///< Otherwise `element` stands in the document already.
        size_t firstChild;    ///< Of its children among `pending_`.
        size_t programStart;  ///< Of its text in `program_`.
        Section section;      ///< The one that the element stands in.
    };

    void startElement(IXmlParser* parser, const char* name, const char** attributes) override;
    void endElement(IXmlParser* parser, const char* name) override;
    void characterData(IXmlParser* parser, const char* text, int32_t length) override;
    void comment(IXmlParser* parser, const char* text) override;

    SourceMark mark() const;
    SourceMark markOf(const XmlPosition& at) const;
    void passOver(std::string_view text);
    bool isWithinLimits(const char** attributes);
    bool startOutside(SkinType type, const char** attributes);
    void startSection(UIDescription::Section section, Section state);
    void startVariant(const char** attributes);
    void startRecord(SkinType type, const char** attributes, SkinElement* home, Section section);
    std::span<const SkinType> legalTypes() const;
    bool isLegal(SkinType type) const;
    bool isWanted(uint32_t sections) const { return sections == outside || (sectionMask_ & sections); }
    void refuse(SkinType type);
    void reportUnknown(std::string_view name, bool reserved);
    void skip() { skipDepth_ = 1; }
    void fail(std::string text, int32_t code = aborted);
    bool finish(bool parsed);
    SkinElement* currentRecord() const;

    UIDescription& document_;
    SkinAttributeReader reader_;
    ConditionNames* conditions_;
    uint32_t file_;
    uint32_t sectionMask_ = allSections;
    Misplaced misplaced_ = Misplaced::stops;
    Validation validation_ = Validation::off;
    bool reported_ = false;
    Section section_ = outside;
    int32_t skipDepth_ = 0;
    int32_t elements_ = 0;
    int64_t lineOffset_ = 0;
    int64_t columnOffset_ = 0;
    std::string program_;
    std::vector<Open> open_;
    std::vector<SkinElement*> pending_;
};

} // namespace qorl
