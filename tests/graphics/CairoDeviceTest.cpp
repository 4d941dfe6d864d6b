#include "graphics/GraphicsFactory.h"
#include "graphics/UBitmap.h"
#include "graphics/UDrawDevice.h"
#include "graphics/cairo/CairoImage.h"
#include "support/GoldenImage.h"
#include "support/TestGraphics.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <numbers>
#include <set>

namespace qorl {
namespace {

constexpr uint32_t black = 0xFF000000;
constexpr uint32_t red = 0xFFFF0000;
constexpr uint32_t white = 0xFFFFFFFF;

class CairoDeviceTest : public ::testing::Test {
protected:
    void SetUp() override { testing::useGraphics(); }

    static Ref<SurfaceTarget> surface(CmSize size, double scale = 1.0) {
        auto target = make<SurfaceTarget>(size, scale);
        UDrawDevice device(target.get());
        device.fillRect({0, 0, 10000, 10000});
        return target;
    }
    /// A white surface, and on it what `draw(UDrawDevice&)` draws.
    template <typename Draw>
    static Ref<SurfaceTarget> drawing(CmSize size, Draw draw, double scale = 1.0) {
        auto target = surface(size, scale);
        UDrawDevice device(target.get());
        draw(device);
        return target;
    }
    static uint32_t pixel(SurfaceTarget& target, int32_t x, int32_t y) {
        const PixelLock pixels(*target.getImage());
        return pixels->getRow(y)[x];
    }
    /// The box of all pixels that are not white.
    static CmRect drawn(SurfaceTarget& target) {
        const PixelLock pixels(*target.getImage());
        CmRect box;
        for (int32_t y = 0; y < pixels->height; ++y)
            for (int32_t x = 0; x < pixels->width; ++x)
                if (pixels->getRow(y)[x] != white)
                    box = box.unite({x, y, x + 1, y + 1});
        return box;
    }
    static void fill(UBitmap& picture, StandardColor color) {
        UDrawDevice device(&picture);
        device.setBrushColor(color);
        device.fillRect({0, 0, 10000, 10000});
    }
    static size_t countColors(SurfaceTarget& target) {
        const PixelLock pixels(*target.getImage());
        std::set<uint32_t> colors;
        for (int32_t y = 0; y < pixels->height; ++y)
            colors.insert(pixels->getRow(y), pixels->getRow(y) + pixels->width);
        return colors.size();
    }
};

void drawLine(UDrawDevice& device, CmPoint from, CmPoint to) {
    device.moveTo(from);
    device.lineTo(to);
}

TEST_F(CairoDeviceTest, UprightShapesFallOnWholePixelsAtEveryScale) {
    const auto draw = [](UDrawDevice& device) {
        device.setBrushColor(StandardColor::red);
        device.fillRect({3, 3, 10, 8});
        device.setPenColor(StandardColor::red);
        device.drawFrame({12, 3, 20, 9});
        drawLine(device, {3, 13}, {20, 13});
        drawLine(device, {5, 16}, {5, 30});
        device.setPen(UPen(StandardColor::red, 3));
        device.drawFrame({12, 16, 30, 30});
    };
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0})
        EXPECT_EQ(countColors(*drawing({120, 120}, draw, scale)), 2U) << "half covered pixels at " << scale;
}

