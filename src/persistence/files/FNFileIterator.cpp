#include "persistence/files/FNFileIterator.h"

#include "persistence/files/FNFileSystem.h"

#include <new>

namespace qorl {

Ref<FNFileIterator> FNFileIterator::open(const FPath& folder, int32_t mode, const ConstString& mask) try {
    auto* files = FNFileSystem::instance();
    auto iterator = make<FNFileIterator>();
    FNFileSearch& search = iterator->search_;
    iterator->hasFirst_ = files && files->findFirst(folder, mask, search, mode);
    // A folder that has nothing to give can be read, one that is not there can't.
    return search.folder.empty() ? nullptr : iterator;
} catch (const std::bad_alloc&) {
    return nullptr;
}

FPath* FNFileIterator::next() {
    auto* files = FNFileSystem::instance();
    if (place_ == Place::atEnd || !files)
        return nullptr;
    const bool isFound = place_ == Place::inFront ? hasFirst_ : files->findNext(search_);
    place_ = isFound ? Place::atEntry : Place::atEnd;
    return getCurrent();
}

} // namespace qorl
