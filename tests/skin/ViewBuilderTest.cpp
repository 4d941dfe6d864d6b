#include "SkinFixture.h"
#include "foundation/Cast.h"
#include "support/TestGraphics.h"
#include "views/UBaseView.h"

#include <utility>

namespace qorl::testing {

namespace {

class ViewBuilderTest : public SkinFixture {};

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

} // namespace

} // namespace qorl::testing
