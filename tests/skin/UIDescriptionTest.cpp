#include "SkinFixture.h"
#include "graphics/UColor.h"
#include "persistence/urls/FUrl.h"
#include "skin/SkinAttributeReader.h"
#include "skin/SkinLimits.h"
#include "support/FailingAllocation.h"
#include "support/MemoryMeter.h"
#include "support/TestPaths.h"
#include "views/UView.h"

#include <fstream>

namespace qorl::testing {
namespace {

using Merge = UIDescriptionLoader::Merge;
using Section = UIDescription::Section;

std::string namesOf(SkinElement& section) {
    std::string names;
    for (const SkinElement* child : section.children())
        names += std::string(names.empty() ? "" : " ") + std::string(child->name());
    return names;
}

std::string sumOf(const std::string& operand, int count) {
    std::string sum = operand;
    for (int i = 1; i < count; ++i)
        sum += "+" + operand;
    return sum;
}

/// Views each of which asks 41 times for the next, one a line.
std::string viewsThatFanOut() {
    std::string text;
    for (int i = 0; i < 11; ++i)
        text += "\n<view name='v" + std::to_string(i) + "' size='" +
                sumOf("v" + std::to_string(i + 1) + ".left", 41) + ",0,0,0'/>";
    return text + "<view name='v11' size='1,0,0,0'/>";
}

class UIDescriptionTest : public SkinFixture {
protected:
    UIDescription& document() { return *wizard().description(); }
    const ViewElement& element(std::string_view templateName, size_t index = 0) {
        return static_cast<const ViewElement&>(*document().findTemplate(templateName)->children()[index]);
    }
    std::string names(Section section) { return namesOf(document().section(section)); }
    int32_t left(std::string_view templateName) { return document().findTemplate(templateName)->size().left; }
    std::string info(const char* name) {
        std::string text;
        return document().getInfo(name, text) ? text : "none";
    }
    std::string firstError() {
        for (const Diagnostic& finding : wizard().loader().diagnostics())
            if (finding.severity == Severity::error)
                return toText(finding);
        return "";
    }
    bool add(std::string_view fragment) { return wizard().loadFromString(fragment, Merge::add); }
    std::string write(const std::string& name, const std::string& text) {
        std::ofstream(folder_ / name, std::ios::binary) << text;
        return (folder_ / name).string();
    }
    bool loadFile(const std::string& path) { return wizard().load(FUrl(ConstString(path))); }

