#pragma once

#include "foundation/text/JsonWriter.h"
#include "persistence/attributes/FAttributes.h"

#include <map>
#include <set>
#include <vector>

namespace qorl::tool {

/// The longest file of stored attributes or objects that is read.
constexpr int64_t longestDocument = 256 << 20;

/// Upper-case digits, two a byte.
std::string hexOf(std::string_view bytes);

/// The name that an object is stored under.
const char* storedNameOf(const CmObject& object);

/// Writes attributes and objects as canonical JSON, in their order: of each entry its key, its kind, and what
/// that kind has. An object stands in full where it is met first, and is a reference from then on; its number
/// is that of its document, a live object's its place in the row.
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
    void beginStored(CmObject* object);
    void beginLive(CmObject* object);
    void beginReference(int64_t id);
    void beginEntry(const FStringIDAttribute& entry);
    bool beginNextItem();
    void finish(size_t outer);

    JsonWriter& json_;
    std::vector<Level> levels_;
    std::set<uint64_t> stored_;
    /// Held, so that no other object comes at the address of one.
    std::vector<Ref<CmObject>> held_;
    std::map<const CmObject*, int64_t> live_;
};

} // namespace qorl::tool
