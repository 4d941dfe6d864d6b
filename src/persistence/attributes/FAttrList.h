#pragma once

#include "foundation/CmObject.h"
#include "foundation/text/String.h"
#include "persistence/attributes/FAttributes.h"

#include <qorl/Ref.h>

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl {

/// A binary block that belongs to the caller, as a value: it must outlive the attributes.
class FAttrBuffer : public CmObject {
    QORL_CLASS(FAttrBuffer, CmObject)

public:
    /// Without memory, or with a negative size, there are no bytes.
    FAttrBuffer(const void* data, int64_t size) : data_(data), size_(data && size > 0 ? size : 0) {}

    const void* data() const { return data_; }
    int64_t size() const { return size_; }

private:
    const void* data_;
    int64_t size_;
};

/// The bytes that an object holds as a binary value: an `FAttrBuffer`, a `CmBuffer` (what is in use of it) or
/// an `FMemoryStream`. Nothing for any other object.
std::optional<std::string_view> binaryBytes(const CmObject* object);

/// A queue of values of one kind under one key, read one after the other.
class FAttrList : public CmObject {
    QORL_CLASS(FAttrList, CmObject)

public:
    int32_t cursor() const { return cursor_; }
    void resetCursor() { cursor_ = 0; }

    /// The index of the item to read, moving on; -1 at the end, and the cursor starts over.
    int32_t step() {
        if (cursor_ >= count()) {
            cursor_ = 0;
            return -1;
        }
        return cursor_++;
    }

    virtual int32_t count() const = 0;

private:
    int32_t cursor_ = 0;
};

class FIntList : public FAttrList {
    QORL_CLASS(FIntList, FAttrList)
    QORL_CLONE(FIntList)

public:
    int32_t count() const override { return static_cast<int32_t>(items.size()); }

    std::vector<int64_t> items;
};

class FFloatList : public FAttrList {
    QORL_CLASS(FFloatList, FAttrList)
    QORL_CLONE(FFloatList)

public:
    int32_t count() const override { return static_cast<int32_t>(items.size()); }

    std::vector<double> items;
};

/// Texts of one width.
class FStringList : public FAttrList {
    QORL_CLASS(FStringList, FAttrList)
    QORL_CLONE(FStringList)

public:
    explicit FStringList(bool isWide) : wide(isWide) {}
    FStringList(const FStringList& other);
    FStringList& operator=(const FStringList&) = delete;

    int32_t count() const override { return static_cast<int32_t>(items.size()); }

    std::vector<String> items;
    bool wide;
};

/// Objects, all of them owned or all only watched: those must outlive the list.
class FObjectList : public FAttrList {
    QORL_CLASS(FObjectList, FAttrList)
    QORL_CLONE(FObjectList)

public:
    enum class Items : uint8_t { owned, watched };

    explicit FObjectList(Items items = Items::owned) : kind_(items) {}

    Items kind() const { return kind_; }
    int32_t count() const override { return static_cast<int32_t>(items_.size()); }
    /// Null where an object failed to come up.
    CmObject* at(int32_t place) const { return items_[static_cast<size_t>(place)].object; }

    /// For a list that owns.
    void add(Ref<CmObject> object) {
        CmObject* added = object.get();
        items_.push_back({std::move(object), added});
    }
    void replace(int32_t place, Ref<CmObject> object) {
        CmObject* after = object.get();
        // What was there goes last: its end may lead back to this list.
        const Item before = std::exchange(items_[static_cast<size_t>(place)], {std::move(object), after});
    }
    /// For a list that watches.
    void watch(CmObject* object) { items_.push_back({nullptr, object}); }

private:
    struct Item {
        Ref<CmObject> held; ///< Of a list that owns.
        CmObject* object;
    };

    std::vector<Item> items_;
    Items kind_;
};

/// Lists of attributes.
class FSubList : public FAttrList {
    QORL_CLASS(FSubList, FAttrList)
    QORL_CLONE(FSubList)

public:
    FSubList() = default;
    /// Other items, to be read from where `other` is.
    FSubList(const FAttrList& other, std::vector<Ref<FAttributes>> others)
        : FAttrList(other), items(std::move(others)) {}
    /// Copies the items too.
    FSubList(const FSubList& other);
    FSubList& operator=(const FSubList&) = delete;

    int32_t count() const override { return static_cast<int32_t>(items.size()); }

    std::vector<Ref<FAttributes>> items;
};

} // namespace qorl
