#include "persistence/xml/FXmlParser2.h"

#include "foundation/text/TextConversion.h"

#include <qorl/IStringExchange.h>
#include <qorl/Ref.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <expat.h>
#include <new>

namespace qorl {

QORL_REGISTER_ID(FXmlParser2, InterfaceId::fromText("{F36C8ED3-9653-4BCC-B627-E1B84951078F}"))

namespace {

constexpr int parsedPiece = 32768;
constexpr int finished = 36;
constexpr int suspendedInsideEntity = 37;
static_assert(FXmlParser2::aborted == XML_ERROR_ABORTED);
static_assert(FXmlParser2::noMemory == XML_ERROR_NO_MEMORY);
// Short enough to be kept in a string without asking for memory.
constexpr const char* outOfMemory = "out of memory";

/// Expat takes its memory from where the library does.
XML_Parser createParser() {
    constexpr XML_Memory_Handling_Suite memory{std::malloc, std::realloc, std::free};
    return XML_ParserCreate_MM(nullptr, &memory, nullptr);
}

/// While Expat runs, which can't be entered twice.
class ParsingScope {
public:
    explicit ParsingScope(bool& isParsing) : isParsing_(isParsing) { isParsing_ = true; }
    ParsingScope(const ParsingScope&) = delete;
    ~ParsingScope() { isParsing_ = false; }

private:
    bool& isParsing_;
};

/// Whether a byte of the context that Expat shows begins a character, be it one that can't stand there.
bool isCharacter(std::string_view context) {
    const auto lead = static_cast<uint8_t>(context.front());
    const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    return length <= context.size() && text::wideLength(context.substr(0, length)) != text::invalid;
}

/// Where there is no handler, so that no event has to ask for one.
class Nobody : public IXmlHandler {
public:
    void startElement(IXmlParser*, const char*, const char**) override {}
    void endElement(IXmlParser*, const char*) override {}
    void characterData(IXmlParser*, const char*, int32_t) override {}
    void comment(IXmlParser*, const char*) override {}
};
constinit Nobody nobody;

std::string tooLarge(int64_t limit) {
    return "the document is larger than " + std::to_string(limit) + " bytes";
}

} // namespace

/// What Expat calls. No exception may pass through its frames, so each of them ends a lack of memory.
struct FXmlParser2::Callbacks {
    template <typename Event>
    static void tell(void* user, Event event) {
        auto* parser = static_cast<FXmlParser2*>(user);
        try {
            event(*parser);
        } catch (const std::bad_alloc&) {
            parser->failWithoutMemory();
            parser->stop();
        }
    }

    static void XMLCALL start(void* user, const char* name, const char** attributes) {
        tell(user, [=](FXmlParser2& parser) {
            if (++parser.depth_ > parser.limits_.depth)
                parser.stop("elements are nested deeper than " + std::to_string(parser.limits_.depth),
                            refused);
            else
                parser.handler_->startElement(&parser, name, attributes);
        });
    }

    static void XMLCALL end(void* user, const char* name) {
        tell(user, [=](FXmlParser2& parser) {
            parser.handler_->endElement(&parser, name);
            --parser.depth_;
        });
    }

    static void XMLCALL text(void* user, const char* characters, int length) {
        tell(user, [=](FXmlParser2& parser) { parser.handler_->characterData(&parser, characters, length); });
    }

    static void XMLCALL comment(void* user, const char* characters) {
        tell(user, [=](FXmlParser2& parser) { parser.handler_->comment(&parser, characters); });
    }
};

FXmlParser2::FXmlParser2() : parser_(createParser()), handler_(&nobody) {
    installCallbacks();
}

FXmlParser2::~FXmlParser2() {
    if (parser_)
        XML_ParserFree(parser_);
}

void FXmlParser2::setHandler(IXmlHandler* handler) {
    handler_ = handler ? handler : &nobody;
}

void FXmlParser2::installCallbacks() {
    if (!parser_)
        return;
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, Callbacks::start, Callbacks::end);
    XML_SetCharacterDataHandler(parser_, Callbacks::text);
    XML_SetCommentHandler(parser_, Callbacks::comment);
}

/// Whether a document may be read now. What an earlier wrong call has left is forgotten.
bool FXmlParser2::isReady() {
    if (!parser_)
        return failWithoutMemory();
    if (failed_)
        return false;
    if (isParsing_)
        return rejectCall("the parser is in the midst of a document");
    errorMessage_.clear();
    errorCode_ = 0;
    errorPosition_ = {};
    return true;
}

