#include "RecordingViews.h"
#include "support/Slots.h"
#include "views/ViewDump.h"
#include "views/ViewSource.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::entryOf;

struct Row {
    ptrdiff_t entry;
    const char* name;
};

#define ROW(operation)                                                                                       \
    Row {                                                                                                    \
        entryOf(&UView::operation), #operation                                                               \
    }

const Row publishedOrder[] = {
    ROW(draw),
    ROW(drawSubViews),
    ROW(drawContent),
    ROW(setHighlighted),
    ROW(isHighlighted),
    ROW(setMarked),
    ROW(isMarked),
    ROW(activate),
    ROW(invalidate),
    ROW(invalidateIfVisible),
    ROW(isVisible),
    ROW(show),
    ROW(hide),
    ROW(getScheme),
    ROW(getBackgroundColor),
    ROW(createSnapshot),
    ROW(mouseDown),
    ROW(mouseUp),
    ROW(mouseEnter),
    ROW(mouseOver),
    ROW(mouseLeave),
    ROW(getMousePosition),
    ROW(isMouseDown),
    ROW(setEnabled),
    ROW(isEnabled),
    ROW(keyDown),
    ROW(keyUp),
    ROW(isFocusable),
    ROW(getFocusView),
    ROW(focusGained),
    ROW(focusLost),
    ROW(drawFocus),
    ROW(wantsFocusOnClick),
    ROW(getHelpIdentifier),
    ROW(focusHook),
    ROW(dragEnter),
    ROW(dragLeave),
    ROW(dragInside),
    ROW(dragWouldAccept),
    ROW(dragDrop),
    ROW(addSubView),
    ROW(insertSubView),
    ROW(removeSubView),
    ROW(removeAllSubViews),
    ROW(isDescendant),
    ROW(bringToFront),
    ROW(sendToBack),
    ROW(setTitle),
    ROW(hasTitle),
    ROW(hasTooltip),
    ROW(getTooltip),
    ROW(getMenuHint),
    ROW(applyFrameHook),
    ROW(frameApplied),
    ROW(getViewContext),
    ROW(canResize),
    ROW(moved),
    ROW(sizeChanged),
    ROW(subViewFrameRequest),
    ROW(checkSize),
    ROW(ancestorSized),
    ROW(scrollContent),
    ROW(scrollRect),
    ROW(resizeToFit),
    ROW(updateClientRect),
    ROW(hitsClient),
    ROW(getWindow),
    ROW(isRealized),
    ROW(setValuesEnabled),
    ROW(acceptsDrop),
    ROW(getRenderTarget),
    ROW(isTransparentToPersistence),
    ROW(getWindowOffset),
    ROW(mouseDownInFrame),
    ROW(detached),
    ROW(attached),
    ROW(drawState),
    ROW(getStateRect),
    ROW(stateDrawn),
    ROW(stateChanged),
    ROW(wheelHook),
    ROW(mouseWheel),
    ROW(resizeSubViews),
    ROW(requestResize),
    ROW(childFrameRequest),
    ROW(beginOverlayDrawing),
    ROW(endOverlayDrawing),
};

TEST(UViewTable, KeepsItsPublishedOrderBehindTheObject) {
    ptrdiff_t expected = entryOf(&CmObject::clone) + 1;
    for (const Row& row : publishedOrder)
        EXPECT_EQ(row.entry, expected++) << row.name;
    for (const ptrdiff_t own : {entryOf(&UView::click), entryOf(&UView::invalidateLayout)})
        EXPECT_GE(own, expected) << "an operation of ours stands in the published table";
}

TEST(UViewTable, StaysSmall) {
    // The view, its core and its item are one block; a tree of many thousand views lives on it.
    EXPECT_LE(sizeof(UView), 320U);
}

/// A place in a document.
class FixedSource : public CmObject, public ViewSource {
    QORL_CLASS(FixedSource, CmObject)

public:
    uint32_t addRef() override { return CmObject::addRef(); }
    uint32_t release() override { return CmObject::release(); }
    SourcePosition position() const override { return {internFileName("panel.xml"), 12, 5}; }
    std::vector<SourcePosition> includeStack() const override { return {}; }
};

