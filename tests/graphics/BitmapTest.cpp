#include "graphics/BitmapCache.h"
#include "graphics/BitmapFilterFactory.h"
#include "graphics/GraphicsFactory.h"
#include "graphics/UBitmapFamily.h"
#include "graphics/UDrawDevice.h"
#include "support/FailingAllocation.h"
#include "support/RecordingBackEnd.h"
#include "support/TestGraphics.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace qorl {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class BitmapTest : public ::testing::Test {
protected:
    void SetUp() override { testing::useGraphics(); }

    /// Each pixel says where it is: 0xFF, column, row, 0.
    static Ref<UBitmap> numbered(CmSize size) {
        auto bitmap = make<UBitmap>(size);
        const PixelLock pixels(*bitmap->getBackendImage());
        for (int32_t y = 0; y < size.height; ++y)
            for (int32_t x = 0; x < size.width; ++x)
                pixels->getRow(y)[x] =
                    0xFF000000u | static_cast<uint32_t>(x) << 16 | static_cast<uint32_t>(y) << 8;
        return bitmap;
    }
    static uint32_t pixel(UBitmap& bitmap, int32_t x, int32_t y) {
        const PixelLock pixels(*bitmap.getBackendImage());
        return pixels->getRow(y)[x];
    }
    static Ref<UBitmap> filled(CmSize size, uint32_t premultiplied) {
        auto bitmap = make<UBitmap>(size);
        const PixelLock pixels(*bitmap->getBackendImage());
        for (int32_t y = 0; y < size.height; ++y)
            std::fill_n(pixels->getRow(y), size.width, premultiplied);
        return bitmap;
    }
    static std::string decodeError(std::vector<std::byte> file) {
        std::string error;
        EXPECT_EQ(UBitmap::fromFile(file, error), nullptr);
        return error;
    }
    static void putWord(std::vector<std::byte>& file, size_t place, uint32_t word) {
        for (int i = 0; i < 4; ++i)
            file[place + static_cast<size_t>(i)] = static_cast<std::byte>(word >> (24 - 8 * i));
    }
};

TEST_F(BitmapTest, PngComesBackAsItWas) {
    auto bitmap = numbered({7, 5});
    {
        const PixelLock pixels(*bitmap->getBackendImage());
        pixels->getRow(0)[0] = 0;
        pixels->getRow(0)[1] = 0x80400020;
    }
    std::string error;
    const auto back = UBitmap::fromFile(bitmap->toPng(), error);
    ASSERT_NE(back, nullptr) << error;
    EXPECT_EQ(back->getSize(), (CmSize{7, 5}));
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 7; ++x)
            EXPECT_EQ(pixel(*back, x, y), pixel(*bitmap, x, y)) << x << ", " << y;
}

TEST_F(BitmapTest, BrokenFilesSayWhatIsWrong) {
    const auto good = numbered({20, 10})->toPng();
    const auto sized = [&](uint32_t width, uint32_t height) {
        auto file = good;
        putWord(file, 16, width);
        putWord(file, 20, height);
        return decodeError(file);
    };
    const std::string limits = "; at most 16384 a side and 67108864 in all are allowed";
    EXPECT_EQ(decodeError({}), "the file is empty");
    EXPECT_EQ(decodeError(std::vector<std::byte>(100)), "not an image file of a known kind (PNG)");
    EXPECT_EQ(decodeError({good.begin(), good.begin() + 20}), "the PNG ends within its header");
    EXPECT_EQ(sized(0, 10), "the PNG says that it has 0 x 10 pixels");
    EXPECT_EQ(sized(16385, 10), "the PNG says that it has 16385 x 10 pixels" + limits);
    EXPECT_EQ(sized(16384, 16384), "the PNG says that it has 16384 x 16384 pixels" + limits);
    EXPECT_EQ(sized(0xFFFFFFFF, 0xFFFFFFFF),
              "the PNG says that it has 4294967295 x 4294967295 pixels" + limits);
    EXPECT_EQ(sized(20, 16384), "the PNG says that it has 20 x 16384 pixels, which its " +
                                    std::to_string(good.size()) + " bytes cannot hold");
    EXPECT_THAT(sized(20, 11), StartsWith("the PNG is broken: ")) << "could be true, but for the check sum";
    auto damaged = good;
    damaged[damaged.size() - 30] ^= std::byte{0x55};
    EXPECT_THAT(decodeError(damaged), StartsWith("the PNG is broken: "));
}

