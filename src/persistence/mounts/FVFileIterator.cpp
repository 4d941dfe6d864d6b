#include "persistence/mounts/FVFileIterator.h"

#include "persistence/files/PathText.h"

namespace qorl {

FVFileIterator::FVFileIterator(const FUrl& folder, std::vector<VirtualFileService::Entry> entries,
                               int32_t mode)
    : folder_(folder), entries_(std::move(entries)), mode_(mode) {}

FPath* FVFileIterator::next() {
    constexpr int32_t eachKind = FFileSystem::files | FFileSystem::folders;
    const int32_t wanted = (mode_ & eachKind) == 0 ? eachKind : mode_;
    isAtEntry_ = false;
    while (!isAtEntry_ && place_ < entries_.size()) {
        const auto& entry = entries_[place_++];
        const bool isFolder = entry.kind == VirtualFileService::Info::Kind::folder;
        // A service gives what it likes; an entry lies in its folder.
        if (!PathText::isOnePart(entry.name) ||
            !(wanted & (isFolder ? FFileSystem::folders : FFileSystem::files)))
            continue;
        current_ = folder_;
        current_.addPathSegment(entry.name, isFolder);
        // A copy without memory has no scheme, and would name a file of the disk.
        if (current_.scheme().isEmpty())
            place_ = entries_.size();
        else
            isAtEntry_ = true;
    }
    return getCurrent();
}

FPath* FVFileIterator::getCurrent() {
    return isAtEntry_ ? &current_ : nullptr;
}

} // namespace qorl
