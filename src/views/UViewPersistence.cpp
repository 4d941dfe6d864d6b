#include "persistence/attributes/FAttributes.h"
#include "views/GeometryAttributes.h"
#include "views/UView.h"
#include "windows/UWindow.h"

#include <cstring>
#include <vector>

namespace qorl {

namespace {

constexpr const char* subViewsKey = "SubViews";

/// The views below `root` that take part, breadth first.
std::vector<Ref<UView>> persistentViews(UView& root) {
    std::vector<UView*> level{&root};
    std::vector<Ref<UView>> found;
    for (size_t i = 0; i < level.size(); ++i) {
        if (level[i]->isTransparentToPersistence())
            continue;
        level[i]->forEachSubView([&](UView& view) {
            level.push_back(&view);
            if (view.hasFlag(viewPersistent))
                found.push_back(retain(&view));
        });
    }
    return found;
}

/// The frame under which the subviews were stored. False when there is none.
bool storedFrame(UView& view, const FAttributes& attributes, CmRect& frame) {
    if (!getRect(attributes, "FrameRect", frame))
        return false;
    CmSize client;
    if (getSize(attributes, "ClientSize", client)) {
        if (client != view.getClientSize()) {
            const CmSize outer = view.getFrameSize();
            const CmSize inner = view.getClientSize();
            frame.right = frame.left + client.width + outer.width - inner.width;
            frame.bottom = frame.top + client.height + outer.height - inner.height;
        }
    } else if (view.getWindow() == &view && !view.isVisible()) {
        frame = view.getFrameRect();
    }
    return true;
}

void restoreListed(UView& root, FAttributes& attributes) {
    const std::vector<Ref<UView>> views = persistentViews(root);
    if (attributes.count(subViewsKey) != static_cast<int32_t>(views.size()))
        return;
    attributes.resetCursor(subViewsKey);
    for (const Ref<UView>& view : views) {
        FAttributes* entry = attributes.nextAttributes(subViewsKey);
        if (!entry || entry->getInteger("View Depth", -1) != view->getDepth())
            return;
        view->restoreAttributes(entry);
    }
}

} // namespace

bool UView::isTransparentToPersistence() const {
    return false;
}

bool UView::storeSubViewState(FAttributes* attributes) {
    setSize(*attributes, "ClientSize", getClientSize());
    setRect(*attributes, "FrameRect", core_.frameRect);
    for (const Ref<UView>& view : persistentViews(*this)) {
        auto entry = make<FAttributes>();
        view->storeAttributes(entry.get());
        entry->setInteger("View Depth", view->getDepth());
        attributes->appendAttributes(subViewsKey, std::move(entry));
    }
    return true;
}

bool UView::restoreSubViewState(FAttributes* attributes) {
    const Ref<UView> keep = retain(this);
    CmRect frame;
    if (!storedFrame(*this, *attributes, frame))
        return false;
    const CmRect before = core_.frameRect;
    if (frame == before) {
        restoreListed(*this, *attributes);
        return true;
    }
    if (!isWindow_) {
        setFrame(frame, false);
        restoreListed(*this, *attributes);
        return setFrame(before, true);
    }
    // A window takes the stored size for its views only, whatever its limits are: on the screen it stands.
    applyFrame(frame, false);
    restoreListed(*this, *attributes);
    applyFrame(before, false);
    invalidateAll();
    return true;
}

bool UView::storeSubViewTree(FAttributes* attributes, int32_t depth) {
    attributes->setInteger("NumSubViews", getSubViewCount());
    SubViewIterator walk(*this);
    while (UView* view = walk.next()) {
        if (!view->hasFlag(viewPersistent))
            continue;
        auto entry = make<FAttributes>();
        entry->setText8("FClassID", view->getClassName());
        setRect(*entry, "FrameRect", view->core_.frameRect);
        entry->setInteger("RelDepth", depth);
        entry->setInteger("SubViewIndex", walk.index());
        auto own = make<FAttributes>();
        view->storeAttributes(own.get());
        if (!own->isEmpty())
            entry->setObject("ViewAttr", own.detach(), FAttributes::Hold::adopt);
        if (!view->isTransparentToPersistence())
            view->storeSubViewTree(entry.get(), depth + 1);
        attributes->appendAttributes(subViewsKey, std::move(entry));
    }
    return true;
}

bool UView::restoreSubViewTree(FAttributes* attributes, int32_t depth) {
    attributes->resetCursor(subViewsKey);
    SubViewIterator walk(*this);
    while (UView* view = walk.next()) {
        if (!view->hasFlag(viewPersistent))
            continue;
        FAttributes* entry = attributes->nextAttributes(subViewsKey);
        const char* name = entry ? entry->getText8("FClassID") : nullptr;
        if (!name || std::strcmp(name, view->getClassName()) != 0)
            return false;
        const Ref<UView> keep = retain(view);
        const bool transparent = view->isTransparentToPersistence();
        const bool wasSuspended = view->hasFlag(viewResizeSuspended);
        if (CmRect frame; getRect(*entry, "FrameRect", frame)) {
            view->setFlag(viewResizeSuspended, wasSuspended || transparent);
            view->setFrame(frame, true);
            view->setFlag(viewResizeSuspended, wasSuspended);
        }
        if (FAttributes* own = entry->getAttributes("ViewAttr"))
            view->restoreAttributes(own);
        if (!transparent && !view->restoreSubViewTree(entry, depth + 1))
            return false;
    }
    return true;
}

} // namespace qorl
