#pragma once

#include "foundation/threads/FLock.h"
#include "foundation/threads/JobList.h"

namespace qorl {

/// Job records in a line, each with the owner that the job works for: a file, a document, an item. What the
/// user looks at now can be preferred.
///
/// An owner may be null. The queue neither counts owners nor deletes records. Threading: any thread; several
/// steps that belong together take `lock` around them.
class PreferQueue {
public:
    /// At the tail or at the head.
    void append(JobRecord* record, FInterface* owner);
    void prepend(JobRecord* record, FInterface* owner);
    /// Take the head or the tail out; null when there is none.
    JobRecord* popFront(FInterface*& owner);
    JobRecord* popBack(FInterface*& owner);
    /// Whether an entry has that owner.
    bool contains(const FInterface* owner);
    /// Moves the first entry of that owner to the head. False when there is none. A job that runs already
    /// isn't touched.
    bool prefer(const FInterface* owner);

    FLock& lock() { return lock_; }

private:
    JobRecord* find(const FInterface* owner) const;

    FLock lock_{"FLock"};
    JobList records_;
};

} // namespace qorl
