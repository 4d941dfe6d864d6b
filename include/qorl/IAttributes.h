#pragma once

#include <qorl/FAttributeVariant.h>

namespace qorl {

/// A list of named values as another module reads and writes it.
///
/// All operations give `Result::ok` on success and `Result::no` on failure. Keys are zero-terminated 8-bit
/// texts; case counts. Threading: one thread at a time.
class IAttributes : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{5B1D7C0E-2F63-4A88-9C35-D4E60A7F12B9}");
    /// A second id of the same table: whoever answers it also takes binary values.
    static constexpr InterfaceId binaryIid = InterfaceId::fromText("{E83A60D4-91B7-4C2F-A5D8-3F7096C1B24E}");

    /// Replaces the value of `key`, or appends it. A text of null removes the key. With `ownedFlag` the list
    /// takes the value's reference or block over.
    virtual Result set(const char* key, const FAttributeVariant& value) = 0;
    /// Appends to the queue of `key`, which holds values of one kind only.
    virtual Result queue(const char* key, const FAttributeVariant& value) = 0;
    /// With `copy` the bytes are copied; else they must outlive the list.
    virtual Result setBinary(const char* key, const void* data, uint32_t size, bool copy) = 0;
    /// Texts and objects stay owned by the list, unless `ownedFlag` is set in the answer.
    virtual Result get(const char* key, FAttributeVariant& value) = 0;
    /// The next value of the queue of `key`; at its end `Result::no`, and the queue starts over.
    virtual Result unqueue(const char* key, FAttributeVariant& value) = 0;
    virtual int32_t getQueueItemCount(const char* key) = 0;
    virtual Result resetQueue(const char* key) = 0;
    virtual Result resetAllQueues() = 0;
    /// Copies `size` bytes. `Result::no` when fewer are stored.
    virtual Result getBinaryData(const char* key, void* buffer, uint32_t size) = 0;
    virtual uint32_t getBinarySize(const char* key) = 0;
    virtual int32_t getAttributeCount() = 0;
    /// Null out of range. Good until the list changes.
    virtual const char* getAttributeName(int32_t index) = 0;
};

} // namespace qorl
