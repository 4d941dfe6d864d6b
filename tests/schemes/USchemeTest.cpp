#include "schemes/UScheme.h"

#include "foundation/Cast.h"
#include "graphics/GraphicsFactory.h"
#include "schemes/ControlTable.h"
#include "schemes/GlobalSchemes.h"
#include "schemes/USchemeClass.h"
#include "schemes/USystemScheme.h"
#include "support/FailingAllocation.h"
#include "support/GoldenImage.h"
#include "support/RecordingBackEnd.h"
#include "support/Slots.h"
#include "support/TestGraphics.h"

#include <qorl/Ref.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace qorl {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

SchemeEntry colorEntry(std::string_view name, uint32_t argb, uint32_t group = 0) {
    return {
        .kind = SchemeEntry::Kind::color, .name = name, .color = UColor::fromPacked(argb), .group = group};
}

SchemeEntry fontEntry(std::string_view name, std::string_view faces, int32_t size) {
    return {.kind = SchemeEntry::Kind::font, .name = name, .faces = faces, .fontSize = size};
}

class USchemeTest : public ::testing::Test {
protected:
    void SetUp() override {
        testing::useGraphics();
        scheme_->reset();
    }

    void apply(const std::vector<SchemeEntry>& section) { scheme_->applyScheme(section); }
    /// The calls that reach the back end when a frame is drawn.
    std::string drawn(UScheme& scheme, const CmRect& rect, int32_t kind, const char* title = "") {
        scheme.drawFrame(device_, rect, kind, ConstString(title));
        return backEnd_->take();
    }
    std::string drawn(const CmRect& rect, int32_t kind, const char* title = "") {
        return drawn(*scheme_, rect, kind, title);
    }

    Ref<UScheme> scheme_ = make<UScheme>();
    Ref<testing::RecordingBackEnd> backEnd_ = make<testing::RecordingBackEnd>();
    UDrawDevice device_{Ref<DrawBackEnd>(backEnd_)};
};

TEST_F(USchemeTest, KeysKeepTheirNumbers) {
    struct KeyCase {
        const char* name;
        int32_t index;
    };
    for (const auto& c :
         {KeyCase{"buttonface", 0}, KeyCase{"framebottom", 8}, KeyCase{"datafieldback", 12},
          KeyCase{"windowback", 17}, KeyCase{"dialogback", 18}, KeyCase{"text", 26}, KeyCase{"hyperlink", 35},
          KeyCase{"progressbar", 39}, KeyCase{"Hyperlink", -1}, KeyCase{"hyperlin", -1}, KeyCase{"", -1}})
        EXPECT_EQ(UScheme::colorIndex(c.name), c.index) << c.name;
    for (const auto& c :
         {KeyCase{"margin", 0}, KeyCase{"scrollbarwidth", 6}, KeyCase{"expansionboxheight", 18},
          KeyCase{"dlg.inset", 19}, KeyCase{"dlg.btn.sizer.inset", 23}, KeyCase{"dlg", -1}})
        EXPECT_EQ(UScheme::metricIndex(c.name), c.index) << c.name;
    for (const auto& c : {KeyCase{"message", 0}, KeyCase{"label", 1}, KeyCase{"dataXL", 8},
                          KeyCase{"column", 13}, KeyCase{"dataxl", -1}})
        EXPECT_EQ(UScheme::fontIndex(c.name), c.index) << c.name;

    for (int32_t i = 0; i < SchemeColor::count; ++i)
        EXPECT_EQ(UScheme::colorIndex(UScheme::colorName(i)), i);
    for (int32_t i = 0; i < SchemeMetric::count; ++i)
        EXPECT_EQ(UScheme::metricIndex(UScheme::metricName(i)), i);
    for (int32_t i = 0; i < SchemeFont::count; ++i)
        EXPECT_EQ(UScheme::fontIndex(UScheme::fontName(i)), i);
    EXPECT_EQ(UScheme::fontName(14), nullptr);
    EXPECT_EQ(UScheme::fontName(-1), nullptr);
}

