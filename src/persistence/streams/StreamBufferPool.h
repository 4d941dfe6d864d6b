#pragma once

#include "foundation/containers/CmBuffer.h"
#include "foundation/threads/FLock.h"

#include <qorl/Ref.h>

#include <array>

namespace qorl {

/// Blocks for streams and lines that come and go often. It keeps a few of those that come back, and hands
/// them out again to who asks for no more room. Threading: any thread.
class StreamBufferPool : public CmObject {
    QORL_CLASS(StreamBufferPool, CmObject)

public:
    static constexpr size_t mostKept = 8;

    /// A block with at least `size` bytes of room and nothing in use; what it holds is left over. Null
    /// without memory, and for a size below 1.
    Ref<CmBuffer> take(int32_t size);
    void giveBack(Ref<CmBuffer> block);

    /// The same without a pool, with exactly that room.
    static Ref<CmBuffer> make(int32_t size);

private:
    FLock lock_{"StreamBufferPool"};
    std::array<Ref<CmBuffer>, mostKept> blocks_;
};

} // namespace qorl
