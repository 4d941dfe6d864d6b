#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// A stream of bytes as it crosses an interface. Threading: one thread at a time.
class IBStream : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{C3BF6EA2-3099-4752-9B6B-F9901EE33E9B}");

    enum SeekMode : int32_t { fromStart = 0, fromHere = 1, fromEnd = 2 };

    /// `got` may be null. `Result::no` when not a single byte came.
    virtual Result read(void* buffer, int64_t count, int64_t* got) = 0;
    /// `Result::no` when fewer bytes went than asked.
    virtual Result write(const void* buffer, int64_t count, int64_t* got) = 0;
    /// `result` may be null; it receives the new position. `Result::no` when that is negative.
    virtual Result seek(int64_t offset, int32_t mode, int64_t* result) = 0;
    /// `Result::invalidArgument` for a null `position`.
    virtual Result tell(int64_t* position) = 0;
};

/// A stream whose size can be asked or set.
class ISizeableStream : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{04F9549E-E02F-4E6E-87E8-6A8747F4E17F}");

    virtual Result getStreamSize(int64_t& size) = 0;
    virtual Result setStreamSize(int64_t size) = 0;
};

} // namespace qorl
