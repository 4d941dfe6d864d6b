#include "views/containers/URowColumn.h"

#include "support/HeadlessShell.h"
#include "support/PoisonedView.h"
#include "views/RecordingViews.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <utility>

namespace qorl {
namespace {

using testing::HeadlessShell;

std::string toText(const CmRect& rect) {
    return std::to_string(rect.left) + "," + std::to_string(rect.top) + "," + std::to_string(rect.width()) +
           "," + std::to_string(rect.height());
}

/// Left, top, width and height of all that are shown.
std::string placesIn(UView& view) {
    std::string text;
    view.forEachSubView([&](UView& child) {
        if (child.isShown())
            text += (text.empty() ? "" : " ") + toText(child.getFrameRect());
    });
    return text;
}

void resize(UView& view, int32_t width, int32_t height) {
    view.setFrame(CmRect::ofSize(view.getFrameRect().origin(), {width, height}), true);
}

/// Three children of 30 x 10, 20 x 16 and 40 x 12.
TEST(URowColumn, PlacesChildBehindChildAndTakesTheirSize) {
    const struct {
        const char* attributes;
        const char* places;
        const char* size; ///< of the row
    } cases[] = {
        {"style='horizontal'", "0,0,30,10 30,0,20,16 50,0,40,12", "5,6,90,16"},
        {"style='vertical'", "0,0,30,10 0,10,20,16 0,26,40,12", "5,6,40,38"},
        {"style='horizontal' spacing='3,5,4,7'", "3,5,30,10 37,5,20,16 61,5,40,12", "5,6,104,26"},
        {"style='vertical' spacing='3,5,4,7'", "3,5,30,10 3,22,20,16 3,45,40,12", "5,6,46,62"},
        {"style='horizontal equalsize'", "0,0,30,16 30,0,20,16 50,0,40,16", "5,6,90,16"},
        {"style='vertical equalsize' spacing='2,0,0,0'", "2,0,40,10 2,10,40,16 2,26,40,12", "5,6,44,38"},
        {"style='horizontal aligncenter'", "0,3,30,10 30,0,20,16 50,2,40,12", "5,6,90,16"},
        {"style='horizontal alignbottom'", "0,6,30,10 30,0,20,16 50,4,40,12", "5,6,90,16"},
        {"style='vertical alignright'", "10,0,30,10 20,10,20,16 0,26,40,12", "5,6,40,38"},
        {"style='horizontal' colwidth='50'", "0,0,30,10 50,0,20,16 100,0,40,12", "5,6,140,16"},
        {"style='vertical' rowheight='0' spacing='0,0,0,4'", "0,0,30,10 0,4,20,16 0,8,40,12", "5,6,40,20"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.attributes);
        HeadlessShell shell{std::string("<rowcol size='5,6,0,0' ") + c.attributes +
                            "><container size='0,0,30,10'/><container size='9,9,20,16'/>"
                            "<container size='0,0,40,12'/></rowcol>"};
        EXPECT_EQ(placesIn(shell.view(0)), c.places);
        EXPECT_EQ(toText(shell.view(0).getFrameRect()), c.size);
    }
}

TEST(URowColumn, LeavesNoRoomForHiddenAndEmptyChildren) {
    HeadlessShell shell{"<rowcol style='vertical' spacing='0,0,0,4'><container size='0,0,30,10'/>"
                        "<container size='0,0,30,12'/><container size='0,0,0,14'/>"
                        "<container size='0,0,30,16'/></rowcol>"};
    UView& column = shell.view(0);
    column.getSubView(1)->hide();
    EXPECT_EQ(toText(column.getSubView(3)->getFrameRect()), "0,14,30,16");
    EXPECT_EQ(toText(column.getFrameRect()), "0,0,30,30");
    column.getSubView(1)->show();
    EXPECT_EQ(toText(column.getSubView(3)->getFrameRect()), "0,30,30,16");
}

TEST(URowColumn, LeavesAttachedChildrenWhereItPutThem) {
    HeadlessShell shell{"<rowcol style='horizontal' size='0,0,200,40'>"
                        "<container size='0,0,30,10' attach='right bottom'/>"
                        "<container size='0,0,20,16' attach='all'/></rowcol>"};
    EXPECT_EQ(placesIn(shell.view(0)), "0,0,30,10 30,0,20,16");
    EXPECT_EQ(toText(shell.view(0).getFrameRect()), "0,0,50,16");
}

TEST(URowColumn, MakesRoomForAChildThatFitsItself) {
    HeadlessShell shell{"<rowcol style='horizontal'><label title='a' style='autowidth' size='0,0,9,10'/>"
                        "<container size='0,0,20,10'/></rowcol>"};
    UView& row = shell.view(0);
    UView& label = *row.getSubView(0);
    const int32_t before = label.getFrameRect().right;
    label.setTitle(ConstString("a longer title"));
    EXPECT_GT(label.getFrameRect().right, before);
    EXPECT_EQ(row.getSubView(1)->getFrameRect().left, label.getFrameRect().right);
    EXPECT_EQ(row.getFrameRect().width(), label.getFrameRect().right + 20);
}

TEST(URowColumn, FitsTheDimensionsThatItIsAskedFor) {
    HeadlessShell shell{"<rowcol style='horizontal'><container size='0,0,30,10'/></rowcol>"};
    auto& row = shell.view<URowColumn>(0);
    resize(row, 70, 40);
    row.resizeToFit(-1, 5);
    EXPECT_EQ(toText(row.getFrameRect()), "0,0,70,15");
    row.resizeToFit(4, -1);
    EXPECT_EQ(toText(row.getFrameRect()), "0,0,34,15");
}

TEST(URowColumn, KeepsHugeNumbersWithinReach) {
    for (const uint32_t fit : {0U, uint32_t{RowColumnStyle::fitInParent}}) {
        HeadlessShell shell{"<rowcol style='horizontal' size='0,0,90,20'><container size='0,0,30,10'/>"
                            "<container size='0,0,20,10' attach='left right'/></rowcol>"};
        auto& row = shell.view<URowColumn>(0);
        RowColumnLayout& layout = row.getRowColumnLayout();
        layout.style |= fit;
        layout.marginX = layout.marginY = layout.spacingX = layout.offsetX = INT32_MAX;
        layout.offsetY = layout.spacingY = INT32_MIN;
        row.invalidateLayout();
        EXPECT_GT(row.getSubView(1)->getFrameRect().left, 1 << 28);
    }
}

TEST(URowColumn, MovesItsChildrenByTheOffsetOnce) {
    HeadlessShell shell{"<rowcol style='horizontal'><container size='0,0,30,10'/>"
                        "<container size='0,0,20,10'/></rowcol>"};
    auto& row = shell.view<URowColumn>(0);
    row.getRowColumnLayout().offsetX = -7;
    row.getRowColumnLayout().offsetY = 2;
    row.invalidateLayout();
    row.invalidateLayout();
    EXPECT_EQ(placesIn(row), "-7,2,30,10 23,2,20,10");
    EXPECT_EQ(toText(row.getFrameRect()), "0,0,50,10") << "its size is that before the offset";
}

TEST(URowColumn, FollowsTheSizeOfItsChildrenUpward) {
    HeadlessShell shell{"<rowcol style='vertical'><rowcol style='horizontal'><container size='0,0,30,10'/>"
                        "<container size='0,0,20,10'/></rowcol><container size='0,0,10,8'/></rowcol>"};
    UView& column = shell.view(0);
    UView& row = *column.getSubView(0);
    row.childFrameRequest(row.getSubView(0), {0, 0, 60, 25}, true);
    EXPECT_EQ(placesIn(row), "0,0,60,25 60,0,20,10");
    EXPECT_EQ(placesIn(column), "0,0,80,25 0,25,10,8");
    EXPECT_EQ(toText(column.getFrameRect()), "0,0,80,33");
}

TEST(URowColumn, StaysStillWhileSuspended) {
    HeadlessShell shell{"<rowcol style='horizontal'><container size='0,0,30,10'/></rowcol>"};
    auto& row = shell.view<URowColumn>(0);
    row.setSuspended(true);
    row.addSubView(make<UView>(CmRect{3, 3, 13, 13}));
    EXPECT_EQ(placesIn(row), "0,0,30,10 3,3,10,10");
    row.setSuspended(false);
    EXPECT_EQ(placesIn(row), "0,0,30,10 30,0,10,10");
    row.removeSubView(row.getSubView(0));
    EXPECT_EQ(placesIn(row), "0,0,10,10");
    EXPECT_EQ(toText(row.getFrameRect()), "0,0,10,10");
}

/// A skin or the places of views with both axes exchanged.
std::string turned(std::string text) {
    const auto exchange = [&text](const std::string& one, const std::string& other) {
        text = std::regex_replace(text, std::regex("\\b" + one + "\\b"), "?");
        text = std::regex_replace(text, std::regex("\\b" + other + "\\b"), one);
        text = std::regex_replace(text, std::regex("\\?"), other);
    };
    exchange("horizontal", "vertical");
    exchange("left", "top");
    exchange("right", "bottom");
    return std::regex_replace(text, std::regex("(-?\\d+),(-?\\d+),(-?\\d+),(-?\\d+)"), "$2,$1,$4,$3");
}

/// Written for a row, and played for a column as well.
class SharedRow : public ::testing::TestWithParam<uint32_t> {
protected:
    bool isRow() const { return GetParam() == RowColumnStyle::horizontal; }
    CmSize along(int32_t along, int32_t across) const {
        return isRow() ? CmSize{along, across} : CmSize{across, along};
    }
    std::string skin(const std::string& text) const { return isRow() ? text : turned(text); }
    std::string places(UView& view) const { return skin(placesIn(view)); }
    void resize(UView& view, int32_t alongAxis, int32_t across) const {
        const CmSize size = along(alongAxis, across);
        qorl::resize(view, size.width, size.height);
    }