    TemporaryFolder folder_;
};

TEST_F(UIDescriptionTest, KeepsAttributesAsNumbers) {
    load("<template name='T' size='1,2,30,40' style='dialogstyle|sizable' id='main' min-size='5,6'>"
         "<slider name='gain' style='vertical' attach='left|bottom' offset='3,-4' focus='none'/>"
         "<for range='-1,5' offset='0,20' variable='[i]'/>"
         "<control class='X' anything='goes' name='c'/>"
         "<label rect='10,20,50,45'/>"
         "</template>");
    const ViewElement& t = *document().findTemplate("T");
    EXPECT_EQ(t.rect(), (CmRect{1, 2, 31, 42}));
    EXPECT_EQ(t.keywords(SkinAttribute::style), 0x800F1);
    EXPECT_EQ(t.point(SkinAttribute::minSize), (CmPoint{5, 6}));
    const ViewElement& slider = element("T", 0);
    EXPECT_EQ(slider.attach(), 0x900u);
    EXPECT_EQ(slider.keywords(SkinAttribute::style), 1);
    EXPECT_EQ(slider.point(SkinAttribute::offset), (CmPoint{3, -4}));
    EXPECT_EQ(slider.focus(), ViewElement::Focus::none);
    const SkinElement& loop = *t.children()[1];
    EXPECT_EQ(loop.point(SkinAttribute::range), (CmPoint{-1, 5}));
    EXPECT_EQ(loop.integer(SkinAttribute::step, 1), 1);
    SkinAttributeWriter written;
    element("T", 2).writeAttributes(written);
    EXPECT_EQ(written.attributes(), (std::vector<std::pair<std::string, std::string>>{
                                        {"name", "c"}, {"class", "X"}, {"anything", "goes"}}));
    EXPECT_EQ(element("T", 3).rect(), (CmRect{10, 20, 50, 45}));
}

TEST_F(UIDescriptionTest, KnowsWhereEachElementStands) {
    ASSERT_TRUE(
        wizard().loadFromString("<template name='A'>\n  <label/>\n</template>\n <template name='B'><row\n/>"
                                "</template>  <template name='C'/>",
                                Merge::replace, "dialogs"));
    const auto placeOf = [](const SkinElement& one) { return toText(one.mark().position()); };
    EXPECT_EQ(placeOf(*document().findTemplate("A")), "dialogs:1:1");
    EXPECT_EQ(placeOf(element("A")), "dialogs:2:3");
    EXPECT_EQ(placeOf(*document().findTemplate("B")), "dialogs:4:2");
    EXPECT_EQ(placeOf(element("B")), "dialogs:4:21");
    EXPECT_EQ(placeOf(*document().findTemplate("C")), "dialogs:5:16");
}

TEST_F(UIDescriptionTest, MergesRepeatedSectionsAndSortsByName) {
    load("<skin><resources><bitmap name='b' path='1'/></resources><templates><template name='z'/></templates>"
         "<template name='m' size='1,0,0,0'/><resources><bitmap name='a' path='2'/><taglist "
         "name='a'/></resources>"
         "<templates><template name='a'/><template name='m' size='2,0,0,0'/></templates></skin>");
    EXPECT_EQ(names(Section::templates), "a m m z");
    EXPECT_EQ(names(Section::resources), "a a b");
    EXPECT_EQ(left("m"), 1) << "the first of equal names wins";
    EXPECT_TRUE(document().findTagList("a"));
    EXPECT_FALSE(document().findTagList("b")) << "names go by kind";
    EXPECT_FALSE(document().findTemplate(""));
}

TEST_F(UIDescriptionTest, TakesAnyNumberOfRepeatedSections) {
    std::string text = "<skin>";
    for (int i = 0; i < 10'000; ++i)
        text += "<resources><taglist name='t'/></resources>";
    const MemoryMeter meter;
    load(text + "</skin>");
    EXPECT_EQ(document().section(Section::resources).children().size(), 10'000u);
    EXPECT_LT(meter.bytes(), 16 << 20);
}

TEST_F(UIDescriptionTest, DecidesVariantsOutsideOfTemplatesWhileReading) {
    wizard().setCondition("big");
    load("<skin><resources><variant condition='big'><bitmap name='in' path='x'/></variant>"
         "<variant condition='small'><bitmap name='out' path='x'/><nonsense/></variant>"
         "<variant><bitmap name='free' path='x'/></variant></resources>"
         "<variant condition='LINUX AND NOT WINDOWS'><definitions><define name='d' "
         "value='-7'/></definitions></variant>"
         "<templates><template name='T'><variant "
         "condition='small'><label/></variant></template></templates></skin>");
    EXPECT_EQ(names(Section::resources), "free in");
    int32_t value = 0;
    EXPECT_TRUE(document().findDefine("d", value));
    EXPECT_EQ(value, -7);
    EXPECT_EQ(element("T").type(), SkinType::variant) << "kept, and decided at each build";
}

TEST_F(UIDescriptionTest, EvaluatesSizesOverSiblingsMetricsAndDefinitions) {
    load("<skin><definitions><define name='gap' value='5'/><define name='a.b' value='9'/></definitions>"
         "<scheme><size name='buttonheight' value='33'/></scheme><templates><template name='T'>"
         "<view name='later' size='first.right+def.gap,def.a.b,10,scheme.buttonheight'/>"
         "<view name='first' size='10,0,20,20'/>"
         "<variant condition='never'><view name='hidden' size='500,0,1,1'/></variant>"
         "<variant condition='LINUX'><view name='shown' size='70,0,1,1'/></variant>"
         "<view name='v' size='hidden.left+1,shown.left,1,1'/>"
         "<view name='nested' size='0,0,9,9'><view name='deep' size='first.left+1,0,1,1'/></view>"
         "</template></templates></skin>");
    EXPECT_EQ(element("T", 0).rect(), (CmRect{35, 9, 45, 42}));
    EXPECT_EQ(element("T", 4).rect(), (CmRect{1, 70, 2, 71}));
    EXPECT_EQ(static_cast<const ViewElement&>(*element("T", 5).children()[0]).size().left, 1)
        << "first is no sibling there";
}

TEST_F(UIDescriptionTest, FailsChainsOfSizesPastTheTenth) {
    std::string text = "<template name='T'><view name='v0' size='1,0,0,0'/>";
    for (int i = 1; i <= 12; ++i)
        text +=
            "<view name='v" + std::to_string(i) + "' size='v" + std::to_string(i - 1) + ".left+1,0,0,0'/>";
    load(text + "</template>");
    EXPECT_EQ(element("T", 10).size().left, 11);
    EXPECT_EQ(element("T", 11).size().left, 0) << "needs an eleventh level";
    EXPECT_EQ(element("T", 12).size().left, 0);
    EXPECT_EQ(wizard().loader().diagnostics().size(), 2u);
}

TEST_F(UIDescriptionTest, RefusesSizesThatFanOutOrAskForALongOneTooOften) {
    EXPECT_FALSE(wizard().loadFromString("<template name='T'>" + viewsThatFanOut() + "</template>"));
    EXPECT_THAT(firstError(), ::testing::StartsWith(
                                  "(text):12:1: error: the size expressions of the document need more than"));
    EXPECT_FALSE(wizard().loadFromString("<template name='T'><view name='a' size='" +
                                         sumOf("def.x", 100'000) + "'/>\n<view size='" +
                                         sumOf("a.left", 100) + "'/></template>"));
    EXPECT_THAT(firstError(),
                ::testing::StartsWith("(text):1:20: error: the size expressions of the document"));
}

TEST_F(UIDescriptionTest, AnswersAndChangesInfos) {
    load("<skin><header><info name='Author' value='me'/><bitmap name='Preview-Bitmap' "
         "path='p.png'/></header></skin>");
    EXPECT_EQ(info("Author"), "me");
    EXPECT_EQ(info("Preview-Bitmap"), "p.png");
    EXPECT_FALSE(document().setInfo("Version", "1", false));
    EXPECT_TRUE(document().setInfo("Version", "1", true));
    EXPECT_TRUE(document().setInfo("Author", "you", false));
    EXPECT_EQ(info("Author"), "you");
}

TEST_F(UIDescriptionTest, ColoursFollowTheOrder) {
    load("<skin><scheme><color name='mine' value='#01020304'/><color name='hyperlink' value='mine'/>"
         "<color name='bad' value='#12345'/></scheme></skin>");
    UColor color;
    EXPECT_TRUE(document().findColor("mine", color));
    EXPECT_EQ(color.packed(), 0x04010203u);
    EXPECT_EQ(GlobalSchemes::main()->getColor(SchemeColor::hyperlink).packed(), 0x04010203u)
        << "a colour may name one above it";
    document().setColor("mine", UColor::fromPacked(0xFF00FF00));
    document().setColor("new", UColor::fromPacked(0xFF0000FF));
    EXPECT_TRUE(document().findColor("mine", color) && color.packed() == 0xFF00FF00);
    EXPECT_TRUE(document().findColor("new", color) && color.packed() == 0xFF0000FF);
    EXPECT_TRUE(wizard().findColor("undefined", color));
    EXPECT_EQ(color.packed(), 0u);
}

TEST_F(UIDescriptionTest, AddsFragmentsToTheCurrentDocument) {
    load("<skin><definitions><define name='gap' value='7'/></definitions>"
         "<template name='b' size='def.added,0,0,0'/></skin>");
    ASSERT_TRUE(add("<skin><definitions><define name='added' value='3'/></definitions>"
                    "<template name='a' size='def.gap,0,0,0'/><template name='c'/></skin>"));
    EXPECT_EQ(names(Section::templates), "a b c");
    EXPECT_EQ(left("a"), 7) << "each sees what the other defines";
    EXPECT_EQ(left("b"), 3);
    EXPECT_FALSE(add("<template name='d'>"));
    EXPECT_EQ(names(Section::templates), "a b c") << "a failed load changes nothing";
}

TEST_F(UIDescriptionTest, TakesBackAFragmentWhoseSizesFail) {
    load("<skin><definitions><define name='d' value='1'/></definitions><resources><taglist name='t'/>"
         "</resources><template name='m' size='def.x,0,0,0'/></skin>");
    EXPECT_FALSE(add("<skin><definitions><define name='x' value='2'/></definitions><resources>"
                     "<taglist name='s'/></resources><template name='a'>" +
                     viewsThatFanOut() + "</template></skin>"));
    EXPECT_THAT(firstError(), ::testing::HasSubstr("size expressions of the document need more"));
    EXPECT_EQ(names(Section::templates), "m");
    EXPECT_EQ(names(Section::resources), "t");
    EXPECT_EQ(names(Section::definitions), "d");
    EXPECT_EQ(left("m"), 0);
    EXPECT_FALSE(document().hasErrors());
}

TEST_F(UIDescriptionTest, LeavesTheLookOfTheDocumentThatStaysWhenALoadFails) {
    load("<skin><scheme><color name='hyperlink' value='#123456'/><color name='mine' value='#FF0000'/>"
         "<size name='buttonheight' value='33'/></scheme></skin>");
    const UScheme& scheme = *GlobalSchemes::main();
    wizard().loader().setMisplaced(UIDescriptionLoader::Misplaced::isSkipped);
    for (const std::string& faulty :
         {std::string("<slider/>"), "<template name='T'>" + viewsThatFanOut() + "</template>"}) {
        EXPECT_FALSE(wizard().loadFromString("<skin>" + faulty + "</skin>"));
        UColor color;
        EXPECT_EQ(scheme.getColor(SchemeColor::hyperlink).packed(), 0xFF123456u);
        EXPECT_TRUE(scheme.findNamedColor("mine", color));
        EXPECT_EQ(scheme.getMetric(SchemeMetric::buttonheight), 33);
    }
    load("<skin><template name='T' size='scheme.buttonheight,0,0,0'/></skin>");
    EXPECT_EQ(scheme.getMetric(SchemeMetric::buttonheight), 22) << "a load that succeeds begins anew";
    EXPECT_EQ(left("T"), 22);
}

TEST_F(UIDescriptionTest, StopsAtAMisplacedElementWithItsCode) {
    const std::pair<const char*, int32_t> cases[] = {
        {"<skin><resources><slider/></resources></skin>", 5},
        {"<skin><nonsense/>", 3},
        {"<skin/>", 0},
        {"<slider/>", 5},
        {"<template name='ä'/> <template><a></template>", 7},
    };
    for (const auto& [text, code] : cases) {
        EXPECT_EQ(wizard().loadFromString(text), code == 0) << text;
        EXPECT_EQ(wizard().loader().getErrorCode(), code) << text;
    }
    EXPECT_EQ(toText(wizard().getErrorPosition()), "(text):1:37") << "of a later template on the line";
}

TEST_F(UIDescriptionTest, FollowsIncludesTwoLevelsDeep) {
    write("two.xml", "<skin><templates><template name='b'/></templates></skin>");
    write("one.xml",
          "<skin><header><include file='two.xml'/></header><definitions><define name='d' value='1'/>"
          "</definitions><templates><template name='c'/></templates></skin>");
    const std::string main = write(
        "skin.xml", "<skin><header><include file='one.xml' condition='LINUX'/><include file='gone.xml' "
                    "condition='NEVER'/></header><definitions><define name='d' value='2'/></definitions>"
                    "<templates><template name='a' size='def.d,0,0,0'/></templates></skin>");
    ASSERT_TRUE(loadFile(main)) << wizard().getErrorText();
    EXPECT_EQ(names(Section::templates), "a b c");
    EXPECT_EQ(left("a"), 2) << "the including document's own comes first";
    const auto includes = document().findTemplate("b")->mark().includes();
    ASSERT_EQ(includes.size(), 2u);
    EXPECT_EQ(includes[1].file, main);
}

TEST_F(UIDescriptionTest, KeepsTheDocumentWhenAReloadFails) {
    const std::string main = write("skin.xml", "<template name='a'/>");
    ASSERT_TRUE(loadFile(main));
    write("skin.xml", "<template name='a'>");
    EXPECT_FALSE(wizard().reload());
    EXPECT_TRUE(document().findTemplate("a"));
    write("skin.xml", "<template name='b'/>");
    EXPECT_TRUE(wizard().reload());
    EXPECT_TRUE(document().findTemplate("b"));
}

TEST_F(UIDescriptionTest, ReadsOnlyTheSectionsThatAreWanted) {
    wizard().loader().setSectionMask(UIDescriptionParser::header);
    const char* skin = "<skin><header><info name='n' value='v'/></header><templates><template name='t'/>"
                       "<taglist name='list'/></templates><resources><bitmap/></resources></skin>";
    load(skin);
    EXPECT_EQ(info("n"), "v");
    EXPECT_FALSE(document().findTemplate("t"));
    EXPECT_FALSE(document().peekSection(Section::resources));
    wizard().loader().setSectionMask(UIDescriptionParser::resources);
    load(skin);
    EXPECT_TRUE(document().findTagList("list")) << "a resource, wherever it stands";
    EXPECT_FALSE(document().findTemplate("t"));
}

TEST_F(UIDescriptionTest, KeepsPathsWithOneKindOfSlash) {
    load("<skin><header><bitmap name='Preview-Bitmap' path='images\\small\\a.png'/></header><resources>"
         "<bitmap name='b' path='x/y\\z.png' mask='a\\b'/></resources></skin>");
    EXPECT_EQ(info("Preview-Bitmap"), "images/small/a.png");
    SkinElement* bitmap = document().section(Section::resources).children()[0];
    EXPECT_EQ(bitmap->text(SkinAttribute::path), "x/y/z.png");
    EXPECT_EQ(bitmap->text(SkinAttribute::mask), "a\\b") << "a name";
    bitmap->set(SkinAttribute::path, "\\c");
    EXPECT_EQ(bitmap->text(SkinAttribute::path), "/c");
}

TEST_F(UIDescriptionTest, DropsWhatNothingCanAskForWhenItValidates) {
    const char* text =
        "<skin><templates>\n<template><label/></template><template name='a'/></templates></skin>";
    load(text);
    EXPECT_EQ(document().section(Section::templates).children().size(), 2u);
    EXPECT_TRUE(wizard().loader().diagnostics().empty());
    wizard().loader().setValidation(UIDescriptionLoader::Validation::on);
    load(text);
    EXPECT_EQ(names(Section::templates), "a");
    ASSERT_EQ(wizard().loader().diagnostics().size(), 1u);
    EXPECT_THAT(toText(wizard().loader().diagnostics()[0]),
                ::testing::AllOf(::testing::StartsWith("(text):2:1: "),
                                 ::testing::EndsWith("Skin validation failed: <template> has no name to ask "
                                                     "for it by; left out with all that is in it")));
}

TEST_F(UIDescriptionTest, KeepsProgramsAndOnRequestComments) {
    const uint32_t options = UIDescription::options();
    UIDescription::setOptions(options | UIDescription::keepComments);
    load("<skin><scripts><script name='s'>a &lt; b<!-- no --> &amp;<script name='in'>d</script>&amp; "
         "<![CDATA[<c>]]></script></scripts>"
         "<templates><template name='t'><!-- here --><label/></template></templates></skin>");
    UIDescription::setOptions(options);
    EXPECT_EQ(document().findScript("s")->program(), "a < b && <c>");
    EXPECT_EQ(static_cast<ScriptElement*>(document().findScript("s")->children()[1])->program(), "d");
    EXPECT_EQ(element("t").type(), SkinType::comment);
    EXPECT_EQ(element("t").text(SkinAttribute::comment), " here ");
}

TEST_F(UIDescriptionTest, KeepsTheDocumentWhenMemoryRunsOut) {
    const char* skin = "<skin><definitions><define name='d' value='4'/></definitions><templates><template "
                       "name='new'><view name='v' size='def.d,0,0,0' odd='1'/></template></templates></skin>";
    for (const auto merge : {Merge::replace, Merge::add})
        failEachAllocation([&](FailingAllocation& allocation) {
            load("<skin><scheme/><templates><template name='old' size='def.d,0,0,0'/></templates></skin>");
            if (allocation.during([&] { return wizard().loadFromString(skin, merge, "new"); })) {
                EXPECT_TRUE(document().findTemplate("new"));
                return;
            }
            EXPECT_TRUE(allocation.hasFailed());
            EXPECT_FALSE(wizard().getErrorText().empty());
            EXPECT_FALSE(document().findTemplate("new"));
            ASSERT_TRUE(document().findTemplate("old"));
            EXPECT_EQ(left("old"), 0);
        });
}

TEST_F(UIDescriptionTest, RefusesWhatIsTooLarge) {
    std::string attributes;
    for (int i = 0; i <= SkinLimits::attributesOfElement; ++i)
        attributes += " a" + std::to_string(i) + "=''";
    std::string deep;
    for (int i = 0; i < 100'000; ++i)
        deep += "<view>";
    const std::pair<std::string, const char*> cases[] = {
        {"<template>\n" + deep, "(text):2:"},
        {"<template>\n <view" + attributes + "/></template>", "(text):2:2: error: an element has at most"},
        {"<template>\n<view name='" + std::string(2 << 20, 'x') + "'/></template>", "(text):2:"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_FALSE(wizard().loadFromString(text)) << text.substr(0, 40);
        EXPECT_THAT(firstError(), ::testing::StartsWith(expected));
    }
    const std::string path = write("large.xml", "<skin>");
    std::filesystem::resize_file(path, (int64_t{64} << 20) + 1);
    EXPECT_FALSE(loadFile(path));
    EXPECT_THAT(firstError(), ::testing::HasSubstr("large.xml:1:1: error: the document is too large"));
    write("half.xml", "<skin>" + std::string(40 << 20, ' ') + "</skin>");
    std::filesystem::resize_file(write("other.xml", "<skin>"), int64_t{40} << 20);
    EXPECT_FALSE(loadFile(write(
        "sum.xml", "<skin><header><include file='half.xml'/><include file='other.xml'/></header></skin>")));
    EXPECT_THAT(firstError(), ::testing::HasSubstr("other.xml:1:1: error: the document is too large"));
}

} // namespace
} // namespace qorl::testing