TEST_F(USchemeTest, OperationsStandInTheirPublishedOrder) {
    testing::expectConsecutive(
        {SLOT(UScheme, clone), SLOT(UScheme, findNamedColor), SLOT(UScheme, getColor),
         SLOT(UScheme, getBrush), SLOT(UScheme, getPen), SLOT(UScheme, getFont), SLOT(UScheme, createControl),
         SLOT(UScheme, drawFrame), SLOT(UScheme, getMetric), SLOT(UScheme, setMetric),
         SLOT(UScheme, drawWorkArea), SLOT(UScheme, drawDialogFrame), SLOT(UScheme, drawGroupFrame),
         SLOT(UScheme, drawButtonFrame), SLOT(UScheme, drawPressedFrame), SLOT(UScheme, drawEdgeLines)},
        24);
    EXPECT_EQ(testing::slotOf(&UScheme::drawDataField), 24 + 16);
    EXPECT_EQ(testing::slotOf(&UScheme::drawCheckMark), 24 + 30);
    testing::expectConsecutive(
        {SLOT(UScheme, resetColors), SLOT(UScheme, resetFonts), SLOT(UScheme, resetMetrics)}, 24 + 37);
}

TEST_F(USchemeTest, StartsWithMetricsAlone) {
    const UScheme fresh;
    EXPECT_EQ(fresh.getMetric(SchemeMetric::buttonwidth), 80);
    EXPECT_EQ(fresh.getMetric(SchemeMetric::dialogButtonSizerInset), 18);
    EXPECT_EQ(fresh.getFont(SchemeFont::dataXL).getSize(), UFont::defaultSize);
    EXPECT_EQ(scheme_->getFont(SchemeFont::dataXL).getSize(), 16);
    EXPECT_EQ(scheme_->getFont(SchemeFont::dataXL).getStyle(), UFont::bold);
    EXPECT_EQ(scheme_->getColor(SchemeColor::hyperlink), UColor(StandardColor::blue));
    EXPECT_EQ(scheme_->getColor(SchemeColor::preferenceheader), UColor(StandardColor::gray70));
}

TEST_F(USchemeTest, KeysAndNamedColoursDoNotMix) {
    const auto named = [&](const char* name) {
        UColor color;
        return scheme_->findNamedColor(name, color) ? color.packed() : 0;
    };
    apply({colorEntry("hyperlink", 0xFF010203, 0x10000), colorEntry("myColor", 0xFF040506, 0x20000)});
    EXPECT_TRUE(scheme_->isSkinned());
    EXPECT_EQ(scheme_->getColor(SchemeColor::hyperlink).packed(), 0xFF010203u);
    EXPECT_EQ(scheme_->getPen(SchemeColor::hyperlink).getColor().packed(), 0xFF010203u);
    EXPECT_EQ(scheme_->getBrush(SchemeColor::hyperlink).getColor().packed(), 0xFF010203u);
    EXPECT_EQ(scheme_->getColorGroup(SchemeColor::hyperlink), 0x10000u);
    EXPECT_EQ(named("hyperlink"), 0u);
    EXPECT_EQ(named("myColor"), 0xFF040506u);

    apply({colorEntry("myColor", 0xFF070809)});
    EXPECT_EQ(scheme_->namedColorCount(), 1u);
    EXPECT_EQ(named("myColor"), 0xFF070809u);
    EXPECT_EQ(scheme_->findNamedEntry("myColor")->getGroup(), 0u);

    scheme_->resetColors();
    EXPECT_EQ(scheme_->getColorGroup(SchemeColor::hyperlink), 0x10000u) << "colours of the desktop have none";
    scheme_->reset();
    EXPECT_FALSE(scheme_->isSkinned());
    EXPECT_EQ(named("myColor"), 0u);
    EXPECT_EQ(scheme_->getColor(SchemeColor::hyperlink), UColor(StandardColor::blue));
    EXPECT_EQ(scheme_->getColorGroup(SchemeColor::hyperlink), 0u);
}

TEST_F(USchemeTest, AResetWithoutMemoryChangesNothing) {
    failEachAllocation([this](FailingAllocation& allocation) {
        apply({colorEntry("myColor", 0xFF040506)});
        const bool isReset = allocation.completes([this] { scheme_->reset(); });
        EXPECT_EQ(scheme_->isSkinned(), !isReset);
        EXPECT_EQ(scheme_->namedColorCount(), isReset ? 0u : 1u);
    });
}