    /// The first keeps its 30; 40 and 80 share what three gaps of 10 leave.
    HeadlessShell shell{
        skin("<rowcol style='horizontal fitinparent' spacing='0,0,10,0' size='0,0,200,20' attach='all'>"
             "<container size='0,0,30,20'/><container size='0,0,40,20' attach='left right top bottom'/>"
             "<container size='0,0,80,20' attach='left right'/></rowcol>"
             "<rowcol style='horizontal fitinparent' spacing='3,4,10,0' size='0,0,200,40'>"
             "<container size='0,9,30,20'/><container size='0,0,30,0'/>"
             "<container size='0,9,40,20' attach='left right top bottom'/></rowcol>"
             "<rowcol style='horizontal fitinparent' size='0,0,200,50' attach='all'>"
             "<container size='0,0,20,30'/><container size='0,0,30,40' attach='bottom'/></rowcol>")};
    URowColumn& row = shell.view<URowColumn>(0);
};

INSTANTIATE_TEST_SUITE_P(Along, SharedRow,
                         ::testing::Values(RowColumnStyle::horizontal, RowColumnStyle::vertical),
                         [](const auto& axis) {
                             return axis.param == RowColumnStyle::horizontal ? "Row" : "Column";
                         });

TEST_P(SharedRow, GivesItsRoomToThoseThatStretch) {
    EXPECT_EQ(places(row), "0,0,30,20 40,0,46,20 96,0,93,20");
    resize(row, 360, 20);
    EXPECT_EQ(places(row), "0,0,30,20 40,0,100,20 150,0,200,20");
    resize(row, 360, 26);
    EXPECT_EQ(places(row), "0,0,30,20 40,0,100,26 150,0,200,20") << "across, the attach rule";
}

TEST_P(SharedRow, PutsItsChildrenAtTheMarginAcross) {
    auto& second = shell.view<URowColumn>(1);
    EXPECT_EQ(places(second), "3,4,30,20 0,0,30,0 43,4,150,20");
    RowColumnLayout& layout = second.getRowColumnLayout();
    (isRow() ? layout.offsetX : layout.offsetY) = 2;
    (isRow() ? layout.offsetY : layout.offsetX) = -1;
    resize(second, 200, 46);
    EXPECT_EQ(places(second), "5,3,30,20 0,0,30,0 45,3,150,26");
}

TEST_P(SharedRow, FollowsResizesFromBeforeItsWindowAndFromBeforeItsChildren) {
    const auto fresh =
        make<URowColumn>(CmRect::ofSize({}, along(100, 10)), GetParam() | RowColumnStyle::fitInParent);
    const auto child = make<UView>(CmRect::ofSize({}, along(40, 10)));
    child->setAttach(viewAttachAll);
    fresh->addSubView(child);
    resize(*fresh, 100, 30);
    shell.window().addSubView(fresh);
    EXPECT_EQ(places(*fresh), "0,0,100,30");
    fresh->removeSubView(child.get());
    shell.window().removeSubView(fresh.get());
    shell.window().addSubView(fresh);
    fresh->addSubView(child);
    resize(*fresh, 120, 50);
    EXPECT_EQ(places(*fresh), "0,0,120,50");
}

TEST_P(SharedRow, ComesBackFromNothing) {
    const std::string before = places(row);
    for (int32_t width = 200; width >= 0; width -= 7)
        resize(row, width, 20);
    resize(row, 0, 20);
    EXPECT_THAT(places(row), ::testing::HasSubstr(" 40,0,0,20"));
    for (int32_t width = 0; width < 200; width += 3)
        resize(row, width, 20);
    resize(row, 200, 20);
    EXPECT_EQ(places(row), before);
}

TEST_P(SharedRow, MeasuresShareByTheSizeThatAChildTakesItself) {
    row.childFrameRequest(row.getSubView(1), CmRect::ofSize({}, along(80, 20)), true);
    EXPECT_EQ(places(row), "0,0,30,20 40,0,70,20 120,0,70,20");
}

TEST_P(SharedRow, GivesTheRoomOfAHiddenOrRemovedChildToTheOthers) {
    row.getSubView(1)->hide();
    EXPECT_EQ(places(row), "0,0,30,20 40,0,150,20");
    row.getSubView(1)->show();
    EXPECT_EQ(places(row), "0,0,30,20 40,0,46,20 96,0,93,20");
    row.removeSubView(row.getSubView(0));
    EXPECT_EQ(places(row), "0,0,60,20 70,0,120,20");
}

TEST_P(SharedRow, LeavesChildrenAloneWhenNoneStretches) {
    UView& third = shell.view(2);
    resize(third, 10, 50);
    EXPECT_EQ(places(third), "0,0,20,30 20,0,30,40");
    EXPECT_EQ(third.getFrameSize(), along(10, 50));
}

TEST(URowColumn, ResizesItsParentBeforeItself) {
    HeadlessShell shell{"<container size='0,0,10,10'/>"};
    UView& parent = shell.view(0);
    const auto row =
        make<URowColumn>(CmRect{0, 0, 5, 5}, RowColumnStyle::horizontal | RowColumnStyle::resizeParents);
    parent.addSubView(row);
    row->addSubView(make<UView>(CmRect{0, 0, 70, 30}));
    EXPECT_EQ(toText(row->getFrameRect()), "0,0,70,30");
    row->addSubView(make<UView>(CmRect{0, 0, 20, 30}));
    EXPECT_EQ(toText(row->getFrameRect()), "0,0,90,30");
    EXPECT_EQ(parent.getFrameRect().width(), 70) << "by the size that the row had before";
}

/// Does something once, in answer to the first change of its place.
class StirringView : public UView {
    QORL_CLASS(StirringView, UView)

public:
    explicit StirringView(const CmRect& frame) : UView(frame) { setAttach(viewAttachRight); }

