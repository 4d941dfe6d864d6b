#include "persistence/xml/FXmlParser.h"

#include "persistence/xml/XmlEntities.h"

#include <algorithm>

namespace qorl {

namespace {

constexpr size_t notMuted = SIZE_MAX;

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

FXmlParser::FXmlParser(std::string_view document, uint32_t options)
    : document_(document), options_(options), mutedAbove_(notMuted) {
    if (startsWith("\xEF\xBB\xBF"))
        at_ = 3;
}

bool FXmlParser::startTag(const std::string&, const FXmlAttributes&, bool, void*) {
    return true;
}
void FXmlParser::endTag(const std::string&, void*) {}
void FXmlParser::text(std::string_view, void*) {}
void FXmlParser::comment(std::string_view, void*) {}

bool FXmlParser::parse(void* context) {
    const size_t level = open_.size();
    while (error_ == Error::none && !isAtEnd()) {
        parseNext(context);
        if ((options_ & returnAtClose) && open_.size() < level)
            break;
    }
    if (error_ == Error::none)
        tokenStart_ = at_;
    if (error_ == Error::none && isAtEnd() && !open_.empty())
        fail(Error::unexpectedEnd);
    return error_ == Error::none;
}

bool FXmlParser::parseNext(void* context) {
    tokenStart_ = at_;
    return beginsMarkup() ? parseMarkup(context) : parseText(context);
}

/// A sign that nothing of the kind follows belongs to the text.
bool FXmlParser::beginsMarkup() const {
    if (document_[at_] != '<' || at_ + 1 >= document_.size())
        return false;
    const char next = document_[at_ + 1];
    return next == '!' || next == '/' || next == '?' || next == '_' || isLetter(next);
}

bool FXmlParser::parseText(void* context) {
    const size_t start = at_;
    do
        at_ = std::min(document_.find('<', at_ + 1), document_.size());
    while (!isAtEnd() && !beginsMarkup());
    const std::string_view raw = document_.substr(start, at_ - start);
    const bool isBlank = std::all_of(raw.begin(), raw.end(), isSpace);
    if (mutedAbove_ == notMuted && !(isBlank && (options_ & dropBlanks)))
        text(XmlEntities::decode(raw), context);
    return true;
}

bool FXmlParser::parseMarkup(void* context) {
    if (startsWith("<!--"))
        return parseComment(context);
    if (startsWith("<![CDATA["))
        return skipBehind("]]>");
    if (startsWith("<!"))
        return skipDocumentType();
    if (startsWith("<?"))
        return skipBehind("?>");
    return startsWith("</") ? parseEndTag(context) : parseStartTag(context);
}

bool FXmlParser::skipBehind(std::string_view end) {
    const size_t found = document_.find(end, at_);
    if (found == std::string_view::npos)
        return fail(Error::unexpectedEnd);
    at_ = found + end.size();
    return true;
}

bool FXmlParser::parseComment(void* context) {
    const size_t start = at_ + 4;
    size_t depth = 0;
    do {
        if (isAtEnd())
            return fail(Error::unexpectedEnd);
        if (startsWith("<!--") && (depth == 0 || !(options_ & flatComments))) {
            ++depth;
            at_ += 4;
        } else if (startsWith("-->")) {
            --depth;
            at_ += 3;
        } else {
            ++at_;
        }
    } while (depth > 0);
    if ((options_ & giveComments) && mutedAbove_ == notMuted)
        comment(document_.substr(start, at_ - start - 3), context);
    return true;
}

/// Ends at a ">" outside quotes and brackets.
bool FXmlParser::skipDocumentType() {
    char quote = 0;
    int32_t brackets = 0;
    for (; !isAtEnd(); ++at_) {
        const char c = document_[at_];
        if (quote) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[' || c == ']') {
            brackets += c == '[' ? 1 : -1;
        } else if (c == '>' && brackets <= 0) {
            ++at_;
            return true;
        }
    }
    return fail(Error::unexpectedEnd);
}

void FXmlParser::skipSpace() {
    while (!isAtEnd() && isSpace(document_[at_]))
        ++at_;
}

std::string_view FXmlParser::readName() {
    const size_t start = at_;
    while (!isAtEnd() && !isSpace(document_[at_]) && document_[at_] != '/' && document_[at_] != '>' &&
           document_[at_] != '=')
        ++at_;
    return document_.substr(start, at_ - start);
}

bool FXmlParser::parseStartTag(void* context) {
    ++at_;
    const std::string name(readName());
    FXmlAttributes attributes;
    bool isEmpty = false;
    while (true) {
        skipSpace();
        if (isAtEnd())
            return fail(Error::unexpectedEnd);
        isEmpty = startsWith("/>");
        if (isEmpty || document_[at_] == '>')
            break;
        if (!parseAttribute(attributes.emplace_back()))
            return false;
    }
    at_ += isEmpty ? 2 : 1;
    if (open_.size() >= maxDepth)
        return fail(Error::malformed);
    if (!isEmpty)
        open_.push_back(name);
    if (mutedAbove_ == notMuted && !startTag(name, attributes, isEmpty, context))
        return fail(error_ == Error::none ? Error::unexpectedTag : error_);
    return true;
}

bool FXmlParser::parseAttribute(FXmlAttribute& attribute) {
    const std::string_view name = readName();
    skipSpace();
    if (name.empty() || name.size() > maxNameLength || isAtEnd() || document_[at_] != '=')
        return fail(Error::malformed);
    ++at_;
    skipSpace();
    const char quote = isAtEnd() ? '\0' : document_[at_];
    if (quote != '"' && quote != '\'')
        return fail(Error::malformed);
    const size_t start = ++at_;
    while (!isAtEnd() && document_[at_] != quote)
        at_ += (options_ & backslashQuotes) && document_[at_] == '\\' && at_ + 1 < document_.size() ? 2 : 1;
    if (isAtEnd())
        return fail(Error::unexpectedEnd);
    if (at_ - start > maxValueLength)
        return fail(Error::malformed);
    attribute.name = name;
    attribute.value = XmlEntities::decode(document_.substr(start, at_ - start));
    ++at_;
    return true;
}

bool FXmlParser::parseEndTag(void* context) {
    at_ += 2;
    const std::string name(readName());
    skipSpace();
    if (isAtEnd())
        return fail(Error::unexpectedEnd);
    if (document_[at_] != '>' || open_.empty() || open_.back() != name)
        return fail(Error::malformed);
    ++at_;
    open_.pop_back();
    if (mutedAbove_ != notMuted && open_.size() < mutedAbove_)
        mutedAbove_ = notMuted;
    if (mutedAbove_ == notMuted)
        endTag(name, context);
    return true;
}

void FXmlParser::skipElement() {
    if (mutedAbove_ == notMuted)
        mutedAbove_ = open_.size();
}

bool FXmlParser::fail(Error error) {
    error_ = error;
    at_ = std::min(tokenStart_, document_.size());
    return false;
}

const char* FXmlParser::getErrorText() const {
    constexpr const char* texts[] = {
        "",
        "Xml data malformed!",
        "Unexpected tag or invalid attributes!",
        "Unexpected end of file!",
        "Not enough actual attributes in tag!",
        "Unexpected Tag!",
    };
    return texts[static_cast<size_t>(error_)];
}

std::string FXmlParser::getLineText() const {
    return "Line " + std::to_string(line());
}

/// Each of CR, LF, CR LF and LF CR ends one line.
int32_t FXmlParser::line() const {
    int32_t lines = 1;
    for (size_t i = 0; i < at_; ++i) {
        const char c = document_[i];
        if (c != '\r' && c != '\n')
            continue;
        ++lines;
        if (i + 1 < at_ && document_[i + 1] != c && (document_[i + 1] == '\r' || document_[i + 1] == '\n'))
            ++i;
    }
    return lines;
}

int32_t FXmlParser::column() const {
    const size_t end = document_.substr(0, at_).find_last_of("\r\n");
    return static_cast<int32_t>(end == std::string_view::npos ? at_ + 1 : at_ - end);
}

} // namespace qorl
