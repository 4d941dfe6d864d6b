#pragma once

#include "persistence/files/FFileIterator.h"
#include "persistence/mounts/VirtualFileService.h"

namespace qorl {

/// Walks a folder of a virtual file system, as it was when the walk began. Entries are `FUrl`s below the
/// folder's own one.
class FVFileIterator : public FFileIterator {
    QORL_CLASS(FVFileIterator, FFileIterator)

public:
    /// `mode` of `FFileSystem::IteratorMode`.
    FVFileIterator(const FUrl& folder, std::vector<VirtualFileService::Entry> entries, int32_t mode);

    FPath* next() override;
    FPath* getCurrent() override;

private:
    FUrl folder_;
    std::vector<VirtualFileService::Entry> entries_;
    size_t place_ = 0;
    int32_t mode_;
    FUrl current_;
    bool isAtEntry_ = false;
};

} // namespace qorl