TEST_F(CairoDeviceTest, ShapesReachAsFarAsTheirPlaceAndTheClip) {
    constexpr CmRect all{0, 0, 40, 40};
    constexpr CmRect clip{10, 10, 20, 20};
    const auto level = [](UDrawDevice& device) { drawLine(device, {3, 4}, {8, 4}); };
    const auto upward = [](UDrawDevice& device) { drawLine(device, {6, 9}, {6, 2}); };
    const auto slanted = [](UDrawDevice& device) { drawLine(device, {0, 0}, {40, 40}); };
    const auto frame = [](UDrawDevice& device) { device.drawFrame({5, 6, 25, 16}); };
    const auto ellipse = [&](UDrawDevice& device) { device.fillEllipse(all, 0, fullCircle, true); };
    const auto rounded = [&](UDrawDevice& device) { device.fillRoundRect(all, 10); };
    const auto turned = [&](UDrawDevice& device) {
        device.concatTransformMatrix(TransformMatrix::rotation(0.3, {15, 15}));
        device.fillRect(all);
    };
    const struct {
        const char* name;
        std::vector<CmRect> clips; ///< one behind the other, and the shape drawn in each
        std::function<void(UDrawDevice&)> draw;
        CmRect drawn;
    } cases[] = {
        {"a line holds both its ends", {all}, level, {3, 4, 9, 5}},
        {"upward, too", {all}, upward, {6, 2, 7, 10}},
        {"a frame stays inside its rectangle", {all}, frame, {5, 6, 25, 16}},
        {"a clip replaces the former one", {{0, 0, 5, 5}, {30, 30, 35, 35}}, ellipse, {30, 30, 35, 35}},
        // The first shape after a clip is cut by it, not lost.
        {"a clipped slanted line", {clip}, slanted, clip},
        {"a clipped ellipse", {clip}, ellipse, clip},
        {"a clipped round rectangle", {clip}, rounded, clip},
        {"a clipped turned rectangle", {clip}, turned, clip},
    };
    for (const auto& c : cases) {
        const auto target = drawing({40, 40}, [&](UDrawDevice& device) {
            device.setBrushColor(StandardColor::red);
            for (const CmRect& one : c.clips) {
                device.setClip(one);
                c.draw(device);
            }
        });
        EXPECT_EQ(drawn(*target), c.drawn) << c.name;
    }
}

TEST_F(CairoDeviceTest, NothingIsDrawnBeyondTheClip) {
    UBitmap picture({8, 8});
    const auto drawAll = [&](UDrawDevice& device) {
        device.setBrushColor(StandardColor::red);
        device.fillRect({0, 0, 50, 50});
        device.setPen(UPen(StandardColor::blue, 5));
        device.drawFrame({2, 2, 48, 48});
        drawLine(device, {0, 0}, {50, 50});
        device.drawEllipse({0, 0, 50, 50}, 0, fullCircle);
        device.fillRoundRect({1, 1, 49, 49}, 10);
        for (const ConstString& text :
             {ConstString("WWWWWWWW"), ConstString(u"\u05E9\u05DC\u05D5\u05DD\u05E9")})
            device.drawString(text, CmRect{0, 0, 50, 50}, Justify::center | Justify::verticalCenter);
        device.drawBitmap(&picture, {0, 0, 50, 50});
        device.drawBitmapAlpha(&picture, {0, 0, 8, 8}, {0, 0, 50, 50}, 0.5);
        device.clearRect({0, 0, 50, 50});
    };
    const auto drawClipped = [&](UDrawDevice& device) {
        device.setClip({20, 22, 30, 28});
        drawAll(device);
        device.saveState();
        device.concatTransformMatrix(TransformMatrix::rotation(0.3, {25, 25}));
        drawAll(device);
        device.restoreState();
    };
    EXPECT_EQ(drawn(*drawing({80, 80}, drawClipped)), (CmRect{20, 22, 30, 28}));
    EXPECT_EQ(drawn(*drawing({80, 80}, drawClipped, 1.5)), (CmRect{30, 33, 45, 42}));
}

