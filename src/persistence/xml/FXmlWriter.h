#pragma once

#include "foundation/CmObject.h"
#include "persistence/xml/XmlLine.h"

#include <qorl/IXmlWriter.h>
#include <qorl/Ref.h>

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// Writes XML that people edit, such as skins: one tag or text a line, indented by tabs.
///
/// Texts are 8-bit and written as they stand, as far as no option says otherwise. Operations give false
/// when the stream doesn't take all of the line, when there is none, and without memory; a tag is open or
/// closed only when it is written. Making one throws `std::bad_alloc`. Threading: one thread at a time.
class FXmlWriter : public CmObject, public IXmlWriter {
    QORL_CLASS(FXmlWriter, CmObject)
    QORL_FACES(FXmlWriter, CmObject, IXmlWriter)

public:
    enum Option : uint32_t {
        dropEmpty = 1,   ///< Attributes with an empty name or value are left out.
        escapeValues = 2 ///< Values with named entities, as `FXmlParser` reads them.
    };

    explicit FXmlWriter(uint32_t options = 0) : options_(options) {}
    FXmlWriter(const FXmlWriter&) = delete;
    FXmlWriter& operator=(const FXmlWriter&) = delete;

    /// One line behind as many tabs. An empty text is no line, and done.
    virtual bool writeLine(std::string_view text, int32_t level);

    /// Tags that are open.
    int32_t level() const { return static_cast<int32_t>(open_.size()); }

    void setStream(IBStream* stream) override { stream_ = retain(stream); }
    bool startTag(const char* name, const char* const* attributes, bool isEmpty) override;
    bool endTag(const char* name) override;
    /// On a line of its own; special characters as entities and hyphens apart, so that the text can't end it.
    bool writeComment(const char* text) override;
    /// Line by line, without the empty ones.
    bool writeText(const char* text) override;

private:
    bool writeTag(int32_t level);

    Ref<IBStream> stream_;
    uint32_t options_;
    std::vector<std::string> open_;
    XmlLine tag_; ///< Or a comment, on its way to `writeLine`.
    XmlLine line_;
};

} // namespace qorl