bool FXmlParser2::parse(IBStream* stream) try {
    if (!stream || !isReady())
        return false;
    const ParsingScope scope(isParsing_);
    return feed(stream);
} catch (const std::bad_alloc&) {
    return failWithoutMemory();
}

bool FXmlParser2::feed(IBStream* stream) {
    while (true) {
        void* buffer = XML_GetBuffer(parser_, parsedPiece);
        if (!buffer)
            return failFromExpat();
        int64_t got = 0;
        const Result result = stream->read(buffer, parsedPiece, &got);
        if (got < 0 || got > parsedPiece || (got == 0 && result != Result::ok && result != Result::no))
            return fail("the stream can't be read", refused);
        bytesRead_ += got;
        hasAll_ = got == 0;
        const XML_Status status = XML_ParseBuffer(parser_, static_cast<int>(got), hasAll_);
        if (status == XML_STATUS_SUSPENDED)
            return true;
        if (status == XML_STATUS_ERROR)
            return endBehindDocument(stream) || failFromExpat();
        if (hasAll_)
            return true;
        if (!checkGrowth())
            return false;
    }
}

/// Of a document that has not ended. A tag that never does would be looked at again with each piece, longer
/// every time.
bool FXmlParser2::checkGrowth() {
    if (bytesRead_ > limits_.documentBytes)
        return fail(tooLarge(limits_.documentBytes));
    // Expat knows no place while it waits for more of a token.
    tokenStart_ = std::max(tokenStart_, byteOffset());
    if (bytesRead_ - tokenStart_ <= limits_.tokenBytes)
        return true;
    return fail("a tag or text is longer than " + std::to_string(limits_.tokenBytes) + " bytes");
}

/// True when the document is complete and something else follows; the stream then stands in front of that.
bool FXmlParser2::endBehindDocument(IBStream* stream) {
    if (failed_ || XML_GetErrorCode(parser_) != XML_ERROR_JUNK_AFTER_DOC_ELEMENT)
        return false;
    const int64_t way = byteOffset() - bytesRead_;
    int64_t here = -1;
    int64_t there = 0;
    const bool tells = stream->tell(&here) == Result::ok && here >= 0;
    // One that only runs forward stays where it is, and calls that its place.
    if (stream->seek(way, IBStream::fromHere, &there) == Result::ok && (!tells || there == here + way))
        return true;
    return fail("something follows the document, and the stream can't go back in front of it");
}

bool FXmlParser2::parse(std::string_view document) try {
    constexpr size_t largestPiece = size_t{1} << 30;
    if (!isReady())
        return false;
    if (static_cast<int64_t>(document.size()) > limits_.documentBytes)
        return fail(tooLarge(limits_.documentBytes));
    const ParsingScope scope(isParsing_);
    while (document.size() > largestPiece) {
        // Expat takes no more at once than an int tells.
        const std::string_view piece = document.substr(0, largestPiece);
        document.remove_prefix(largestPiece);
        const XML_Status status = XML_Parse(parser_, piece.data(), static_cast<int>(piece.size()), XML_FALSE);
        if (status == XML_STATUS_SUSPENDED)
            return fail("a document above 1 GB must be in a stream to be suspended");
        if (status == XML_STATUS_ERROR)
            return failFromExpat();
        bytesRead_ += static_cast<int64_t>(largestPiece);
    }
    if (XML_Parse(parser_, document.data(), static_cast<int>(document.size()), XML_TRUE) == XML_STATUS_ERROR)
        return failFromExpat();
    bytesRead_ += static_cast<int64_t>(document.size());
    hasAll_ = true;
    return true;
} catch (const std::bad_alloc&) {
    return failWithoutMemory();
}

void FXmlParser2::stop() {
    if (!parser_ || XML_StopParser(parser_, XML_FALSE) != XML_STATUS_OK)
        return;
    // Expat still ends the element that has just begun, if it is an empty one.
    XML_SetElementHandler(parser_, nullptr, nullptr);
    XML_SetCharacterDataHandler(parser_, nullptr);
    XML_SetCommentHandler(parser_, nullptr);
}

void FXmlParser2::stop(std::string message, int32_t code) {
    fail(std::move(message), code);
    stop();
}

bool FXmlParser2::suspend() {
    if (!parser_ || XML_StopParser(parser_, XML_TRUE) != XML_STATUS_ERROR)
        return parser_;
    const int code = XML_GetErrorCode(parser_);
    return code != finished && code != suspendedInsideEntity;
}

