#include "SkinFixture.h"
#include "foundation/Cast.h"
#include "support/TestGraphics.h"
#include "views/UBaseView.h"

#include <utility>

namespace qorl::testing {
namespace {

class ViewBuilderTest : public SkinFixture {};

TEST_F(ViewBuilderTest, ExtentsThatAreNotGivenAreThoseOfTheScheme) {
    useGraphics();
    const UScheme* scheme = GlobalSchemes::main();
    const auto metric = [scheme](int32_t key) { return scheme->getMetric(key); };
    const struct {
        const char* element;
        CmSize standard;
    } kinds[] = {
        {"button", {metric(SchemeMetric::buttonwidth), metric(SchemeMetric::buttonheight)}},
        {"switch", {metric(SchemeMetric::buttonwidth), metric(SchemeMetric::buttonheight)}},
        {"checkbox", {metric(SchemeMetric::buttonwidth), metric(SchemeMetric::checkboxheight)}},
        {"text", {metric(SchemeMetric::datafieldwidth), metric(SchemeMetric::datafieldheight)}},
        {"edit", {metric(SchemeMetric::datafieldwidth), metric(SchemeMetric::datafieldheight)}},
        {"slider", {metric(SchemeMetric::datafieldwidth), metric(SchemeMetric::scrollbarwidth)}},
    };
    for (const auto& [element, standard] : kinds) {
        const std::string start = "<" + std::string(element) + " titleNT='Hi' size='0,0,";
        load("<template name='T'>" + start + "133,0'/>" + start + "0,47'/>" + start + "0,0'/>" + start +
             "133,0'><view/></" + element + "></template>");
        const Ref<UView> view = wizard().createView("T", nullptr, nullptr);
        EXPECT_EQ(view->getSubView(0)->getFrameSize(), (CmSize{133, standard.height})) << element;
        EXPECT_EQ(view->getSubView(1)->getFrameSize(), (CmSize{standard.width, 47})) << element;
        EXPECT_EQ(view->getSubView(2)->getFrameSize(), standard) << element;
        EXPECT_EQ(view->getSubView(3)->getFrameSize(), (CmSize{133, standard.height}))
            << element << " with something in it";
    }
}

TEST_F(ViewBuilderTest, LimitsOfAWindowThatAreNotGivenStayOpen) {
    constexpr int32_t none = UBaseView::noLimit, most = UBaseView::largest;
    const std::pair<const char*, CmRect> cases[] = {
        {"200,100", {200, 100, most, most}}, {"200", {200, none, most, most}},
        {",,300,", {none, none, 300, most}}, {"0,0,300,400", {0, 0, 300, 400}},
        {"", {none, none, most, most}},
    };
    for (const auto& [limits, expected] : cases) {
        load("<template name='T' sizelimit='" + std::string(limits) + "'/>");
        const Ref<UView> view = wizard().createView("T", nullptr, nullptr);
        EXPECT_EQ(cast<UBaseView>(view)->getWindowSizeLimits(), expected) << "'" << limits << "'";
    }
}

TEST_F(ViewBuilderTest, CountsAllTextsThatViewsAndValuesKeep) {
    const std::string text(100'000, 'x');
    const std::string elements[] = {
        "<view titleNT='" + text + "'/>",
        "<view title='" + text + "'/>",
        "<view tip='" + text + "'/>",
        "<row name='" + text + "'/>",
        "<view command='a|" + text + "'/>",
        "<view name='helped'/>",
        "<valuedefine name='v[i]' type='int' title='" + text + "'/>",
        "<view><property name='p' value='" + text + "' style='embedded'/></view>",
    };
    for (const std::string& element : elements) {
        wizard().clearDiagnostics();
        load("<template name='T'><for variable='[i]' range='1,700'>" + element +
             "</for></template><template name='helped' help='" + text + "'/>");
        wizard().createView("T", nullptr, nullptr);
        ASSERT_EQ(wizard().diagnostics().size(), 1u) << element.substr(0, 40);
        EXPECT_EQ(wizard().diagnostics()[0].text, "the views of the template have more than 64 MB of text");
    }
}

TEST_F(ViewBuilderTest, CountsWhatIsLookedThroughAgainAndAgain) {
    const std::string text(200'000, '|');
    for (const std::string& element :
         {"<view pad='" + text + "'/>", "<view command='" + text + "'/>", "<font face='" + text + "'/>"}) {
        wizard().clearDiagnostics();
        load("<template name='T'><for range='1,8000'>" + element + "</for></template>");
        wizard().createView("T", nullptr, nullptr);
        ASSERT_FALSE(wizard().diagnostics().empty()) << element.substr(0, 40);
        EXPECT_EQ(wizard().diagnostics().back().text,
                  "the texts and conditions of the template are too long to look through that often");
    }
}

TEST_F(ViewBuilderTest, TellsWhatAViewThatIsGivenCannotTake) {
    load("<template name='T' background='gold' scheme='dialog'/>");
    const auto given = make<UView>();
    wizard().createView("T", nullptr, given.get());
    std::vector<std::string> findings;
    for (const Diagnostic& finding : wizard().diagnostics())
        findings.push_back(finding.text);
    EXPECT_THAT(findings,
                ::testing::ElementsAre(
                    "the view that is filled is no base view and takes no scheme: views that are added later "
                    "look as those around it",
                    "the view that is filled is no base view and takes no background colour 'gold'"));
}

TEST_F(ViewBuilderTest, NoPadMakesAViewWiderThanThereAreNumbers) {
    load("<template name='T'><view size='-2147483648,5,0,0' pad='1073741824,2,1073741824,3'/></template>");
    const Ref<UView> view = wizard().createView("T", nullptr, nullptr);
    EXPECT_EQ(view->getSubView(0)->getFrameRect(), (CmRect{-2147483647 - 1, 5, -1, 10}));
}

} // namespace
} // namespace qorl::testing
