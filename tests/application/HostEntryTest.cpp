#include "application/ApplicationInfo.h"
#include "application/CmHostClasses.h"
#include "application/UController.h"
#include "application/UPluginApplication.h"
#include "components/FComponentRegistry.h"
#include "foundation/Cast.h"
#include "foundation/StartupHook.h"
#include "foundation/Teardown.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/text/TranslationTable.h"
#include "persistence/defaults/FDefaultPool.h"
#include "platform/Platform.h"
#include "platform/headless/HeadlessDesktop.h"
#include "schemes/GlobalSchemes.h"
#include "skin/UIDescription.h"
#include "support/EnvironmentScope.h"
#include "support/FailingAllocation.h"
#include "support/TestPaths.h"
#include "views/controls/KnobMode.h"
#include "windows/AlertPresenter.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

extern "C" qorl::IHostClasses* GetHostClasses();
extern "C" void TerminateModule();

namespace qorl {
namespace {

using Log = std::vector<std::string>;

Log* heard = nullptr;

template <char name>
bool note() {
    if (heard)
        heard->emplace_back(1, name);
    return true;
}

const TeardownHook wizardStep{TeardownStep::wizard, [] { note<'w'>(); }};
const TeardownHook clipboardStep{TeardownStep::clipboardData, [] { note<'c'>(); }};
const TeardownHook modulesStep{TeardownStep::moduleManager, [] { note<'m'>(); }};
const TeardownHook lastStep{TeardownStep::hookLists, [] { note<'h'>(); }};

/// Enters the library in this process on a headless desktop of the test's own, with settings in a folder that
/// goes.
class HostEntryTest : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        startHeadless();
        dropHooks();
        heard = &log;
    }
    void TearDown() override {
        heard = nullptr;
        platform::stop();
    }
    Log take() { return std::exchange(log, {}); }
    /// Keeps one that runs.
    void startHeadless() {
        if (platform::desktop())
            return;
        desktop = new platform::HeadlessDesktop;
        ASSERT_TRUE(platform::start(desktop));
    }

    testing::TemporaryFolder folder;
    platform::HeadlessDesktop* desktop = nullptr;
    Log log;
};

TEST_F(HostEntryTest, TheFirstUserStartsAndTheLastOneTakesDown) {
    const StartupHook early{"early", 0, &note<'0'>};
    const StartupHook finish{"finish", 100, &note<'3'>};
    const StartupHook last{"last of main", 99, &note<'2'>};
    const StartupHook middle{"middle", 50, &note<'1'>};
    const ShutdownHook bye{"bye", 50, &note<'b'>};

    IHostClasses* classes = GetHostClasses();
    ASSERT_EQ(classes, &CmHostClasses::instance());
    EXPECT_EQ(take(), (Log{"0", "1", "2", "3"}));
    UApplication* application = UApplication::instance();
    ASSERT_NE(application, nullptr);
    EXPECT_TRUE(application->isReady());
    EXPECT_FALSE(application->isQuitting());
    EXPECT_EQ(application->getGuiThread()->getName(), "GUI");
    EXPECT_TRUE(application->getGuiThread()->isCurrent());
    EXPECT_TRUE(application->getGuiThread()->isStarted());
    EXPECT_EQ(application->getType(), ApplicationType::library);
    ASSERT_NE(UController::instance(), nullptr);
    EXPECT_EQ(EventLoop::current(), &UController::instance()->loop());
    EXPECT_TRUE(std::filesystem::is_directory(folder / "qorl-frame_64")) << "the user's folder is made";
    EXPECT_EQ(translate(ConstString("Quit")).toUtf8(), "Quit");
    ASSERT_NE(GlobalSchemes::main(), nullptr);
    for (const UScheme* scheme : {GlobalSchemes::dialog(), GlobalSchemes::system(), GlobalSchemes::current()})
        EXPECT_EQ(scheme, GlobalSchemes::main()) << "in the library all schemes are one";
    EXPECT_EQ(GlobalSchemes::control(), nullptr);

    EXPECT_EQ(GetHostClasses(), classes);
    TerminateModule();
    EXPECT_EQ(UApplication::instance(), application) << "one user is left";
    EXPECT_EQ(take(), Log{});
    TerminateModule();
    EXPECT_EQ(UApplication::instance(), nullptr);
    EXPECT_EQ(UController::instance(), nullptr);
    EXPECT_EQ(GlobalSchemes::main(), nullptr);
    EXPECT_EQ(EventLoop::current(), nullptr);
    EXPECT_EQ(FMessenger::instance(), nullptr);
    EXPECT_EQ(TranslationTable::instance(), nullptr);
    EXPECT_EQ(take(), (Log{"c", "b", "m", "w", "h"})) << "the steps of the teardown in their order";
}

