#include "application/UApplication.h"

#include "application/StandardMenus.h"
#include "application/UController.h"
#include "foundation/Cast.h"
#include "foundation/StartupHook.h"
#include "foundation/messages/FMessage.h"
#include "foundation/threads/Ticks.h"
#include "graphics/GraphicsFactory.h"
#include "persistence/defaults/FDefaultPool.h"
#include "platform/Folders.h"
#include "platform/Platform.h"
#include "platform/headless/HeadlessDesktop.h"
#include "schemes/GlobalSchemes.h"
#include "skin/SkinCatalog.h"
#include "skin/UIWizard.h"
#include "skin/ViewElement.h"
#include "support/FailingAllocation.h"
#include "support/TestGraphics.h"
#include "support/TestPaths.h"
#include "views/UView.h"
#include "windows/AlertPresenter.h"
#include "windows/UDesktop.h"
#include "windows/UDocWindow.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace qorl {
namespace {

using Log = std::vector<std::string>;

std::string textOf(const FPath& path) {
    String text;
    path.getFullPath(text);
    return text.toUtf8();
}

/// A program of its own that writes down what it is asked.
class Program : public UApplication {
    QORL_CLASS(Program, UApplication)

public:
    explicit Program(const ApplicationArgs& args, Log& log) : UApplication(args), log_(log) {}

    void preStart() override { log_.push_back("preStart"); }
    void showAbout(bool splash) override { log_.push_back(splash ? "splash" : "about"); }
    bool runStartupHooks() override {
        log_.push_back("hooks");
        if (quits)
            setQuit();
        return UApplication::runStartupHooks();
    }
    UMenuBar* createMenuBar() override {
        log_.push_back("menu bar");
        return UApplication::createMenuBar();
    }
    void finishStartup() override {
        log_.push_back("finish");
        UApplication::finishStartup();
    }
    void closeAbout() override {
        log_.push_back("closeAbout");
        UApplication::closeAbout();
    }
    bool canQuit(int32_t) override { return mayQuit; }
    UView* createControl(const ViewElement& element, IController* controller) override {
        if (element.text(SkinAttribute::class_) != "of the program")
            return UApplication::createControl(element, controller);
        return new UView({}, ConstString("made by the program"));
    }
    bool windowDeactivated(UWindow* window) override {
        log_.push_back(UDesktop::instance()->activeWindow() == window ? "deactivated"
                                                                      : "deactivated too late");
        return true;
    }
    bool createDocument(CmObject* description) override {
        const auto* message = cast<FMessage>(description);
        log_.push_back("create " + message->getString("ProjectDir").toUtf8());
        return true;
    }
    bool saveDocument(CmObject* document, const FPath& path) override {
        log_.push_back(std::string("save ") + (document ? document->getClassName() : "nothing") + " " +
                       textOf(path));
        return document != nullptr;
    }
    using UApplication::takeDocuments;
    bool createSchemes() override {
        if (!onlyScheme)
            return UApplication::createSchemes();
        GlobalSchemes::setDialog(onlyScheme);
        return true;
    }
    bool skinLoaded() override { return acceptsSkin; }
    bool openDocument(const FPath& path, bool) override {
        log_.push_back("open " + textOf(path));
        return textOf(path).find("good") != std::string::npos;
    }

    bool quits = false;
    bool mayQuit = true;
    bool acceptsSkin = true;
    UScheme* onlyScheme = nullptr; ///< For dialogs, instead of all others.

private:
    Log& log_;
};

class UApplicationTest : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        desktop = new platform::HeadlessDesktop;
        ASSERT_TRUE(platform::start(desktop));
        dropHooks();
        ApplicationArgs args;
        args.name = CmString("Test Program");
        program = std::make_unique<Program>(args, log);
        program->init(args);
    }
    void TearDown() override {
        program.reset();
        platform::stop();
    }
    Log take() { return std::exchange(log, {}); }
    std::string at(const char* name) const { return (folder / name).string(); }
    FNPath write(const char* name, const std::string& text) const {
        std::ofstream(folder / name) << text;
        return FNPath(at(name));
    }
    static std::string lastSkin() {
        const FDefaults* group = FGlobalDefaultPool::instance()->getGroup("UApplication");
        return group->values().getString("LastSkinfile").toUtf8();
    }
    bool runUntilItQuits() {
        desktop->postCall([&] { send("MenuSelect", quitTag); });
        return program->run();
    }
    int32_t send(const char* name, int64_t tag) {
        FMessage message{ConstString(name)};
        message.setInt("Tag", tag);
        return program->handleMessage(&message);
    }

    testing::TemporaryFolder folder;
    platform::HeadlessDesktop* desktop = nullptr;
    Log log;
    std::unique_ptr<Program> program;
};

