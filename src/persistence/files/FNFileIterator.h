#pragma once

#include "persistence/files/FFileIterator.h"
#include "persistence/files/FNPath.h"
#include "platform/Files.h"

#include <qorl/Ref.h>

#include <string>
#include <vector>

namespace qorl {

/// A search of `FNFileSystem::findFirst`: the entry found last, and what is still to come of the folder as it
/// was then.
struct FNFileSearch {
    FNPath found;
    std::string folder; ///< with a final separator
    std::vector<platform::FolderEntry> entries;
    size_t next = 0;
    int32_t mode = 0;               ///< of `FFileSystem::IteratorMode`
    std::vector<String> extensions; ///< of files; any one when empty
};

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
