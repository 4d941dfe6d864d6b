#pragma once

#include <qorl/IBStream.h>

namespace qorl {

/// Writes XML to a stream, a tag or a text at a time, and indents it.
class IXmlWriter : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{8B0A1AA0-42FA-45FE-ADE2-6C2C35F6C289}");

    /// Holds the stream; null lets it go. What is open stays open.
    virtual void setStream(IBStream* stream) = 0;
    /// `attributes` holds name and value by turns, ended by null; null for none. A tag that isn't empty is
    /// open until its `endTag`.
    virtual bool startTag(const char* name, const char* const* attributes, bool isEmpty) = 0;
    /// Closes the innermost open tag. Nothing for a null `name`.
    virtual bool endTag(const char* name) = 0;
    virtual bool writeComment(const char* text) = 0;
    virtual bool writeText(const char* text) = 0;

protected:
    ~IXmlWriter() = default;
};

} // namespace qorl
