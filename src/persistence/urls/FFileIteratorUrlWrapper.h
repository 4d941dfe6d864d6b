#pragma once

#include "persistence/files/FFileIterator.h"
#include "persistence/urls/FUrl.h"

#include <qorl/Ref.h>

namespace qorl {

/// Walks a folder of the disk for one who reads URLs: the entries of another iterator, each as its file URL.
class FFileIteratorUrlWrapper : public FFileIterator {
    QORL_CLASS(FFileIteratorUrlWrapper, FFileIterator)

public:
    explicit FFileIteratorUrlWrapper(Ref<FFileIterator> inner) : inner_(std::move(inner)) {}

    /// An `FUrl`.
    FPath* next() override;
    FPath* getCurrent() override;

private:
    Ref<FFileIterator> inner_;
    FUrl current_;
    bool isAtEntry_ = false;
};

} // namespace qorl