TEST_F(UApplicationTest, RunsThroughItsStartIntoTheLoopUntilItQuits) {
    desktop->postCall([&] {
        log.push_back("running");
        program->mayQuit = false;
        EXPECT_EQ(send("MenuSelect", quitTag), 1);
        EXPECT_FALSE(UController::instance()->isStopped()) << "the program may refuse";
        program->mayQuit = true;
        EXPECT_EQ(send("MenuSelect", quitTag), 1);
    });
    desktop->postCall([&] { log.push_back("too late"); });
    EXPECT_TRUE(program->run());
    EXPECT_EQ(take(), (Log{"preStart", "splash", "hooks", "menu bar", "finish", "closeAbout", "running"}));
    EXPECT_NE(GlobalSchemes::system(), GlobalSchemes::main()) << "a program has a system scheme of its own";
    EXPECT_EQ(GlobalSchemes::dialog(), GlobalSchemes::main());
    EXPECT_EQ(GlobalSchemes::current(), GlobalSchemes::system());
}

TEST_F(UApplicationTest, LetsTheSplashStayForItsTime) {
    struct Splash final : AboutDialog {
        void close() override { closed = getTicks(); }
        bool hasProgressLine() const override { return false; }
        void showText(const char*) override {}
        uint32_t closed = 0;
    } splash;
    constexpr uint32_t time = 5000;
    program->setSplashTime(time);
    program->setAboutDialog(&splash);
    const uint32_t start = getTicks();
    EXPECT_TRUE(runUntilItQuits());
    EXPECT_GT(splash.closed, start + time);
    EXPECT_LT(splash.closed, start + time + 100);
}

TEST_F(UApplicationTest, BringsTheFontsBesideItself) {
    testing::useGraphics();
    FontCollection& fonts = *getGraphicsFactory()->getFontCollection();
    ASSERT_FALSE(fonts.hasFace("QejaVu Sans Mono"));
    std::ifstream known("/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf", std::ios::binary);
    std::string font{std::istreambuf_iterator<char>(known), {}};
    // The first letter of its own names for itself: in 8 bits and in 16.
    for (const std::string_view name : {std::string_view("DejaVu"), std::string_view("D\0e\0j\0a\0V\0u", 11)})
        for (size_t at = 0; (at = font.find(name, at)) != std::string::npos;)
            font[at] = 'Q';
    const std::filesystem::path folder =
        std::filesystem::path(platform::getProgramPath()).parent_path() / "fonts";
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "Q.ttf", std::ios::binary) << font;
    std::ofstream(folder / "readme") << "no font";
    EXPECT_TRUE(runUntilItQuits());
    std::filesystem::remove_all(folder);
    EXPECT_TRUE(fonts.hasFace("QejaVu Sans Mono"));
}

TEST_F(UApplicationTest, FillsTheSchemesThatItsOwnStepLeftEmpty) {
    const Ref<UScheme> own = make<UScheme>();
    program->onlyScheme = own.get();
    EXPECT_TRUE(runUntilItQuits());
    EXPECT_EQ(GlobalSchemes::dialog(), own.get());
    ASSERT_NE(GlobalSchemes::main(), nullptr);
    EXPECT_NE(GlobalSchemes::main(), own.get());
    EXPECT_EQ(GlobalSchemes::system(), GlobalSchemes::main());
    EXPECT_EQ(GlobalSchemes::current(), GlobalSchemes::main());
}

TEST_F(UApplicationTest, GivesUpWhenItQuitsDuringItsStart) {
    program->quits = true;
    EXPECT_FALSE(program->run());
    EXPECT_EQ(take(), (Log{"preStart", "splash", "hooks", "closeAbout"}));
}

