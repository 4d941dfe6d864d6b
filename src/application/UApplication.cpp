#include "application/UApplication.h"

#include "application/SafeStart.h"
#include "application/SkinLoaderThread.h"
#include "application/StandardMenus.h"
#include "application/UController.h"
#include "components/FComponentRegistry.h"
#include "foundation/Cast.h"
#include "foundation/StartupHook.h"
#include "foundation/Teardown.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/messages/UpdateHandler.h"
#include "foundation/text/TranslationTable.h"
#include "foundation/threads/Ticks.h"
#include "graphics/GraphicsFactory.h"
#include "persistence/defaults/FDefaultPool.h"
#include "persistence/files/FNFileSystem.h"
#include "platform/Files.h"
#include "platform/Folders.h"
#include "platform/System.h"
#include "schemes/GlobalSchemes.h"
#include "skin/UIDescription.h"
#include "skin/UViewClass.h"
#include "views/controls/KnobMode.h"
#include "windows/AlertPresenter.h"
#include "windows/UDesktop.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace qorl {

namespace {

constexpr const char* companyName = "Marrowick";
constexpr const char* standardName = "Application";
constexpr uint32_t skinPollPeriod = 100;

/// Words of the process that each program starts with, whatever an earlier one in it has left there.
constexpr struct {
    KnobMode knobMode = KnobMode::linear;
    uint32_t skinOptions = UIDescription::standardOptions;
} startSettings;

constinit UApplication* theApplication = nullptr;

const TeardownHook shutdownStep{TeardownStep::shutdownHooks, &runShutdownHooks};
const TeardownHook hookListStep{TeardownStep::hookLists, &dropHooks};
const TeardownHook graphicsStep{TeardownStep::platformClipboard, &shutdownGraphics};

/// The back end and the resolution awareness that the command line asks for.
void chooseGraphics(const std::vector<std::string>& arguments) {
    const std::vector<std::string_view> views(arguments.begin(), arguments.end());
    reopenGraphics();
    selectGraphicsBackendByArguments(views);
}

/// What a part of the start says that finds no memory. Without that part the program is not to go on.
void require(bool isDone) {
    if (!isDone)
        throw std::bad_alloc();
}

void setFolders(const ConstString& name) {
    const std::string folder = "/" + name.toUtf8() + "_64";
    const std::string settings = platform::getSystemFolder(platform::SystemFolder::settings);
    require(FNPath::setKnownFolder(FNPath::userSettings, settings + folder));
    const std::vector<std::string> shared = platform::getSharedDataFolders();
    const auto holdsOurs = [&folder](const std::string& place) {
        return platform::folderExists(place + folder);
    };
    const auto found = std::ranges::find_if(shared, holdsOurs);
    const std::string& place = found == shared.end() ? shared.front() : *found;
    require(FNPath::setKnownFolder(FNPath::sharedData, place + folder));
}

void copyStartSettings() {
    setKnobMode(startSettings.knobMode);
    UIDescription::setOptions(startSettings.skinOptions);
}

UView* createControlOfProgram(const ViewElement& element, IController* controller) {
    return theApplication->createControl(element, controller);
}

} // namespace

UApplication* UApplication::instance() {
    return theApplication;
}

UApplication::UApplication(const ApplicationArgs& args)
    : type_(args.type), translation_(make<TranslationTable>()) {
    const std::vector<std::string> arguments = platform::getCommandLine();
    chooseGraphics(arguments);
    // The command line of a host is none of ours.
    if (type_ != ApplicationType::library)
        takeDocuments(arguments);
    const ConstString name =
        args.name.isEmpty() ? ConstString(standardName) : ConstString(args.name.string());
    ApplicationInfo::fillOnce(name, args.infoA.string(), args.infoB.string(), companyName);
    setFolders(args.folderName.isEmpty() ? name : args.folderName.string());
    const std::string program = platform::getProgramPath();
    path_ = FNPath(program);
    require(path_.isValid() || program.empty());
    require(title_.string().assign(ApplicationInfo::get().applicationName));
    FGlobalDefaultPool* pool = FGlobalDefaultPool::instance();
    require(pool);
    pool->setLoadHook(&checkSafeStart);
    pool->setSaveHook(&maySaveDefaults);
}

