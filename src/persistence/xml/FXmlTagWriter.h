#pragma once

#include "persistence/xml/XmlLine.h"

#include <qorl/Ref.h>

#include <cstdint>
#include <string_view>

namespace qorl {

class IBStream;

/// Writes XML piece by piece, as a program makes it: tags, attributes of each type, texts and numbers.
///
/// Operations give false when the stream doesn't take all, and without memory. Threading: one thread at a
/// time.
class FXmlTagWriter {
public:
    /// What follows a tag.
    enum class TagKind : uint8_t {
        open,   ///< Content on lines of its own.
        inLine, ///< Content on the same line.
        empty   ///< Nothing: `<name/>`.
    };
    enum class LineEnd : bool { no, yes };
    enum class Layout : uint8_t {
        tabs,      ///< A tab a level.
        blanks,    ///< Three blanks a level.
        singleLine ///< No line ends and no indentation at all.
    };

    /// Holds the stream.
    explicit FXmlTagWriter(IBStream* stream, Layout layout = Layout::tabs);
    ~FXmlTagWriter();
    FXmlTagWriter(const FXmlTagWriter&) = delete;
    FXmlTagWriter& operator=(const FXmlTagWriter&) = delete;

    int32_t depth() const { return depth_; }

    /// With `utf8` the text begins with the byte order mark and names its encoding.
    bool writeHeader(bool utf8);
    bool openTag(std::string_view name, TagKind kind);
    /// A tag with attributes: `startTag`, `addAttribute` as often as need be, `endStartTag`.
    bool startTag(std::string_view name);
    /// 8-bit text with named entities, wide text as UTF-8.
    bool addAttribute(std::string_view name, const ConstString& value);
    bool addAttribute(std::string_view name, int64_t value);
    bool addAttribute(std::string_view name, uint64_t value);
    /// In the format "%.50g".
    bool addAttribute(std::string_view name, double value);
    bool endStartTag(TagKind kind);
    /// Content, of which only & < > " are escaped.
    bool writeText(const ConstString& text);
    bool writeNumber(int64_t value);
    bool closeTag(std::string_view name, LineEnd lineEnd = LineEnd::yes);
    /// On a line of its own; special characters as entities, so that the text can't end the comment.
    bool writeComment(std::string_view text);

private:
    XmlLine& beginLine();
    XmlLine& beginAttribute(std::string_view name);
    bool endAttribute();
    bool finish(LineEnd lineEnd);

    Ref<IBStream> stream_;
    XmlLine line_;
    int32_t depth_ = 0;
    Layout layout_;
    bool isAtLineStart_ = true;
};

} // namespace qorl