TEST_F(CairoDeviceTest, CutsTheSameWhicheverClipsCameBefore) {
    const CmRect clips[] = {{0, 0, 60, 60},   {10, 0, 60, 60},  {10, 12, 40, 60}, {0, 12, 40, 44},
                            {12, 14, 38, 42}, {30, 30, 31, 60}, {0, 0, 60, 13},   {45, 45, 60, 60},
                            {0, 50, 20, 60},  {10, 12, 40, 44}, {5, 5, 5, 50},    {20, 20, 25, 25},
                            {0, 0, 60, 60}};
    const auto drawIn = [](UDrawDevice& device, const CmRect& clip) {
        device.setClip(clip);
        device.setBrushColor(StandardColor::red);
        for (const CmRect& circle : {CmRect{2, 2, 22, 22}, CmRect{15, 8, 55, 50}, CmRect{30, 35, 58, 59}})
            device.fillEllipse(circle, 0, fullCircle, true);
        device.drawString(ConstString("clipped"), {8, 20, 55, 40}, 0);
    };
    auto kept = surface({60, 60});
    UDrawDevice device(kept.get());
    for (size_t i = 0; i < std::size(clips); ++i) {
        SCOPED_TRACE(i);
        device.setClip({0, 0, 60, 60});
        device.setBrushColor(StandardColor::white);
        device.fillRect({0, 0, 60, 60});
        drawIn(device, clips[i]);
        const auto fresh = drawing({60, 60}, [&](UDrawDevice& other) { drawIn(other, clips[i]); });
        for (int32_t y = 0; y < 60; ++y)
            for (int32_t x = 0; x < 60; ++x)
                ASSERT_EQ(pixel(*kept, x, y), pixel(*fresh, x, y)) << x << "," << y;
    }
}

TEST_F(CairoDeviceTest, TextKeepsItsPixelsWhereverItStands) {
    const auto drawAt = [](CmPoint place) {
        return drawing({120, 40},
                       [&](UDrawDevice& device) { device.drawString(ConstString("Level \xC3\xA4"), place); });
    };
    auto first = drawAt({10, 20});
    auto second = drawAt({27, 31});
    const CmRect a = drawn(*first);
    ASSERT_EQ(drawn(*second), a.moved(17, 11));
    for (int32_t y = a.top; y < a.bottom; ++y)
        for (int32_t x = a.left; x < a.right; ++x)
            ASSERT_EQ(pixel(*first, x, y), pixel(*second, x + 17, y + 11));
}

TEST_F(CairoDeviceTest, TransparentPixelsComeBackByClear) {
    const auto target = drawing({10, 10}, [](UDrawDevice& device) { device.clearRect({2, 2, 4, 4}); });
    EXPECT_EQ(pixel(*target, 2, 2), 0u);
    EXPECT_EQ(pixel(*target, 4, 4), white);
}

TEST_F(CairoDeviceTest, AttachedMemoryIsDrawnInto) {
    std::vector<uint32_t> memory(20 * 10, white);
    platform::PixelSurface pixels{reinterpret_cast<uint8_t*>(memory.data()), 20, 10, 20 * 4, 2.0};
    SurfaceTarget target;
    ASSERT_TRUE(target.attach(pixels));
    const Ref<GraphicsImage> image = target.getImage();
    EXPECT_TRUE(target.attach(pixels));
    EXPECT_EQ(target.getImage(), image) << "the same memory needs nothing new";
    {
        UDrawDevice device(&target);
        device.setBrushColor(StandardColor::red);
        device.fillRect({1, 1, 2, 2});
    }
    EXPECT_EQ(memory[2 * 20 + 2], red);
    EXPECT_EQ(memory[3 * 20 + 3], red);
    EXPECT_EQ(memory[4 * 20 + 4], white);
    EXPECT_FALSE(target.attach({}));
    EXPECT_EQ(target.getTargetImage(), nullptr);
}

TEST_F(CairoDeviceTest, KeptCopiesFollowTheirSource) {
    UBitmap picture({4, 4});
    const auto section = picture.createSection({1, 1, 3, 3});
    auto target = surface({20, 20});
    UDrawDevice device(target.get());
    for (const auto& [color, shown] : {std::pair{StandardColor::red, red}, {StandardColor::black, black}}) {
        fill(picture, color);
        for (UBitmap* bitmap : {&picture, static_cast<UBitmap*>(section.get())}) {
            device.clearRect({0, 0, 20, 20});
            device.drawBitmap(bitmap, {0, 0, 16, 16});
            EXPECT_EQ(pixel(*target, 8, 8), shown) << (bitmap == &picture ? "itself" : "a section of it");
        }
    }
    auto* image = static_cast<CairoImage*>(picture.getBackendImage());
    const auto kept = [&] { return image->stretched({0, 0, 4, 4}, {9, 9}, Interpolation::linear); };
    const auto before = kept();
    picture.drawTiled(device, {0, 0, 4, 4}, {0, 0, 20, 20}, {4, 4}, 1.0, Interpolation::linear);
    EXPECT_EQ(kept().get(), before.get()) << "reading changes no pixels";
}

