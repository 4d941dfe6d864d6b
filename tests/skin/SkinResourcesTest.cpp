#include "SkinFixture.h"
#include "graphics/UBitmapFamily.h"
#include "persistence/urls/FUrl.h"
#include "support/TestGraphics.h"
#include "support/TestPaths.h"
#include "views/UView.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace qorl::testing {
namespace {

class SkinResourcesTest : public SkinFixture {
protected:
    SkinResourcesTest() {
        useGraphics();
        std::filesystem::create_directory(folder_ / "images");
        const auto bitmap = make<UBitmap>(CmSize{12, 8});
        write("images/strip.png", pngOf(*bitmap));
        write("images/broken.png", pngOf(*bitmap).substr(0, 50));
    }

    static std::string pngOf(UBitmap& bitmap) {
        const auto png = bitmap.toPng();
        return {reinterpret_cast<const char*>(png.data()), png.size()};
    }
    void write(const std::string& name, std::string_view bytes) {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }
    void loadResources(const std::string& resources) {
        write("skin.xml", "<skin><resources>" + resources + "</resources></skin>");
        const std::string path = (folder_ / "skin.xml").string();
        ASSERT_TRUE(wizard().load(FUrl(ConstString(path)))) << wizard().getErrorText();
    }
    UBitmap* find(std::string_view name) { return wizard().description()->findBitmap(name); }
    std::string findings() {
        std::string text;
        for (const Diagnostic& finding : wizard().description()->diagnostics())
            text += std::string(nameOf(finding.severity)) + ": " + finding.text + "\n";
        return text;
    }

