#include "foundation/threads/FLock.h"

namespace qorl {

FLock::FLock(const char*) {}

void FLock::lock() {
    mutex_.lock();
}

void FLock::unlock() {
    mutex_.unlock();
}

bool FLock::tryLock() {
    return mutex_.try_lock();
}

} // namespace qorl
