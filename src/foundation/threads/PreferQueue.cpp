#include "foundation/threads/PreferQueue.h"

namespace qorl {

namespace {

JobRecord* withOwner(JobRecord* record, FInterface*& owner) {
    owner = record ? record->owner : nullptr;
    return record;
}

} // namespace

void PreferQueue::append(JobRecord* record, FInterface* owner) {
    const FGuard guard(lock_);
    record->owner = owner;
    records_.append(record);
}

void PreferQueue::prepend(JobRecord* record, FInterface* owner) {
    const FGuard guard(lock_);
    record->owner = owner;
    records_.prepend(record);
}

JobRecord* PreferQueue::popFront(FInterface*& owner) {
    const FGuard guard(lock_);
    return withOwner(records_.popFront(), owner);
}

JobRecord* PreferQueue::popBack(FInterface*& owner) {
    const FGuard guard(lock_);
    return withOwner(records_.popBack(), owner);
}

JobRecord* PreferQueue::find(const FInterface* owner) const {
    JobRecord* record = records_.first();
    while (record && record->owner != owner)
        record = record->next;
    return record;
}

bool PreferQueue::contains(const FInterface* owner) {
    const FGuard guard(lock_);
    return find(owner) != nullptr;
}

bool PreferQueue::prefer(const FInterface* owner) {
    const FGuard guard(lock_);
    JobRecord* record = find(owner);
    if (!record)
        return false;
    if (record != records_.first()) {
        records_.take(record);
        records_.prepend(record);
    }
    return true;
}

} // namespace qorl