TEST_F(USchemeTest, FallsBackWhereANameIsMissing) {
    scheme_->setNamedColor("mine", UColor::fromPacked(0xFF010203));
    UColor color;
    EXPECT_TRUE(scheme_->getColorOr("mine", SchemeColor::hyperlink, color));
    EXPECT_FALSE(scheme_->getColorOr("other", SchemeColor::hyperlink, color));
    EXPECT_EQ(color, UColor(StandardColor::blue));
    EXPECT_FALSE(scheme_->getNamedColorOr("other", 99, color));
    EXPECT_EQ(color, UColor(StandardColor::black));
    EXPECT_FALSE(scheme_->getNamedColorOrPacked("other", 0x80102030, color));
    EXPECT_EQ(color.packed(), 0x80102030u);
}

TEST_F(USchemeTest, FontsTakeTheFirstFaceThatIsThere) {
    const struct {
        const char* faces;
        bool taken;
        const char* face;
    } cases[] = {
        {"DejaVu Serif", true, "DejaVu Serif"},
        {"No Such Face, , DejaVu Sans Mono ,DejaVu Serif", true, "DejaVu Sans Mono"},
        {"No Such Face", false, ""},
        {" , ,", false, ""},
        {"", true, ""},
        {"  ", true, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.faces);
        scheme_->reset();
        auto entry = fontEntry("label", c.faces, 21);
        entry.fontStyle = UFont::italic;
        apply({entry});
        const UFont& font = scheme_->getFont(SchemeFont::label);
        EXPECT_EQ(font.getSize(), c.taken ? 21 : 11);
        EXPECT_EQ(font.getStyle(), c.taken ? UFont::italic : 0);
        EXPECT_EQ(font.getFaceName(), c.face);
    }
    auto colored = fontEntry("label", "", 10);
    colored.fontColor = UColor(StandardColor::red);
    apply({colored, fontEntry("label", "", 12), fontEntry("nosuchkey", "", 12)});
    EXPECT_EQ(scheme_->getFont(SchemeFont::label).getColor(), UColor(StandardColor::red)) << "a colour stays";
    EXPECT_EQ(scheme_->getFont(SchemeFont::label).getSize(), 12);
}

struct Collector : SchemeWriter {
    void beginColors() override { ++sections; }
    void addColor(std::string_view name, const UColor& color, uint32_t group) override {
        entries.push_back(colorEntry(name, color.packed(), group));
    }
    void beginMetrics() override { ++sections; }
    void addMetric(std::string_view name, int32_t value) override {
        entries.push_back({.kind = SchemeEntry::Kind::metric, .name = name, .metric = value});
    }
    void beginFonts() override { ++sections; }
    void addFont(std::string_view name, const UFont& font) override {
        auto entry = fontEntry(name, font.getFaceName(), font.getSize());
        entry.fontStyle = font.getStyle();
        entry.fontColor = font.getColor();
        entries.push_back(entry);
    }
    std::vector<SchemeEntry> entries;
    int sections = 0;
};

TEST_F(USchemeTest, ReadsBackWhatItWrites) {
    apply({colorEntry("text", 0x80112233, 0x20000),
           {.kind = SchemeEntry::Kind::metric, .name = "margin", .metric = 3},
           {.kind = SchemeEntry::Kind::metric, .name = "nosuchkey", .metric = 99},
           fontEntry("data", "DejaVu Serif", 30)});
    Collector written;
    scheme_->exportColors(written, SchemeSection::own);
    scheme_->exportMetrics(written, SchemeSection::asItStands);
    scheme_->exportFonts(written, SchemeSection::own);
    EXPECT_EQ(written.sections, 2);
    ASSERT_EQ(written.entries.size(), size_t{40 + 24 + 14});

    UScheme other;
    other.applyScheme(written.entries);
    for (int32_t i = 0; i < SchemeColor::count; ++i) {
        EXPECT_EQ(other.getColor(i), scheme_->getColor(i));
        EXPECT_EQ(other.getColorGroup(i), scheme_->getColorGroup(i));
    }
    for (int32_t i = 0; i < SchemeMetric::count; ++i)
        EXPECT_EQ(other.getMetric(i), scheme_->getMetric(i));
    for (int32_t i = 0; i < SchemeFont::count; ++i)
        EXPECT_TRUE(other.getFont(i) == scheme_->getFont(i)) << i;
    EXPECT_EQ(other.getMetric(SchemeMetric::margin), 3);
    EXPECT_EQ(other.namedColorCount(), 0u);
}

