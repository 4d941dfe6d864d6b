#include "persistence/xml/FXmlWriter.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

std::string_view viewOf(const char* text) {
    return text ? std::string_view(text) : std::string_view();
}

/// Takes the first line off `text`: up to CR, LF or both.
std::string_view cutLine(std::string_view& text) {
    const size_t end = text.find_first_of("\r\n");
    const std::string_view line = text.substr(0, end);
    if (end == std::string_view::npos)
        text = {};
    else
        text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
    return line;
}

} // namespace

bool FXmlWriter::writeLine(std::string_view text, int32_t level) {
    if (text.empty())
        return true;
    return stream_ && line_.fill('\t', level).put(text).put(XmlLine::lineEnd).writeTo(*stream_);
}

bool FXmlWriter::writeTag(int32_t level) {
    return !tag_.isBroken() && writeLine(tag_.text(), level);
}

bool FXmlWriter::startTag(const char* name, const char* const* attributes, bool isEmpty) try {
    const std::string_view element = viewOf(name);
    if (element.empty())
        return false;
    tag_.clear().put('<').put(element);
    for (; attributes && attributes[0]; attributes += 2) {
        const std::string_view key = viewOf(attributes[0]);
        const std::string_view value = viewOf(attributes[1]);
        if ((options_ & dropEmpty) && (key.empty() || value.empty()))
            continue;
        tag_.put(' ').put(key).put("=\"");
        if (options_ & escapeValues)
            tag_.putEscaped(value, XmlLine::Escape::entities);
        else
            tag_.put(value);
        tag_.put('"');
    }
    tag_.put(isEmpty ? "/>" : ">");
    if (isEmpty)
        return writeTag(level());
    // Before anything is written, since it may find no memory.
    open_.emplace_back(element);
    if (writeTag(level() - 1))
        return true;
    open_.pop_back();
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

bool FXmlWriter::endTag(const char* name) {
    if (!name)
        return true;
    tag_.clear().put("</").put(name).put('>');
    if (!writeTag(std::max(level() - 1, 0)))
        return false;
    if (!open_.empty())
        open_.pop_back();
    return true;
}

bool FXmlWriter::writeComment(const char* text) {
    tag_.clear().putComment(viewOf(text));
    return writeTag(level());
}

bool FXmlWriter::writeText(const char* text) {
    std::string_view rest = viewOf(text);
    bool isGood = true;
    while (isGood && !rest.empty())
        isGood = writeLine(cutLine(rest), level());
    return isGood;
}

} // namespace qorl
