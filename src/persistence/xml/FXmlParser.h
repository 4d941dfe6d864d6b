#pragma once

#include "foundation/containers/CmBuffer.h"
#include "persistence/xml/FXmlAttribute.h"
#include "persistence/xml/XmlEntities.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qorl {

class FBinaryStream;

/// Where an application hears of damaged documents.
class XmlLogSink {
public:
    /// All that there is to say about one fault, in several lines.
    virtual void write(std::string_view text) = 0;

protected:
    ~XmlLogSink() = default;
};

/// The framework's own tolerant pull parser, which reads what its own writers have written over the years:
/// unknown entities and stray signs stay as text, line ends within a value stay what they are.
///
/// A subclass overrides what it wants to hear. It may call `parse` from within `startTag` with a context of
/// its own for what is inside of that element, or note the element and return. Names, values and texts are
/// the document's bytes with entities decoded, each to one byte; they lie in the parser's buffer and are good
/// until it reads on. Memory stays bounded whatever the document holds. Threading: one thread at a time.
class FXmlParser {
public:
    enum Option : uint32_t {
        giveComments = 1,
        backslashQuotes = 2,   ///< A backslash escapes a quote within a value.
        flatComments = 4,      ///< A comment ends at the first end.
        dropBlanks = 8,        ///< Blanks, tabs and line ends in front of a text are not told.
        returnAtClose = 16,    ///< `parse` returns when the element closes in which it was called.
        wideNamedValues = 32,  ///< A value with a named entity of 0x80 or more is made wide.
        macintoshEntities = 64 ///< Named entities stand for bytes of Macintosh Roman.
    };
    enum class Error : int32_t {
        none,
        malformed,
        unexpectedTag,
        unexpectedEnd,
        missingAttributes,
        wrongTag,
        noMemory
    };
    enum class Reporting : uint8_t { off, on };

    static constexpr size_t maxDepth = 1000;
    static constexpr size_t maxTagNameLength = 4096; ///< In bytes.
    static constexpr size_t maxNameLength = 48;      ///< Of an attribute, in bytes.
    static constexpr size_t maxValueLength = 2048;   ///< In characters, decoded.
    static constexpr size_t maxTagBytes = size_t{1} << 20;

    /// Reads from where `stream` stands; it must outlive the parser.
    explicit FXmlParser(FBinaryStream& stream, uint32_t options = 0);
    FXmlParser(const FXmlParser&) = delete;
    FXmlParser& operator=(const FXmlParser&) = delete;
    virtual ~FXmlParser();

    /// An element begins; with `isEmpty` it has no content, and no end is told. False ends the parsing with
    /// `Error::unexpectedTag`, unless the handler has set another error.
    virtual bool startTag(std::string_view name, const FXmlAttributes& attributes, bool isEmpty,
                          void* context);
    virtual void endTag(std::string_view name, void* context);
    /// A text in pieces, the last one followed by a call with length 0.
    virtual void text(const char* data, int32_t length, void* context);
    /// A comment in pieces, the last one with `isEnd`; nested comments are part of their outermost one.
    virtual void comment(std::string_view text, void* context, bool isEnd);

    /// Reads on to the end, or, from within `startTag`, behind the end tag of that element, telling `context`
    /// to the handlers. False on an error.
    bool parse(void* context = nullptr);
    /// From within `startTag`: passes over the element and its end tag; nothing of it is told.
    bool skipElement();
    /// From within a handler: all calls of `parse` return, with an error, or as if the document had ended; in
    /// the latter case `parse` may be called again to go on.
    void setError(Error error, std::string_view detail = {});
    void stop() { isStopped_ = true; }

    Error error() const { return error_; }
    /// The message for people; empty without an error.
    const char* getErrorText() const;
    /// What exactly was wrong, where more can be said than the message does.
    const std::string& errorDetail() const { return detail_; }
    /// "Line 7": where the parser stands, or where the tag, text or comment at fault begins.
    std::string getLineText() const;
    /// From 1, a column being one byte.
    int64_t line() const;
    int64_t column() const;
    /// Whether the document says so. Bytes are taken for UTF-8 in any case, where they are.
    bool isUtf8Declared() const { return isUtf8_; }

    /// Whether damage is told to the log sink; on unless it is turned off.
    void setReporting(Reporting reporting) { reporting_ = reporting; }
    /// For all parsers; null for none. The sink must outlive its stay. Any thread.
    static void setLogSink(XmlLogSink* sink);

    /// Whether parsers find an element of this name: a letter of ASCII or "_", then anything but white space,
    /// "/" and ">".
    static bool isTagName(std::string_view name);

private:
    /// Counts line ends: each of CR, LF, CR LF and LF CR ends one line.
    struct LineCount {
        int64_t lines = 0;
        int64_t column = 0; ///< Bytes behind the last line end.
        char pairedWith = 0;

        void pass(std::string_view bytes);
    };
    enum class Scan : uint8_t { done, more, bad };
    static constexpr int32_t bufferBytes = 2048;
    struct HandlerScope;

    bool parseNext(void* context);
    void parseText(void* context);
    size_t findTextEnd(bool& isWhole) const;
    bool tellText(size_t start, size_t end, void* context);
    void parseMarkup(void* context);
    void parseStartTag(void* context);
    Scan scanStartTag(const char*& at, std::string_view& name, bool& isEmpty);
    Scan scanAttribute(const char*& at, FXmlAttributes::View& view);
    bool decodeAttributes();
    void decodeValue(FXmlAttributes::View& view);
    XmlEntities::Column entityColumn() const;
    void parseEndTag(void* context);
    void parseComment(void* context);
    void skipCharacterData();
    void parseInstruction();
    void readDeclaration(const char* at, const char* end);
    void skipDocumentType();
    bool skipBehind(std::string_view closer);

    const char* end() const { return buffer_.data() + buffer_.used(); }
    bool has(size_t count);
    bool isNext(std::string_view text);
    bool readMore();
    bool readAsMuchAgain();
    int nextByte();
    void hold(size_t at);
    void markToken();
    void countToHeld() const;
    const LineCount& tokenPlace() const;
    std::string_view openTag() const;
    void fail(Error error, std::string_view detail, size_t tokenStart, size_t tokenEnd);
    void failWithoutMemory();
    void report(std::string_view token, std::string_view rest) const;

    FBinaryStream& stream_;
    uint32_t options_;
    CmBuffer buffer_;
    size_t at_ = 0;   ///< Where the parser stands in the buffer.
    size_t held_ = 0; ///< From here on the buffer's bytes must stay.
    bool isAtEnd_ = false;
    bool isUnreadable_ = false; ///< The stream failed there.
    // Each byte is looked at once, however often somebody asks.
    mutable LineCount counted_;
    mutable size_t countedTo_ = 0; ///< Where in the buffer that is.
    LineCount tokenLines_;         ///< Up to a comment or the like, whose front may have left the buffer.
    bool isTokenMarked_ = false;

    std::string openNames_;
    std::vector<size_t> open_; ///< Where in `openNames_` each name begins.
    FXmlAttributes attributes_;
    std::vector<char> decoded_;
    std::string commentPiece_;

    bool hasBegun_ = false;
    bool isUtf8_ = false;
    bool isMuted_ = false;
    bool isStopped_ = false;
    bool isInStartTag_ = false;
    bool isInEmptyTag_ = false;
    Reporting reporting_ = Reporting::on;
    Error error_ = Error::none;
    std::string detail_;
};

} // namespace qorl