    std::function<void()> stir;

    void moved() override {
        UView::moved();
        if (const auto once = std::exchange(stir, nullptr))
            once();
    }
};

TEST(URowColumn, MayGoWithWhatIsSizedByIt) {
    constexpr uint32_t plain = RowColumnStyle::horizontal;
    const struct {
        const char* what;
        uint32_t style;
        bool hearsPanel; ///< Else the row's first child is heard, and the row goes alone.
        void (*act)(URowColumn& row, UView& child);
    } cases[] = {
        {"a child fits itself", plain, false,
         [](URowColumn& row, UView& child) {
             row.subViewFrameRequest(&child, {0, 0, 50, 10}, true);
         }},
        {"a child grows", plain, false,
         [](URowColumn& row, UView& child) {
             row.childFrameRequest(&child, {0, 0, 50, 10}, true);
         }},
        {"the panel fits itself", plain | RowColumnStyle::sizeWindow, true,
         [](URowColumn& row, UView& child) {
             row.childFrameRequest(&child, {0, 0, 50, 10}, true);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CallLog log;
        LifecycleLog listener(log);
        HeadlessShell shell;
        const Ref<UView> child = make<UView>(CmRect{0, 0, 30, 10});
        Ref<URowColumn> made = make<testing::Poisoned<URowColumn>>(CmRect{0, 0, 30, 10}, c.style);
        URowColumn* row = made.get();
        Ref<UView> panel = make<testing::PoisonedView>(CmRect{0, 0, 30, 10});
        UView& leaving = c.hearsPanel ? *panel : *row;
        panel->addSubView(std::move(made));
        shell.window().addSubView(std::move(panel));
        row->addSubView(child);
        (c.hearsPanel ? leaving : *child).addLifecycleListener(&listener);
        listener.during = [&](UView&, std::string_view notice) {
            if (notice == "sized")
                leaving.getParent()->removeSubView(&leaving);
        };
        c.act(*row, *child);
        EXPECT_EQ(shell.window().getSubViewCount(), c.hearsPanel ? 0 : 1);
        EXPECT_FALSE(child->isAttached());
    }
}

struct StirCase {
    const char* what;
    uint32_t style;
    std::function<void(UView& row)> stir;
    const char* places;
};

TEST(URowColumn, PlacesOnceMoreWhenSubViewsChangeWhileTheyArePlaced) {
    constexpr uint32_t plain = RowColumnStyle::horizontal;
    constexpr uint32_t shared = plain | RowColumnStyle::fitInParent;
    const auto removeLast = [](UView& row) { row.removeSubView(row.getLastSubView()); };
    const auto removeFirst = [](UView& row) { row.removeSubView(row.getFirstSubView()); };
    const auto add = [](UView& row) { row.addSubView(make<UView>(CmRect{0, 0, 25, 10})); };
    const auto hideFirst = [](UView& row) { row.getFirstSubView()->hide(); };
    const auto growFirst = [](UView& row) {
        row.childFrameRequest(row.getFirstSubView(), {0, 0, 50, 10}, true);
    };
    const StirCase cases[] = {
        {"one behind goes", plain, removeLast, "0,0,30,10 30,0,20,10"},
        {"one before goes", plain, removeFirst, "0,0,20,10 20,0,40,10"},
        {"one comes", plain, add, "0,0,30,10 30,0,20,10 50,0,40,10 90,0,25,10"},
        {"one is hidden", plain, hideFirst, "0,0,20,10 20,0,40,10"},
        {"one grows", plain, growFirst, "0,0,50,10 50,0,20,10 70,0,40,10"},
        {"one grows in a shared row", shared, growFirst, "0,0,50,10 50,0,110,10 160,0,40,10"},
        {"one behind goes from a shared row", shared, removeLast, "0,0,30,10 30,0,170,10"},
        {"one before goes from a shared row", shared, removeFirst, "0,0,160,10 160,0,40,10"},
    };
    for (const StirCase& c : cases) {
        SCOPED_TRACE(c.what);
        HeadlessShell shell;
        const auto row = make<URowColumn>(CmRect{0, 0, 200, 10}, c.style);
        shell.window().addSubView(row);
        const auto stirring = make<StirringView>(CmRect{0, 0, 20, 10});
        row->setSuspended(true);
        row->addSubView(make<testing::PoisonedView>(CmRect{0, 0, 30, 10}));
        row->addSubView(stirring);
        row->addSubView(make<testing::PoisonedView>(CmRect{0, 0, 40, 10}));
        stirring->stir = [&] { c.stir(*row); };
        row->setSuspended(false);
        EXPECT_EQ(placesIn(*row), c.places);
    }
}

} // namespace
} // namespace qorl