TEST_F(CairoDeviceTest, KeepsStretchedPicturesWithinOneBudget) {
    constexpr CmSize large{1000, 1000};
    constexpr int64_t pictures = 3 * CairoImage::mostKeptPixels / (large.width * large.height);
    auto target = surface(large);
    std::vector<Ref<UBitmap>> all;
    UDrawDevice device(target.get());
    for (int64_t i = 0; i < pictures; ++i) {
        all.push_back(make<UBitmap>(CmSize{2, 2}));
        fill(*all.back(), i % 2 ? StandardColor::red : StandardColor::blue);
        device.drawBitmap(all.back().get(), CmRect::ofSize({}, large));
        ASSERT_LE(CairoImage::keptPixels(), CairoImage::mostKeptPixels) << i;
    }
    EXPECT_GT(CairoImage::keptPixels(), CairoImage::mostKeptPixels / 2) << "what fits is kept";
    device.drawBitmap(all.front().get(), CmRect::ofSize({}, large));
    EXPECT_EQ(pixel(*target, 500, 500), 0xFF0000FFu) << "one that had to go is made again";
    all.resize(1);
    for (int32_t i = 0; i < pictures; ++i)
        device.drawBitmap(all.front().get(), CmRect::ofSize({}, {large.width - i, large.height}));
    EXPECT_LE(CairoImage::keptPixels(), CairoImage::mostKeptPixels) << "one picture in many sizes";
    all.clear();
    EXPECT_EQ(CairoImage::keptPixels(), 0) << "they go with their pictures";
}

TEST_F(CairoDeviceTest, APartOutsideOfThePictureDrawsNothing) {
    UBitmap picture({4, 4});
    fill(picture, StandardColor::red);
    const TransformMatrix mirrored{-1, 0, 0, 1, 20, 0};
    const struct {
        TransformMatrix matrix;
        CmRect source;
        CmRect destination;
        CmRect drawn;
    } cases[] = {
        {{}, {2, 0, 6, 4}, {0, 0, 16, 16}, {0, 0, 8, 16}},
        {{}, {-2, -2, 2, 2}, {0, 0, 4, 4}, {2, 2, 4, 4}},
        {mirrored, {2, 0, 6, 4}, {0, 0, 16, 16}, {12, 0, 20, 16}},
    };
    for (const auto& c : cases) {
        const auto target = drawing({20, 20}, [&](UDrawDevice& device) {
            device.concatTransformMatrix(c.matrix);
            device.drawBitmapAlpha(&picture, c.source, c.destination, 1.0);
        });
        EXPECT_EQ(drawn(*target), c.drawn) << c.source.left << " of " << c.matrix.m11;
    }
}

TEST_F(CairoDeviceTest, ABatchComesToWhatItsPiecesWould) {
    const std::vector<CmRect> rects{{0, 0, 10, 10}, {5, 5, 15, 15}};
    const auto batched = drawing({20, 20}, [&](UDrawDevice& device) {
        device.setBrushColor(UColor::fromPacked(0x80FF0000));
        device.drawRects(rects, true);
    });
    const auto single = drawing({20, 20}, [&](UDrawDevice& device) {
        device.setBrushColor(UColor::fromPacked(0x80FF0000));
        for (const CmRect& rect : rects)
            device.fillRect(rect);
    });
    EXPECT_EQ(pixel(*batched, 7, 7), pixel(*single, 7, 7));
}