TEST_F(USchemeTest, ClonesOwnTheirColours) {
    scheme_->setNamedColor("mine", StandardColor::red);
    const auto copy = Ref<CmObject>::adopt(scheme_->clone());
    auto* clone = cast<UScheme>(copy.get());
    ASSERT_NE(clone, nullptr);
    scheme_->setNamedColor("mine", StandardColor::green);
    scheme_->setColor(SchemeColor::text, StandardColor::green);
    UColor color;
    ASSERT_TRUE(clone->findNamedColor("mine", color));
    EXPECT_EQ(color, UColor(StandardColor::red));
    EXPECT_NE(clone->getColor(SchemeColor::text), UColor(StandardColor::green));
}

TEST_F(USchemeTest, TheSystemSchemeIsPlain) {
    const auto system = make<USystemScheme>();
    system->reset();
    system->setColor(SchemeColor::framebottom, StandardColor::red);
    system->setColor(SchemeColor::windowback, StandardColor::green);
    EXPECT_EQ(system->getFont(SchemeFont::data).getStyle(), 0u);
    EXPECT_EQ(system->getFont(SchemeFont::smalldata).getSize(), 12);
    EXPECT_EQ(system->getFont(SchemeFont::largedata).getStyle(), UFont::bold);

    EXPECT_THAT(drawn(*system, {0, 0, 20, 20}, FrameKind::workArea),
                AllOf(Not(HasSubstr("pen FFFF0000")), HasSubstr("pen FF00FF00")));
    EXPECT_EQ(system->getColor(SchemeColor::framebottom), UColor(StandardColor::red))
        << "only while it draws";
    scheme_->setColor(SchemeColor::framebottom, StandardColor::red);
    EXPECT_THAT(drawn({0, 0, 20, 20}, FrameKind::workArea), HasSubstr("pen FFFF0000"));
}

UControl* drawnControl(const CmRect&, int32_t, Binding::Value*, const ConstString&) {
    return reinterpret_cast<UControl*>(1);
}

UControl* platformControl(const CmRect&, int32_t, Binding::Value*, const ConstString&) {
    return reinterpret_cast<UControl*>(2);
}

TEST_F(USchemeTest, ControlsComeFromTheTable) {
    const auto kind = ControlKind::radioButton;
    const ControlMaker drawn = ControlTable::find(ControlLook::drawn, kind);
    const ControlMaker native = ControlTable::find(ControlLook::platform, kind);
    const auto system = make<USystemScheme>();
    const auto make = [&](UScheme& scheme, int32_t number) {
        return reinterpret_cast<intptr_t>(scheme.createControl(number, {}, 0, nullptr, ConstString()));
    };
    ControlTable::add(ControlLook::drawn, kind, &drawnControl);
    ControlTable::add(ControlLook::platform, kind, nullptr);
    EXPECT_EQ(make(*scheme_, kind), 1);
    EXPECT_EQ(make(*system, kind), 1) << "the drawn one where the desktop has none";
    ControlTable::add(ControlLook::platform, kind, &platformControl);
    EXPECT_EQ(make(*scheme_, kind), 1);
    EXPECT_EQ(make(*system, kind), 2);
    for (const int32_t none : {-1, 6, 7, 10, 1000})
        EXPECT_EQ(make(*scheme_, none), 0) << none;
    ControlTable::add(ControlLook::drawn, kind, drawn);
    ControlTable::add(ControlLook::platform, kind, native == drawn ? nullptr : native);
}

