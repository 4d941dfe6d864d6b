#pragma once

#include "persistence/attributes/StoredObject.h"
#include "persistence/xml/XmlLine.h"

#include <deque>
#include <string>
#include <string_view>

namespace qorl {

class FBinaryStream;

/// Writes attributes and objects as the lines of a document: the writing half of `FXmlDocument`. An object
/// that is asked for its attributes may change the lists that it stands in. Operations throw
/// `std::bad_alloc`.
class XmlDocumentWriter {
public:
    explicit XmlDocumentWriter(FBinaryStream& stream) : stream_(stream) {}
    XmlDocumentWriter(const XmlDocumentWriter&) = delete;
    XmlDocumentWriter& operator=(const XmlDocumentWriter&) = delete;

    bool writeRoots(std::string_view tag, const FAttributes& objects, const FAttributes& data);
    bool writeAttributes(std::string_view tag, const FAttributes& attributes);

    /// Why it gave false.
    const std::string& reason() const { return reason_; }

private:
    using Escape = XmlLine::Escape;
    static constexpr int32_t blanksOfLevel = 3;
    /// What goes to the stream at once. A file system takes whole blocks, and few of them, in half the time.
    static constexpr size_t bytesOfPiece = 128 * 1024;

    struct Waiting {
        Ref<CmObject> object;
        uint64_t id;
    };

    bool begin(std::string_view tag);
    bool end(std::string_view tag);
    bool writeRoot(const FStringIDAttribute& entry);
    bool writeDataRoot(const FStringIDAttribute& entry);
    /// Queues an object that is written behind the others.
    void putOff(CmObject& object, uint64_t id);
    bool writeQueue();
    bool writeBody(const FAttributes& attributes, int32_t level);
    bool writeEntry(const FStringIDAttribute& entry, int32_t level);
    bool writeString(std::string_view key, const ConstString& text, int32_t level);
    bool writeObject(const Ref<CmObject>& object, std::string_view key, int32_t level);
    bool writeBinary(std::string_view key, std::string_view bytes, int32_t level);
    bool writeList(CmObject* list, std::string_view key, int32_t level);
    bool writeTextItem(const ConstString& text, int32_t level);
    bool writeListed(CmObject* item, int32_t level);
    bool writeInstance(CmObject* object, std::string_view key, int32_t level);
    void putClassName(std::string_view name);
    bool writeFull(CmObject* object, uint64_t id, const std::string_view* key, int32_t level);
    bool isRootName(std::string_view key);
    bool take(CmObject* object, std::string_view key, StoredObject& stored);
    bool enter(CmObject*& object, uint64_t& id);

    /// The line of an element, up to its name.
    template <size_t size>
    XmlLine& open(const char (&element)[size], std::string_view key, int32_t level) {
        return indent(level).put('<').put(element).put(" name=\"").putEscaped(key, Escape::entities).put('"');
    }
    XmlLine& indent(int32_t level) { return lines_.fill(' ', level * blanksOfLevel); }
    template <size_t size>
    bool finish(const char (&text)[size]) {
        lines_.put(text);
        return finish();
    }
    bool finish() {
        lines_.put(XmlLine::lineEnd);
        return (lines_.size() < bytesOfPiece && !lines_.isBroken()) || handOver(bytesOfPiece);
    }
    bool handOver(size_t unit) { return (!lines_.isBroken() && lines_.writeTo(stream_, unit)) || failLine(); }
    bool closeElement(std::string_view element, int32_t level);
    bool fail(std::string reason);
    bool failLine();

    FBinaryStream& stream_;
    XmlLine lines_{text::Surrogates::kept};
    std::string reason_;
    WrittenObjects written_;
    std::deque<Waiting> queue_;
};

} // namespace qorl