void UApplication::takeDocuments(std::span<const std::string> arguments) {
    constexpr std::string_view optionsWithValue[] = {"--gfxbackend", "--dpiawareness"};
    bool onlyPaths = false;
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (onlyPaths || !argument.starts_with('-'))
            addDocument(platform::getCanonicalPath(argument));
        else if (argument == "--")
            onlyPaths = true;
        else
            i += static_cast<size_t>(std::ranges::count(optionsWithValue, argument));
    }
}

void UApplication::addDocument(const std::string& path) {
    Ref<FNPath> document = make<FNPath>(path);
    require(documentList_.add(document.get()));
    static_cast<void>(document.detach());
}

UApplication::~UApplication() {
    if (skinThread_)
        skinThread_->join();
    tearDownApplication();
    guiThread_.reset();
    UControlClass::setFallback(nullptr);
    theApplication = nullptr;
}

void tearDownApplication() {
    runTeardown();
    FMessenger::disconnect();
}

void UApplication::init(const ApplicationArgs& args) {
    require(UpdateHandler::instance());
    FMessenger::connect();
    FComponentRegistry::makeInstance();
    copyStartSettings();
    guiThread_ = std::make_unique<GuiThread>();
    require(guiThread_->getHandle());
    theApplication = this;
    UControlClass::setFallback(&createControlOfProgram);
    // The teardown releases it.
    const UController* controller = new UController(args.type);
    if (controller->isStopped())
        setQuit();
    if (UDesktop* desktop = UDesktop::instance())
        desktop->toolTips();
    ready_ = true;
}

void UApplication::hook26() {}
void UApplication::preStart() {}
void UApplication::hook40() {}
void UApplication::menuCreated(UMenuBar*) {}

UView* UApplication::createControl(const ViewElement&, IController*) {
    return nullptr;
}

int32_t UApplication::hook41() {
    return 1;
}

int32_t UApplication::hook51() {
    return 0;
}

bool UApplication::runStartupHooks() {
    return qorl::runStartupHooks(StartupHook::early);
}

bool UApplication::runMainHooks() {
    return qorl::runStartupHooks(StartupHook::lastOfMain);
}

void UApplication::finishStartup() {
    qorl::runStartupHooks(StartupHook::finish);
    const FNPath madeFolder(ConstString(), FNPath::userSettings, FNPath::folderFlag, {},
                            FNPath::Create::missingFolders);
    while (skinThreadState_ == skinLoading)
        sleep(skinPollPeriod);
    finishSkinThread();
    if (skinThreadState_ == skinFailed)
        UController::instance()->quit();
    closeAbout();
}

void UApplication::finishSkinThread() {
    // The user is told in a loop of events, in which the skin may be asked for once more.
    while (const std::unique_ptr<SkinLoaderThread> thread = std::move(skinThread_))
        thread->finish();
}

bool UApplication::windowDeactivated(UWindow*) {
    return true;
}

UMenuBar* UApplication::createMenuBar() {
    MenuPresenter* presenter = MenuPresenter::current();
    if (!presenter)
        return nullptr;
    UMenu* made[2] = {};
    UMenuBar* menuBar = presenter->createMenuBar(standardMenus(), this, made);
    fileMenu_ = made[0];
    editMenu_ = made[1];
    return menuBar;
}

UMenuItem* UApplication::getMenuItem(int32_t tag) {
    MenuPresenter* presenter = MenuPresenter::current();
    if (!presenter || tag < firstFileTag)
        return nullptr;
    if (tag <= lastFileTag)
        return fileMenu_ ? presenter->findItem(fileMenu_, tag) : nullptr;
    if (tag <= lastEditTag)
        return editMenu_ ? presenter->findItem(editMenu_, tag) : nullptr;
    return tag == aboutTag ? presenter->findItemOfActiveWindow(tag) : nullptr;
}

UMenu* UApplication::getFileMenu() {
    return fileMenu_;
}

