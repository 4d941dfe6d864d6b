#include "persistence/xml/FXmlParser.h"

#include "foundation/text/ShownText.h"
#include "foundation/text/StoredBytes.h"
#include "foundation/text/TextConversion.h"
#include "persistence/streams/FBinaryStream.h"
#include "persistence/xml/XmlEntities.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

namespace qorl {

namespace {

constexpr size_t commentBytes = 4096;

enum ByteClass : uint8_t {
    space = 1,
    tagNameEnd = 2,
    attributeNameEnd = 4,
    valueStop = 8,   ///< What a value must be looked at for.
    markupStart = 16 ///< What makes a "<" in front of it the start of markup.
};

// The zero byte behind the buffer's bytes stops all scans.
constexpr std::array<uint8_t, 256> byteClasses = [] {
    std::array<uint8_t, 256> classes{};
    const auto mark = [&classes](std::string_view bytes, uint8_t bits) {
        for (const char byte : bytes)
            classes[static_cast<uint8_t>(byte)] |= bits;
    };
    mark(" \t\r\n", space | tagNameEnd | attributeNameEnd);
    mark("/>", tagNameEnd | attributeNameEnd);
    mark("=", attributeNameEnd);
    mark("\"'&\\", valueStop);
    mark("!/?_", markupStart);
    mark("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", markupStart);
    classes[0] = tagNameEnd | attributeNameEnd | valueStop;
    return classes;
}();

bool isOf(char byte, uint8_t bits) {
    return byteClasses[static_cast<uint8_t>(byte)] & bits;
}

bool isQuote(char byte) {
    return byte == '"' || byte == '\'';
}

const char* skipSpace(const char* at) {
    while (isOf(*at, space))
        ++at;
    return at;
}

/// Behind the name that begins at `at`; a zero byte belongs to it unless it is the one at `end`.
const char* skipName(const char* at, const char* end, ByteClass stop) {
    while (!isOf(*at, stop) || (*at == 0 && at < end))
        ++at;
    return at;
}

size_t characterCount(std::string_view utf8) {
    return static_cast<size_t>(
        std::count_if(utf8.begin(), utf8.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

/// Counted in characters as the writer does; bytes that are no text have an end, too.
bool isTooLong(std::string_view value) {
    constexpr size_t mostBytes = 3 * FXmlParser::maxValueLength;
    return value.size() > FXmlParser::maxValueLength &&
           (value.size() > mostBytes || characterCount(value) > FXmlParser::maxValueLength);
}

} // namespace

/// While a handler of a start tag runs.
struct FXmlParser::HandlerScope {
    HandlerScope(FXmlParser& owner, bool isEmpty)
        : parser(owner), wasInStartTag(owner.isInStartTag_), wasInEmptyTag(owner.isInEmptyTag_) {
        parser.isInStartTag_ = true;
        parser.isInEmptyTag_ = isEmpty;
    }
    HandlerScope(const HandlerScope&) = delete;
    ~HandlerScope() {
        parser.isInStartTag_ = wasInStartTag;
        parser.isInEmptyTag_ = wasInEmptyTag;
    }

    FXmlParser& parser;
    bool wasInStartTag;
    bool wasInEmptyTag;
};

FXmlParser::FXmlParser(FBinaryStream& stream, uint32_t options)
    : stream_(stream), options_(options), buffer_(0, bufferBytes) {}

FXmlParser::~FXmlParser() = default;

bool FXmlParser::isTagName(std::string_view name) {
    constexpr std::string_view otherMarkup = "!/?";
    return !name.empty() && name.size() <= maxTagNameLength && isOf(name.front(), markupStart) &&
           otherMarkup.find(name.front()) == std::string_view::npos &&
           std::all_of(name.begin(), name.end(), [](char c) { return c == 0 || !isOf(c, tagNameEnd); });
}

bool FXmlParser::startTag(std::string_view, const FXmlAttributes&, bool, void*) {
    return true;
}
void FXmlParser::endTag(std::string_view, void*) {}
void FXmlParser::text(const char*, int32_t, void*) {}
void FXmlParser::comment(std::string_view, void*, bool) {}

bool FXmlParser::parse(void* context) try {
    if (isInEmptyTag_)
        return error_ == Error::none;
    if (!isInStartTag_)
        isStopped_ = false;
    const size_t level = open_.size();
    const bool endsAtClose = isInStartTag_ || (options_ & returnAtClose);
    while (error_ == Error::none && !isStopped_) {
        if (!parseNext(context)) {
            if (!open_.empty() || isUnreadable_)
                fail(Error::unexpectedEnd, '<' + text::brief(openTag()) + "> has no end tag", at_, at_);
            break;
        }
        if (endsAtClose && open_.size() < level)
            break;
    }
    return error_ == Error::none;
} catch (const std::bad_alloc&) {
    failWithoutMemory();
    return false;
}

bool FXmlParser::skipElement() {
    const bool wasMuted = isMuted_;
    isMuted_ = true;
    const bool isGood = parse(nullptr);
    isMuted_ = wasMuted;
    return isGood;
}

void FXmlParser::setError(Error error, std::string_view detail) try {
    if (error_ != Error::none)
        return;
    error_ = error;
    detail_ = detail;
} catch (const std::bad_alloc&) {
    failWithoutMemory();
}

void FXmlParser::failWithoutMemory() {
    error_ = Error::noMemory;
    detail_.clear();
}

/// False at the end of the document.
bool FXmlParser::parseNext(void* context) {
    isTokenMarked_ = false;
    hold(at_);
    if (!has(1))
        return false;
    if (!std::exchange(hasBegun_, true) && isNext(text::utf8Mark)) {
        at_ += 3;
        return true;
    }
    if (buffer_.data()[at_] == '<' && has(2) && isOf(buffer_.data()[at_ + 1], markupStart))
        parseMarkup(context);
    else
        parseText(context);
    return true;
}

/// Where the text that begins at `at_` ends in the buffer. What might be a piece of markup, or of an entity,
/// at the buffer's end is left for the next time.
size_t FXmlParser::findTextEnd(bool& isWhole) const {
    const char* start = buffer_.data() + at_;
    const char* from = start;
    while (const auto* found =
               static_cast<const char*>(std::memchr(from, '<', static_cast<size_t>(end() - from)))) {
        const bool isLast = found + 1 == end();
        isWhole = !isLast && isOf(found[1], markupStart);
        if (isWhole || (isLast && !isAtEnd_))
            return static_cast<size_t>(found - buffer_.data());
        from = found + 1;
    }
    isWhole = isAtEnd_;
    const auto size = static_cast<size_t>(end() - start);
    const std::string_view tail(end() - std::min(size, XmlEntities::longestReference),
                                std::min(size, XmlEntities::longestReference));
    const size_t cut = isWhole ? std::string_view::npos : tail.rfind('&');
    const bool isCut = cut != std::string_view::npos && tail.find(';', cut) == std::string_view::npos;
    return static_cast<size_t>((isCut ? tail.data() + cut : end()) - buffer_.data());
}

void FXmlParser::parseText(void* context) {
    bool isWhole = false;
    bool isTold = false;
    while (!isWhole && error_ == Error::none && !isStopped_) {
        const size_t stop = findTextEnd(isWhole);
        size_t start = at_;
        if ((options_ & dropBlanks) && !isTold)
            while (start < stop && isOf(buffer_.data()[start], space))
                ++start;
        if (start < stop && !isMuted_)
            isTold |= tellText(start, stop, context);
        at_ = stop;
        hold(at_);
        if (!isWhole)
            readMore();
    }
    if (isTold)
        text("", 0, context);
}

bool FXmlParser::tellText(size_t start, size_t end, void* context) {
    const char* data = buffer_.data() + start;
    size_t length = end - start;
    if (std::memchr(data, '&', length)) {
        decoded_.assign(data, data + length);
        length = XmlEntities::decode(decoded_.data(), length, entityColumn()).length;
        data = decoded_.data();
    }
    text(data, static_cast<int32_t>(length), context);
    return true;
}

void FXmlParser::parseMarkup(void* context) {
    const char next = buffer_.data()[at_ + 1];
    if (next == '/')
        parseEndTag(context);
    else if (next == '?')
        parseInstruction();
    else if (next != '!')
        parseStartTag(context);
    else if (isNext("<!--"))
        parseComment(context);
    else if (isNext("<![CDATA["))
        skipCharacterData();
    else
        skipDocumentType();
}

FXmlParser::Scan FXmlParser::scanAttribute(const char*& at, FXmlAttributes::View& view) {
    const char* stop = end();
    const char* start = at;
    at = skipName(at, stop, attributeNameEnd);
    view.name = {start, at};
    at = skipSpace(at);
    if (at == stop)
        return Scan::more;
    if (*at != '=' || view.name.empty() || view.name.size() > maxNameLength)
        return Scan::bad;
    at = skipSpace(at + 1);
    if (at == stop)
        return Scan::more;
    const char quote = *at;
    if (!isQuote(quote))
        return Scan::bad;
    start = ++at;
    // Marked by itself: whether there is something to decode.
    view.isWide = false;
    for (;; ++at) {
        while (!isOf(*at, valueStop))
            ++at;
        if (*at == quote)
            break;
        if (*at == 0 && at == stop)
            return Scan::more;
        if (*at == '&') {
            view.isWide = true;
        } else if (*at == '\\' && (options_ & backslashQuotes)) {
            if (at + 1 == stop)
                return Scan::more;
            if (isQuote(at[1])) {
                view.isWide = true;
                ++at;
            }
        }
    }
    view.value = {start, at};
    ++at;
    return Scan::done;
}

FXmlParser::Scan FXmlParser::scanStartTag(const char*& at, std::string_view& name, bool& isEmpty) {
    const char* stop = end();
    const char* start = at;
    at = skipName(at, stop, tagNameEnd);
    name = {start, at};
    attributes_.views_.clear();
    while (true) {
        at = skipSpace(at);
        if (at == stop)
            return Scan::more;
        isEmpty = *at == '/';
        if (isEmpty && at + 1 == stop)
            return Scan::more;
        if (*at == '>' || (isEmpty && at[1] == '>'))
            break;
        FXmlAttributes::View& view = attributes_.views_.emplace_back();
        start = at;
        const Scan scan = scanAttribute(at, view);
        if (scan == Scan::bad) {
            const std::string detail =
                view.name.empty() ? "an attribute's name is missing"
                : view.name.size() > maxNameLength
                    ? "an attribute's name is longer than " + std::to_string(maxNameLength) + " bytes"
                    : "an attribute's value must stand in quotes";
            const char* data = buffer_.data();
            fail(Error::malformed, detail, static_cast<size_t>(start - data), static_cast<size_t>(at - data));
        }
        if (scan != Scan::done)
            return scan;
    }
    at += isEmpty ? 2 : 1;
    return Scan::done;
}

void FXmlParser::parseStartTag(void* context) {
    std::string_view name;
    bool isEmpty = false;
    while (true) {
        const char* at = buffer_.data() + at_ + 1;
        const Scan scan = scanStartTag(at, name, isEmpty);
        if (scan == Scan::bad)
            return;
        if (scan == Scan::done) {
            at_ = static_cast<size_t>(at - buffer_.data());
            break;
        }
        const auto used = static_cast<size_t>(buffer_.used());
        if (used - at_ > maxTagBytes)
            return fail(Error::malformed, "a tag is longer than " + std::to_string(maxTagBytes >> 20) + " MB",
                        at_, used);
        if (!readAsMuchAgain())
            return fail(Error::unexpectedEnd, "a tag is not closed", at_,
                        static_cast<size_t>(buffer_.used()));
    }
    if (name.size() > maxTagNameLength)
        return fail(Error::malformed,
                    "a tag's name is longer than " + std::to_string(maxTagNameLength) + " bytes", held_, at_);
    if (open_.size() >= maxDepth)
        return fail(Error::malformed, "elements are nested deeper than " + std::to_string(maxDepth), held_,
                    at_);
    if (!isEmpty) {
        open_.push_back(openNames_.size());
        openNames_.append(name);
    }
    if (isMuted_ || !decodeAttributes())
        return;
    const HandlerScope scope(*this, isEmpty);
    if (!startTag(name, attributes_, isEmpty, context) && error_ == Error::none && !isStopped_)
        error_ = Error::unexpectedTag;
}

/// Of values that have something to decode, and checks how long they are.
bool FXmlParser::decodeAttributes() {
    const bool isMacintosh = options_ & macintoshEntities;
    attributes_.codePage_ =
        static_cast<uint32_t>(isMacintosh ? text::StoredEncoding::macintosh : text::StoredEncoding::western);
    // One block for all of them, which doesn't move any more.
    decoded_.clear();
    size_t room = 0;
    for (const auto& view : attributes_.views_)
        room += view.isWide ? view.value.size() : 0;
    if (room > 0)
        decoded_.reserve(room);
    for (auto& view : attributes_.views_) {
        const std::string_view raw = view.value;
        if (view.isWide)
            decodeValue(view);
        if (isTooLong(view.value)) {
            const auto start = static_cast<size_t>(view.name.data() - buffer_.data());
            fail(Error::malformed,
                 "an attribute's value is longer than " + std::to_string(maxValueLength) + " characters",
                 start, static_cast<size_t>(raw.data() + raw.size() - buffer_.data()) + 1);
            return false;
        }
    }
    return true;
}

void FXmlParser::decodeValue(FXmlAttributes::View& view) {
    const size_t start = decoded_.size();
    const std::string_view raw = view.value;
    for (size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == '\\' && (options_ & backslashQuotes) && i + 1 < raw.size() && isQuote(raw[i + 1]))
            ++i;
        decoded_.push_back(raw[i]);
    }
    const auto decoded =
        XmlEntities::decode(decoded_.data() + start, decoded_.size() - start, entityColumn());
    decoded_.resize(start + decoded.length);
    view.value = {decoded_.data() + start, decoded.length};
    view.isWide = decoded.hasNamedHigh && (options_ & wideNamedValues);
}

XmlEntities::Column FXmlParser::entityColumn() const {
    return options_ & macintoshEntities ? XmlEntities::Column::macintosh : XmlEntities::Column::latin1;
}

void FXmlParser::parseEndTag(void* context) {
    const char* at = nullptr;
    std::string_view name;
    while (true) {
        const char* start = buffer_.data() + at_ + 2;
        at = skipName(start, end(), tagNameEnd);
        name = {start, at};
        at = skipSpace(at);
        if (at < end())
            break;
        const auto used = static_cast<size_t>(buffer_.used());
        if (used - at_ > maxTagBytes)
            return fail(Error::malformed, "a tag is longer than " + std::to_string(maxTagBytes >> 20) + " MB",
                        at_, used);
        if (!readAsMuchAgain())
            return fail(Error::unexpectedEnd, "a tag is not closed", at_,
                        static_cast<size_t>(buffer_.used()));
    }
    const auto tagEnd = static_cast<size_t>(at - buffer_.data());
    if (*at != '>' || open_.empty() || openTag() != name) {
        std::string detail = open_.empty() ? "an end tag has no start tag"
                                           : "</" + text::brief(openTag()) + "> is missing here";
        return fail(Error::malformed, detail, at_, std::min(tagEnd + 1, static_cast<size_t>(buffer_.used())));
    }
    at_ = tagEnd + 1;
    openNames_.resize(open_.back());
    open_.pop_back();
    if (!isMuted_)
        endTag(name, context);
}

std::string_view FXmlParser::openTag() const {
    return open_.empty() ? std::string_view() : std::string_view(openNames_).substr(open_.back());
}

namespace {

/// The last bytes that were read, to find where something begins or ends.
class Trail {
public:
    void add(int byte) { last_ = last_ << 8 | static_cast<uint32_t>(byte); }
    /// Whether the bytes up to here are these, at most four; then none of them counts any more.
    bool endsWith(std::string_view text) {
        uint32_t expected = 0;
        uint32_t mask = 0;
        for (const char c : text) {
            expected = expected << 8 | static_cast<uint8_t>(c);
            mask = mask << 8 | 0xFF;
        }
        if ((last_ & mask) != expected)
            return false;
        last_ = 0;
        return true;
    }

private:
    uint32_t last_ = 0;
};

} // namespace

/// Nested comments are passed on as a part of the outer one.
void FXmlParser::parseComment(void* context) {
    constexpr std::string_view opener = "<!--";
    constexpr std::string_view closer = "-->";
    const bool isTold = (options_ & giveComments) && !isMuted_;
    markToken();
    at_ += opener.size();
    commentPiece_.clear();
    Trail trail;
    for (int depth = 1; depth > 0;) {
        const int byte = nextByte();
        if (byte < 0)
            return fail(Error::unexpectedEnd, "a comment has no end", at_, at_);
        trail.add(byte);
        if (isTold) {
            // What may become the end is held back.
            if (commentPiece_.size() >= commentBytes + closer.size()) {
                comment(std::string_view(commentPiece_).substr(0, commentBytes), context, false);
                commentPiece_.erase(0, commentBytes);
            }
            commentPiece_ += static_cast<char>(byte);
        }
        if (trail.endsWith(closer))
            --depth;
        else if (!(options_ & flatComments) && trail.endsWith(opener))
            ++depth;
    }
    if (isTold)
        comment(std::string_view(commentPiece_).substr(0, commentPiece_.size() - closer.size()), context,
                true);
}

/// False at the end of the document.
bool FXmlParser::skipBehind(std::string_view closer) {
    Trail trail;
    do {
        const int byte = nextByte();
        if (byte < 0)
            return false;
        trail.add(byte);
    } while (!trail.endsWith(closer));
    return true;
}

void FXmlParser::skipCharacterData() {
    constexpr std::string_view opener = "<![CDATA[";
    markToken();
    at_ += opener.size();
    if (!skipBehind("]]>"))
        fail(Error::unexpectedEnd, "a CDATA section has no end", at_, at_);
}

void FXmlParser::parseInstruction() {
    constexpr std::string_view declaration = "<?xml";
    markToken();
    if (isNext(declaration) && has(declaration.size() + 1) &&
        isOf(buffer_.data()[at_ + declaration.size()], space)) {
        // All of it is to be in the buffer, if it is as short as one is.
        has(bufferBytes);
        const char* start = buffer_.data() + at_ + declaration.size();
        const size_t length = std::string_view(start, end()).find("?>");
        if (length != std::string_view::npos)
            readDeclaration(start, start + length);
    }
    at_ += 2;
    if (!skipBehind("?>"))
        fail(Error::unexpectedEnd, "a processing instruction has no end", at_, at_);
}

/// Tolerates what stands there otherwise.
void FXmlParser::readDeclaration(const char* at, const char* stop) {
    constexpr std::string_view utf8 = "utf-8";
    for (at = skipSpace(at); at < stop; at = skipSpace(at)) {
        FXmlAttributes::View view;
        if (scanAttribute(at, view) != Scan::done || at > stop)
            return;
        if (view.name == "encoding")
            isUtf8_ = std::equal(view.value.begin(), view.value.end(), utf8.begin(), utf8.end(),
                                 [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a | 0x20 : a) == b; });
    }
}

/// Ends at a ">" outside of quotes and brackets.
void FXmlParser::skipDocumentType() {
    markToken();
    at_ += 2;
    int quote = 0;
    int brackets = 0;
    Trail trail;
    while (true) {
        const int byte = nextByte();
        if (byte < 0)
            return fail(Error::unexpectedEnd, "a document type has no end", at_, at_);
        trail.add(byte);
        if (quote) {
            quote = byte == quote ? 0 : quote;
        } else if (byte == '"' || byte == '\'') {
            quote = byte;
        } else if (byte == '[' || byte == ']') {
            brackets += byte == '[' ? 1 : -1;
        } else if (byte == '>' && brackets <= 0) {
            return;
        } else if (trail.endsWith("<!--") && !skipBehind("-->")) {
            // A comment's apostrophes are no quotes, nor are those of an instruction.
            return fail(Error::unexpectedEnd, "a comment has no end", at_, at_);
        } else if (trail.endsWith("<?") && !skipBehind("?>")) {
            return fail(Error::unexpectedEnd, "a processing instruction has no end", at_, at_);
        }
    }
}

} // namespace qorl
