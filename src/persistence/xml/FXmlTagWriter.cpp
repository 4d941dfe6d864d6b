#include "persistence/xml/FXmlTagWriter.h"

#include <qorl/IBStream.h>

namespace qorl {

FXmlTagWriter::FXmlTagWriter(IBStream* stream, Layout layout) : stream_(retain(stream)), layout_(layout) {}

FXmlTagWriter::~FXmlTagWriter() = default;

/// Indented, unless the line has begun.
XmlLine& FXmlTagWriter::beginLine() {
    constexpr int32_t blanksOfLevel = 3;
    if (isAtLineStart_ && layout_ == Layout::tabs)
        line_.fill('\t', depth_);
    else if (isAtLineStart_ && layout_ == Layout::blanks)
        line_.fill(' ', depth_ * blanksOfLevel);
    isAtLineStart_ = false;
    return line_;
}

bool FXmlTagWriter::finish(LineEnd lineEnd) {
    if (lineEnd == LineEnd::yes) {
        if (layout_ != Layout::singleLine)
            line_.put(XmlLine::lineEnd);
        isAtLineStart_ = true;
    }
    return stream_ && line_.writeTo(*stream_);
}

bool FXmlTagWriter::writeHeader(bool utf8) {
    if (utf8)
        line_.put(text::utf8Mark).put("<?xml version=\"1.0\" encoding=\"utf-8\"?>");
    else
        line_.put("<?xml version=\"1.0\"?>");
    return finish(LineEnd::yes);
}

bool FXmlTagWriter::openTag(std::string_view name, TagKind kind) {
    return startTag(name) && endStartTag(kind);
}

bool FXmlTagWriter::startTag(std::string_view name) {
    beginLine().put('<').put(name);
    return !line_.isBroken();
}

XmlLine& FXmlTagWriter::beginAttribute(std::string_view name) {
    return line_.put(' ').put(name).put("=\"");
}

bool FXmlTagWriter::endAttribute() {
    line_.put('"');
    return !line_.isBroken();
}

bool FXmlTagWriter::addAttribute(std::string_view name, const ConstString& value) {
    beginAttribute(name).putEscaped(value, XmlLine::Escape::entities);
    return endAttribute();
}

bool FXmlTagWriter::addAttribute(std::string_view name, int64_t value) {
    beginAttribute(name).putInteger(value);
    return endAttribute();
}

bool FXmlTagWriter::addAttribute(std::string_view name, uint64_t value) {
    beginAttribute(name).putUnsigned(value);
    return endAttribute();
}

bool FXmlTagWriter::addAttribute(std::string_view name, double value) {
    beginAttribute(name).putFloat(value);
    return endAttribute();
}

bool FXmlTagWriter::endStartTag(TagKind kind) {
    line_.put(kind == TagKind::empty ? "/>" : ">");
    if (kind != TagKind::empty)
        ++depth_;
    return finish(kind == TagKind::inLine ? LineEnd::no : LineEnd::yes);
}

bool FXmlTagWriter::writeText(const ConstString& text) {
    beginLine().putEscaped(text, XmlLine::Escape::markup);
    return finish(LineEnd::no);
}

bool FXmlTagWriter::writeNumber(int64_t value) {
    beginLine().putInteger(value);
    return finish(LineEnd::no);
}

bool FXmlTagWriter::closeTag(std::string_view name, LineEnd lineEnd) {
    if (depth_ > 0)
        --depth_;
    beginLine().put("</").put(name).put('>');
    return finish(lineEnd);
}

bool FXmlTagWriter::writeComment(std::string_view text) {
    beginLine().putComment(text);
    return finish(LineEnd::yes);
}

} // namespace qorl
