#include "persistence/streams/FStreamCounter.h"

#include <algorithm>
#include <limits>

namespace qorl {

int64_t FStreamCounter::write(const void*, int64_t count) {
    if (count < 1 || count > std::numeric_limits<int64_t>::max() - position_)
        return 0;
    position_ += count;
    length_ = std::max(length_, position_);
    return count;
}

int64_t FStreamCounter::seek(int64_t offset, int32_t mode) {
    int64_t target = offset;
    bool isTooFar = false;
    if (mode == fromHere)
        isTooFar = __builtin_add_overflow(position_, offset, &target);
    else if (mode == fromEnd)
        isTooFar = __builtin_sub_overflow(length_, offset, &target);
    else if (mode != fromStart)
        return -1;
    position_ = isTooFar ? std::numeric_limits<int64_t>::max() : std::max<int64_t>(target, 0);
    length_ = std::max(length_, position_);
    return position_;
}

} // namespace qorl
