#include "views/UView.h"

namespace qorl {

namespace {

class AnyView final : public ViewPredicate {
public:
    bool test(UView*) const override { return true; }
};

} // namespace

UView* UView::getRootView() {
    UView* view = this;
    while (view->parent_)
        view = view->parent_;
    return view;
}

int32_t UView::getDepth() const {
    int32_t depth = 0;
    for (const UView* view = parent_; view; view = view->parent_)
        ++depth;
    return depth;
}

UView* UView::findParent(const ViewPredicate& predicate) {
    return parent_ ? parent_->findParentDeep(predicate) : nullptr;
}

UView* UView::findParentDeep(const ViewPredicate& predicate) {
    UView* view = this;
    while (view && !predicate.test(view))
        view = view->parent_;
    return view;
}

UView* UView::findDirectSubView(const ViewPredicate& predicate) {
    SubViewIterator walk(*this);
    while (UView* view = walk.next())
        if (predicate.test(view))
            return view;
    return nullptr;
}

UView* UView::findSubView(const ViewPredicate& predicate) {
    SubViewIterator walk(*this);
    while (UView* view = walk.next()) {
        if (UView* found = view->findSubView(predicate))
            return found;
        if (predicate.test(view))
            return view;
    }
    return nullptr;
}

UView* UView::findSubViewBehind(const UView* sibling, const ViewPredicate& predicate) {
    const int32_t index = getSubViewIndex(sibling);
    if (index < 0)
        return nullptr;
    SubViewIterator walk(*this, SubViewIterator::Walk::forward, index);
    while (UView* view = walk.next())
        if (predicate.test(view))
            return view;
    return nullptr;
}

UView* UView::findSubViewByClass(const char* name, bool deep) {
    return findSubView(viewsWhere([=](UView* view) { return view->isTypeOf(name, deep); }));
}

UView* UView::findViewAt(CmPoint point, bool deep, const ViewPredicate& predicate) {
    SubViewIterator walk(*this, SubViewIterator::Walk::reverse);
    while (UView* view = walk.next()) {
        if (!view->isShown() || !view->getFrameRect().contains(point))
            continue;
        if (deep && view->hitsClient(view->parentToFrame(point)))
            if (UView* found = view->findViewAt(view->parentToClient(point), true, predicate))
                return found;
        if (predicate.test(view))
            return view;
    }
    return nullptr;
}

UView* UView::findViewAt(CmPoint point, bool deep) {
    return findViewAt(point, deep, AnyView());
}

UView* UView::getEnclosingScrollView(int32_t maxDepth) {
    UView* view = parent_;
    for (int32_t depth = 0; view && depth < maxDepth; ++depth, view = view->parent_)
        if (view->isTypeOf("UScrollView", true))
            return view;
    return nullptr;
}

} // namespace qorl
