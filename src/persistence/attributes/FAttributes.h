#pragma once

#include "persistence/attributes/AttributesFace.h"
#include "persistence/attributes/FAttributeItems.h"

#include <qorl/Ref.h>

#include <vector>

namespace qorl {

class FAttrList;
class FBinaryStream;
class FSubList;

/// The neutral form of an object's state: named values in the order in which they were set.
///
/// An object is made persistent by turning its state into attributes (`storeAttributes`) and back
/// (`restoreAttributes`); whether those go to a stream, to XML or to another module is no concern of the
/// object. The list is made on first use, so that an empty one is 32 bytes. A missing key reads as 0, an
/// empty text or null. Attributes may be nested to any depth; nothing here takes stack for each level.
///
/// What finds no memory throws `std::bad_alloc`: so it ends the whole save or load that it is part of, which
/// catches it and tells (`writeAttributes`, `IAttributes`, `detachObjects`, `clone`). A `storeAttributes`
/// lets it pass, since false would only leave its own object out. Threading: one thread at a time.
class FAttributes : public CmObject, public AttributesFace {
    QORL_CLASS(FAttributes, CmObject)
    QORL_CLONE(FAttributes)
    QORL_RECORD(FAttributes)

public:
    using Hold = FAttributeValue::Hold;
    /// What becomes of the values that are there already when others are loaded under their keys.
    enum class OldValues : uint8_t { replaced, kept, besideNew };
    /// Whether live objects stay in attributes that are saved.
    enum class LiveObjects : uint8_t { stay, detached };

    FAttributes() = default;
    /// Copies the entries and what is nested in them; live and stored objects are shared.
    FAttributes(const FAttributes& other);
    FAttributes& operator=(const FAttributes& other);
    ~FAttributes() override;

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return CmObject::addRef(); }
    uint32_t release() override { return CmObject::release(); }

    /// Each replaces the value of `key`, or appends a new entry. A null text or object removes the entry.
    void setInteger(std::string_view key, int64_t value) { entry(key).setInteger(value); }
    void setFloat(std::string_view key, double value) { entry(key).setFloat(value); }
    void setText8(std::string_view key, const char* text);
    void setText16(std::string_view key, const char16_t* text);
    /// Keeps the width of `text`; an empty text is a value.
    void setString(std::string_view key, const ConstString& text) { entry(key).setString(text); }
    void setObject(std::string_view key, CmObject* object, Hold hold);
    /// With `copy` the bytes are copied; else they must outlive the attributes. Null has no bytes.
    void setBinary(std::string_view key, const void* data, int64_t size, bool copy);

    int64_t getInteger(std::string_view key, int64_t standard = 0) const;
    double getFloat(std::string_view key, double standard = 0) const;
    /// Null without such a text. Good until the entry changes.
    const char* getText8(std::string_view key) const;
    const char16_t* getText16(std::string_view key) const;
    /// A view in the stored width, good until the entry changes.
    ConstString getString(std::string_view key) const;
    /// An object entry, of `className` when that is given; a stored object is created now.
    Ref<CmObject> getObject(std::string_view key, const char* className = nullptr) const;
    /// The same for a nested list; null for any other value.
    FAttributes* getAttributes(std::string_view key) const;
    /// Copies `size` bytes; false when fewer are stored.
    bool getBinaryData(std::string_view key, void* buffer, int64_t size) const;
    /// Null without a binary value.
    const void* getBinaryAddress(std::string_view key) const;
    int64_t getBinarySize(std::string_view key) const;

    bool contains(std::string_view key) const { return find(key) != nullptr; }
    bool remove(std::string_view key);
    /// The entry at a place that there is.
    void removeAt(int32_t index);
    void removeAll();
    int32_t count() const { return items_ ? items_->count() : 0; }
    bool isEmpty() const { return count() == 0; }

    /// The entry of `key` or at a place; null when there is none. Good until the list changes.
    FStringIDAttribute* find(std::string_view key) const { return items_ ? items_->find(key) : nullptr; }
    FStringIDAttribute* at(int32_t index) const {
        return index >= 0 && index < count() ? &items_->at(static_cast<size_t>(index)) : nullptr;
    }
    /// The entry of `key`, made when it is missing.
    FStringIDAttribute& entry(std::string_view key) { return list().entry(key); }
    /// A new entry without a search: for loaders, which then stay linear.
    FStringIDAttribute& append(std::string_view key) { return list().append(key); }