TEST_F(UApplicationTest, GivesUpWhenAHookFails) {
    const StartupHook fails{"fails", 60, [] { return false; }};
    EXPECT_FALSE(program->run());
    EXPECT_EQ(take(), (Log{"preStart", "splash", "hooks", "closeAbout"}));
    EXPECT_TRUE(program->isQuitting());
}

TEST_F(UApplicationTest, LetsNoLackOfMemoryOutOfItsStart) {
    failEachAllocation([this](FailingAllocation& allocation) {
        TearDown();
        SetUp();
        log.reserve(20);
        desktop->postCall([&] { UController::instance()->quit(); });
        const bool isRun = allocation.during([&] { return program->run(); });
        EXPECT_TRUE(isRun || allocation.hasFailed());
        EXPECT_EQ(program->isQuitting(), !isRun);
    });
}

TEST_F(UApplicationTest, AnswersItsTwoMenuItems) {
    for (const int64_t tag : {0, 1, 7, 9, 16, 18})
        EXPECT_EQ(send("MenuCanSelect", tag), 0) << tag;
    EXPECT_EQ(send("MenuCanSelect", 8), 1);
    EXPECT_EQ(send("MenuCanSelect", 17), 1);
    EXPECT_EQ(send("MenuSelect", 9), 0);
    EXPECT_EQ(send("MenuSelect", 17), 1);
    EXPECT_EQ(take(), Log{"about"});
    EXPECT_EQ(send("Other", 8), 0);
}

TEST_F(UApplicationTest, MakesAndSavesDocumentsByMessage) {
    FMessage create{ConstString("CreateDocument")};
    create.setString("ProjectDir", ConstString("/projects"));
    EXPECT_EQ(program->handleMessage(&create), 1);
    FMessage save{ConstString("SaveDocument")};
    save.setString("Path", ConstString("/projects/song"));
    EXPECT_EQ(program->handleMessage(&save), 0) << "what the program didn't do isn't handled";
    save.setObject("Document", program.get());
    EXPECT_EQ(program->handleMessage(&save), 1);
    EXPECT_EQ(take(),
              (Log{"create /projects", "save nothing /projects/song", "save Program /projects/song"}));
}

TEST_F(UApplicationTest, ListsTheDocumentsThatItsCommandLineNames) {
    const std::string arguments[] = {"program", "/a/one",         "--gfxbackend", "GDI", "--other",
                                     "/b/two",  "--dpiawareness", "system",       "--",  "/c/--three"};
    failEachAllocation([&](FailingAllocation& allocation) {
        program->documentList().removeAll();
        const bool isDone = allocation.completes([&] { program->takeDocuments(arguments); });
        EXPECT_TRUE(!isDone || program->documentList().count() == 3) << "one is lost";
    });
    Log paths;
    const std::unique_ptr<CmIterator> iterator(program->documentList().newIterator());
    while (!iterator->done())
        paths.push_back(textOf(*cast<FNPath>(iterator->next())));
    EXPECT_EQ(paths, (Log{"/a/one", "/b/two", "/c/--three"}));
}

TEST_F(UApplicationTest, HearsThatAWindowIsDeactivatedBeforeTheDesktopObjectDoes) {
    const Ref<UWindow> window =
        make<UDocWindow>(CmRect{100, 100, 300, 300}, styleTitle, ConstString("Window"));
    ASSERT_TRUE(window->show());
    window->activate();
    desktop->processEvents();
    ASSERT_EQ(UDesktop::instance()->activeWindow(), window.get());
    take();
    desktop->postActivation(nullptr);
    desktop->processEvents();
    EXPECT_EQ(take(), Log{"deactivated"});
    EXPECT_EQ(UDesktop::instance()->activeWindow(), nullptr);
    window->closeDeferred();
    UController::instance()->loop().flushEvents();
}

TEST_F(UApplicationTest, OpensEachDocumentOfAList) {
    CmLinkedList list(Ownership::adopt);
    EXPECT_FALSE(program->openDocuments(&list));
    list.add(new FNPath(std::string_view("/tmp/bad")));
    EXPECT_FALSE(program->openDocuments(&list));
    list.add(new FNPath(std::string_view("/tmp/good")));
    list.add(new FNPath(std::string_view("/tmp/bad2")));
    take();
    EXPECT_TRUE(program->openDocuments(&list));
    EXPECT_EQ(take().size(), 3u) << "one that opened doesn't end it";
    EXPECT_FALSE(program->openDocuments(nullptr));
}

