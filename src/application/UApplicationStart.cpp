// The start of a program of its own.
#include "application/UApplication.h"
#include "application/UController.h"
#include "foundation/StartupHook.h"
#include "foundation/text/TranslationTable.h"
#include "foundation/threads/Ticks.h"
#include "graphics/GraphicsFactory.h"
#include "persistence/files/FFileIterator.h"
#include "persistence/files/FNFileSystem.h"

#include <new>

namespace qorl {

namespace {

constexpr uint32_t splashPollPeriod = 20;

FNPath besideProgram(const FNPath& program, const char* name, bool isFolder) {
    FNPath path(program);
    path.setName(ConstString());
    if (isFolder)
        path.addFolder(ConstString(name), true);
    else
        path.setName(ConstString(name));
    return path;
}

void registerFonts(const FNPath& folder) {
    GraphicsFactory* graphics = getGraphicsFactory();
    FNFileSystem* files = FNFileSystem::instance();
    if (!graphics || !files || !files->exists(folder))
        return;
    const Ref<FFileIterator> entries = files->getIterator(folder);
    while (const FPath* file = entries ? entries->next() : nullptr) {
        String path;
        file->getFullPath(path);
        graphics->getFontCollection()->installFontFile(path.toUtf8());
    }
}

} // namespace

bool UApplication::run() {
    if (!startStandAlone())
        return false;
    UController::instance()->run();
    return true;
}

bool UApplication::failStart() {
    closeAbout();
    dropHooks();
    setQuit();
    return false;
}

void UApplication::waitForSplash(uint32_t start) {
    const UController* controller = UController::instance();
    while (aboutDialog_ && !controller->isStopped() && getTicks() - start <= splashTime_)
        sleep(splashPollPeriod);
}

bool UApplication::startStandAlone() try {
    UController* controller = UController::instance();
    if (!controller || controller->isStopped()) {
        setQuit();
        return false;
    }
    registerFonts(besideProgram(path_, "fonts", true));
    startSchemes();
    translation_->setup(false);
    const uint32_t start = getTicks();
    preStart();
    if (!isQuitting()) {
        showAbout(true);
        runStartupHooks();
    }
    if (isQuitting() || !runMainHooks())
        return failStart();
    if (UMenuBar* menuBar = createMenuBar())
        controller->setMenuBar(menuBar);
    waitForSplash(start);
    if (controller->isStopped())
        return false;
    finishStartup();
    return true;
} catch (const std::bad_alloc&) {
    return failStart();
}

} // namespace qorl
