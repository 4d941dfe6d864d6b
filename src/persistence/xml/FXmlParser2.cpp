#include "persistence/xml/FXmlParser2.h"

#include <qorl/IStringExchange.h>
#include <qorl/Ref.h>

#include <algorithm>
#include <cstdio>
#include <expat.h>

namespace qorl {

QORL_REGISTER_ID(FXmlParser2, InterfaceId::fromText("{F36C8ED3-9653-4BCC-B627-E1B84951078F}"))

namespace {

constexpr int parsedPiece = 32768;
constexpr int finished = 36;
constexpr int suspendedInsideEntity = 37;
static_assert(FXmlParser2::aborted == XML_ERROR_ABORTED);

int64_t sizeOf(IBStream* stream) {
    Ref<ISizeableStream> sizeable;
    int64_t size = 0;
    if (stream->queryInterface(ISizeableStream::iid, sizeable.out()) == Result::ok)
        sizeable->getStreamSize(size);
    return size;
}

std::string tooLarge(int64_t limit) {
    return "the document is larger than " + std::to_string(limit) + " bytes";
}

} // namespace

/// What Expat calls. After a stop it may go on for a few calls more; those go nowhere.
struct FXmlParser2::Callbacks {
    static FXmlParser2* self(void* user) { return static_cast<FXmlParser2*>(user); }

    static void XMLCALL start(void* user, const char* name, const char** attributes) {
        FXmlParser2* parser = self(user);
        if (parser->failed_)
            return;
        if (++parser->depth_ > parser->limits_.depth) {
            parser->stop("elements are nested deeper than " + std::to_string(parser->limits_.depth));
            return;
        }
        if (parser->handler_)
            parser->handler_->startElement(parser, name, attributes);
    }

    static void XMLCALL end(void* user, const char* name) {
        FXmlParser2* parser = self(user);
        if (parser->failed_)
            return;
        if (parser->handler_)
            parser->handler_->endElement(parser, name);
        --parser->depth_;
    }

    static void XMLCALL text(void* user, const char* characters, int length) {
        FXmlParser2* parser = self(user);
        if (!parser->failed_ && parser->handler_)
            parser->handler_->characterData(parser, characters, length);
    }

    static void XMLCALL comment(void* user, const char* characters) {
        FXmlParser2* parser = self(user);
        if (!parser->failed_ && parser->handler_)
            parser->handler_->comment(parser, characters);
    }
};

FXmlParser2::FXmlParser2() : parser_(XML_ParserCreate(nullptr)) {
    installCallbacks();
}

FXmlParser2::~FXmlParser2() {
    if (parser_)
        XML_ParserFree(parser_);
}

void FXmlParser2::installCallbacks() {
    if (!parser_)
        return;
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, Callbacks::start, Callbacks::end);
    XML_SetCharacterDataHandler(parser_, Callbacks::text);
    XML_SetCommentHandler(parser_, Callbacks::comment);
}

bool FXmlParser2::parse(IBStream* stream) {
    if (!parser_ || !stream || failed_)
        return false;
    if (sizeOf(stream) > limits_.documentBytes)
        return fail(tooLarge(limits_.documentBytes));
    return feed(stream);
}

bool FXmlParser2::feed(IBStream* stream) {
    while (true) {
        void* buffer = XML_GetBuffer(parser_, parsedPiece);
        if (!buffer)
            return failFromExpat();
        int64_t got = 0;
        stream->read(buffer, parsedPiece, &got);
        got = std::max<int64_t>(got, 0);
        bytesRead_ += got;
        if (bytesRead_ > limits_.documentBytes)
            return fail(tooLarge(limits_.documentBytes));
        const XML_Status status = XML_ParseBuffer(parser_, static_cast<int>(got), got == 0);
        if (status == XML_STATUS_SUSPENDED)
            return true;
        if (status == XML_STATUS_ERROR)
            return endBehindDocument(stream) || failFromExpat();
        if (got == 0)
            return true;
        if (!checkGrowth())
            return false;
    }
}

/// A tag that never ends would be looked at again with each piece, longer every time.
bool FXmlParser2::checkGrowth() {
    if (bytesRead_ - std::max<int64_t>(byteOffset(), 0) <= limits_.tokenBytes)
        return true;
    return fail("a tag or text is longer than " + std::to_string(limits_.tokenBytes) + " bytes");
}

/// True when the document is complete and something else follows; the stream then stands in front of that.
bool FXmlParser2::endBehindDocument(IBStream* stream) {
    if (failed_ || XML_GetErrorCode(parser_) != XML_ERROR_JUNK_AFTER_DOC_ELEMENT)
        return false;
    stream->seek(byteOffset() - bytesRead_, IBStream::fromHere, nullptr);
    return true;
}

bool FXmlParser2::parse(std::string_view document) {
    if (!parser_ || failed_)
        return false;
    if (static_cast<int64_t>(document.size()) > limits_.documentBytes)
        return fail(tooLarge(limits_.documentBytes));
    bytesRead_ = static_cast<int64_t>(document.size());
    const XML_Status status =
        XML_Parse(parser_, document.data(), static_cast<int>(document.size()), XML_TRUE);
    return status != XML_STATUS_ERROR || failFromExpat();
}

void FXmlParser2::stop() {
    if (parser_)
        XML_StopParser(parser_, XML_FALSE);
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

bool FXmlParser2::resume(IBStream* stream) {
    if (!parser_ || !stream || failed_)
        return false;
    const XML_Status status = XML_ResumeParser(parser_);
    if (status == XML_STATUS_SUSPENDED)
        return true;
    if (status == XML_STATUS_OK)
        return feed(stream);
    return endBehindDocument(stream) || failFromExpat();
}

bool FXmlParser2::reset(const char* encoding) {
    if (!parser_ || !XML_ParserReset(parser_, encoding))
        return false;
    installCallbacks();
    bytesRead_ = 0;
    depth_ = 0;
    failed_ = false;
    errorCode_ = 0;
    errorPosition_ = {};
    errorMessage_.clear();
    return true;
}

bool FXmlParser2::setEncoding(const char* encoding) {
    return parser_ && XML_SetEncoding(parser_, encoding) == XML_STATUS_OK;
}

XmlPosition FXmlParser2::position() const {
    if (!parser_)
        return {};
    return {static_cast<int64_t>(XML_GetCurrentLineNumber(parser_)),
            static_cast<int64_t>(XML_GetCurrentColumnNumber(parser_)) + 1,
            std::max<int64_t>(byteOffset(), 0)};
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

bool FXmlParser2::failFromExpat() {
    if (failed_)
        return false;
    const XML_Error code = XML_GetErrorCode(parser_);
    const char* text = XML_ErrorString(code);
    std::string message = text ? text : "out of memory";
    int offset = 0;
    int size = 0;
    const char* context = XML_GetInputContext(parser_, &offset, &size);
    const auto byte = static_cast<uint8_t>(context && offset >= 0 && offset < size ? context[offset] : 0);
    if (code == XML_ERROR_INVALID_TOKEN && byte >= 0x80) {
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

void FXmlParser2::getErrorText(FInterface* text) {
    Ref<IStringSink> sink;
    if (!text || text->queryInterface(IStringSink::iid, sink.out()) != Result::ok)
        return;
    const int64_t line = errorPosition_.line - (errorCode_ == aborted ? 1 : 0);
    sink->set8(("Xml Error: " + errorMessage_ + " \r\nLine: " + std::to_string(line)).c_str());
}

} // namespace qorl