struct Alerts : AlertPresenter {
    Alerts() { setCurrent(this); }
    ~Alerts() { setCurrent(nullptr); }
    int32_t show(const AlertRecord& alert) override {
        EXPECT_EQ(std::this_thread::get_id(), home) << "alerts belong to the user-interface thread";
        texts.push_back(alert.text.toUtf8());
        return first;
    }
    std::thread::id home = std::this_thread::get_id();
    Log texts;
};

TEST_F(UApplicationTest, TellsWhyASkinIsNotLoadedOnlyWhenAsked) {
    Alerts alerts;
    const FNPath missing(at("missing.xml"));
    EXPECT_FALSE(program->loadSkin(missing, UApplication::Errors::hide));
    EXPECT_EQ(alerts.texts, Log{});
    EXPECT_FALSE(program->loadSkin(missing, UApplication::Errors::show));
    EXPECT_EQ(alerts.texts, Log{"Skin file '" + at("missing.xml") + "' not found!"});

    alerts.texts.clear();
    EXPECT_FALSE(
        program->loadSkin(write("broken.xml", "<skin>\n<unclosed>\n</skin>"), UApplication::Errors::show));
    ASSERT_EQ(alerts.texts.size(), 1u);
    EXPECT_EQ(alerts.texts[0].find("Skin parsing failed: mismatched tag\n"), 0u) << alerts.texts[0];
    const size_t context = alerts.texts[0].find("\nContext:");
    ASSERT_NE(context, std::string::npos) << alerts.texts[0];
    EXPECT_EQ(alerts.texts[0].substr(context),
              "\nContext:" + at("broken.xml") + ":3:3\n</  <====== HERE ======  skin>");
}

TEST_F(UApplicationTest, MakesControlsThatNoClassMakes) {
    const auto wizard = make<UIWizard>();
    ASSERT_TRUE(wizard->loadFromString("<template name='T'><control class='of the program'/>"
                                       "<control class='of nobody'/></template>"));
    const Ref<UView> view = wizard->createView("T", nullptr, nullptr);
    ASSERT_EQ(view->getSubViewCount(), 1);
    EXPECT_EQ(view->getSubView(0)->getTitle().toUtf8(), "made by the program");
}

TEST_F(UApplicationTest, RemembersTheLastSkinThatItAccepted) {
    const FNPath path = write("skin.xml", "<skin></skin>");
    for (const bool accepts : {false, true}) {
        program->acceptsSkin = accepts;
        EXPECT_EQ(program->loadSkin(path, UApplication::Errors::show), accepts);
        EXPECT_EQ(lastSkin(), accepts ? at("skin.xml") : "");
    }
}

/// A manager of skin packs that writes down which skins it is asked to judge.
struct Catalog : SkinCatalog {
    Catalog() { setCurrent(this); }
    ~Catalog() { setCurrent(nullptr); }
    Verdict judge(const FNPath& skin) override {
        judged.push_back(skin.getName().toUtf8());
        return verdict;
    }
    bool knows(const FNPath&) const override { return knowsLast; }
    const FNPath* defaultSkin() const override { return &standard; }
    const FNPath* firstSkin() const override { return &first; }

    Log judged;
    Verdict verdict = Verdict::refused;
    bool knowsLast = true;
    FNPath standard;
    FNPath first;
};

class LastSkin : public UApplicationTest {
protected:
    FNPath skin(const char* name) { return write(name, "<skin></skin>"); }
    void remember(const char* name) {
        FDefaults* group = FGlobalDefaultPool::instance()->getGroup("UApplication");
        group->values().setString("LastSkinfile", ConstString(at(name).c_str()));
    }
    bool loadBeside() {
        program->startLoadingLastSkin(UApplication::Errors::show);
        program->finishStartup();
        return !UController::instance()->isStopped();
    }
    ~LastSkin() override { FGlobalDefaultPool::instance()->clear(); }
};

