#include "persistence/urls/FFileIteratorUrlWrapper.h"

namespace qorl {

FPath* FFileIteratorUrlWrapper::next() {
    const FPath* path = inner_ ? inner_->next() : nullptr;
    if (path)
        current_ = FUrl(*path);
    isAtEntry_ = path && current_.isValid();
    return getCurrent();
}

FPath* FFileIteratorUrlWrapper::getCurrent() {
    return isAtEntry_ ? &current_ : nullptr;
}

} // namespace qorl
