#pragma once

#include "foundation/threads/JobQueue.h"

#include <qorl/FInterface.h>

namespace qorl {

/// A job with its argument and, in a queue that knows owners, what it works for.
struct JobRecord {
    Job* job = nullptr;
    int64_t argument = 0;
    FInterface* owner = nullptr; ///< counted by whoever queues the record
    JobRecord* next = nullptr;
    JobRecord* previous = nullptr;
};

/// Job records in their order, linked through themselves, so that nothing but the record is allocated for a
/// job. It neither counts nor deletes what it holds.
class JobList {
public:
    JobList() = default;
    JobList(const JobList&) = delete;
    JobList& operator=(const JobList&) = delete;

    bool isEmpty() const { return !first_; }
    JobRecord* first() const { return first_; }

    void append(JobRecord* record) { insert(record, nullptr); }
    void prepend(JobRecord* record) { insert(record, first_); }
    /// Takes a record of this list out of it.
    void take(JobRecord* record);
    /// The head or tail, taken out; null when the list is empty.
    JobRecord* popFront();
    JobRecord* popBack();

private:
    void insert(JobRecord* record, JobRecord* before);

    JobRecord* first_ = nullptr;
    JobRecord* last_ = nullptr;
};

/// Records that a queue has done with. It stands in front of the guard of the queue's lock: jobs are given
/// back at once, thus under the lock, the owners and the records when it goes, behind the lock. An owner is
/// anybody's object, and its end may take locks under which others ask the queue.
class DoneRecords {
public:
    DoneRecords() = default;
    DoneRecords(const DoneRecords&) = delete;
    DoneRecords& operator=(const DoneRecords&) = delete;
    ~DoneRecords();

    /// Gives the reference on the job back.
    void take(JobRecord* record);
    /// Cancels the job for good before that.
    void cancel(JobRecord* record);

private:
    JobList records_;
};

} // namespace qorl
