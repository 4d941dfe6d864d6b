#pragma once

#include "foundation/text/StoredBytes.h"
#include "persistence/attributes/ReferenceBinder.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlParser.h"

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// Builds attributes and stored objects from the elements of a document: the reading half of `FXmlDocument`.
///
/// A stack of contexts says which elements are open, so that depth costs no stack. Operations throw
/// `std::bad_alloc`, but for `parse`, which tells of it by its error.
class XmlDocumentReader : public FXmlParser {
public:
    struct Target {
        FAttributes* objects = nullptr; ///< Take roots, if the document may hold some.
        FAttributes* data = nullptr;
        FAttributes* attributes = nullptr; ///< Takes what stands in the top element itself.
    };
    /// Of a selected root: whether objects in front of it are passed over.
    enum class Selection : uint8_t { skips, keepsAll };

    XmlDocumentReader(FBinaryStream& stream, std::string_view tag, const Target& target, uint32_t options);

    void select(std::string_view rootName, Selection selection);

    bool startTag(std::string_view name, const FXmlAttributes& attributes, bool isEmpty,
                  void* context) override;
    void endTag(std::string_view name, void* context) override;
    void text(const char* data, int32_t length, void* context) override;

    /// Whether the top element was there.
    bool isFound() const { return isFound_; }
    void bindReferences();
    /// Behind that: whether a reference may name an object that was passed over.
    bool lacksSkipped() const;

private:
    enum class Kind : uint8_t { top, body, dataRoot, object, list, value, string, item, binary };

    /// An element whose end tag is awaited.
    struct Context {
        Kind kind = Kind::value;
        FAttributes* body = nullptr; ///< Where entries go.
        CmObject* list = nullptr;
        Ref<CmObject> held = {}; ///< What the others point to may be stored nowhere else.
        uint64_t id = 0;
    };
    struct Opener;

    const Context& current() const { return contexts_.back(); }
    bool open(std::string_view name, const FXmlAttributes& attributes);
    bool openTop(std::string_view name);
    bool openSection(const FXmlAttributes& attributes);
    bool openRoot(const FXmlAttributes& attributes);
    bool openInteger(const FXmlAttributes& attributes);
    bool openFloat(const FXmlAttributes& attributes);
    bool openString(const FXmlAttributes& attributes);
    bool openMember(const FXmlAttributes& attributes);
    bool openBinary(const FXmlAttributes& attributes);
    bool openList(const FXmlAttributes& attributes);
    bool openItem(const FXmlAttributes& attributes);
    bool openObject(const FXmlAttributes& attributes);
    bool passOver();
    bool pushValue();
    bool pushBody(Kind kind, const Ref<FAttributes>& body, uint64_t id = 0);
    FStringIDAttribute* append(const FXmlAttributes& attributes);
    void close();
    void storeText(std::string_view name, std::string_view text, bool isWide);
    void addDigits(std::string_view text);
    void finishBinary();
    Ref<FXmlReference> addReference(uint64_t id);
    void store(Ref<CmObject> object, const FXmlAttributes& attributes);
    void endSelected(const Context& context);

    std::string_view tag_;
    Target target_;
    text::StoredEncoding fallback_;
    bool isFound_ = false;
    bool isEmpty_ = false; ///< Of the tag at hand.

    std::string_view rootName_;
    bool isSelecting_ = false;
    bool skipsObjects_ = false; ///< Until the selected one was read.
    bool hasSkipped_ = false;
    uint64_t selectedId_ = 0;

    std::vector<Context> contexts_;
    // One text or block is open at a time.
    std::string name_;
    std::string text_;
    bool isWide_ = false;
    Ref<FMemoryStream> block_;
    std::string bytes_;
    int highDigit_ = -1;

    ReferenceBinder binder_;
    std::vector<Ref<FXmlReference>> references_;
};

} // namespace qorl