    TemporaryFolder folder_;
};

TEST_F(SkinResourcesTest, MakesEachKindOnceFromFilesAndFromEachOther) {
    loadResources(
        "<bitmap name='strip' path='images\\strip.png'/>"
        "<filmstrip name='frames' path='strip' framecount='3' framealign='horizontal' defaultframe='1'/>"
        "<section name='part' path='strip' size='2,1,4,3'/>"
        "<section name='view' path='images/strip.png' rect='2,1,6,4' data='reference'/>"
        "<dbitmap name='nine' path='part' center='1,1,2,2' style='hrepeat'/>"
        "<bitmapcollection name='set'><section name='inner' path='strip' "
        "size='0,0,1,1'/></bitmapcollection>");
    ASSERT_TRUE(find("strip"));
    EXPECT_EQ(find("strip"), find("strip")) << "made once";
    auto* frames = static_cast<UFilmStrip*>(find("frames"));
    EXPECT_EQ(frames->getFrameSize(), (CmSize{4, 8}));
    EXPECT_EQ(frames->getDefaultFrame(), 1);
    EXPECT_EQ(find("part")->getSize(), (CmSize{4, 3}));
    EXPECT_EQ(static_cast<UBitmapSection*>(find("view"))->getOffset(), (CmPoint{2, 1}));
    EXPECT_EQ(static_cast<UDynamicBitmap*>(find("nine"))->getCenter(), (CmRect{1, 1, 2, 2}));
    EXPECT_EQ(find("inner")->getSize(), (CmSize{1, 1}));
    UBitmapCollection* set = wizard().description()->findBitmapCollection("set");
    ASSERT_TRUE(set);
    EXPECT_EQ(set->getByName("inner"), find("inner"));
    EXPECT_EQ(findings(), "");
}

TEST_F(SkinResourcesTest, ReadsAFileAgainWhenTheBitmapOfBeforeWontDo) {
    loadResources("<bitmap name='strip' path='images/strip.png'/>");
    const Ref<UBitmap> before = retain(find("strip"));
    write("images/strip.png", pngOf(*make<UBitmap>(CmSize{5, 4})));
    EXPECT_EQ(find("strip"), before.get());
    UBitmap* now = wizard().description()->findBitmap("strip", false);
    ASSERT_TRUE(now);
    EXPECT_EQ(now->getSize(), (CmSize{5, 4}));
    EXPECT_EQ(find("strip"), now) << "it stays with the element";
    EXPECT_EQ(before->getSize(), (CmSize{12, 8})) << "what holds the earlier one keeps it";
    EXPECT_EQ(wizard().description()->findBitmap("absent", false), nullptr);
}

TEST_F(SkinResourcesTest, ABackgroundGivesTheTemplateItsSize) {
    const std::string label = "><label size='5,0,25,4'/></template>";
    loadResources(
        "<bitmap name='back' path='images/strip.png'/></resources><templates>"
        "<template name='plain' size='0,0,90,80' background='back'" +
        label + "<template name='scaled' size='0,0,90,80' background='back' background-style='scale'" +
        label + "<template name='fitted' background='back' background-style='hrepeat'" + label +
        "<template name='alone' background='back' background-style='scale'/></templates><resources>");
    const struct {
        const char* name;
        CmSize view, image;
        uint32_t attach;
    } cases[] = {
        {"plain", {12, 8}, {12, 8}, 0},
        {"scaled", {12, 8}, {30, 4}, viewAttachAll},
        {"fitted", {30, 4}, {30, 4}, viewAttachAll},
        {"alone", {12, 8}, {12, 8}, viewAttachAll},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Ref<UView> view = wizard().createView(c.name, nullptr, nullptr);
        EXPECT_EQ(view->getFrameSize(), c.view);
        EXPECT_EQ(view->getSubView(0)->getFrameSize(), c.image);
        EXPECT_EQ(view->getSubView(0)->getAttach(), c.attach);
    }
}

TEST_F(SkinResourcesTest, AppliesWhatABitmapSaysOfItsLook) {
    const auto picture = make<UBitmap>(CmSize{3, 1});
    const auto shape = make<UBitmap>(CmSize{2, 1});
    const auto paint = [](UBitmap& bitmap, std::initializer_list<uint32_t> pixels) {
        const PixelLock lock(*bitmap.getBackendImage());
        std::ranges::copy(pixels, lock->getRow(0));
    };
    paint(*picture, {0xFFFF00FF, 0xFF4080C0, 0xFF4080C0});
    paint(*shape, {0xFFFFFFFF, 0xFF808080});
    write("images/picture.png", pngOf(*picture));
    write("images/shape.png", pngOf(*shape));
    const std::string path = " path='images/picture.png' ";
    loadResources("<bitmap name='plain'" + path + "/><bitmap name='keyed'" + path +
                  "mask='#FF00FF'/><bitmap name='shape' path='images/shape.png'/><bitmap name='masked'" +
                  path + "mask='shape'/><bitmap name='by file'" + path +
                  "mask='images/shape.png'/><bitmap name='half'" + path +
                  "alpha='51'/><bitmap name='tinted'" + path +
                  "colorize='#FF0000'/><section name='part' size='1,0,2,1'" + path +
                  "mask='shape' alpha='51'/><bitmap name='lost'" + path +
                  "mask='nothing'/><bitmap name='grouped' group='display'" + path + "/>");
    const struct {
        const char* name;
        std::vector<uint32_t> pixels;
    } cases[] = {
        {"plain", {0xFFFF00FF, 0xFF4080C0, 0xFF4080C0}},
        {"keyed", {0, 0xFF4080C0, 0xFF4080C0}},
        {"masked", {0xFFFF00FF, 0x80204060, 0}},
        {"by file", {0xFFFF00FF, 0x80204060, 0}},
        {"half", {0x33330033, 0x330D1A26, 0x330D1A26}},
        {"tinted", {0xFFFF0000, 0xFF400000, 0xFF400000}},
        {"part", {0x330D1A26, 0x1A070D13}},
        {"lost", {0xFFFF00FF, 0xFF4080C0, 0xFF4080C0}},
        {"grouped", {0xFFFF00FF, 0xFF4080C0, 0xFF4080C0}},
    };
    for (const auto& c : cases) {
        UBitmap* bitmap = find(c.name);
        ASSERT_TRUE(bitmap) << c.name;
        const PixelLock lock(*bitmap->getBackendImage());
        const std::vector<uint32_t> pixels(lock->getRow(0), lock->getRow(0) + lock->width);
        EXPECT_EQ(pixels, c.pixels) << c.name;
    }
    EXPECT_EQ(static_cast<USkinBitmap*>(find("grouped"))->getGroup(), 0x20000u);
    EXPECT_EQ(findings(), "warning: mask 'nothing' is neither a colour nor a bitmap\n");
}

TEST_F(SkinResourcesTest, TellsWhatCantBeMade) {
    loadResources(
        "<bitmap name='gone' path='images/none.png'/><bitmap name='out' path='../strip.png'/>"
        "<section name='far' path='strip' size='10,0,4,4'/><bitmap name='strip' path='images/strip.png'/>"
        "<section name='a' path='b' size='0,0,1,1'/><section name='b' path='a' size='0,0,1,1'/>"
        "<bitmap name='broken' path='images/broken.png'/>");
    for (const char* name : {"gone", "out", "far", "a", "broken", "unheard"})
        EXPECT_FALSE(find(name)) << name;
    EXPECT_THAT(findings(), ::testing::StartsWith(
                                "warning: bitmap 'images/none.png' not found in the skin's folder\n"
                                "warning: bitmap '../strip.png' not found in the skin's folder\n"
                                "warning: section 'far' reaches outside of its bitmap of 12 x 8 pixels\n"
                                "error: the bitmap 'a' leads back to itself\n"));
    EXPECT_THAT(findings(), ::testing::HasSubstr("error: bitmap 'images/broken.png': "));
}

TEST_F(SkinResourcesTest, EndsChainsOfBitmapsThatAreMadeFromEachOther) {
    std::string chain;
    for (int i = 0; i < 100'000; ++i)
        chain += "<section name='s" + std::to_string(i) + "' size='0,0,1,1' path='s" + std::to_string(i + 1) +
                 "'/>";
    loadResources(chain);
    EXPECT_FALSE(find("s0"));
    EXPECT_THAT(findings(), ::testing::StartsWith("error: the bitmap 's32' stands behind 32 others"));
}

TEST_F(SkinResourcesTest, HoldsNoMorePixelsThanADocumentMay) {
    write("images/large.png", pngOf(*make<UBitmap>(CmSize{1000, 1000})));
    std::string resources =
        "<bitmap name='file' path='images/large.png'/><filmstrip name='strip' path='file'/>"
        "<section name='view' path='file' data='reference' size='0,0,9,9'/>";
    const auto nameOf = [](int i) { return "copy" + std::to_string(i); };
    for (int i = 1; i <= 67; ++i)
        resources += "<section name='" + nameOf(i) + "' path='file' size='0,0,1000,1000'/>";
    loadResources(resources);
    EXPECT_TRUE(find("strip") && find("view"));
    for (int i = 1; i <= 66; ++i)
        EXPECT_TRUE(find(nameOf(i))) << i;
    EXPECT_FALSE(find("copy67")) << "256 MB have room for the file and 66 copies";
    EXPECT_EQ(findings(),
              "error: the bitmap 'copy67' is left out: the bitmaps of a document have at most 256 MB "
              "of pixels together\n");
    EXPECT_TRUE(wizard().description()->findBitmap("copy1", false)) << "what is given up counts no more";
}

TEST_F(SkinResourcesTest, DecodesAFileOnceForAllPartsThatABuildCutsFromIt) {
    std::string resources =
        "</resources><templates><template name='t' size='0,0,9,9'/></templates><resources>";
    for (const char* name : {"a", "b", "late"})
        resources += "<section name='" + std::string(name) + "' path='images/strip.png' size='0,0,4,4'/>";
    loadResources(resources);
    {
        const PartSources::Use build(wizard().description()->partSources());
        ASSERT_TRUE(find("a"));
        write("images/strip.png", "no picture");
        EXPECT_TRUE(wizard().createView("t", nullptr, nullptr));
        EXPECT_TRUE(find("b")) << findings();
    }
    EXPECT_FALSE(find("late")) << "held no longer than a build";
}

TEST_F(SkinResourcesTest, DecodesNoMorePixelsThanADocumentMay) {
    write("images/huge.png", pngOf(*make<UBitmap>(CmSize{6000, 6000})));
    std::string resources;
    const auto nameOf = [](int i) { return "part" + std::to_string(i); };
    for (int i = 1; i <= 9; ++i)
        resources += "<section name='" + nameOf(i) + "' path='images/huge.png' size='0,0,1,1'/>";
    loadResources(resources);
    for (int i = 1; i <= 8; ++i)
        EXPECT_TRUE(find(nameOf(i))) << i;
    EXPECT_FALSE(find(nameOf(9))) << "too large to be kept, it is decoded each time";
    EXPECT_EQ(findings(), "error: bitmap 'images/huge.png': the files of the document have more than 1024 MB "
                          "of pixels, each counted as often as it is read\n");
    EXPECT_TRUE(wizard().description()->findBitmap("part1", false)) << "asked for by the program";
}

TEST_F(SkinResourcesTest, ACopyOfARecordMakesItsOwnBitmap) {
    loadResources("<bitmap name='b' path='images/strip.png'/>");
    const UBitmap* first = find("b");
    SkinElement& resources = wizard().description()->section(UIDescription::Section::resources);
    SkinElement* copy = resources.children()[0]->clone();
    resources.children()[0]->setName("a");
    resources.append(copy);
    UBitmap* second = find("b");
    ASSERT_TRUE(second);
    EXPECT_NE(second, first);
}

TEST_F(SkinResourcesTest, PreloadsAllButTheTemporary) {
    loadResources("<bitmap name='kept' path='images/strip.png'/>"
                  "<bitmap name='passing' path='images/strip.png' data='temporary'/>");
    wizard().description()->preloadResources();
    const SkinElement* resources = wizard().description()->peekSection(UIDescription::Section::resources);
    EXPECT_TRUE(static_cast<ResourceElement*>(resources->children()[0])->object());
    EXPECT_FALSE(static_cast<ResourceElement*>(resources->children()[1])->object());
    EXPECT_TRUE(find("passing")) << "made again on demand";
}

} // namespace
} // namespace qorl::testing
