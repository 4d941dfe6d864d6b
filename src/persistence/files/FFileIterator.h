#pragma once

#include "foundation/CmObject.h"

namespace qorl {

class FPath;

/// Walks a folder. Entries that come or go during the walk change nothing for it, so that what it gives may
/// be gone by then.
class FFileIterator : public CmObject {
    QORL_CLASS(FFileIterator, CmObject)

public:
    /// The next entry, or null at the end; good until the next call. Null also where there is no memory to go
    /// on, which can't be told from the end.
    virtual FPath* next() = 0;
    /// What `next` gave last.
    virtual FPath* getCurrent() = 0;
};

} // namespace qorl
