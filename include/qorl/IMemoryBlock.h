#pragma once

#include <qorl/FInterface.h>

#include <cstdint>

namespace qorl {

/// A block of bytes as it crosses an interface. Threading: one thread at a time.
class IMemoryBlock : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{1128D65F-0840-421C-8031-A2D39020AB2C}");

    /// The bytes, good until the next call that changes the size. Null for an empty block.
    virtual void* getAddress() = 0;
    /// How many bytes there are room for, and how many of them are in use.
    virtual int32_t getCapacity() = 0;
    virtual int32_t getUsedSize() = 0;
    /// False, and nothing changed, for a negative size and when memory ran out.
    virtual bool setCapacity(int32_t size) = 0;
    /// False for a size that is negative or above the capacity.
    virtual bool setUsedSize(int32_t size) = 0;
    /// Appends, growing as needed.
    virtual bool append(const void* bytes, int32_t count) = 0;
};

} // namespace qorl