TEST_F(USchemeTest, UnknownFrameKindsDrawNothing) {
    constexpr CmRect rect{0, 0, 50, 50};
    for (const int32_t kind : {-8, -9, -10, 19, 1000})
        EXPECT_EQ(drawn(rect, kind, "title"), "") << kind;
    for (int32_t kind = -7; kind <= 18; ++kind) {
        EXPECT_EQ(drawn({5, 5, 5, 5}, kind), "") << kind;
        EXPECT_NE(drawn(rect, kind), "") << kind;
        for (const CmSize size : {CmSize{1, 1}, CmSize{2, 1}, CmSize{1, 3}, CmSize{3, 2}})
            drawn(CmRect::ofSize({}, size), kind, "title");
    }
    for (const int32_t size : {INT32_MIN, INT32_MAX}) {
        for (int32_t metric = 0; metric < SchemeMetric::count; ++metric)
            scheme_->setMetric(metric, size);
        for (int32_t kind = -7; kind <= 18; ++kind)
            EXPECT_THAT(drawn(rect, kind, "title"), Not(HasSubstr("e+")))
                << "a line of " << kind << " leads far away: " << size;
    }
}

TEST_F(USchemeTest, RoundedFramesTakeTheInnermostRadius) {
    const auto frame = [&] { return drawn({0, 0, 50, 50}, FrameKind::solidRoundRect); };
    EXPECT_THAT(frame(), Not(HasSubstr("path")));
    {
        const UScheme::FrameRadius outer(0);
        const UScheme::FrameRadius inner(8);
        EXPECT_THAT(frame(), HasSubstr("path"));
    }
    EXPECT_THAT(frame(), Not(HasSubstr("path")));
}

TEST_F(USchemeTest, DrawsAsTheReferenceShows) {
    constexpr CmSize cell{64, 40};
    UBitmap picture({cell.width * 7, cell.height * 6});
    {
        UDrawDevice device(&picture);
        device.setBrush(scheme_->getBrush(SchemeColor::windowback));
        device.fillRect({0, 0, 1000, 1000});
        const UScheme::FrameRadius radius(6);
        int32_t place = 0;
        const auto next = [&] {
            const CmRect rect =
                CmRect::ofSize({place % 7 * cell.width, place / 7 * cell.height}, cell).grown(-5, -4);
            ++place;
            return rect;
        };
        for (int32_t kind = FrameKind::frameOval; kind <= FrameKind::menuArrow; ++kind) {
            const UPen::Kind line =
                kind == FrameKind::frameDottedRect ? UPen::Kind::dotted : UPen::Kind::solid;
            device.setPen(UPen(StandardColor::darkblue, 1, line));
            device.setBrush(UBrush(StandardColor::lightblue));
            scheme_->drawFrame(device, next(), kind, ConstString(kind == 2 || kind == 3 ? "Title" : ""));
        }
        scheme_->drawCheckMark(device, next(), 0);
        scheme_->drawCheckMark(device, next(), MarkState::on);
        scheme_->drawCheckMark(device, next(), MarkState::mixed | MarkState::hovered);
        scheme_->drawRadioMark(device, next(), 0);
        scheme_->drawRadioMark(device, next(), MarkState::on | MarkState::disabled);
        scheme_->drawExpansionBox(device, next(), true);
        scheme_->drawExpansionBox(device, next(), false);
        scheme_->drawSliderTrack(device, next(), false);
        scheme_->drawSliderHandle(device, next(), 0);
        scheme_->drawSliderHandle(device, next(), MarkState::pressed);
        scheme_->drawProgress(device, next(), 0.6);
        scheme_->drawFocusFrame(device, next());
        scheme_->drawToolTipFrame(device, next());
        const CmRect header = next();
        scheme_->drawColumnHeader(device, header, false);
        scheme_->drawColumnTitle(device, header, ConstString("Col"), false);
        scheme_->drawSortArrow(device, {header.right - 12, header.top, header.right, header.bottom}, true);
    }
    EXPECT_GOLDEN(picture, "schemes/frames");
}

class GlobalSchemesTest : public ::testing::Test {
protected:
    void SetUp() override { GlobalSchemes::releaseAll(); }
    void TearDown() override { GlobalSchemes::releaseAll(); }
};