TEST_F(HostEntryTest, NoSettingOfOneHostReachesTheNext) {
    GetHostClasses();
    setKnobMode(KnobMode::circular);
    UIDescription::setOptions(UIDescription::keepComments);
    GetHostClasses();
    EXPECT_EQ(getKnobMode(), KnobMode::circular) << "the library runs already";
    TerminateModule();
    TerminateModule();
    startHeadless();
    GetHostClasses();
    EXPECT_EQ(getKnobMode(), KnobMode::linear);
    EXPECT_EQ(UIDescription::options(), 0x1Du);
    TerminateModule();
}

TEST_F(HostEntryTest, ASecondStartInOneLoadWorksWithoutTheHooks) {
    const StartupHook early{"early", 0, &note<'0'>};
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        ASSERT_NE(GetHostClasses(), nullptr);
        EXPECT_EQ(take(), round == 0 ? Log{"0"} : Log{});
        ASSERT_NE(FMessenger::instance(), nullptr) << "the messenger is there again";
        EXPECT_NE(FComponentRegistry::instance(), nullptr) << "the registry needs no hook";
        EXPECT_NE(GlobalSchemes::main(), nullptr);
        TerminateModule();
        take();
    }
}

TEST_F(HostEntryTest, AFailedStartGivesNullAndIsNotTriedAgain) {
    const StartupHook fails{"fails", 50, [] { return !note<'F'>(); }};
    const StartupHook never{"never", 50, &note<'n'>};
    EXPECT_EQ(GetHostClasses(), nullptr);
    EXPECT_EQ(take(), Log{"F"});
    EXPECT_NE(UApplication::instance(), nullptr) << "the application object stays";
    EXPECT_NE(GetHostClasses(), nullptr);
    EXPECT_EQ(take(), Log{});
    TerminateModule();
    EXPECT_EQ(UApplication::instance(), nullptr);
}

TEST_F(HostEntryTest, IsEnteredAgainWhateverAStartFoundNoMemoryFor) {
    platform::stop();
    const testing::EnvironmentScope display("DISPLAY", nullptr);
    const std::string settings = folder / "qorl-frame_64";
    failEachAllocation([&](FailingAllocation& allocation) {
        allocation.during([] { return GetHostClasses(); });
        EXPECT_EQ(platform::desktop() != nullptr, UApplication::instance() != nullptr);
        EXPECT_NE(GetHostClasses(), nullptr);
        EXPECT_NE(UApplication::instance(), nullptr);
        EXPECT_NE(GlobalSchemes::main(), nullptr);
        EXPECT_EQ(UApplication::instance()->getTitle().string(), ConstString("qorl-frame"));
        EXPECT_TRUE(UApplication::instance()->getPath().isValid());
        EXPECT_TRUE(UApplication::instance()->getGuiThread()->isCurrent());
        EXPECT_EQ(FNPath::knownFolder(FNPath::userSettings), settings);
        while (UApplication::instance())
            TerminateModule();
        EXPECT_EQ(platform::desktop(), nullptr);
    });
}