UMenu* UApplication::getEditMenu() {
    return editMenu_;
}

bool UApplication::createSchemes() {
    return GlobalSchemes::createForProgram();
}

bool UApplication::startSchemes() {
    if (!createSchemes())
        return false;
    GlobalSchemes::fillEmpty();
    GlobalSchemes::resetAll();
    return true;
}

bool UApplication::skinLoaded() {
    return true;
}

bool UApplication::loadSkin(const FNPath& path, Errors errors) try {
    SkinAttempt attempt(*this);
    const bool loaded = attempt.load(path);
    attempt.finish(errors);
    return loaded;
} catch (const std::bad_alloc&) {
    return false;
}

bool UApplication::loadLastSkin(Errors errors) try {
    SkinAttempt attempt(*this);
    const bool loaded = attempt.loadLast();
    attempt.finish(errors);
    return loaded;
} catch (const std::bad_alloc&) {
    return false;
}

void UApplication::startLoadingLastSkin(Errors errors) {
    finishSkinThread();
    skinThread_ = std::make_unique<SkinLoaderThread>(*this, errors);
    // Only now: without memory for the thread nobody waits for it.
    skinThreadState_ = skinLoading;
    if (!skinThread_->start())
        skinThread_->run();
}

bool UApplication::canQuit(int32_t) {
    return true;
}

void UApplication::showAbout(bool splash) {
    if (splash)
        return;
    AlertRecord alert;
    alert.kind = AlertRecord::Kind::information;
    alert.text = ApplicationInfo::get().applicationName;
    AlertPresenter::current().show(alert);
}

void UApplication::closeAbout() {
    if (AboutDialog* dialog = std::exchange(aboutDialog_, nullptr))
        dialog->close();
}

void UApplication::showProgress(const ConstString& text) {
    if (!aboutDialog_)
        return;
    if (aboutDialog_->hasProgressLine())
        aboutDialog_->showText((translate("Initializing: ").toUtf8() + text.toUtf8()).c_str());
    else if (!text.isEmpty())
        aboutDialog_->showText(text.toUtf8().c_str());
    if (UController* controller = UController::instance())
        controller->redraw();
}

bool UApplication::createDocument(CmObject*) {
    return false;
}

bool UApplication::saveDocument(CmObject*, const FPath&) {
    return false;
}

bool UApplication::openDocument(const FPath&, bool) {
    return false;
}

bool UApplication::openDocuments(CmContainer* list) {
    const std::unique_ptr<CmIterator> paths(list ? list->newIterator() : nullptr);
    bool anyOpened = false;
    while (paths && !paths->done()) {
        if (const auto* path = cast<FPath>(paths->next()))
            anyOpened |= openDocument(*path, false);
    }
    return anyOpened;
}

bool UApplication::canOpenDocument(const FPath&) {
    return false;
}

bool UApplication::handleKeyCommand(const UKeyCode& event) {
    MenuPresenter* menus = MenuPresenter::current();
    return menus && menus->handleKeyCommand(event);
}

int32_t UApplication::selectMenuItem(const FMessage& message) {
    const int64_t tag = message.getInt("Tag");
    UController* controller = UController::instance();
    if (tag == quitTag && controller)
        controller->quit();
    else if (tag == aboutTag)
        showAbout(false);
    return tag == quitTag || tag == aboutTag ? handled : notHandled;
}

int32_t UApplication::saveDocumentOf(const FMessage& message) {
    const FNPath path(message.getString("Path"));
    return saveDocument(message.getObject("Document"), path) ? handled : notHandled;
}

int32_t UApplication::handleMessage(FMessage* message) {
    if (message->isNamed("MenuSelect"))
        return selectMenuItem(*message);
    if (message->isNamed("MenuCanSelect")) {
        const int64_t tag = message->getInt("Tag");
        return tag == quitTag || tag == aboutTag ? handled : notHandled;
    }
    if (message->isNamed("CreateDocument"))
        return createDocument(message) ? handled : notHandled;
    if (message->isNamed("SaveDocument"))
        return saveDocumentOf(*message);
    return CmObject::handleMessage(message);
}

} // namespace qorl
