#pragma once

#include "persistence/attributes/FAttributes.h"
#include "persistence/xml/XmlLine.h"

#include <deque>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qorl {

class FBinaryStream;

/// Writes attributes and objects as the lines of a document: the writing half of `FXmlDocument`. Operations
/// throw `std::bad_alloc`.
class XmlDocumentWriter {
public:
    explicit XmlDocumentWriter(FBinaryStream& stream) : stream_(stream) {}
    XmlDocumentWriter(const XmlDocumentWriter&) = delete;
    XmlDocumentWriter& operator=(const XmlDocumentWriter&) = delete;

    bool writeRoots(std::string_view tag, const FAttributes& objects, const FAttributes& data);
    bool writeAttributes(std::string_view tag, const FAttributes& attributes);

    /// Why it gave false.
    const char* reason() const { return reason_; }

private:
    using Escape = XmlLine::Escape;
    static constexpr int32_t blanksOfLevel = 3;

    bool begin(std::string_view tag);
    bool end(std::string_view tag);
    bool writeRoot(const FStringIDAttribute& entry);
    bool writeDataRoot(const FStringIDAttribute& entry);
    bool writeQueue();
    bool writeBody(const FAttributes& attributes, int32_t level);
    bool writeEntry(const FStringIDAttribute& entry, int32_t level);
    bool writeString(std::string_view key, const ConstString& text, int32_t level);
    bool writeObject(CmObject* object, std::string_view key, int32_t level);
    bool writeBinary(std::string_view key, std::string_view bytes, int32_t level);
    bool writeList(CmObject* list, std::string_view key, int32_t level);
    bool writeTextItem(const ConstString& text, int32_t level);
    bool writeListed(CmObject* item, int32_t level);
    bool writeInstance(CmObject* object, std::string_view key, int32_t level);
    void putClassName(std::string_view name);
    bool writeFull(CmObject* object, const std::string_view* key, int32_t level);
    bool enter(CmObject* object, uint64_t& id);

    /// The line of an element, up to its name.
    XmlLine& open(std::string_view element, std::string_view key, int32_t level) {
        return indent(level).put('<').put(element).put(" name=\"").putEscaped(key, Escape::entities).put('"');
    }
    XmlLine& indent(int32_t level) { return line_.fill(' ', level * blanksOfLevel); }
    bool finish(std::string_view text) {
        return line_.put(text).put(XmlLine::lineEnd).writeTo(stream_) || fail("the stream does not take it");
    }
    bool closeElement(std::string_view element, int32_t level);
    bool fail(const char* reason);

    FBinaryStream& stream_;
    XmlLine line_;
    const char* reason_ = "";
    std::unordered_map<const CmObject*, uint64_t> known_;
    std::unordered_set<uint64_t> ids_;
    // Until the end, since an address that is free again would name another object.
    std::vector<Ref<CmObject>> held_;
    std::deque<Ref<CmObject>> queue_;
};

} // namespace qorl
