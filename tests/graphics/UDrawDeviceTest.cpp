#include "graphics/UDrawDevice.h"

#include "graphics/GraphicsFactory.h"
#include "support/RecordingBackEnd.h"
#include "support/TestGraphics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>

namespace qorl {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using testing::RecordingBackEnd;

constexpr auto firstFlush =
    "smooth; pen FF000000; width 1; solid; clip -30000,-30000 60000x60000; brush FFFFFFFF; ";

class UDrawDeviceTest : public ::testing::Test {
protected:
    Ref<RecordingBackEnd> backEnd_ = make<RecordingBackEnd>();
    UDrawDevice device_{Ref<DrawBackEnd>(backEnd_)};

    void settle() {
        device_.fillRect({0, 0, 1, 1});
        backEnd_->take();
    }
};

TEST_F(UDrawDeviceTest, SendsTheStateOnceInItsOrder) {
    device_.fillRect({1, 2, 11, 22});
    EXPECT_EQ(backEnd_->take(), std::string(firstFlush) + "rect 1,2 10x20 fill");
    device_.fillRect({0, 0, 2, 2});
    EXPECT_EQ(backEnd_->take(), "rect 0,0 2x2 fill");
}

TEST_F(UDrawDeviceTest, SendsOnlyWhatChanged) {
    settle();
    device_.setPenColor(static_cast<int32_t>(StandardColor::red));
    device_.setPen(UPen(StandardColor::red, 1));
    device_.setBrush(UBrush(StandardColor::white));
    device_.setClip(UDrawDevice::maximumClip);
    device_.fillRect({0, 0, 1, 1});
    EXPECT_EQ(backEnd_->take(), "pen FFFF0000; width 1; solid; rect 0,0 1x1 fill");

    device_.setBrushColor(StandardColor::blue);
    device_.setClip({20, 30, 10, 10});
    device_.fillRect({12, 12, 13, 13});
    EXPECT_EQ(backEnd_->take(), "clip 10,10 10x20; brush FF0000FF; rect 12,12 1x1 fill");
}

TEST_F(UDrawDeviceTest, PutsStrokesOnPixelCentres) {
    settle();
    device_.moveTo({1, 2});
    device_.moveBy({1, 1});
    device_.lineTo({5, 3});
    EXPECT_EQ(backEnd_->take(), "line 2.5,3.5 5.5,3.5");
    EXPECT_EQ(device_.getPenPosition(), (CmPoint{5, 3}));
    device_.drawFrame({0, 0, 10, 5});
    EXPECT_EQ(backEnd_->take(), "rect 0.5,0.5 9x4 stroke");
    for (const double whole : {fullCircle, 6.28318548202514648, 2 * std::numbers::pi}) {
        device_.drawEllipse({0, 0, 10, 10}, 0, whole);
        EXPECT_EQ(backEnd_->take(), "ellipse 0.5,0.5 9x9 stroke") << whole;
    }

    device_.setPen(UPen(StandardColor::black, 2));
    device_.lineTo({9, 9});
    EXPECT_EQ(backEnd_->take(), "pen FF000000; width 2; solid; line 5,3 9,9");
}

TEST_F(UDrawDeviceTest, LeavesOutWhatShowsNothing) {
    settle();
    device_.drawFrame({});
    device_.fillRect({5, 5, 5, 9});
    device_.drawFrame({40000, 0, 40010, 10});
    device_.drawEllipse({0, 0, 10, 10}, 1, 0);
    device_.fillEllipse({0, 0, 10, 10}, 1, 0, true);
    device_.drawPolyline(std::vector<CmPoint>{{1, 1}});
    device_.fillPolygon(std::vector<CmPoint>{{1, 1}, {2, 2}});
    device_.drawLines(std::vector<CmPoint>{{1, 1}});
    device_.drawBitmap(nullptr, {0, 0, 5, 5});
    EXPECT_EQ(backEnd_->take(), "");

    device_.setClip({5, 5, 5, 5});
    device_.fillRect({0, 0, 10, 10});
    device_.moveTo({0, 0});
    device_.lineTo({10, 10});
    EXPECT_EQ(backEnd_->take(), "");
    EXPECT_TRUE(device_.isSilent());
    EXPECT_EQ(device_.getPenPosition(), (CmPoint{10, 10})) << "the pen moves even where nothing shows";
}

TEST_F(UDrawDeviceTest, SkipsFramesOnlyBeyondThePen) {
    device_.setClip({0, 0, 100, 100});
    device_.setPen(UPen(StandardColor::black, 4));
    settle();
    device_.drawFrame({108, 0, 120, 10});
    EXPECT_EQ(backEnd_->take(), "");
    device_.drawFrame({107, 0, 120, 10});
    EXPECT_NE(backEnd_->take(), "");
}

TEST_F(UDrawDeviceTest, TakesATenthOfTheWidthAsRadius) {
    settle();
    device_.setBrushColor(StandardColor::red);
    device_.fillRoundRect({0, 0, 100, 50}, -1);
    EXPECT_EQ(backEnd_->take(), "brush FFFF0000; pen FFFF0000; path 0,0 100x50 fill; pen FF000000");
    device_.setClip({10, 0, 90, 50});
    device_.fillRoundRect({0, 0, 100, 50}, -1);
    EXPECT_EQ(backEnd_->take(), "clip 10,0 80x50; rect 0,0 100x50 fill") << "the corners can't be seen";
    device_.setClip({9, 0, 90, 50});
    device_.fillRoundRect({0, 0, 100, 50}, -1);
    EXPECT_EQ(backEnd_->take(), "clip 9,0 81x50; pen FFFF0000; path 0,0 100x50 fill; pen FF000000");
    device_.fillRoundRect({0, 0, 100, 50}, -2);
    EXPECT_EQ(backEnd_->take(), "rect 0,0 100x50 fill") << "no other negative radius is one";
}

TEST_F(UDrawDeviceTest, TakesCoordinatesAtTheEndsOfTheirRange) {
    const CmRect all{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
    device_.setPen(UPen(StandardColor::black, INT32_MAX));
    settle();
    device_.drawFrame(all);
    EXPECT_EQ(backEnd_->take(), "rect -2.14748e+09,-2.14748e+09 4.29497e+09x4.29497e+09 stroke");
    device_.fillRoundRect(all, 100);
    EXPECT_EQ(backEnd_->take(), "rect -2.14748e+09,-2.14748e+09 4.29497e+09x4.29497e+09 fill");
    device_.moveTo({INT32_MAX, INT32_MIN});
    device_.moveBy({1, -1});
    EXPECT_EQ(device_.getPenPosition(), (CmPoint{INT32_MAX, INT32_MIN}));
}

TEST_F(UDrawDeviceTest, FillsAnEllipseWithThePenWhenAsked) {
    settle();
    device_.fillEllipse({0, 0, 10, 10}, 0, fullCircle, false);
    EXPECT_EQ(backEnd_->take(), "brush FF000000; path 0,0 10x10 fill; brush FFFFFFFF");
}

TEST_F(UDrawDeviceTest, DrawsListsOneByOneOrInABatch) {
    const std::vector<CmPoint> points{{0, 0}, {5, 0}, {0, 2}, {5, 2}, {9, 9}};
    const std::vector<CmRect> rects{{0, 0, 4, 4}, {2, 2, 2, 8}, {5, 5, 8, 9}};
    settle();
    device_.drawLines(points);
    EXPECT_EQ(backEnd_->take(), "line 0.5,0.5 5.5,0.5; line 0.5,2.5 5.5,2.5");
    device_.drawRects(rects, false);
    EXPECT_EQ(backEnd_->take(), "rect 0.5,0.5 3x3 stroke; rect 5.5,5.5 2x3 stroke");

    const auto batching = make<RecordingBackEnd>(RecordingBackEnd::Batches::offered);
    UDrawDevice device{Ref<DrawBackEnd>(batching)};
    device.fillRect({0, 0, 1, 1});
    batching->take();
    device.drawLines(points);
    EXPECT_EQ(batching->take(), "lines [0.5,0.5 5.5,0.5] [0.5,2.5 5.5,2.5]");
    device.drawRects(rects, true);
    EXPECT_EQ(batching->take(), "rects fill [0,0 4x4] [5,5 3x4]");
}

TEST_F(UDrawDeviceTest, SendsEverythingAgainAfterARestore) {
    settle();
    device_.saveState();
    device_.setClip({0, 0, 10, 10});
    device_.fillRect({0, 0, 1, 1});
    device_.restoreState();
    EXPECT_EQ(backEnd_->take(), "save; clip 0,0 10x10; rect 0,0 1x1 fill; restore");
    device_.setStandardStyles();
    device_.fillRect({0, 0, 1, 1});
    EXPECT_EQ(backEnd_->take(), std::string(firstFlush) + "rect 0,0 1x1 fill");
}

TEST_F(UDrawDeviceTest, PushesThePenBeforeAntialiasingWhenAsked) {
    settle();
    device_.setPenColor(StandardColor::red);
    device_.setAntialiasing(UDrawDevice::off);
    EXPECT_EQ(backEnd_->take(), "rough");
    device_.setAntialiasing(UDrawDevice::shapes | UDrawDevice::now);
    EXPECT_EQ(backEnd_->take(), "pen FFFF0000; width 1; solid; smooth");
}

TEST_F(UDrawDeviceTest, MapsWhatANestedDeviceDraws) {
    UDrawDevice inner(device_, {100, 200}, 2, 3);
    inner.setClip({0, 0, 10, 10});
    inner.fillRect({1, 1, 3, 3});
    EXPECT_EQ(
        backEnd_->take(),
        "smooth; pen FF000000; width 3; solid; clip 100,200 20x30; brush FFFFFFFF; rect 102,203 4x6 fill");
}

TEST_F(UDrawDeviceTest, GivesEachOfSeveralDevicesItsOwnState) {
    UDrawDevice a(device_, {10, 0});
    UDrawDevice b(device_, {0, 10});
    a.setBrushColor(StandardColor::red);
    b.setBrushColor(StandardColor::blue);
    a.fillRect({0, 0, 1, 1});
    b.fillRect({0, 0, 1, 1});
    backEnd_->take();
    a.fillRect({0, 0, 1, 1});
    EXPECT_THAT(backEnd_->take(), AllOf(HasSubstr("brush FFFF0000"), HasSubstr("clip -29990,-30000")));
    a.fillRect({0, 0, 1, 1});
    EXPECT_EQ(backEnd_->take(), "rect 10,0 1x1 fill");
}

TEST_F(UDrawDeviceTest, ARestoreCountsForAllDevicesOnTheBackEnd) {
    UDrawDevice inner(device_, {10, 0});
    device_.saveState();
    inner.setClip({0, 0, 5, 5});
    inner.fillRect({0, 0, 1, 1});
    device_.restoreState();
    backEnd_->take();
    inner.fillRect({0, 0, 1, 1});
    EXPECT_THAT(backEnd_->take(), HasSubstr("clip 10,0 5x5"));
}

TEST_F(UDrawDeviceTest, AClipStaysInTheCoordinatesThatItWasSetIn) {
    UDrawDevice other(device_, {10, 0});
    device_.setClip({0, 0, 50, 50});
    device_.concatTransformMatrix(TransformMatrix::scaling(2, 4));
    device_.concatTransformMatrix(TransformMatrix::translation(1, 0));
    other.fillRect({0, 0, 1, 1});
    backEnd_->take();
    device_.fillRect({0, 0, 1, 1});
    EXPECT_EQ(backEnd_->take(),
              "smooth; pen FF000000; width 1; solid; matrix 0.5,-0,-0,0.25,-1,0; clip 0,0 50x50; "
              "matrix 2,0,0,4,2,0; brush FFFFFFFF; rect 0,0 1x1 fill");
    device_.setClip({0, 0, 10, 10});
    device_.fillRect({0, 0, 1, 1});
    EXPECT_EQ(backEnd_->take(), "clip 0,0 10x10; rect 0,0 1x1 fill") << "in the new ones";
}

TEST_F(UDrawDeviceTest, SkipsWhatAMatrixMovesOutOfTheClip) {
    device_.setClip({0, 0, 50, 50});
    device_.concatTransformMatrix(TransformMatrix::translation(-100, 0));
    settle();
    device_.drawFrame({0, 0, 10, 10});
    EXPECT_EQ(backEnd_->take(), "");
    device_.drawFrame({100, 0, 110, 10});
    EXPECT_EQ(backEnd_->take(), "rect 100.5,0.5 9x9 stroke");
}

TEST_F(UDrawDeviceTest, SmoothsAnewWhenAnotherDeviceWasAtTheBackEnd) {
    UDrawDevice other(device_, {10, 0});
    settle();
    other.setAntialiasing(UDrawDevice::off);
    other.fillRect({0, 0, 1, 1});
    backEnd_->take();
    device_.setAntialiasing(UDrawDevice::shapes);
    EXPECT_EQ(backEnd_->take(), "smooth");
    device_.fillRect({0, 0, 1, 1});
    EXPECT_THAT(backEnd_->take(), HasSubstr("clip -30000,-30000"));
}

TEST_F(UDrawDeviceTest, NeverDrawsBeyondTheLimitOfItsClip) {
    struct Limited : UDrawDevice {
        explicit Limited(UDrawDevice& outer) : UDrawDevice(outer, {5, 5}) { limitClip({0, 0, 10, 10}); }
    };
    Limited view(device_);
    view.setClip({-100, -100, 100, 3});
    view.fillRect({-50, -50, 50, 50});
    EXPECT_THAT(backEnd_->take(), HasSubstr("clip 5,5 10x3;"));
    view.setClip({20, 0, 30, 10});
    view.fillRect({20, 0, 30, 10});
    EXPECT_EQ(backEnd_->take(), "");
    EXPECT_TRUE(view.isSilent());
    view.saveState();
    view.concatTransformMatrix(TransformMatrix::translation(-100, 0));
    view.setClip({0, 0, 500, 3});
    EXPECT_EQ(view.getVisible(), (CmRect{100, 0, 110, 3})) << "the limit moves with the coordinates";
    view.restoreState();
    EXPECT_EQ(view.getVisible(), (CmRect{0, 0, 10, 3}));
}

TEST_F(UDrawDeviceTest, HandsTextOnWithItsAlignment) {
    testing::useGraphics();
    UFont font(12);
    font.setColor(StandardColor::blue);
    device_.setFont(font);
    settle();
    const CmRect rect{10, 20, 110, 40};
    const std::pair<int32_t, int32_t> cases[] = {
        {Justify::left, 0},
        {Justify::center, 1},
        {Justify::right, 2},
        {Justify::verticalCenter, 4},
        {Justify::center | Justify::verticalCenter, 5},
        {Justify::right | Justify::bottom, 10},
    };
    for (const auto& [just, alignment] : cases) {
        device_.drawString(ConstString("Gr\xC3\xBC\xC3\x9F"), rect, just, 4);
        EXPECT_EQ(backEnd_->take(),
                  "string Gr\xC3\xBC\xC3\x9F 14,20 92x20 FF0000FF " + std::to_string(alignment));
    }
    device_.drawString(ConstString(u"x"), CmPoint{10, 50});
    const FontMetrics& metrics = font.getFace()->getMetrics();
    std::ostringstream wanted;
    wanted << "string x 10," << 50 - metrics.ascent << ' ' << font.getFace()->measureWidth(ConstString("x"))
           << 'x' << metrics.ascent + metrics.descent << " FF0000FF 5";
    EXPECT_EQ(backEnd_->take(), wanted.str());

    device_.setFont(UFont(0));
    device_.drawString(ConstString("x"), CmPoint{10, 50});
    EXPECT_EQ(backEnd_->take(), "string x 10,43 0x10 FF000000 5") << "estimated without a font";
}

TEST(UDrawDeviceWithoutTarget, StaysSilentButMeasures) {
    testing::useGraphics();
    UDrawDevice device;
    device.fillRect({0, 0, 10, 10});
    device.drawString(ConstString("x"), CmPoint{0, 0});
    EXPECT_TRUE(device.isSilent());
    EXPECT_GT(device.getStringWidth(ConstString("measured")), 30);
}

} // namespace
} // namespace qorl
