#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// A parsed attribute of a tag.
struct FXmlAttribute {
    std::string name;
    std::string value;
};

using FXmlAttributes = std::vector<FXmlAttribute>;

/// The framework's own tolerant parser, which reads what its own writers have written over the years: unknown
/// entities and stray signs stay as text, line ends within a value stay what they are.
///
/// A subclass overrides what it wants to hear. Texts are the document's bytes with entities decoded, each to
/// one byte. Threading: one thread at a time.
class FXmlParser {
public:
    enum Option : uint32_t {
        giveComments = 1,
        backslashQuotes = 2, ///< a backslash escapes a quote within a value
        flatComments = 4,    ///< a comment ends at the first end
        dropBlanks = 8,      ///< text of nothing but blanks, tabs and line ends is not told
        returnAtClose = 16   ///< `parse` returns when the element closes in which it was called
    };
    enum class Error { none, malformed, unexpectedTag, unexpectedEnd, missingAttributes, wrongTag };

    static constexpr size_t maxDepth = 1000;
    static constexpr size_t maxNameLength = 48;
    static constexpr size_t maxValueLength = size_t{1} << 20;

    /// `document` must outlive the parser.
    explicit FXmlParser(std::string_view document, uint32_t options = 0);
    FXmlParser(const FXmlParser&) = delete;
    virtual ~FXmlParser() = default;

    /// An element begins; `isEmpty` when it has no content, and no end is told then. False ends the parsing
    /// with `Error::unexpectedTag`, unless the handler has set another error.
    virtual bool startTag(const std::string& name, const FXmlAttributes& attributes, bool isEmpty,
                          void* context);
    virtual void endTag(const std::string& name, void* context);
    /// All text between two tags.
    virtual void text(std::string_view data, void* context);
    virtual void comment(std::string_view text, void* context);

    /// Reads on, telling `context` to the handlers. False on an error.
    bool parse(void* context = nullptr);
    /// From within `startTag` of an element that isn't empty: passes over its content. Its end is told.
    void skipElement();
    void setError(Error error) { error_ = error; }

    Error error() const { return error_; }
    const char* getErrorText() const;
    /// "Line 7", where the parser stands.
    std::string getLineText() const;
    /// From 1.
    int32_t line() const;
    int32_t column() const;

private:
    bool parseNext(void* context);
    bool parseText(void* context);
    bool parseMarkup(void* context);
    bool parseComment(void* context);
    bool parseStartTag(void* context);
    bool parseEndTag(void* context);
    bool parseAttribute(FXmlAttribute& attribute);
    bool skipBehind(std::string_view end);
    bool skipDocumentType();
    bool fail(Error error);

    bool isAtEnd() const { return at_ >= document_.size(); }
    bool startsWith(std::string_view text) const { return document_.substr(at_).starts_with(text); }
    bool beginsMarkup() const;
    void skipSpace();
    std::string_view readName();

    std::string_view document_;
    uint32_t options_;
    size_t at_ = 0;
    size_t tokenStart_ = 0;
    std::vector<std::string> open_;
    size_t mutedAbove_;
    Error error_ = Error::none;
};

} // namespace qorl