TEST_F(HostEntryTest, FailsWhenThePlatformRefusesAndDropsTheHooks) {
    platform::stop();
    const testing::EnvironmentScope display("DISPLAY", ":4711");
    const StartupHook early{"early", 0, &note<'0'>};
    EXPECT_EQ(GetHostClasses(), nullptr);
    EXPECT_EQ(take(), Log{});
    ASSERT_NE(UController::instance(), nullptr);
    EXPECT_TRUE(UController::instance()->isStopped());
    EXPECT_TRUE(UApplication::instance()->isQuitting());
    EXPECT_NE(GetHostClasses(), nullptr) << "not tried again";
    TerminateModule();
}

TEST_F(HostEntryTest, WithoutADisplayAHostHasObjectsButNoWindows) {
    platform::stop();
    const testing::EnvironmentScope display("DISPLAY", nullptr);
    EXPECT_NE(GetHostClasses(), nullptr);
    ASSERT_NE(platform::desktop(), nullptr);
    EXPECT_EQ(platform::desktop()->getName(), "headless");
    TerminateModule();
    EXPECT_EQ(platform::desktop(), nullptr);
}

struct ChoosingPresenter : AlertPresenter {
    explicit ChoosingPresenter(int32_t choice) : choice(choice) { setCurrent(this); }
    ~ChoosingPresenter() { setCurrent(nullptr); }
    int32_t show(const AlertRecord& alert) override {
        text = alert.text.toUtf8();
        buttons = {alert.button1.toUtf8(), alert.button2.toUtf8(), alert.button3.toUtf8()};
        return choice;
    }
    int32_t choice;
    std::string text;
    Log buttons;
};

class SafeStart : public HostEntryTest {
protected:
    static constexpr uint32_t all = platform::shift | platform::ctrl | platform::alt;

    void run(uint32_t modifiers, const std::function<void()>& body) {
        desktop->postModifiers(modifiers);
        desktop->processEvents();
        GetHostClasses();
        body();
        TerminateModule();
    }
    static int32_t number() {
        FDefaults* group = FGlobalDefaultPool::instance()->getGroup("Test");
        return group ? group->values().getInteger("number") : 0;
    }
    static void setNumber(int32_t value) {
        FGlobalDefaultPool::instance()->getGroup("Test")->values().setInteger("number", value);
    }

    const std::filesystem::path settings = folder / "qorl-frame_64";
};

TEST_F(SafeStart, AsksAndPutsSettingsAsideUntilTheNextStart) {
    run(0, [&] { setNumber(42); });

    ChoosingPresenter presenter(AlertPresenter::first);
    run(platform::shift | platform::ctrl, [&] { EXPECT_EQ(number(), 42); });
    EXPECT_EQ(presenter.text, "") << "all three keys or nothing";
    run(all, [&] { EXPECT_EQ(number(), 42); });
    EXPECT_EQ(presenter.text.find(
                  "You activated the safe-start mode by pressing <Ctrl>+<Shift>+<Alt> during program "
                  "startup."),
              0u);
    EXPECT_EQ(presenter.buttons, (Log{"Use current program preferences", "Disable program preferences",
                                      "Delete program preferences"}));

    presenter.choice = AlertPresenter::second;
    run(all, [&] { EXPECT_EQ(number(), 0); });
    EXPECT_TRUE(std::filesystem::exists(settings) && !std::filesystem::is_empty(settings));
    run(0, [&] { EXPECT_EQ(number(), 42) << "they come back with the next start"; });

    // Folders stand in the way of what is to be done.
    const auto fails = [&](const char* file, uint32_t modifiers, const char* told) {
        std::filesystem::create_directories(settings / file / "in the way");
        run(modifiers, [] {});
        EXPECT_EQ(presenter.text.find(told), 0u) << presenter.text;
        std::filesystem::remove_all(settings / file);
    };
    presenter.choice = AlertPresenter::second;
    fails("Defaults.xml.backup", all, "Your preferences could not be put aside.");
    presenter.choice = AlertPresenter::third;
    fails("Defaults (Trashed).xml", all, "Your preferences could not be deleted.");
    std::filesystem::rename(settings / "Defaults.xml", settings / "Defaults.xml.backup");
    fails("Defaults.xml", 0, "Your preferences could not be brought back.");
    run(0, [&] { EXPECT_EQ(number(), 42) << "nothing was lost by that"; });
}