TEST_F(BitmapTest, EveryTruncationIsRefused) {
    const auto good = numbered({20, 10})->toPng();
    // The last chunk holds nothing: a file that only lacks it is whole.
    for (size_t size = 0; size + 16 < good.size(); ++size) {
        const std::vector<std::byte> file(good.begin(), good.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_FALSE(decodeError(file).empty()) << size << " of " << good.size() << " bytes";
    }
}

TEST_F(BitmapTest, SixteenBitsWithoutAColourSpaceAreNotTakenAsLinear) {
    constexpr uint8_t gray[] = {
        0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48, 0x44, 0x52, 0x00,
        0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x10, 0x00, 0x00, 0x00, 0x00, 0x6A, 0xEE, 0x47, 0x16, 0x00,
        0x00, 0x00, 0x0B, 0x49, 0x44, 0x41, 0x54, 0x78, 0x9C, 0x63, 0x68, 0x68, 0x00, 0x00, 0x01, 0x83, 0x01,
        0x01, 0x18, 0x35, 0x22, 0x15, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};
    const auto bytes = std::as_bytes(std::span(gray));
    std::string error;
    const auto bitmap = UBitmap::fromFile(bytes, error);
    ASSERT_NE(bitmap, nullptr) << error;
    EXPECT_EQ(pixel(*bitmap, 0, 0), 0xFF808080u);
}

TEST_F(BitmapTest, FilesTellThatMemoryRanOut) {
    auto bitmap = numbered({20, 10});
    const auto file = bitmap->toPng();
    failEachAllocation([&](FailingAllocation& allocation) {
        std::string error;
        const auto read = allocation.during([&] { return UBitmap::fromFile(file, error); });
        EXPECT_EQ(read == nullptr, allocation.hasFailed());
        EXPECT_EQ(error.empty(), !allocation.hasFailed());
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        const auto source = numbered({4, 4});
        const auto woven = allocation.during([&] {
            return source->getWoven({20, 20}, UBitmap::WeaveKind::tile, {1, 1, 1, 1});
        });
        EXPECT_EQ(woven == nullptr, allocation.hasFailed());
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        const auto written = allocation.during([&] { return bitmap->toPng(); });
        EXPECT_EQ(written.empty(), allocation.hasFailed());
    });
}

TEST_F(BitmapTest, SizesBeyondTheLimitsHaveNoImage) {
    for (const CmSize size :
         {CmSize{0, 5}, CmSize{5, 0}, CmSize{-1, 5}, CmSize{16385, 1}, CmSize{16384, 4097}}) {
        UBitmap bitmap(size);
        EXPECT_FALSE(bitmap.isValid()) << size.width << " x " << size.height;
        EXPECT_EQ(bitmap.getSize(), CmSize{});
        EXPECT_TRUE(bitmap.toPng().empty());
        EXPECT_EQ(bitmap.getScaled({5, 5}, Interpolation::linear), nullptr);
        EXPECT_EQ(bitmap.createSection({0, 0, 1, 1}), nullptr);
        UDrawDevice device(&bitmap);
        EXPECT_TRUE(device.isSilent());
    }
}

TEST_F(BitmapTest, EqualVariantsAreOneObject) {
    auto bitmap = numbered({8, 8});
    auto other = numbered({8, 8});
    EXPECT_EQ(bitmap->getScaled({4, 4}, Interpolation::best), bitmap->getScaled({4, 4}, Interpolation::best));
    EXPECT_NE(bitmap->getScaled({4, 4}, Interpolation::best),
              bitmap->getScaled({4, 4}, Interpolation::nearest));
    EXPECT_EQ(bitmap->getDesaturated(0.5f, 1), bitmap->getDesaturated(0.50f, 1.0f));
    EXPECT_NE(bitmap->getDesaturated(0.5f, 1), other->getDesaturated(0.5f, 1));
    EXPECT_NE(bitmap->getTinted(StandardColor::red, 0.5f), bitmap->getTinted(StandardColor::red, 0.25f));
    EXPECT_EQ(bitmap->getScaled({0, 4}, Interpolation::best), nullptr);
    EXPECT_EQ(bitmap->getWoven({4, -1}, UBitmap::WeaveKind::tile, {}), nullptr);

    BitmapCache& cache = *BitmapCache::instance();
    EXPECT_NE(cache.get(bitmap.get(), "scale-4-4-2"), nullptr);
    EXPECT_NE(cache.get(bitmap.get(), "desat-0.5-1"), nullptr);
    EXPECT_NE(cache.get(bitmap.get(), "tint-4294901760-0.25"), nullptr);
    EXPECT_EQ(cache.get(other.get(), "scale-4-4-2"), nullptr);
}

TEST_F(BitmapTest, VariantsLeaveTheCacheWithTheirSource) {
    BitmapCache& cache = *BitmapCache::instance();
    const size_t before = cache.count();
    auto bitmap = numbered({8, 8});
    auto scaled = bitmap->getScaled({4, 4}, Interpolation::best);
    scaled->getDesaturated(1, 1);
    scaled = nullptr;
    EXPECT_EQ(cache.count(), before + 2);
    bitmap = nullptr;
    EXPECT_EQ(cache.count(), before);
    EXPECT_FALSE(cache.put(nullptr, "key", nullptr));
    bitmap = numbered({1, 1});
    EXPECT_FALSE(cache.put(bitmap.get(), "key", bitmap.get())) << "it would keep itself";
}

TEST_F(BitmapTest, SectionsShareThePixelsAndAddTheirOffsets) {
    auto root = numbered({20, 10});
    const auto section = root->createSection({5, 2, 15, 9});
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(section->getSize(), (CmSize{10, 7}));
    EXPECT_EQ(pixel(*section, 0, 0), 0xFF050200u);
    const auto inner = section->createSection({1, 3, 4, 6});
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(static_cast<UBitmapSection*>(inner.get())->getOffset(), (CmPoint{6, 5}));
    EXPECT_EQ(inner->getRootBitmap(), root.get());
    EXPECT_EQ(inner->getSourceBitmap(), inner.get());
    {
        const PixelLock pixels(*root->getBackendImage());
        pixels->getRow(5)[6] = 0xFFABCDEF;
    }
    EXPECT_EQ(pixel(*inner, 0, 0), 0xFFABCDEFu);
    for (const CmRect& outside : {CmRect{0, 0, 11, 1}, CmRect{-1, 0, 1, 1}, CmRect{3, 3, 3, 5}})
        EXPECT_EQ(section->createSection(outside), nullptr);

    UBitmap odd(retain(numbered({3, 5})->getBackendImage()), 2.0);
    const auto whole = odd.createSection(CmRect::ofSize({}, odd.getSize()));
    ASSERT_NE(whole, nullptr) << "two by three logical pixels, the last ones half";
    EXPECT_EQ(pixel(*whole, 2, 4), 0xFF020400u);
}

TEST_F(BitmapTest, ColouringASectionLeavesItsRootAlone) {
    auto root = numbered({4, 4});
    const auto section = root->createSection({1, 1, 3, 3});
    const auto red = section->getColored(StandardColor::red, UBitmap::ColorMode::fill);
    EXPECT_EQ(red->getSize(), (CmSize{2, 2}));
    EXPECT_EQ(pixel(*red, 1, 1), 0xFFFF0000u);
    EXPECT_EQ(pixel(*root, 1, 1), 0xFF010100u);
}

TEST_F(BitmapTest, ColoursKeepTheAlpha) {
    auto half = filled({2, 2}, 0x80404000);
    const auto alphaOf = [](const Ref<UBitmap>& bitmap) { return pixel(*bitmap, 0, 0) >> 24; };
    EXPECT_EQ(pixel(*half->getColored(StandardColor::white, UBitmap::ColorMode::fill), 0, 0), 0x80808080u);
    EXPECT_EQ(pixel(*half->getTinted(StandardColor::blue, 1), 0, 0), 0x80000080u);
    EXPECT_EQ(pixel(*half->getTinted(StandardColor::blue, 0), 0, 0), 0x80404000u);
    EXPECT_EQ(alphaOf(half->getAdjusted(90, 50, 50)), 0x80u);
    EXPECT_EQ(alphaOf(half->getDesaturated(1, 0.5f)), 0x40u);
    const uint32_t gray = pixel(*half->getDesaturated(1, 1), 0, 0);
    EXPECT_EQ(gray >> 16 & 0xFF, gray & 0xFF);
}

TEST_F(BitmapTest, AdjustsHueSaturationAndLuminance) {
    auto red = filled({1, 1}, 0xFFC03030);
    EXPECT_EQ(pixel(*red->getAdjusted(0, 0, 0), 0, 0), 0xFFC03030u);
    EXPECT_EQ(pixel(*red->getAdjusted(120, 0, 0), 0, 0), 0xFF30C030u);
    EXPECT_EQ(pixel(*red->getAdjusted(-360, 0, 0), 0, 0), 0xFFC03030u);
    EXPECT_EQ(pixel(*red->getAdjusted(0, -100, 0), 0, 0), 0xFF787878u);
    const auto lightness = [&](int32_t shift) {
        return UColor::fromPacked(pixel(*red->getAdjusted(0, 0, shift), 0, 0)).toHsl().lightness;
    };
    // base 1.5: e = 2.25 upward; t = 120/255: (1 - t) - (1 - t)^2.25 + t
    EXPECT_NEAR(lightness(100), 76.1, 0.6);
    EXPECT_LT(lightness(-50), lightness(0));
    EXPECT_LT(lightness(-100), lightness(-50));
    EXPECT_EQ(lightness(100), lightness(250)) << "clamped";
}

TEST_F(BitmapTest, FilmStripsCutTheirFrames) {
    auto strip = make<UFilmStrip>(numbered({6, 20}), 4, UFilmStrip::FrameAlign::vertical);
    EXPECT_EQ(strip->getFrameSize(), (CmSize{6, 5}));
    EXPECT_EQ(strip->getFrameRect(2), (CmRect{0, 10, 6, 15}));
    EXPECT_EQ(strip->getFrameRect(99), strip->getFrameRect(3));
    EXPECT_EQ(strip->getFrameRect(-1), strip->getFrameRect(0));
    EXPECT_EQ(pixel(*strip->getFrame(3), 0, 0), 0xFF000F00u);
    auto flat = make<UFilmStrip>(numbered({6, 20}), 3, UFilmStrip::FrameAlign::horizontal);
    EXPECT_EQ(flat->getFrameRect(1), (CmRect{2, 0, 4, 20}));
    EXPECT_EQ(UFilmStrip(numbered({6, 20}), 0, UFilmStrip::FrameAlign::vertical).getFrameCount(), 1);
}

TEST_F(BitmapTest, NinePartsKeepTheirCorners) {
    const auto backEnd = make<testing::RecordingBackEnd>();
    UDrawDevice device{Ref<DrawBackEnd>(backEnd)};
    device.fillRect({0, 0, 1, 1});
    backEnd->take();
    UDynamicBitmap frame(numbered({10, 8}), {3, 2, 6, 5}, UDynamicBitmap::stretch);
    device.drawBitmap(&frame, {100, 100, 130, 120});
    EXPECT_EQ(backEnd->take(),
              "bitmap 100,100 from 0,0 3x2; stretched 103,100 23x2 from 3,0 3x2 1; "
              "bitmap 126,100 from 6,0 4x2; stretched 100,102 3x15 from 0,2 3x3 1; "
              "stretched 103,102 23x15 from 3,2 3x3 1; stretched 126,102 4x15 from 6,2 4x3 1; "
              "bitmap 100,117 from 0,5 3x3; stretched 103,117 23x3 from 3,5 3x3 1; "
              "bitmap 126,117 from 6,5 4x3");
    device.drawBitmap(&frame, {0, 0, 5, 8});
    EXPECT_THAT(backEnd->take(), StartsWith("stretched 0,0 2x2 from 0,0 3x2"))
        << "corners share what there is";

    UDynamicBitmap split(numbered({10, 8}), {4, 3, 4, 3}, UDynamicBitmap::stretch);
    device.drawBitmap(&split, {0, 0, 20, 20});
    EXPECT_EQ(backEnd->take(), "bitmap 0,0 from 0,0 4x3; bitmap 14,0 from 4,0 6x3; "
                               "bitmap 0,15 from 0,3 4x5; bitmap 14,15 from 4,3 6x5")
        << "a centre without room";

    UDynamicBitmap tiled(numbered({10, 8}), {3, 2, 6, 5}, UDynamicBitmap::horizontalRepeat);
    device.drawBitmapAlpha(&tiled, {0, 0, 10, 8}, {0, 0, 12, 18}, 0.5);
    EXPECT_EQ(backEnd->take(), "stretched 0,0 3x2 from 0,0 3x2 0.5; stretched 3,0 3x2 from 3,0 3x2 0.5; "
                               "stretched 6,0 2x2 from 3,0 2x2 0.5; stretched 8,0 4x2 from 6,0 4x2 0.5; "
                               "stretched 0,2 3x13 from 0,2 3x3 0.5; stretched 3,2 3x13 from 3,2 3x3 0.5; "
                               "stretched 6,2 2x13 from 3,2 2x3 0.5; stretched 8,2 4x13 from 6,2 4x3 0.5; "
                               "stretched 0,15 3x3 from 0,5 3x3 0.5; stretched 3,15 3x3 from 3,5 3x3 0.5; "
                               "stretched 6,15 2x3 from 3,5 2x3 0.5; stretched 8,15 4x3 from 6,5 4x3 0.5")
        << "repeated across, stretched down";
    device.setClip({107, 100, 109, 102});
    device.fillRect({107, 100, 108, 101});
    backEnd->take();
    device.drawBitmap(&tiled, {100, 100, 130, 120});
    EXPECT_THAT(backEnd->take(),
                AllOf(HasSubstr("bitmap 106,100 from 3,0 3x2"), Not(HasSubstr("bitmap 103,100"))))
        << "tiles that can't be seen are left out";
}

TEST_F(BitmapTest, TilesCostWhatIsSeenOfThem) {
    const auto backEnd = make<testing::RecordingBackEnd>();
    UDrawDevice window{Ref<DrawBackEnd>(backEnd)};
    struct View : UDrawDevice {
        View(UDrawDevice& outer, const CmRect& limit) : UDrawDevice(outer, {}) { limitClip(limit); }
    };
    const auto draws = [&](CmSize tile, const CmRect& limit) {
        View view(window, limit);
        backEnd->take();
        numbered(tile)->drawTiled(view, CmRect::ofSize({}, tile), {INT32_MIN, -20000, INT32_MAX, 20000}, tile,
                                  1.0, Interpolation::linear);
        const std::string calls = backEnd->take();
        return std::count(calls.begin(), calls.end(), ';');
    };
    EXPECT_LE(draws({10, 10}, {0, 0, 20, 20}), 15) << "the limit of the view counts";
    EXPECT_LE(draws({1, 1}, {0, 0, 1000, 1000}), 300) << "single pixels are drawn in larger pieces";

    auto target = filled({50, 40}, 0xFF000000);
    auto tile = numbered({3, 2});
    {
        UDrawDevice device(target.get());
        tile->drawTiled(device, {0, 0, 3, 2}, {5, 7, 47, 36}, {3, 2}, 1.0, Interpolation::linear);
    }
    for (int32_t y = 0; y < 40; ++y) {
        for (int32_t x = 0; x < 50; ++x) {
            const bool inside = x >= 5 && x < 47 && y >= 7 && y < 36;
            EXPECT_EQ(pixel(*target, x, y), inside ? pixel(*tile, (x - 5) % 3, (y - 7) % 2) : 0xFF000000u)
                << x << ", " << y;
        }
    }
}

TEST_F(BitmapTest, BlitsWhatLiesInside) {
    auto to = filled({4, 4}, 0xFF000000);
    auto from = numbered({4, 4});
    EXPECT_TRUE(to->blit(*from, {1, 1, 4, 4}, {2, 3}));
    EXPECT_EQ(pixel(*to, 2, 3), 0xFF010100u);
    EXPECT_EQ(pixel(*to, 3, 3), 0xFF020100u);
    EXPECT_TRUE(to->blit(*from, {0, 0, 2, 2}, {-1, -1}));
    EXPECT_EQ(pixel(*to, 0, 0), 0xFF010100u);
    EXPECT_EQ(pixel(*to, 1, 0), 0xFF000000u);
    EXPECT_FALSE(to->blit(*from, {3, 3, 5, 5}, {0, 0}));
    EXPECT_TRUE(from->blit(*from, {0, 0, 4, 3}, {0, 1}));
    EXPECT_EQ(pixel(*from, 1, 3), 0xFF010200u) << "moved down within itself";
}

TEST_F(BitmapTest, CollectionsFindByName) {
    UBitmapCollection collection;
    const auto a = numbered({1, 1});
    const auto b = numbered({2, 2});
    collection.add(a.get(), "knob");
    collection.add(b.get(), "fader");
    collection.add(nullptr, "none");
    EXPECT_EQ(collection.count(), 2);
    EXPECT_EQ(collection.getByName("fader"), b.get());
    EXPECT_EQ(collection.getByName("Fader"), nullptr);
    EXPECT_EQ(collection.indexOf(b.get()), 1);
    EXPECT_EQ(collection.getName(0), "knob");
    collection.remove(a.get());
    EXPECT_EQ(collection.get(0), b.get());
    EXPECT_EQ(collection.get(1), nullptr);
    EXPECT_EQ(collection.indexOf(a.get()), -1);
}

TEST_F(BitmapTest, FiltersRunByName) {
    BitmapFilterFactory& factory = *getGraphicsFactory()->getBitmapFilterFactory();
    std::string names;
    for (size_t i = 0; i < factory.count(); ++i)
        names += std::string(factory.getName(i)) + " ";
    EXPECT_EQ(names, "AdjustHSL Desaturate ReplaceColor Tint Mirror Rotate PNMScale MeanColor ");
    EXPECT_EQ(factory.create("mirror"), nullptr);

    using Parameters = std::initializer_list<std::pair<const char*, FilterValue>>;
    const auto run = [&](const char* name, Parameters parameters, UBitmap& input) {
        const auto filter = factory.create(name);
        for (const auto& [key, value] : parameters)
            EXPECT_EQ(filter->setParameter(key, value), Result::ok) << name << " " << key;
        filter->setInput(retain(input.getBackendImage()));
        return make<UBitmap>(filter->getResult());
    };
    auto source = numbered({3, 2});
    EXPECT_EQ(pixel(*run("Mirror", {{"horizontal", true}}, *source), 0, 0), 0xFF020000u);
    EXPECT_EQ(pixel(*run("Mirror", {{"vertical", true}}, *source), 0, 0), 0xFF000100u);
    EXPECT_EQ(pixel(*run("Rotate", {{"angle", 180.0}, {"interpolation", false}}, *source), 0, 0), 0xFF020100u)
        << "about the middle";
    EXPECT_EQ(pixel(*run("Rotate", {{"angle", 360.0}}, *source), 1, 1), 0xFF010100u);
    EXPECT_EQ(run("PNMScale", {{"destinationSize", CmSize{9, 7}}}, *source)->getSize(), (CmSize{9, 7}));
    auto red = filled({1, 1}, 0xFFFF0000);
    EXPECT_EQ(pixel(*run("AdjustHSL", {{"saturationShift", -99.6}}, *red), 0, 0), 0xFF807E7Eu)
        << "a shift is not rounded";
    const auto whitened = [&](uint32_t color, UBitmap& input) {
        const UColor white(StandardColor::white);
        return run("ReplaceColor", {{"colorToReplace", UColor::fromPacked(color)}, {"replaceColor", white}},
                   input);
    };
    auto faint = filled({1, 1}, 0x0A080402);
    EXPECT_EQ(pixel(*whitened(0x0AC86432, *faint), 0, 0), 0xFFFFFFFFu) << "a colour that its alpha rounds";
    EXPECT_EQ(pixel(*whitened(0xFF020100, *source), 2, 1), 0xFFFFFFFFu);

    const auto mean = factory.create("MeanColor");
    mean->setInput(retain(source->getBackendImage()));
    FilterValue value;
    EXPECT_EQ(mean->getParameter("colour", value), Result::invalidArgument);
    ASSERT_EQ(mean->getParameter("color", value), Result::ok);
    EXPECT_EQ(std::get<UColor>(value).packed(), 0xFF010100u);
    EXPECT_EQ(mean->setParameter("color", UColor()), Result::invalidArgument) << "the filter's to answer";
    EXPECT_EQ(factory.create("Tint")->setParameter("factor", true), Result::invalidArgument)
        << "of another kind";
}

} // namespace
} // namespace qorl
