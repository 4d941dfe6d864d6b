#pragma once

#include "foundation/text/JsonWriter.h"
#include "persistence/attributes/StoredObject.h"

#include <unordered_map>
#include <vector>

namespace qorl::tool {

/// The longest file of stored attributes or objects that is read.
constexpr int64_t longestDocument = 256 << 20;

/// Upper-case digits, two a byte.
std::string hexOf(std::string_view bytes);

/// Writes attributes and objects as canonical JSON, in their order: of each entry its key, its kind, and what
/// that kind has. An object stands in full where it is met first, and is a reference from then on. Its number
/// is that of its document, unless another one has it already; a live object gets the next one that is free.
///
/// Nesting takes no stack, so that any depth that can be read can be written.
class AttributesJson {
public:
    explicit AttributesJson(JsonWriter& json) : json_(json) {}

    // Each adds its members to the JSON object that is open, and closes it.
    void writeAttributes(const Ref<FAttributes>& attributes);
    void writeObject(CmObject* object);

private:
    /// Attributes, or a list of those or of objects: what has items that have items again. Its end closes its
    /// array and the object around that.
    struct Level {
        Ref<CmObject> holder;
        size_t next = 0;
    };

    void begin(CmObject* object);
    void beginAttributes(const Ref<FAttributes>& attributes);
    bool beginValues(CmObject* object);
    void beginLevel(CmObject* holder, const char* itemKind);
    void beginNested(FAttributes& attributes);
    void beginInstance(CmObject* item);
    void beginReference(uint64_t number);
    void beginEntry(const FStringIDAttribute& entry);
    bool beginNextItem();
    void finish(size_t outer);

    JsonWriter& json_;
    std::vector<Level> levels_;
    WrittenObjects numbers_;
    std::unordered_map<uint64_t, Ref<CmObject>> missing_;
};

} // namespace qorl::tool