TEST_F(SafeStart, PutsDeletedSettingsWhereTheLastOnesWere) {
    const ChoosingPresenter presenter(AlertPresenter::third);
    for (const int32_t stored : {42, 43}) {
        run(0, [&] { setNumber(stored); });
        run(all, [&] {
            EXPECT_EQ(number(), 0);
            setNumber(7);
        });
        run(0, [&] { EXPECT_EQ(number(), 0) << "the run that deletes saves nothing"; });
        std::ifstream trash(settings / "Defaults (Trashed).xml");
        const std::string trashed{std::istreambuf_iterator<char>(trash), {}};
        EXPECT_NE(trashed.find("value=\"" + std::to_string(stored) + '"'), std::string::npos) << trashed;
    }
}

TEST(HostClasses, SetsTheKnobModeByItsExactName) {
    CmHostClasses& host = CmHostClasses::instance();
    EXPECT_STREQ(host.getHostValue("KnobMode"), "Linear");
    for (const auto& [name, mode] : {std::pair{"Circular", KnobMode::circular},
                                     {"RelativCircular", KnobMode::relativeCircular},
                                     {"Linear", KnobMode::linear}}) {
        EXPECT_EQ(host.setHostValue("KnobMode", name), Result::ok);
        EXPECT_EQ(getKnobMode(), mode);
        EXPECT_STREQ(host.getHostValue("KnobMode"), name);
    }
    for (const char* wrong : {"linear", "Circular ", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(host.setHostValue("KnobMode", wrong), Result::invalidArgument);
    EXPECT_EQ(host.setHostValue("knobmode", "Circular"), Result::invalidArgument);
    EXPECT_EQ(host.setHostValue(nullptr, "Circular"), Result::invalidArgument);
    EXPECT_EQ(getKnobMode(), KnobMode::linear);
    EXPECT_EQ(host.getHostValue("Other"), nullptr);
    EXPECT_EQ(host.getHostValue(nullptr), nullptr);
}

TEST(HostClasses, ShowsItsFacesAndIsNeverCounted) {
    CmHostClasses& host = CmHostClasses::instance();
    auto* classes = static_cast<IHostClasses*>(&host);
    Ref<IHostSettings> settings;
    ASSERT_EQ(classes->queryInterface(IHostSettings::iid, settings.out()), Result::ok);
    EXPECT_EQ(settings.get(), static_cast<IHostSettings*>(&host));
    Ref<IHostClasses> back;
    ASSERT_EQ(settings->queryInterface(IHostClasses::iid, back.out()), Result::ok);
    EXPECT_EQ(back.get(), classes);
    EXPECT_EQ(castToCmObject(static_cast<FInterface*>(classes)), static_cast<CmObject*>(&host));
    EXPECT_TRUE(host.isTypeOf("CmHostClasses", false));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(classes->release(), 1u);
        EXPECT_EQ(host.addRef(), 1u);
    }
    void* out = &host;
    EXPECT_EQ(classes->createInstance(InterfaceId::fromWords(9, 9, 9, 9), &out), Result::no);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(classes->createInstance(InterfaceId(), nullptr), Result::invalidArgument);
}

TEST_F(HostEntryTest, LeavingWithoutEnteringChangesNothingButTheCount) {
    TerminateModule();
    EXPECT_EQ(take(), Log{}) << "nothing is taken down";
    GetHostClasses();
    GetHostClasses();
    EXPECT_NE(UApplication::instance(), nullptr);
    TerminateModule();
    EXPECT_EQ(UApplication::instance(), nullptr) << "the first leave counts";
}

} // namespace
} // namespace qorl
