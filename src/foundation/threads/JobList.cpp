#include "foundation/threads/JobList.h"

namespace qorl {

void JobList::insert(JobRecord* record, JobRecord* before) {
    record->next = before;
    record->previous = before ? before->previous : last_;
    (record->previous ? record->previous->next : first_) = record;
    (before ? before->previous : last_) = record;
}

void JobList::take(JobRecord* record) {
    (record->previous ? record->previous->next : first_) = record->next;
    (record->next ? record->next->previous : last_) = record->previous;
    record->next = nullptr;
    record->previous = nullptr;
}

JobRecord* JobList::popFront() {
    JobRecord* record = first_;
    if (record)
        take(record);
    return record;
}

JobRecord* JobList::popBack() {
    JobRecord* record = last_;
    if (record)
        take(record);
    return record;
}

DoneRecords::~DoneRecords() {
    while (const JobRecord* record = records_.popFront()) {
        if (record->owner)
            record->owner->release();
        delete record;
    }
}

void DoneRecords::take(JobRecord* record) {
    record->job->release();
    records_.append(record);
}

void DoneRecords::cancel(JobRecord* record) {
    record->job->cancel(true);
    take(record);
}

} // namespace qorl
