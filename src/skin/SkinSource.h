#pragma once

#include "skin/SkinStore.h"
#include "skin/SourceMark.h"
#include "views/ViewSource.h"

namespace qorl {

/// The place of an element, as the views that are built from it keep it. A reference on it is one on the
/// store of the document, in which it lies: it may outlive the document's elements.
class SkinSource final : public ViewSource {
public:
    static SkinSource* create(SkinStore& store, SourceMark mark) {
        return new (store.allocate(sizeof(SkinSource))) SkinSource(store, mark);
    }

    uint32_t addRef() override { return store_.addRef(); }
    uint32_t release() override { return store_.release(); }
    SourcePosition position() const override { return mark_.position(); }
    std::vector<SourcePosition> includeStack() const override { return mark_.includes(); }

    SourceMark mark() const { return mark_; }
    SkinStore& store() const { return store_; }

private:
    SkinSource(SkinStore& store, SourceMark mark) : store_(store), mark_(mark) {}

    SkinStore& store_;
    SourceMark mark_;
};

} // namespace qorl
