#pragma once

#include "foundation/CmObject.h"

#include <qorl/IXmlParser.h>

#include <string>
#include <string_view>

struct XML_ParserStruct;

namespace qorl {

/// A place in a document. Lines and columns count from 1, a column being one character; bytes count from 0.
struct XmlPosition {
    int64_t line = 1;
    int64_t column = 1;
    int64_t byteOffset = 0;
};

/// Reads XML with Expat, piece by piece, and tells a handler what it finds.
///
/// Names, values and texts reach the handler as Expat holds them, without a copy. Documents are untrusted:
/// size, depth and the length of one tag are limited, entities from outside are never read, and entities that
/// blow up are refused. Without memory an operation gives false and the code `noMemory`; a handler within
/// the library lets `std::bad_alloc` out to that end. Threading: one thread at a time.
class FXmlParser2 : public CmObject, public IXmlParser {
    QORL_CLASS(FXmlParser2, CmObject)
    QORL_FACES(FXmlParser2, CmObject, IXmlParser)

public:
    struct Limits {
        int64_t documentBytes = int64_t{64} << 20;
        /// Open elements at one time.
        int32_t depth = 1000;
        /// One tag with its attributes, one comment, one piece of text.
        int64_t tokenBytes = int64_t{8} << 20;
    };

    /// The code of a parser that was stopped.
    static constexpr int32_t aborted = 35;
    static constexpr int32_t noMemory = 1;
    /// The code of a document that exceeds a limit, and of a stream that can't go back.
    static constexpr int32_t refused = -1;

    FXmlParser2();
    FXmlParser2(const FXmlParser2&) = delete;
    ~FXmlParser2() override;

    void setLimits(const Limits& limits) { limits_ = limits; }
    const Limits& limits() const { return limits_; }

    void setHandler(IXmlHandler* handler) override;
    /// Not from within the handler. A call that comes at a wrong time gives false, and the parser goes on.
    bool parse(IBStream* stream) override;
    /// The same for a whole document in memory, which must outlive the call.
    bool parse(std::string_view document);
    void stop() override;
    /// As `stop`, with a fault of the caller's own: `message` becomes the error text, at the current
    /// position, and `code` the error code.
    void stop(std::string message, int32_t code = aborted);
    bool suspend() override;
    /// After a document in memory `stream` may be null.
    bool resume(IBStream* stream) override;
    bool reset(const char* encoding) override;
    bool setEncoding(const char* encoding) override;
    void getErrorText(FInterface* text) override;

    /// Where the event that the handler hears begins. Asking costs nothing beyond a look at the bytes since
    /// the last time that somebody asked, and nothing at all for the byte offset alone.
    XmlPosition position() const;
    int64_t byteOffset() const;
    /// Open elements, the one that begins or ends included.
    int32_t depth() const { return depth_; }

    bool hasFailed() const { return failed_; }
    /// Expat's, or what the caller stopped with; 0 when nothing went wrong.
    int32_t errorCode() const { return errorCode_; }
    /// What went wrong, without position; empty when nothing did.
    const std::string& errorMessage() const { return errorMessage_; }
    /// Where the error was found.
    XmlPosition errorPosition() const { return errorPosition_; }

private:
    struct Callbacks;

    bool isReady();
    bool feed(IBStream* stream);
    bool endBehindDocument(IBStream* stream);
    bool checkGrowth();
    bool fail(std::string message, int32_t code = refused);
    bool failFromExpat();
    bool failWithoutMemory();
    bool rejectCall(const char* reason);
    void installCallbacks();

    XML_ParserStruct* parser_; ///< Null when there was no memory for it.
    IXmlHandler* handler_;     ///< Never null.
    Limits limits_;
    int64_t bytesRead_ = 0;
    int64_t tokenStart_ = 0; ///< The last one that was known.
    bool isParsing_ = false;
    bool hasAll_ = false; ///< The document's last byte went to Expat.
    int32_t depth_ = 0;
    bool failed_ = false;
    XmlPosition errorPosition_;
    std::string errorMessage_;
    int32_t errorCode_ = 0;
};

} // namespace qorl