bool FXmlParser2::resume(IBStream* stream) try {
    if (!isReady())
        return false;
    if (!stream && !hasAll_)
        return rejectCall("the rest of the document is in a stream, which is missing");
    const ParsingScope scope(isParsing_);
    const XML_Status status = XML_ResumeParser(parser_);
    if (status == XML_STATUS_SUSPENDED)
        return true;
    if (status == XML_STATUS_OK)
        return hasAll_ || feed(stream);
    return (stream && endBehindDocument(stream)) || failFromExpat();
} catch (const std::bad_alloc&) {
    return failWithoutMemory();
}

bool FXmlParser2::reset(const char* encoding) {
    if (isParsing_)
        return rejectCall("the parser is in the midst of a document");
    if (parser_)
        XML_ParserReset(parser_, nullptr);
    else
        parser_ = createParser();
    installCallbacks();
    bytesRead_ = 0;
    tokenStart_ = 0;
    hasAll_ = false;
    depth_ = 0;
    failed_ = false;
    errorCode_ = 0;
    errorPosition_ = {};
    errorMessage_.clear();
    // By a call of its own: with the reset Expat would not tell that it had no memory for the name.
    return parser_ && (!encoding || setEncoding(encoding)) ? true : failWithoutMemory();
}

bool FXmlParser2::setEncoding(const char* encoding) {
    return parser_ && XML_SetEncoding(parser_, encoding) == XML_STATUS_OK;
}

XmlPosition FXmlParser2::position() const {
    if (!parser_)
        return {};
    return {static_cast<int64_t>(XML_GetCurrentLineNumber(parser_)),
            static_cast<int64_t>(XML_GetCurrentColumnNumber(parser_)) + 1,
            std::max(byteOffset(), tokenStart_)};
}

int64_t FXmlParser2::byteOffset() const {
    return parser_ ? XML_GetCurrentByteIndex(parser_) : 0;
}

/// Keeps the first error and where it was found.
bool FXmlParser2::fail(std::string message, int32_t code) {
    if (!failed_) {
        failed_ = true;
        errorMessage_ = std::move(message);
        errorPosition_ = position();
        errorCode_ = code;
    }
    return false;
}

/// Asks for no memory itself.
bool FXmlParser2::failWithoutMemory() {
    return fail(outOfMemory, noMemory);
}

/// A call at a wrong time: nothing is wrong with the document, which is read on also when there is no memory
/// for the reason.
bool FXmlParser2::rejectCall(const char* reason) {
    if (failed_)
        return false;
    errorCode_ = refused;
    try {
        errorMessage_.assign(reason);
    } catch (const std::bad_alloc&) {
        errorMessage_.assign(outOfMemory);
    }
    return false;
}

bool FXmlParser2::failFromExpat() {
    if (failed_)
        return false;
    const XML_Error code = XML_GetErrorCode(parser_);
    const char* text = XML_ErrorString(code);
    if (code == XML_ERROR_SUSPENDED || code == XML_ERROR_NOT_SUSPENDED || code == XML_ERROR_FINISHED)
        return rejectCall(text);
    std::string message = text ? text : outOfMemory;
    int offset = 0;
    int size = 0;
    const char* context = XML_GetInputContext(parser_, &offset, &size);
    const auto byte = static_cast<uint8_t>(context && offset >= 0 && offset < size ? context[offset] : 0);
    if (code == XML_ERROR_INVALID_TOKEN && byte >= 0x80 &&
        !isCharacter({context + offset, static_cast<size_t>(size - offset)})) {
        char hint[128];
        std::snprintf(hint, sizeof hint,
                      "byte 0x%02X is no valid UTF-8: save the document as UTF-8, or declare its encoding",
                      byte);
        message = hint;
    } else if (code == XML_ERROR_UNKNOWN_ENCODING) {
        message += ": save the document as UTF-8";
    }
    return fail(std::move(message), code);
}

void FXmlParser2::getErrorText(FInterface* text) try {
    Ref<IStringSink> sink;
    if (!text || text->queryInterface(IStringSink::iid, sink.out()) != Result::ok)
        return;
    const int64_t line = errorPosition_.line - (errorCode_ == aborted ? 1 : 0);
    sink->set8(("Xml Error: " + errorMessage_ + " \r\nLine: " + std::to_string(line)).c_str());
} catch (const std::bad_alloc&) {
    // The text stays as it is.
}

} // namespace qorl