/// Shows a value with everything that needs escaping.
class SpokenView : public UView {
    QORL_CLASS(SpokenView, UView)

public:
    explicit SpokenView(const CmRect& frame) : UView(frame) {}
    bool getAccessibleValue(String& value) const override {
        value = ConstString("a \"b\"\nc\\");
        return true;
    }
};

TEST(ViewDump, WritesOneLineOrOneObjectAView) {
    auto root = make<UView>(CmRect{10, 20, 110, 220}, ConstString("Mixer"));
    root->setClientInsets({2, 3, 4, 5}, true);
    auto named = make<SpokenView>(CmRect{1, 2, 31, 12});
    named->getItem().setName("level");
    named->setAttach(viewAttachLeft | viewAttachRight);
    named->setFocusable(true);
    named->setEnabled(false);
    named->setSource(make<FixedSource>());
    auto hidden = make<UView>(CmRect{-1, -1, 0, 0});
    hidden->hide();
    root->addSubView(named);
    named->addSubView(hidden);
    const std::string plain =
        "UView \"Mixer\" 10,20 100x200 client 2,3 94x192 [shown]\n"
        "  SpokenView \"level\" 1,2 30x10 attach left|right [shown focusable disabled] = "
        "\"a \\\"b\\\"\\nc\\\\\"";
    EXPECT_EQ(dumpViewTree(*root, DumpDetail::plain), plain + "\n    UView -1,-1 1x1\n");
    EXPECT_EQ(dumpViewTree(*root), plain + " @ panel.xml:12:5\n    UView -1,-1 1x1\n");
    EXPECT_NE(describeView(*make<UView>(CmRect{}, ConstString("a\t\x1B[2J"))).find("\"a\\x09\\x1B[2J\""),
              std::string::npos)
        << "a title drives the terminal";
    EXPECT_EQ(dumpViewTreeAsJson(*root),
              R"({"class":"UView","title":"Mixer","frame":[10,20,100,200],"client":[2,3,94,192],)"
              R"("flags":["shown"],"views":[{"class":"SpokenView","name":"level","frame":[1,2,30,10],)"
              R"("attach":"left|right","flags":["shown","focusable","disabled"],)"
              R"("value":"a \"b\"\nc\\","source":{"file":"panel.xml","line":12,"column":5},)"
              R"("views":[{"class":"UView","frame":[-1,-1,1,1],"flags":[]}]}]})"
              "\n");
}

TEST(UViewClone, HandsOnWhatATemplateSays) {
    auto original = make<SpokenView>(CmRect{1, 2, 31, 12});
    auto view = make<UView>(CmRect{1, 2, 31, 12}, ConstString("T"));
    view->setTooltip(ConstString("tip"));
    view->setAttach(viewAttachAll);
    view->setClientInsets({1, 1, 1, 1}, true);
    view->addSubView(original);
    auto window = make<RecordingWindow>(CmSize{100, 100});
    window->addSubView(view);
    window->attachTree();
    const Ref<UView> copy = Ref<UView>::adopt(static_cast<UView*>(view->clone()));
    EXPECT_EQ(copy->getParent(), nullptr);
    EXPECT_EQ(copy->getSubViewCount(), 0);
    EXPECT_FALSE(copy->isAttached());
    EXPECT_NE(copy->getViewId(), view->getViewId());
    EXPECT_EQ(textOf(copy->getFrameRect()), "1,2,31,12");
    EXPECT_EQ(textOf(copy->getClientRect()), "1,1,29,9");
    EXPECT_EQ(copy->getTitle(), ConstString("T"));
    EXPECT_EQ(copy->getTooltipText(), ConstString("tip"));
    EXPECT_EQ(copy->getAttach(), viewAttachAll);
}

} // namespace
} // namespace qorl
