#include "WizardFixture.h"
#include "binding/UColorValue.h"
#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "persistence/attributes/FAttributes.h"
#include "skin/ControllerScope.h"
#include "skin/UViewClass.h"
#include "support/FailingAllocation.h"
#include "support/Poisoned.h"
#include "support/ProbeView.h"
#include "support/TestGraphics.h"
#include "views/UBaseView.h"
#include "views/UCursorView.h"
#include "views/UPropertyCollection.h"
#include "views/controls/ULabel.h"
#include "views/controls/USlider.h"
#include "views/controls/UTextDisplay.h"

#include <tuple>

namespace qorl::testing {
namespace {

class UIWizardTest : public WizardFixture {
protected:
    static UControl* control(const Ref<UView>& view, int32_t i) {
        return cast<UControl>(view->getSubView(i));
    }
    static bool hasGround(const UControl& control, uint32_t wanted) {
        uint32_t color = 0;
        return control.getContentColor(color) && color == wanted;
    }
};

TEST_F(UIWizardTest, LoopsCountAndMove) {
    const std::pair<const char*, const char*> cases[] = {
        {"variable='[i]' range='0,3' offset='5,1'", "0@0,0 1@5,1 2@10,2 3@15,3"},
        {"variable='[i]' range='3,1' offset='5,0'", "3@0,0 2@5,0 1@10,0"},
        {"variable='[i]' range='2,2'", "2@0,0"},
        {"variable='[i]' range='0,4' step='2'", "0@0,0 2@0,0"},
        {"variable='[i]' range='0,5' step='2'", "0@0,0 2@0,0 4@0,0"},
        {"variable='[i]' range='0,1' step='3'", ""},
        {"variable='[i]' range='-1,0' offset='0,-3'", "-1@0,0 0@0,-3"},
        {"variable='[i]' range='0,3' offset='5,0' condition='on[i]' style='failskip'", "1@0,0 3@5,0"},
        {"variable='[i]' range='0,3' offset='5,0' condition='on[i]' style='failspace'", "1@5,0 3@15,0"},
        {"variable='[i]' range='0,3' offset='5,0' condition='on[i]'", ""},
        {"variable='[i]' range='1,3' offset='5,0' condition='on[i]'", "1@0,0"},
        {"data='rows' variable='[i]' range='0,9'", "7@0,0 8@0,0"},
        {"data='by two' variable='[i]' range='3,6'", "3@0,0 5@0,0"},
    };
    controller_->trueNames = {"on1", "on3"};
    controller_->loopFirst = 7;
    controller_->loopLast = 8;
    for (const auto& [attributes, expected] : cases)
        EXPECT_EQ(built("<for " + std::string(attributes) + "><label titleNT='[i]' size='0,0,9,9'/></for>"),
                  expected)
            << attributes;
}

TEST_F(UIWizardTest, ALoopAsksForItsConditionFromInside) {
    controller_->trueNames = {"own"};
    auto outer = make<TestController>();
    outer->trueNames = {"outer"};
    const ControllerScope scope(outer.get());
    const std::string label = "'><label titleNT='x'/></for>";
    EXPECT_EQ(built("<for range='0,0' condition='../own" + label), "x@0,0");
    EXPECT_EQ(built("<for range='0,0' condition='../outer" + label), "");
    EXPECT_EQ(ControllerScope::innermost(), &scope);
}

TEST_F(UIWizardTest, VariablesBuildNamesTogether) {
    for (const char* name : {"row0", "row1"})
        controller_->add(name);
    const Ref<UView> view =
        build("<for variable='[r]' range='0,1'><mutable variable='WHAT|[x]' setting='row'>"
              "<slider name='WHAT[r]' size='0,0,9,9'/><label titleNT='[x]WHAT-[r]'/>"
              "<variant condition='show-top[r]'><label/></variant></mutable></for>");
    EXPECT_EQ(control(view, 2)->getValueObject(), controller_->getValue("row1"));
    EXPECT_EQ(view->getSubView(3)->getTitle().toUtf8(), "row-1") << "a setting that is not there is empty";
    EXPECT_EQ(view->getSubView(2)->getItem().name(), "row1");
    EXPECT_EQ(controller_->askedConditions, (std::vector<std::string>{"show-top0", "show-top1"}));
    EXPECT_EQ(wizard().substitute("WHAT"), "WHAT") << "variables end with the build";
}

TEST_F(UIWizardTest, ConditionsOfTheBuildComeAndGo) {
    wizard().setCondition("kept");
    EXPECT_EQ(built("<set condition='a| b'><variant condition='a AND b'><label titleNT='ab'/></variant></set>"
                    "<variant condition='a'><label titleNT='late'/></variant>"
                    "<mutable impose='c|kept'><variant condition='c'><label titleNT='c'/></variant></mutable>"
                    "<variant condition='c'><label titleNT='late'/></variant>"
                    "<variant condition='kept'><label titleNT='kept'/></variant>"
                    "<set condition='kept'/>"
                    "<variant condition='kept'><label titleNT='gone'/></variant>"
                    "<variant><label titleNT='free'/></variant>"),
              "ab@0,0 c@0,0 kept@0,0 free@0,0");
}

TEST_F(UIWizardTest, AControllerElementLeadsInAndDotsLeadOut) {
    auto inner = make<TestController>();
    auto innermost = make<TestController>();
    controller_->setSubController("in", inner.get(), false);
    inner->setSubController("most", innermost.get(), false);
    const std::pair<std::string, Binding::Value*> cases[] = {
        {"x", innermost->add("x")},
        {"../y", inner->add("y")},
        {"../../z", controller_->add("z")},
        {"../../../z", controller_->getValue("z")},
        {"../most/x", innermost->getValue("x")},
        {"../nobody/x", nullptr},
        {"most/../y", nullptr},
        {"/x", nullptr},
        {"none", nullptr},
        {"", nullptr},
    };
    for (const auto& [name, expected] : cases) {
        const Ref<UView> view = build("<controller name='in'><controller name='most'><slider name='" + name +
                                      "'/></controller></controller>");
        Binding::Value* value = control(view, 0)->getValueObject();
        EXPECT_TRUE(expected ? value == expected : value->getMax() == 100) << name;
    }
    const Ref<UView> view = build("<controller name='absent'><label/></controller><controller name='in'/>"
                                  "<slider name='in/y'/>");
    ASSERT_EQ(view->getSubViewCount(), 1) << "nothing stands below a controller that is not there";
    EXPECT_EQ(control(view, 0)->getValueObject(), inner->getValue("y"));
    EXPECT_FALSE(ControllerScope::innermost());
}

TEST_F(UIWizardTest, AsksConditionsAlongPaths) {
    auto inner = make<TestController>();
    controller_->setSubController("in", inner.get(), false);
    inner->trueNames = {"lit"};
    EXPECT_TRUE(wizard().evaluate("in/lit AND NOT in/dark AND NOT lit", controller_.get()));
    EXPECT_FALSE(wizard().evaluate("out/lit", controller_.get()));
    EXPECT_TRUE(wizard().evaluate("LINUX", controller_.get()));
    EXPECT_FALSE(wizard().evaluate("WINDOWS", nullptr));
}

TEST_F(UIWizardTest, FallsBackToTheValueTheOuterControllerHolds) {
    controller_->add("x");
    const auto found = [this](IController* from) { return wizard().findValue("../x", from).get(); };
    EXPECT_EQ(found(controller_.get()), controller_->getValue("x"));
    auto outer = make<TestController>();
    outer->add("x");
    const ControllerScope scope(outer.get());
    EXPECT_EQ(found(controller_.get()), outer->getValue("x"));
    EXPECT_EQ(found(nullptr), outer->getValue("x"));
}

TEST_F(UIWizardTest, ControllersSeeAndDropViews) {
    controller_->dropped = "b";
    EXPECT_EQ(built("<label name='a' titleNT='a'/><label name='b' titleNT='b'><label name='inside'/></label>"
                    "<view name='V'/>"),
              "a@0,0 @0,0");
    EXPECT_EQ(controller_->created, (std::vector<std::string>{"a", "b", "V"}));
    EXPECT_EQ(controller_->finished, (std::vector<std::string>{"T"}));
}

UView* makeProbe(const ViewElement& element, IController*) {
    return new UView(CmRect{0, 0, 7, 7}, ConstString(element.name()));
}

TEST_F(UIWizardTest, ViewsComeFromTemplatesClassesOrNowhere) {
    UViewClass::add("probe", makeProbe);
    UControlClass::add("probe", makeProbe);
    others_ = "<template name='probe-template' size='3,3,20,30' title='by template'><label "
              "size='0,0,5,5'/></template>"
              "<template name='fitted'><label size='5,6,10,10'/></template>";
    const std::tuple<const char*, CmRect, const char*> cases[] = {
        {"<view name='probe-template' size='50,60,0,5'/>", {50, 60, 70, 65}, "by template"},
        {"<view name='probe-template'/>", {0, 0, 20, 30}, "by template"},
        {"<view name='fitted'/>", {0, 0, 15, 16}, ""},
        {"<view name='probe'/>", {0, 0, 7, 7}, "probe"},
        {"<control class='probe' name='c'/>", {0, 0, 7, 7}, "c"},
        {"<control class='?'><label/></control><view titleNT='plain' size='1,1,2,2'/>",
         {1, 1, 3, 3},
         "plain"},
    };
    for (const auto& [element, frame, title] : cases) {
        const Ref<UView> view = build(element);
        ASSERT_EQ(view->getSubViewCount(), 1) << element;
        EXPECT_EQ(view->getSubView(0)->getFrameRect(), frame) << element;
        EXPECT_EQ(view->getSubView(0)->getTitle().toUtf8(), title) << element;
    }
}

UView* makeHolder(const ViewElement& element) {
    return element.name() == "holder" ? new UView(CmRect{0, 0, 7, 7}) : nullptr;
}

TEST_F(UIWizardTest, AViewOfTheControllerFitsWhatItHolds) {
    controller_->createsView = makeHolder;
    const Ref<UView> view = build("<view name='holder'><view size='2,3,20,10'/></view>"
                                  "<view name='holder' size='0,0,9,9'><view size='2,3,20,10'/></view>");
    EXPECT_EQ(view->getSubView(0)->getFrameSize(), (CmSize{22, 13}));
    EXPECT_EQ(view->getSubView(1)->getFrameSize(), (CmSize{7, 7}));
}

TEST_F(UIWizardTest, ATemplateMakesABaseView) {
    load("<template name='T' size='5,5,80,60' title='Panel' style='dialogstyle' sizelimit='10,20,300,400' "
         "view-style='focusController' attach='all' background='#112233' wallpaper='W'><label/></template>"
         "<template name='W' size='0,0,5,5' title='wall'/>");
    const Ref<UView> view = wizard().createView("T", controller_.get(), nullptr);
    auto* base = cast<UBaseView>(view.get());
    ASSERT_TRUE(base);
    EXPECT_EQ(base->getWindowStyle(), 0x800F0u);
    EXPECT_EQ(base->getWindowSizeLimits(), (CmRect{10, 20, 300, 400}));
    EXPECT_TRUE(base->hasBaseFlag(UBaseView::baseControllerFocus));
    EXPECT_EQ(base->getController(), controller_.get());
    EXPECT_EQ(base->getBackgroundColor(base).packed(), 0xFF112233u);
    EXPECT_EQ(base->getAttach(), uint32_t{viewAttachAll});
    EXPECT_EQ(base->getSubView(0)->getTitle().toUtf8(), "wall") << "behind all others";
    EXPECT_EQ(base->getSubView(0)->getFrameRect(), (CmRect{0, 0, 80, 60}));
    EXPECT_EQ(toText(view->getSource()->position()), "(text):1:1");
    EXPECT_FALSE(wizard().createView("none", controller_.get(), nullptr));
}

TEST_F(UIWizardTest, ConditionsOfListsGoThroughVariables) {
    EXPECT_EQ(built("<for variable='[i]' range='0,1'><set condition='s[i]'><variant condition='s1'>"
                    "<label titleNT='set'/></variant></set>"
                    "<mutable variable='X' setting='m[i]' impose='X'><variant condition='m0'>"
                    "<label titleNT='imposed'/></variant></mutable></for>"),
              "imposed@0,0 set@0,0");
    EXPECT_TRUE(wizard().conditions().empty());
}

TEST_F(UIWizardTest, ALabelAsksForTheValueOfItsName) {
    struct Asked : UValueContainer {
        Binding::Value* getValue(const char* name) override {
            names.emplace_back(name);
            return nullptr;
        }
        std::vector<std::string> names;
    };
    auto asked = make<Asked>();
    load("<template name='T'><label name='caption'/><label/><decor name='frame'/></template>");
    wizard().createView("T", asked.get(), nullptr);
    EXPECT_EQ(asked->names, std::vector<std::string>{"caption"});
}

TEST_F(UIWizardTest, LimitsOfSizeReachAnyView) {
    load("<template name='T' min-size='3,4' max-size='50,60'><label min-size='7,8'/></template>");
    const auto given = make<UView>();
    wizard().createView("T", controller_.get(), given.get());
    App::Layout::SizeLimits expected;
    expected.minSize = {3, 4};
    expected.maxSize = {50, 60};
    EXPECT_EQ(given->getItem().limits(), expected);
    expected = {};
    expected.minSize = {7, 8};
    EXPECT_EQ(given->getSubView(0)->getItem().limits(), expected);
}

TEST_F(UIWizardTest, AGroundIsAColourOrAValueOfOne) {
    const auto ground = make<UColorValue>();
    controller_->setValue("ground", ground);
    controller_->add("number");
    const Ref<UView> view = build("<text bgcolor='ground'/><text bgcolor='number'/><text bgcolor='gold'/>"
                                  "<slider color-value='ground'/><slider color-value='gold'/>");
    const Binding::Value* expected[] = {ground.get(), nullptr, nullptr, ground.get(), nullptr};
    for (int32_t i = 0; i < view->getSubViewCount(); ++i)
        EXPECT_EQ(control(view, i)->getSecondValue(), expected[i]) << i;
    EXPECT_THAT(findings(), ::testing::ElementsAre("'number' is a value, but none of a colour",
                                                   "'gold' is neither a colour nor a value"));
}

TEST_F(UIWizardTest, ViewsRememberTheirPlaceAfterTheDocumentIsGone) {
    const Ref<UView> view = build("\n <label/>");
    load("<template name='other'/>");
    EXPECT_EQ(toText(view->getSubView(0)->getSource()->position()), "(text):2:2");
}

TEST_F(UIWizardTest, FillsAViewThatIsGiven) {
    load("<template name='T' size='1,2,30,40' title='given'><label titleNT='x'/></template>");
    const Ref<UView> given = make<UBaseView>();
    EXPECT_EQ(wizard().createView("T", controller_.get(), given.get()).get(), given.get());
    EXPECT_EQ(given->getFrameRect(), (CmRect{1, 2, 31, 42}));
    EXPECT_EQ(list(*given), "x@0,0");
    EXPECT_FALSE(cast<UBaseView>(given)->getController()) << "the owner of the view sets it";
}

TEST_F(UIWizardTest, ACursorStandsBehindTheViewThatAsksForIt) {
    load("<skin><resources><cursor name='hand' path='pointhand'/><cursor name='none' path='paw'/></resources>"
         "<template name='T'><label cursor='hand' size='5,6,20,10' attach='right'/>"
         "<label cursor='none' size='0,0,9,9'/><label cursor='gone' size='0,0,9,9'/></template></skin>");
    const Ref<UView> view = wizard().createView("T", nullptr, nullptr);
    ASSERT_EQ(view->getSubViewCount(), 4);
    auto* cursor = cast<UCursorView>(view->getSubView(0));
    ASSERT_TRUE(cursor);
    EXPECT_EQ(cursor->getCursor(), UCursor::find("pointhand"));
    EXPECT_EQ(cursor->getFrameRect(), (CmRect{5, 6, 25, 16}));
    EXPECT_EQ(cursor->getAttach(), uint32_t{viewAttachRight});
    EXPECT_THAT(findings(), ::testing::ElementsAre("no cursor 'none' among the resources",
                                                   "no cursor 'gone' among the resources"));
}

TEST_F(UIWizardTest, ViewsTakeWhatTheSkinSaysOfThem) {
    const Ref<UView> view = build(
        "<label focus='noRemote' titleNT='x' size='0,0,50,20' pad='1,2,3,4'/>"
        "<slider name='v' size='0,0,9,9'><property name='a[' value='1' style='embedded'/>"
        "<property name='b' value='2'/></slider><rowcol pad='1,2,3,4'><view size='0,0,10,10'/></rowcol>");
    const UView* label = view->getSubView(0);
    EXPECT_TRUE(label->hasFlag(viewNoRemoteFocus));
    EXPECT_EQ(label->getClientRect(), (CmRect{1, 2, 47, 16}));
    auto properties = view->getSubView(1)->getAttributes().getObject("PropertyCollection");
    auto* collection = cast<UPropertyCollection>(properties);
    ASSERT_TRUE(collection);
    EXPECT_EQ(collection->count(), 1) << "embedded ones only";
    std::string_view value;
    EXPECT_TRUE(collection->find("a[", value) && value == "1");
    EXPECT_EQ(view->getSubView(2)->getFrameSize(), (CmSize{14, 16})) << "grows by what it keeps free";
}

UView* makeText(const ViewElement& element, IController*) {
    return new UTextDisplay(element.rect(), ConstString(), nullptr, 0);
}

UView* makeSlider(const ViewElement& element, IController*) {
    return new USlider(element.rect(), ConstString(), nullptr, 0);
}

TEST_F(UIWizardTest, ControlsOfAnyClassTakeGroundAndDefault) {
    UControlClass::add("text", makeText);
    UControlClass::add("slider", makeSlider);
    const Ref<UView> view = build("<control class='slider' bgcolor='#112233' style='jump|default'/>"
                                  "<control class='slider' style='default-not'/>"
                                  "<control class='text' bgcolor='number'/>");
    EXPECT_TRUE(hasGround(*control(view, 0), 0xFF112233));
    EXPECT_TRUE(control(view, 0)->isDefaultControl());
    EXPECT_FALSE(control(view, 1)->isDefaultControl());
    EXPECT_THAT(findings(), ::testing::ElementsAre("'number' is no colour"));
}

UView* makeNothing(const ViewElement&, IController*) {
    return nullptr;
}

TEST_F(UIWizardTest, TheApplicationMakesControlsThatNoClassMakes) {
    UControlClass::add("nothing", makeNothing);
    UControlClass::add("something", makeProbe);
    UControlClass::setFallback(makeSlider);
    const Ref<UView> view = build("<control class='nothing'/><control class='unheard-of'/>"
                                  "<control class='something'/>");
    UControlClass::setFallback(nullptr);
    ASSERT_EQ(view->getSubViewCount(), 3);
    EXPECT_TRUE(cast<USlider>(view->getSubView(0))) << "a factory that makes nothing";
    EXPECT_TRUE(cast<USlider>(view->getSubView(1))) << "no factory";
    EXPECT_FALSE(cast<USlider>(view->getSubView(2)));
}

TEST_F(UIWizardTest, ControlsOfTheControllerTakeGroundDefaultAndFont) {
    useGraphics();
    controller_->createsView = [](const ViewElement& element) -> UView* {
        if (element.name() == "label")
            return new ULabel(CmRect(), ConstString("iiiiii"), 0, ULabel::autoWidth);
        return element.name() == "slider" ? makeSlider(element, nullptr) : nullptr;
    };
    const Ref<UView> view = build("<control name='slider' bgcolor='#112233' style='default'/>"
                                  "<view name='slider' bgcolor='#112233' style='default'/>"
                                  "<control name='label'/><font size='40'><control name='label'/>"
                                  "<view name='label'/></font>");
    EXPECT_TRUE(hasGround(*control(view, 0), 0xFF112233));
    EXPECT_TRUE(control(view, 0)->isDefaultControl());
    EXPECT_FALSE(hasGround(*control(view, 1), 0xFF112233) || control(view, 1)->isDefaultControl())
        << "of <control> only";
    const auto width = [&view](int32_t i) { return view->getSubView(i)->getFrameSize().width; };
    EXPECT_GT(width(3), 2 * width(2));
    EXPECT_EQ(width(4), width(3));
}

TEST_F(UIWizardTest, AFontTakesTheFirstFaceThatIsThere) {
    useGraphics();
    const auto width = [this](const std::string& face) {
        const Ref<UView> view = build("<font size='20' face='DejaVu Serif'><font " + face +
                                      "><label titleNT='iiiiii' style='autowidth'/></font></font>");
        return view->getSubView(0)->getFrameSize().width;
    };
    const int32_t outer = width("");
    const int32_t mono = width("face='DejaVu Sans Mono'");
    EXPECT_NE(outer, mono);
    EXPECT_EQ(width("face='No Such Face, ,DejaVu Sans Mono , DejaVu Sans'"), mono);
    EXPECT_EQ(width("face='No Such Face'"), outer) << "stays as it was around it";
}

TEST_F(UIWizardTest, GivesNoViewWhenMemoryRunsOut) {
    load("<template name='T' data='in'><set condition='set|too'><for variable='[i]' range='0,1'><controller "
         "name='in'><col><view name='v[i]' tip='t[i]'/><valuedefine name='d[i]' type='int' scope='local' "
         "title='D' persistence='d'/></col></controller></for></set></template>");
    controller_->setSubController("in", controller_.get(), false);
    failEachAllocation([this](FailingAllocation& allocation) {
        const Ref<UView> view =
            allocation.during([this] { return wizard().createView("T", controller_.get(), nullptr); });
        EXPECT_TRUE(view || allocation.hasFailed());
        ValueRegistry::instance()->clear();
        EXPECT_TRUE(wizard().conditions().empty());
        EXPECT_EQ(wizard().substitute("[i]"), "[i]");
        EXPECT_FALSE(ControllerScope::innermost());
    });
}

TEST_F(UIWizardTest, ReloadTellsListeners) {
    auto listener = make<ProbeController>();
    wizard().addListener(listener.get());
    FMessage message(ConstString("ReloadDescription"));
    EXPECT_EQ(wizard().handleMessage(&message), CmObject::handled);
    wizard().removeListener(listener.get());
    wizard().handleMessage(&message);
    EXPECT_THAT(listener->messages, ::testing::ElementsAre("ReloadDescription"));
}

TEST_F(UIWizardTest, NestedWizardsShareTheDocument) {
    load("<template name='T'/>");
    wizard().setCondition("outer");
    const auto nested = make<UIWizard>(wizard());
    nested->setCondition("inner");
    EXPECT_EQ(nested->description(), wizard().description());
    EXPECT_TRUE(nested->hasCondition("outer"));
    EXPECT_FALSE(wizard().hasCondition("inner"));
    UIWizard* global = UIWizard::instance();
    {
        const WizardScope scope(nested);
        EXPECT_EQ(UIWizard::instance(), nested.get());
    }
    EXPECT_EQ(UIWizard::instance(), global);
}

TEST_F(UIWizardTest, FramesStackWhatTheyHold) {
    const Ref<UView> view =
        build("<col margin='2' spacing='3' width='50'><view size='0,0,10,10' titleNT='a'/><row margin='0' "
              "spacing='1'>"
              "<view size='0,0,4,4' titleNT='b'/><view size='0,0,4,4' titleNT='c'/></row></col>"
              "<row><view size='0,0,4,4'/></row>"
              "<frame margin='1' spacing='2'><frame margin='3'><view size='0,0,5,6' titleNT='d'/></frame>"
              "<view size='0,0,4,4' titleNT='e'/></frame>");
    UView* column = view->getSubView(0);
    EXPECT_EQ(list(*column), "a@2,2 @2,15");
    EXPECT_EQ(list(*column->getSubView(1)), "b@0,0 c@5,0");
    EXPECT_EQ(column->getFrameSize(), (CmSize{50, 21})) << "at least as wide as it says";
    EXPECT_EQ(view->getSubView(1)->getSubView(0)->getFrameRect().left, 8)
        << "the scheme's margin without one";
    UView* frame = view->getSubView(2);
    EXPECT_EQ(list(*frame), "@1,1 e@1,15") << "downwards, and a frame may stand in a frame";
    EXPECT_EQ(list(*frame->getSubView(0)), "d@3,3");
}

/// Counts how often it is placed.
class PlacedView : public UView {
    QORL_CLASS(PlacedView, UView)

public:
    using UView::UView;
    int placed = 0;
    void moved() override { ++placed; }
};

TEST_F(UIWizardTest, RowsPlaceTheirChildrenOnceAllAreThere) {
    controller_->createsView = [](const ViewElement& element) -> UView* {
        return element.name() == "placed" ? new PlacedView(element.rect()) : nullptr;
    };
    const std::pair<const char*, const char*> rows[] = {
        {"<rowcol style='vertical alignright'>", "</rowcol>"},
        {"<col margin='0' style='alignright'>", "</col>"},
    };
    for (const auto& [begin, end] : rows) {
        const Ref<UView> view = build(std::string(begin) + "<view name='placed' size='0,0,10,9'/>" +
                                      "<view size='0,0,20,9'/><view size='0,0,30,9'/>" + end);
        auto* first = cast<PlacedView>(view->getSubView(0)->getSubView(0));
        EXPECT_EQ(first->getFrameRect().left, 20) << begin;
        EXPECT_EQ(first->placed, 1) << begin << ": placed with each child that came";
    }
}

TEST_F(UIWizardTest, AMutableBuildsATemplateInAViewOfItsOwn) {
    others_ = "<template name='C' size='9,9,80,70'><label titleNT='[x]' size='1,2,10,20'/>"
              "<variant condition='c'><label titleNT='[y]' size='4,5,30,10'/></variant></template>";
    const Ref<UView> view = build("<mutable variable='[x]|[y]' setting='one|two' impose='c' child='C'/>"
                                  "<mutable variable='[n]' setting='C' child='[n]'/>");
    EXPECT_EQ(list(*view->getSubView(0)), "one@1,2 two@4,5");
    EXPECT_EQ(view->getSubView(0)->getFrameRect(), (CmRect{0, 0, 34, 22})) << "as large as what it holds";
    EXPECT_EQ(list(*view->getSubView(1)), "[x]@1,2") << "its name goes through variables";
}

TEST_F(UIWizardTest, TitlesTipsAndCommandsReachTheView) {
    const Ref<UView> view =
        build("<button name='go' title='Go' tip='Goes' command='Transport|Start' id='start' "
              "focus='no' attach='right' size='0,0,9,9'/>");
    UView* button = view->getSubView(0);
    EXPECT_EQ(button->getTitle().toUtf8(), "Go");
    EXPECT_EQ(button->getTooltipText().toUtf8(), "Goes");
    EXPECT_EQ(button->getItem().name(), "start");
    EXPECT_EQ(button->getAttach(), uint32_t{viewAttachRight});
    EXPECT_FALSE(button->isFocusable());
    String category, name;
    EXPECT_TRUE(cast<UControl>(button)->getCommand(category, name));
    EXPECT_EQ(category.toUtf8() + "|" + name.toUtf8(), "Transport|Start");
}

TEST_F(UIWizardTest, ABrokenBuildLeavesTheConditionsOfTheNextDocumentAlone) {
    wizard().setCondition("DARK");
    load("<template name='T'><mutable variable='[x]' setting='" + std::string(40'000, 'x') +
         "'><label titleNT='[x][x]'/></mutable></template>");
    wizard().createView("T", nullptr, nullptr);
    ASSERT_EQ(findings().size(), 1u);
    load("<skin><definitions><variant condition='LINUX AND DARK'><define name='d' value='1'/></variant>"
         "</definitions></skin>");
    int32_t number = 0;
    EXPECT_TRUE(wizard().description()->findDefine("d", number));
    EXPECT_TRUE(wizard().evaluate("DARK", nullptr));
}

TEST_F(UIWizardTest, ACopyKeepsTheNumberOfItsRound) {
    struct Copying : TestController {
        UView* viewCreated(UView* view, const ViewElement*) override {
            copies.push_back(make<UIWizard>(*wizard));
            return view;
        }
        UIWizard* wizard = nullptr;
        std::vector<Ref<UIWizard>> copies;
    };
    const auto copying = make<Copying>();
    copying->wizard = &wizard();
    controller_ = copying;
    build("<for variable='[i]' range='4,6'><view/></for>");
    ASSERT_EQ(copying->copies.size(), 3u);
    EXPECT_EQ(copying->copies[0]->substitute("[i]"), "4");
}

TEST_F(UIWizardTest, MayEndByOneOfItsListeners) {
    struct Listener : CmObject {
        int32_t handleMessage(FMessage*) override {
            wizard.reset();
            hasHeard = true;
            return handled;
        }
        Ref<UIWizard> wizard;
        bool hasHeard = false;
    } first, second;
    first.wizard = make<Poisoned<UIWizard>>();
    first.wizard->addListener(&first);
    first.wizard->addListener(&second);
    FMessage message(ConstString("ReloadDescription"));
    EXPECT_EQ(first.wizard->handleMessage(&message), CmObject::handled);
    EXPECT_FALSE(first.wizard);
    EXPECT_TRUE(second.hasHeard);
}

} // namespace
} // namespace qorl::testing