TEST_F(CairoDeviceTest, SurvivesAnyNumbers) {
    auto target = surface({20, 20});
    const auto backEnd = getGraphicsFactory()->createDrawDevice(target.get());
    const auto font = getGraphicsFactory()->getFontCollection()->findFont({{}, 12, 0});
    UBitmap picture({4, 4});
    const auto path = getGraphicsFactory()->createGraphicsPath();
    const double numbers[] = {NAN, INFINITY, -INFINITY, 1e300, -1e300, 1e9, 0, -5};
    for (const double a : numbers) {
        for (const double b : numbers) {
            const Geometry::Rect rect{a, b, b, a};
            backEnd->setPenWidth(a);
            backEnd->drawLine({a, b}, {b, a});
            backEnd->drawRect(rect, DrawMode::both);
            backEnd->drawEllipse(rect, DrawMode::both);
            backEnd->clearRect(rect);
            backEnd->drawBitmap(picture.getBackendImage(), {a, b}, nullptr);
            backEnd->drawBitmapStretched(picture.getBackendImage(), rect, rect, b, Interpolation::best);
            backEnd->drawString(u"text", rect, font.get(), black, 5);
            path->clear();
            path->addRoundRect(rect, a);
            path->addArc(rect, a, b);
            LineStyle style;
            style.dashCount = 99;
            style.dashLengths[0] = a;
            style.dashLengths[1] = b;
            style.dashOffset = a;
            style.miterLimit = b;
            backEnd->setLineStyle(style);
            backEnd->drawPath(path.get(), DrawMode::both, nullptr);
            backEnd->setLineStyle(LineStyle::solid());
            backEnd->saveGlobalState();
            backEnd->concatTransformMatrix({a, b, a, b, b, a});
            backEnd->drawRect({1, 1, 5, 5}, DrawMode::both);
            backEnd->drawString(u"text", {1, 1, 5, 5}, font.get(), black, 5);
            backEnd->drawBitmap(picture.getBackendImage(), {1, 1}, nullptr);
            backEnd->setClip(rect);
            backEnd->restoreGlobalState();
        }
    }
    EXPECT_EQ(backEnd->restoreGlobalState(), Result::failure);
    backEnd->setClip({0, 0, 20, 20});
    backEnd->setBrushColor(red);
    EXPECT_EQ(backEnd->drawRect({0, 0, 20, 20}, DrawMode::fill), Result::ok);
    EXPECT_EQ(pixel(*target, 10, 10), red) << "the device still draws";
}

void drawPrimitives(UDrawDevice& device) {
    device.setPenColor(StandardColor::darkblue);
    device.setBrushColor(StandardColor::lightblue);
    device.fillRect({5, 5, 35, 25});
    device.drawFrame({5, 5, 35, 25});
    device.fillRoundRect({40, 5, 80, 25}, 6);
    device.drawRoundRect({40, 5, 80, 25}, 6);
    device.fillEllipse({85, 5, 115, 25}, 0, fullCircle, true);
    device.drawEllipse({85, 5, 115, 25}, 0, fullCircle);
    device.fillEllipse({120, 5, 150, 25}, 0.5, 4, true);
    device.drawEllipse({120, 5, 150, 25}, 0.5, 4);
    const std::vector<CmPoint> triangle{{5, 50}, {20, 30}, {35, 50}};
    device.fillPolygon(triangle);
    device.drawPolygon(triangle);
    device.setPen(UPen(StandardColor::darkred, 3));
    const std::vector<CmPoint> zigzag{{40, 48}, {50, 32}, {60, 48}, {70, 32}, {80, 48}};
    device.drawPolyline(zigzag);
    device.setPen(UPen(StandardColor::black, 1, UPen::Kind::dotted));
    device.drawFrame({85, 30, 115, 50});
    auto style = std::make_shared<LineStyle>();
    style->dashCount = 2;
    style->dashLengths[0] = 3;
    style->dashLengths[1] = 2;
    style->cap = LineCap::round;
    UPen dashed(StandardColor::darkgreen, 2);
    dashed.setLineStyle(style);
    device.setPen(dashed);
    drawLine(device, {120, 50}, {150, 30});
}