    /// Queues: append to the list of `key`, which is made when it is missing. False when `key` holds
    /// something else.
    bool appendInteger(std::string_view key, int64_t value);
    bool appendFloat(std::string_view key, double value);
    bool appendText8(std::string_view key, const char* text) { return appendString(key, ConstString(text)); }
    bool appendText16(std::string_view key, const char16_t* text) {
        return appendString(key, ConstString(text));
    }
    bool appendString(std::string_view key, const ConstString& text);
    /// A list owns its objects, or it only watches them: then they must outlive the attributes.
    bool appendObject(std::string_view key, Ref<CmObject> object);
    bool appendWatched(std::string_view key, CmObject* object);
    bool appendAttributes(std::string_view key, Ref<FAttributes> attributes);

    /// The next item of the list of `key`; objects that can't be given, as those of an unknown or another
    /// class, are passed over. At the end they give nothing (false, null), and the list starts over.
    bool nextInteger(std::string_view key, int64_t& value);
    bool nextFloat(std::string_view key, double& value);
    bool nextText(std::string_view key, ConstString& text);
    Ref<CmObject> nextObject(std::string_view key, const char* className = nullptr);
    FAttributes* nextAttributes(std::string_view key);
    /// The stored attributes of the next object that was not created yet, of `className` when that is given.
    FAttributes* nextXmlAttributes(std::string_view key, const char* className = nullptr);
    int32_t count(std::string_view key) const;
    void resetCursor(std::string_view key);
    /// Goes down through nested attributes.
    void resetAllCursors();

    /// Asks `object` for its attributes and stores them under `key`; false, and nothing stored, if it has
    /// none.
    bool saveObject(std::string_view key, CmObject* object);
    bool loadObject(std::string_view key, CmObject* object) const;
    /// The same in a list of attributes, freed of live objects first where they are to be detached.
    bool appendSavedObject(std::string_view key, CmObject* object, LiveObjects live = LiveObjects::stay);
    bool loadNextObject(std::string_view key, CmObject* object);

    /// The values that objects keep beside their own under keys of others, as a nested list under `key`
    /// ("Additional Attributes" when it is empty). Numbers, texts and objects go across; entries with the
    /// first entry flag, and foreign ones, are left out. An empty list is filled without a search, as is one
    /// whose old values stand beside the new ones; `kept` ones stay in their place. A stored object becomes
    /// the live one; one whose class is unknown stays stored. False, and nothing loaded, without such a
    /// nested list.
    void saveExtraAttributes(const FAttributes& values, std::string_view key = {});
    bool loadExtraAttributes(FAttributes& values, std::string_view key = {},
                             OldValues oldValues = OldValues::replaced) const;
    /// The same for keys that are numbers: one is stored as the text of its four bytes, low first, up to a
    /// zero byte, when that is ASCII, else as "IntID:NUMBER".
    void saveIntKeyAttributes(const std::vector<FIntIDAttribute>& values, std::string_view key = {});
    bool loadIntKeyAttributes(std::vector<FIntIDAttribute>& values, std::string_view key = {},
                              OldValues oldValues = OldValues::replaced) const;

    /// Replaces live objects by stored ones and foreign memory by copies, in nested attributes too. An object
    /// that has no attribute form is left out. False, and nothing changed, when memory ran out.
    bool detachObjects();

    /// Search nested attributes depth first, in order. `path` is a key, or two keys `a|b`: from the first
    /// entry `a` on, of whatever kind, `b` is searched. Texts stay owned by their entry.
    FAttributes* findAttributes(std::string_view path) const;
    bool findValue(std::string_view path, FAttributeVariant& value) const;

    /// The binary form, see `AttributesStream.h`, also for rings that a hostile archive makes. Reading
    /// replaces what is there.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    /// So that attributes can stand in a list of objects. The entries are shared, not copied.
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// From now on both have the same list.
    void shareWith(FAttributes& other);
    /// The same for all that share it; null before the first use.
    FAttributeItems* items() const { return items_.get(); }

private:
    friend class AttributesCopier;

    FAttributeItems& list();
    template <typename List>
    List* list(std::string_view key) const;
    template <typename List, typename Add, typename... Arguments>
    bool addTo(std::string_view key, Add add, Arguments... arguments);

    Ref<FAttributeItems> items_;
};

} // namespace qorl