TEST_F(GlobalSchemesTest, TheLibraryHasOneScheme) {
    ASSERT_TRUE(GlobalSchemes::createForLibrary());
    UScheme* main = GlobalSchemes::main();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(GlobalSchemes::dialog(), main);
    EXPECT_EQ(GlobalSchemes::system(), main);
    EXPECT_EQ(GlobalSchemes::control(), nullptr);
    EXPECT_EQ(GlobalSchemes::currentScheme(nullptr), main);
    EXPECT_EQ(USchemeClass::find("system"), nullptr);
    EXPECT_EQ(USchemeClass::findOrGlobal("main"), main);
    EXPECT_EQ(USchemeClass::findOrGlobal("other"), nullptr);
}

TEST_F(GlobalSchemesTest, AProgramHasASystemScheme) {
    ASSERT_TRUE(GlobalSchemes::createForProgram());
    GlobalSchemes::fillEmpty();
    UScheme* system = GlobalSchemes::system();
    EXPECT_NE(cast<USystemScheme>(system), nullptr);
    EXPECT_EQ(GlobalSchemes::dialog(), GlobalSchemes::main());
    EXPECT_EQ(GlobalSchemes::current(), system);
    EXPECT_EQ(USchemeClass::find("system"), system);
    GlobalSchemes::resetAll();
    EXPECT_EQ(system->getColor(SchemeColor::hyperlink), UColor(StandardColor::blue));
    GlobalSchemes::releaseAll();
    EXPECT_EQ(USchemeClass::find("system"), nullptr);
    EXPECT_EQ(GlobalSchemes::current(), nullptr);
}

TEST_F(GlobalSchemesTest, WhatIsEmptyIsFilledWithMain) {
    GlobalSchemes::fillEmpty();
    EXPECT_EQ(GlobalSchemes::system(), GlobalSchemes::main());
    EXPECT_EQ(GlobalSchemes::current(), GlobalSchemes::main());
    {
        const auto other = make<UScheme>();
        const CurrentScheme during(other.get());
        EXPECT_EQ(GlobalSchemes::currentScheme(nullptr), other.get());
    }
    EXPECT_EQ(GlobalSchemes::current(), GlobalSchemes::main());
    const auto mine = make<UScheme>();
    GlobalSchemes::setDialog(mine.get());
    EXPECT_EQ(GlobalSchemes::current(), GlobalSchemes::main()) << "still held by two slots";
    GlobalSchemes::setSystem(mine.get());
    GlobalSchemes::setMain(mine.get());
    EXPECT_EQ(GlobalSchemes::current(), mine.get()) << "never a scheme that is gone";
}

TEST_F(GlobalSchemesTest, AScopeEndsWithTheSchemeThatTookThePlaceOfTheFormer) {
    GlobalSchemes::createForLibrary();
    const auto during = make<UScheme>();
    const auto fresh = make<UScheme>();
    {
        const CurrentScheme outer(GlobalSchemes::main());
        const CurrentScheme inner(during.get());
        for (auto* set : {&GlobalSchemes::setDialog, &GlobalSchemes::setSystem, &GlobalSchemes::setMain})
            set(fresh.get());
        EXPECT_EQ(GlobalSchemes::current(), during.get());
    }
    EXPECT_EQ(GlobalSchemes::current(), fresh.get()) << "never a scheme that is gone";
}

TEST_F(GlobalSchemesTest, ColoursAreFoundByTheirSchemeNames) {
    UColor color = StandardColor::red;
    EXPECT_FALSE(color.parse("hyperlink")) << "no scheme, no names";
    GlobalSchemes::createForLibrary();
    GlobalSchemes::resetAll();
    GlobalSchemes::main()->setNamedColor("mine", UColor::fromPacked(0xFF0A0B0C));
    EXPECT_TRUE(color.parse("hyperlink"));
    EXPECT_EQ(color, UColor(StandardColor::blue));
    EXPECT_TRUE(color.parse("mine"));
    EXPECT_EQ(color.packed(), 0xFF0A0B0Cu);
}

} // namespace
} // namespace qorl