void drawTexts(UDrawDevice& device) {
    const struct {
        const char* text;
        uint32_t style;
        int32_t just;
    } texts[] = {
        {"Regular 0123", 0, Justify::left},
        {"Bold", UFont::bold, Justify::center},
        {"underline", UFont::underline, Justify::right},
        {"strikeout", UFont::strikeout, Justify::left},
        {"mono ii WW", UFont::monoSpacing, Justify::center},
        {"\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D e\xCC\x81", 0, Justify::right},
        {"two\nlines", 0, Justify::center | Justify::verticalCenter},
    };
    CmRect rect{5, 5, 155, 22};
    for (const auto& text : texts) {
        UFont font(10, text.style);
        font.setColor(StandardColor::darkblue);
        device.setFont(font);
        if (text.text[3] == '\n')
            rect.bottom = rect.top + 40;
        device.drawString(ConstString(text.text), rect, text.just, 2);
        rect = rect.moved(0, rect.height() + 1);
    }
}

TEST_F(CairoDeviceTest, DrawsAsTheReferenceShows) {
    for (const double scale : {1.0, 1.5, 2.0}) {
        const std::string suffix = "@" + std::to_string(static_cast<int>(scale * 100));
        const auto sized = [&](int32_t height) {
            return CmSize{int32_t(160 * scale), int32_t(height * scale)};
        };
        EXPECT_GOLDEN(*drawing(sized(60), drawPrimitives, scale)->getImage(), "graphics/primitives" + suffix);
        EXPECT_GOLDEN(*drawing(sized(160), drawTexts, scale)->getImage(), "graphics/text" + suffix);
    }
}

TEST_F(CairoDeviceTest, TurnsEverythingAsTheReferenceShows) {
    UBitmap picture({16, 16});
    fill(picture, StandardColor::orange);
    {
        UDrawDevice device(&picture);
        device.drawFrame({2, 2, 14, 14});
    }
    const auto target = drawing({160, 160}, [&](UDrawDevice& device) {
        device.concatTransformMatrix(TransformMatrix::rotation(std::numbers::pi / 8, {80, 50}));
        drawPrimitives(device);
        device.drawBitmap(&picture, {5, 60, 45, 100});
        device.setFont(UFont(10, UFont::underline));
        device.drawString(ConstString("turned"), CmRect{50, 60, 150, 80}, Justify::left);
    });
    EXPECT_GOLDEN(*target->getImage(), "graphics/turned");
}

TEST_F(CairoDeviceTest, ScalesPicturesAsTheReferenceShows) {
    UBitmap picture({8, 8});
    {
        UDrawDevice device(&picture);
        device.setBrushColor(StandardColor::green);
        device.fillEllipse({0, 0, 8, 8}, 0, fullCircle, true);
        device.setPenColor(StandardColor::red);
        drawLine(device, {0, 0}, {7, 7});
    }
    const auto target = drawing({100, 40}, [&](UDrawDevice& device) {
        device.drawBitmapAt(&picture, {2, 2});
        device.drawBitmap(&picture, {12, 2, 36, 26}, Interpolation::nearest);
        device.drawBitmap(&picture, {38, 2, 62, 26}, Interpolation::linear);
        device.drawBitmapAlpha(&picture, {0, 0, 8, 8}, {64, 2, 88, 26}, 0.5, Interpolation::best);
        device.drawBitmap(&picture, {90, 2, 94, 6}, Interpolation::best);
        picture.drawTiled(device, {0, 0, 8, 8}, {2, 28, 31, 39}, {8, 8}, 1.0, Interpolation::linear);
    });
    EXPECT_GOLDEN(*target->getImage(), "graphics/pictures");
}

} // namespace
} // namespace qorl