TEST_F(LastSkin, IsTheRememberedOneThenTheDefaultThenTheFirstEachTriedOnce) {
    const struct {
        const char* last;
        bool knowsLast;
        const char* standard;
        const char* first;
        Log tried;
    } cases[] = {
        {"a", true, "b", "c", {"a", "b", "c"}},
        {"a", false, "b", "c", {"b", "c"}},
        {"a", true, "a", "b", {"a", "b"}},
        {"a", true, "b", "a", {"a", "b"}},
    };
    for (const auto& c : cases) {
        Catalog catalog;
        skin(c.last);
        remember(c.last);
        catalog.knowsLast = c.knowsLast;
        catalog.standard = skin(c.standard);
        catalog.first = skin(c.first);
        EXPECT_FALSE(program->loadLastSkin(UApplication::Errors::hide));
        EXPECT_EQ(catalog.judged, c.tried);
    }
}

TEST_F(LastSkin, BesideTheStartIsWaitedForAndEndsTheProgramWhenThereIsNone) {
    Alerts alerts;
    Catalog catalog;
    catalog.verdict = SkinCatalog::Verdict::accepted;
    catalog.standard = catalog.first = skin("b");
    EXPECT_TRUE(loadBeside());
    EXPECT_EQ(catalog.judged, Log{"b"});
    EXPECT_EQ(lastSkin(), at("b"));
    EXPECT_EQ(alerts.texts, Log{});
    catalog.verdict = SkinCatalog::Verdict::notOfThisApplication;
    EXPECT_FALSE(loadBeside());
    EXPECT_EQ(alerts.texts, Log{"'" + at("b") + "' is not a valid skin file for this application!"});
}

TEST_F(LastSkin, MayBeLoadedOnceMoreWhileTheUserReadsOfTheFirstTime) {
    struct Restarting : Alerts {
        int32_t show(const AlertRecord& alert) override {
            if (Program* again = std::exchange(program, nullptr))
                again->startLoadingLastSkin(UApplication::Errors::show);
            return Alerts::show(alert);
        }
        Program* program = nullptr;
    } alerts;
    Catalog catalog;
    catalog.verdict = SkinCatalog::Verdict::notOfThisApplication;
    catalog.standard = skin("b");
    catalog.first = skin("c");
    alerts.program = program.get();
    EXPECT_FALSE(loadBeside());
    const std::string behind = "' is not a valid skin file for this application!";
    const std::string b = "'" + at("b") + behind;
    const std::string c = "'" + at("c") + behind;
    EXPECT_EQ(alerts.texts, (Log{b, c, b, c}));
}

TEST_F(LastSkin, LetsNoLackOfMemoryOut) {
    Alerts alerts;
    for (const FNPath& path : {skin("there"), FNPath(at("missing"))})
        failEachAllocation([&](FailingAllocation& allocation) {
            allocation.during([&] { return program->loadSkin(path, UApplication::Errors::show); });
        });
}

TEST_F(LastSkin, IsNotWaitedForWithoutMemoryForItsThread) {
    FailingAllocation memory(1);
    EXPECT_FALSE(memory.completes([this] { program->startLoadingLastSkin(UApplication::Errors::hide); }));
    program->finishStartup();
    EXPECT_FALSE(UController::instance()->isStopped());
}

TEST_F(LastSkin, OfAnotherProgramIsRefusedAloudWhenAsked) {
    Alerts alerts;
    Catalog catalog;
    catalog.verdict = SkinCatalog::Verdict::notOfThisApplication;
    const FNPath path = skin("a");
    EXPECT_FALSE(program->loadSkin(path, UApplication::Errors::hide));
    EXPECT_FALSE(program->loadSkin(path, UApplication::Errors::show));
    EXPECT_EQ(alerts.texts, Log{"'" + at("a") + "' is not a valid skin file for this application!"});
}

TEST(StandardMenus, CarryEachTagOnceInOrder) {
    int32_t expected = firstFileTag;
    std::string separators;
    std::set<std::string> names;
    for (const StandardMenu& menu : standardMenus())
        for (const StandardMenuItem& item : menu.items) {
            EXPECT_EQ(item.tag, expected++);
            EXPECT_TRUE(names.insert(item.name).second) << item.name;
            if (item.separatorBehind)
                separators += std::to_string(item.tag) + " ";
        }
    EXPECT_EQ(expected, lastEditTag + 1);
    EXPECT_EQ(separators, "3 7 10 14 ");
}

} // namespace
} // namespace qorl
