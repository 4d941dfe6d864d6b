#include "RecordingViews.h"
#include "support/Slots.h"
#include "views/ViewDump.h"
#include "views/ViewSource.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::entryOf;

TEST(UViewTable, KeepsItsPublishedOrderBehindTheObject) {
    const ptrdiff_t first = entryOf(&CmObject::clone) + 1;
    testing::expectEntries(
        first, ENTRY(UView, draw), ENTRY(UView, drawSubViews), ENTRY(UView, drawContent),
        ENTRY(UView, setHighlighted), ENTRY(UView, isHighlighted), ENTRY(UView, setMarked),
        ENTRY(UView, isMarked), ENTRY(UView, activate), ENTRY(UView, invalidate),
        ENTRY(UView, invalidateIfVisible), ENTRY(UView, isVisible), ENTRY(UView, show), ENTRY(UView, hide),
        ENTRY(UView, getScheme), ENTRY(UView, getBackgroundColor), ENTRY(UView, createSnapshot),
        ENTRY(UView, mouseDown), ENTRY(UView, mouseUp), ENTRY(UView, mouseEnter), ENTRY(UView, mouseOver),
        ENTRY(UView, mouseLeave), ENTRY(UView, getMousePosition), ENTRY(UView, isMouseDown),
        ENTRY(UView, setEnabled), ENTRY(UView, isEnabled), ENTRY(UView, keyDown), ENTRY(UView, keyUp),
        ENTRY(UView, isFocusable), ENTRY(UView, getFocusView), ENTRY(UView, focusGained),
        ENTRY(UView, focusLost), ENTRY(UView, drawFocus), ENTRY(UView, wantsFocusOnClick),
        ENTRY(UView, getHelpIdentifier), ENTRY(UView, focusHook), ENTRY(UView, dragEnter),
        ENTRY(UView, dragLeave), ENTRY(UView, dragInside), ENTRY(UView, dragWouldAccept),
        ENTRY(UView, dragDrop), ENTRY(UView, addSubView), ENTRY(UView, insertSubView),
        ENTRY(UView, removeSubView), ENTRY(UView, removeAllSubViews), ENTRY(UView, isDescendant),
        ENTRY(UView, bringToFront), ENTRY(UView, sendToBack), ENTRY(UView, setTitle), ENTRY(UView, hasTitle),
        ENTRY(UView, hasTooltip), ENTRY(UView, getTooltip), ENTRY(UView, getMenuHint),
        ENTRY(UView, applyFrameHook), ENTRY(UView, frameApplied), ENTRY(UView, getViewContext),
        ENTRY(UView, canResize), ENTRY(UView, moved), ENTRY(UView, sizeChanged),
        ENTRY(UView, subViewFrameRequest), ENTRY(UView, checkSize), ENTRY(UView, ancestorSized),
        ENTRY(UView, scrollContent), ENTRY(UView, scrollRect), ENTRY(UView, resizeToFit),
        ENTRY(UView, updateClientRect), ENTRY(UView, hitsClient), ENTRY(UView, getWindow),
        ENTRY(UView, isRealized), ENTRY(UView, setValuesEnabled), ENTRY(UView, acceptsDrop),
        ENTRY(UView, getRenderTarget), ENTRY(UView, isTransparentToPersistence),
        ENTRY(UView, getWindowOffset), ENTRY(UView, mouseDownInFrame), ENTRY(UView, detached),
        ENTRY(UView, attached), ENTRY(UView, drawState), ENTRY(UView, getStateRect), ENTRY(UView, stateDrawn),
        ENTRY(UView, stateChanged), ENTRY(UView, wheelHook), ENTRY(UView, mouseWheel),
        ENTRY(UView, resizeSubViews), ENTRY(UView, requestResize), ENTRY(UView, childFrameRequest),
        ENTRY(UView, beginOverlayDrawing), ENTRY(UView, endOverlayDrawing));
    for (const ptrdiff_t own : {entryOf(&UView::click), entryOf(&UView::invalidateLayout)})
        EXPECT_GT(own, entryOf(&UView::endOverlayDrawing))
            << "an operation of ours stands in the published table";
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
