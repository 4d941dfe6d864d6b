#pragma once

#include "persistence/files/FFileIterator.h"
#include "persistence/files/FNFileSearch.h"

#include <qorl/Ref.h>

namespace qorl {

/// Walks a folder of the native disk, by the names' bytes.
class FNFileIterator : public FFileIterator {
    QORL_CLASS(FNFileIterator, FFileIterator)

public:
    /// `mode` and `mask` as `FNFileSystem::findFirst`. Null for a folder that can't be read.
    static Ref<FNFileIterator> open(const FPath& folder, int32_t mode = 0, const ConstString& mask = {});

    FPath* next() override;
    FPath* getCurrent() override { return place_ == Place::atEntry ? &search_.found : nullptr; }

private:
    enum class Place : uint8_t { inFront, atEntry, atEnd };

    FNFileSearch search_;
    Place place_ = Place::inFront;
    bool hasFirst_ = false;
};

} // namespace qorl
