#pragma once

#include <qorl/IBStream.h>

namespace qorl {

class IXmlParser;

/// Hears what a parser finds, in the order of the document. Texts are UTF-8 and belong to the parser; they
/// are good during the call only.
class IXmlHandler {
public:
    /// `attributes` holds name and value by turns, ended by null.
    virtual void startElement(IXmlParser* parser, const char* name, const char** attributes) = 0;
    virtual void endElement(IXmlParser* parser, const char* name) = 0;
    /// A text may come in several pieces; `text` is not terminated.
    virtual void characterData(IXmlParser* parser, const char* text, int32_t length) = 0;
    virtual void comment(IXmlParser* parser, const char* text) = 0;

protected:
    ~IXmlHandler() = default;
};

/// A parser of XML in a stream. Without memory its operations give false, and `reset` makes it ready again.
class IXmlParser : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{7D0C94F1-3E5A-4B62-8A17-90C2E4D6B835}");

    /// Not owned; null for none.
    virtual void setHandler(IXmlHandler* handler) = 0;
    /// Reads `stream` to its end, or to the byte behind the document when something follows it. False on an
    /// error; true also when the parser was suspended.
    virtual bool parse(IBStream* stream) = 0;
    /// From within the handler: no further calls; `parse` gives false.
    virtual void stop() = 0;
    /// From within the handler: `parse` returns true and `resume` goes on. False when the document has ended.
    virtual bool suspend() = 0;
    /// Goes on to the end of `stream` as `parse` does, with its answers. False when nothing was suspended.
    virtual bool resume(IBStream* stream) = 0;
    /// Makes the parser ready for another document. `encoding` overrides what that says of itself; null for
    /// none.
    virtual bool reset(const char* encoding) = 0;
    /// Only before the first `parse`.
    virtual bool setEncoding(const char* encoding) = 0;
    /// Fills a text object that answers `IStringSink`: what went wrong and in which line. Leaves it as it is
    /// without memory.
    virtual void getErrorText(FInterface* text) = 0;
};

} // namespace qorl
