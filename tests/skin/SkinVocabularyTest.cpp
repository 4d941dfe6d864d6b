#include "skin/SkinVocabulary.h"

#include "skin/SizeExpression.h"
#include "skin/SkinAttribute.h"
#include "skin/SkinCondition.h"
#include "skin/SkinKeywords.h"
#include "skin/SkinType.h"

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace qorl {
namespace {

/// Every element in the order of the table: its tag, `:` and its base, `*` for a view, `-` for one without
/// `name` and `data`, `+` for one that keeps any attribute, `!` for a tag that is only reserved.
constexpr const char* elementTable =
    "unknown comment skin header info include- resources res bitmap:res filmstrip:bitmap "
    "dbitmap:bitmap bitmapcollection propertycollection section:bitmap cursor:res animation+ fontres! "
    "bitmapfont shape! area! preset:res scheme color size brush! pen! surface:item translations- "
    "scripts script definitions define customsettings customitem customgroup templates frame row col "
    "font variant- controller separated* property- for- set- mutable- view* template* control*+ "
    "align* relativeattach* alternative* button* helpbutton* switch* checkbox* radiobutton* "
    "radiogroup:rowcol* scrollbar* slider* rangeslider:slider* knob* ringknob:knob* text* edit:text* "
    "valuebox:text* rationalbox* updownbox* optmenu:text* opttoggle:text* bitmaptext:text* image* "
    "label* textview* expandable* rowcol* rack* bitmapscale* bitmapdisplay* decor* multipane* "
    "listbox* progressbar* bitmapradiobutton* graphics* a* customview* scrolldisplay* texteditor* "
    "pathselector* scrollview* matrix* columns column extensible* sizehandle* hoverpad* "
    "dependentcontentview* popupoverlaygadget:switch* keycommandmemo*+ texture* painted* render* "
    "dragpad* bitmaptextswitch:switch* windowcomposer windowcomposerview* exchangeable* taglist item "
    "valuedefine universal*+ viewlist*+ tabcluster*+ plainzoneview*+ tabzoneview*+ container* layout+ "
    "border-layout+ card-layout+ list-layout+ grid-layout+ layout-item+ grid-item+ border-item+ "
    "center+ north+ east+ south+ west+ locale";

TEST(SkinType, StandsInTheOrderOfTheTable) {
    std::istringstream rows(elementTable);
    int32_t row = 0;
    for (std::string expected; rows >> expected; ++row) {
        ASSERT_LT(row, skinTypeCount);
        const auto type = static_cast<SkinType>(row);
        const SkinTypeTraits& traits = traitsOf(type);
        std::string actual(nameOf(type));
        SkinType found = SkinType::unknown;
        EXPECT_TRUE(findSkinType(actual, found) && found == type) << actual;
        if (traits.base != SkinType::unknown)
            actual += ":" + std::string(nameOf(traits.base));
        actual += traits.isView ? "*" : "";
        actual += traits.readsName ? "" : "-";
        actual += traits.keepsUnknown ? "+" : "";
        actual += traits.hasFactory ? "" : "!";
        EXPECT_EQ(actual, expected) << "row " << row;
    }
    EXPECT_EQ(row, skinTypeCount);
    SkinType type = SkinType::view;
    for (const char* tag : {"View", "", "fram"})
        EXPECT_FALSE(findSkinType(tag, type)) << tag;
    EXPECT_TRUE(isOfType(SkinType::dbitmap, SkinType::res)) << "by way of bitmap";
    EXPECT_FALSE(isOfType(SkinType::switch_, SkinType::bitmaptextswitch));
}

TEST(SkinAttribute, IsLegalByElementAndBase) {
    EXPECT_EQ(ruleOf(SkinType::slider, SkinAttribute::style).keywords, &SkinVocabulary::sliderStyle);
    EXPECT_EQ(ruleOf(SkinType::rangeslider, SkinAttribute::style).keywords,
              &SkinVocabulary::rangesliderStyle);
    EXPECT_EQ(ruleOf(SkinType::rangeslider, SkinAttribute::handlesize).form, AttributeForm::point);
    EXPECT_EQ(ruleOf(SkinType::radiogroup, SkinAttribute::colwidth).form, AttributeForm::integer);
    EXPECT_EQ(ruleOf(SkinType::label, SkinAttribute::handle).form, AttributeForm::illegal);
    EXPECT_EQ(ruleOf(SkinType::include, SkinAttribute::name).form, AttributeForm::illegal);
    EXPECT_EQ(ruleOf(SkinType::label, SkinAttribute::foreign).form, AttributeForm::illegal);
    EXPECT_EQ(ruleOf(SkinType::text, SkinAttribute::just).keywords, &SkinVocabulary::just);
}

TEST(SkinKeywords, MatchWholeWordsOnly) {
    const struct {
        const KeywordSet& set;
        const char* text;
        int64_t value;
        bool unknown;
    } cases[] = {
        {SkinVocabulary::rowStyle, "vertical|equalsize", 0x102, false},
        {SkinVocabulary::rowStyle, "vertical equalsize", 0x102, false},
        {SkinVocabulary::rowStyle, "vertical, equalsize", 0x102, false},
        {SkinVocabulary::rowStyle, "", 0, false},
        {SkinVocabulary::rowStyle, "|,|", 0, false},
        {SkinVocabulary::rowStyle, "equalsizes", 0, true},
        {SkinVocabulary::rowStyle, "Vertical", 0, true},
        {SkinVocabulary::sliderStyle, "horizontal-small", 0x10, false},
        {SkinVocabulary::sliderStyle, "jump horizontal", 0x88, false},
        {SkinVocabulary::sliderStyle, "vertical horizontal", 8, false},
        {SkinVocabulary::sliderStyle, "multi-handle", 0x80000000, false},
        {SkinVocabulary::listStyle, "extLastCol", 0x400000000, false},
        {SkinVocabulary::switchStyle, "onoff|immediate", 0x101, false},
        {SkinVocabulary::decorStyle, "solidroundrect", -2, false},
        {SkinVocabulary::templateStyle, "dialogstyle|sizable", 0x800F1, false},
        {SkinVocabulary::attach, "all", 0xF00, false},
        {SkinVocabulary::attach, "bottom left top right", 0xF00, false},
        {SkinVocabulary::attach, "overall", 0, true},
        {SkinVocabulary::valueType, "string", 0x68, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const KeywordValue parsed = parseKeywords(c.set, c.text);
        EXPECT_EQ(parsed.value, c.value);
        EXPECT_EQ(parsed.hasUnknown, c.unknown);
    }
}

/// Operands by a table; a name that is not in it ends the evaluation.
class Operands final : public SizeOperands {
public:
    std::map<std::string, int64_t> fields{{"a.right", 30}, {"scheme.dlg.inset", 8}, {"zero.x", 0}};

    bool foreignField(std::string_view owner, std::string_view field, int64_t& value) override {
        const auto found = fields.find(std::string(owner) + "." + std::string(field));
        if (found == fields.end())
            return false;
        value = found->second;
        return true;
    }
};

std::string evaluated(const char* text) {
    Operands operands;
    SizeFields plain, f{-1, -1, -1, -1};
    if (parsePlainSize(text, plain))
        f = plain;
    else if (!evaluateSize(text, operands, f))
        return f.left == -1 ? "failed" : "failed and changed";
    return std::to_string(f.left) + " " + std::to_string(f.top) + " " + std::to_string(f.width) + " " +
           std::to_string(f.height);
}

TEST(SizeExpression, RunsFromLeftToRight) {
    const std::pair<const char*, const char*> cases[] = {
        {"1,2,3,4", "1 2 3 4"},
        {" 1 , -2,+3 ,4", "1 -2 3 4"},
        {"5", "5 0 0 0"},
        {"1,,3", "1 0 3 0"},
        {"1,2,3,4,5,6", "1 2 3 4"},
        {"1,2,*,4", "1 2 2147483647 4"},
        {"99999999999,-99999999999", "2147483647 -2147483648 0 0"},
        {"5-2*3", "9 0 0 0"},
        {"-5+2", "-3 0 0 0"},
        {"7/0,7/2", "7 3 0 0"},
        {"7/zero.x*2", "14 0 0 0"},
        {"a.right+5,1", "35 1 0 0"},
        {"0,0,180+50,20", "0 0 230 20"},
        {"scheme.dlg.inset*2", "16 0 0 0"},
        {"10,20,100,width/2", "10 20 100 50"},
        {"10,top,5,bottom", "10 0 5 0"},
        {"3,2,right,5", "3 2 3 5"},
        {"unknown+4", "4 0 0 0"},
        {"10,1,a.right+*,2", "10 1 2147483647 2"},
        {"2147483647*2147483647*2147483647", "2147483647 0 0 0"},
        {"-2147483648/-1", "-2147483648 0 0 0"},
        {"+,-,*,/", "0 0 2147483647 0"},
        {"b.right", "failed"},
        {"5,b.right", "failed"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(evaluated(text), expected) << text;
}

class TrueNames final : public ConditionNames {
public:
    std::set<std::string, std::less<>> names{"yes", "also"};
    bool isTrue(std::string_view name) override { return names.contains(name); }
};

TEST(SkinCondition, HasNoPrecedence) {
    const std::pair<const char*, bool> cases[] = {
        {"yes", true},
        {"no", false},
        {"", false},
        {"NOT", false},
        {"NOT no", true},
        {"NOT NOT yes", true},
        {"NOT NOT NOT yes", false},
        {"no OR yes", true},
        {"yes AND no OR yes", true},
        {"yes OR no AND no", false},
        {"yes XOR also", false},
        {"yes XOR NOT also", true},
        {"yes no", false},
        {"no yes", true},
        {"yes AND", true},
        {"and yes", true},
        {"NOT no AND NOT nope", true},
        {" yes\tAND\nalso ", true},
    };
    TrueNames names;
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(evaluateCondition(text, names), expected) << text;
}

} // namespace
} // namespace qorl
