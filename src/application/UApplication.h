#pragma once

#include "application/ApplicationInfo.h"
#include "application/GuiThread.h"
#include "foundation/containers/CmLinkedList.h"
#include "persistence/files/FNPath.h"

#include <qorl/Ref.h>

#include <atomic>
#include <memory>
#include <span>
#include <string>

namespace qorl {

class AboutDialog;
class IController;
class SkinLoaderThread;
class TranslationTable;
class UMenu;
class UMenuBar;
class UMenuItem;
class UView;
class UWindow;
class ViewElement;
struct UKeyCode;

/// The one object whose life is that of the program.
///
/// A stand-alone program derives from it and calls `init` and `run`; the shared library lives as a
/// `UPluginApplication` behind its entry functions. The destructor takes everything down in the order of
/// `TeardownStep`. GUI thread.
class UApplication : public CmObject {
    QORL_CLASS(UApplication, CmObject)

public:
    /// Where the loading of the last skin on its own thread stands.
    enum SkinThreadState : int32_t {
        noSkinThread = -2,
        skinFailed = -1,
        skinLoadedState = 0,
        skinLoading = 1
    };

    /// Chooses the drawing system by the command line, fills the application info, and says where settings
    /// lie. This and `init` throw std::bad_alloc, and nothing is left to be done then but to destroy it.
    explicit UApplication(const ApplicationArgs& args);
    UApplication(const UApplication&) = delete;
    UApplication& operator=(const UApplication&) = delete;
    ~UApplication() override;

    /// Null before `init` and after the end.
    static UApplication* instance();

    // The published table, behind that of CmObject.

    /// Makes the controller and with it the user interface; the calling thread is the GUI thread from now on.
    /// Knob mode and skin options of the process stand at their start values again: set others behind this.
    virtual void init(const ApplicationArgs& args);
    virtual void hook26();
    virtual void preStart();
    /// The hooks of level 0. False ends the start.
    virtual bool runStartupHooks();
    /// The last hooks, the user's folder, and the end of the splash.
    virtual void finishStartup();
    virtual bool windowDeactivated(UWindow* window);
    /// "File" and "Edit". With one reference; null where nothing presents menus.
    virtual UMenuBar* createMenuBar();
    /// By `MenuTag`. Null below 1 and for an item that is not there.
    virtual UMenuItem* getMenuItem(int32_t tag);
    virtual UMenu* getFileMenu();
    virtual UMenu* getEditMenu();
    virtual void menuCreated(UMenuBar* menuBar);
    virtual bool createSchemes();
    /// A parsed skin is accepted only if this is true.
    virtual bool skinLoaded();
    /// The view of a `control` element whose class nothing else makes, with one reference. Null here.
    virtual UView* createControl(const ViewElement& element, IController* controller);
    /// Asked before the program quits.
    virtual bool canQuit(int32_t argument);
    virtual void hook40();
    virtual int32_t hook41();
    /// With `splash` a stand-alone program shows what it shows while it starts.
    virtual void showAbout(bool splash);
    virtual void closeAbout();
    virtual void showProgress(const ConstString& text);
    /// By the message "CreateDocument", which is the description: what it carries is the program's own.
    virtual bool createDocument(CmObject* description);
    /// By the message "SaveDocument" with "Document" and "Path".
    virtual bool saveDocument(CmObject* document, const FPath& path);
    virtual bool openDocument(const FPath& path, bool flag);
    /// Each path of the list; true if at least one opened.
    virtual bool openDocuments(CmContainer* list);
    virtual bool canOpenDocument(const FPath& path);
    /// The last stop of a key command that no window took.
    virtual bool handleKeyCommand(const UKeyCode& event);
    virtual int32_t hook51();

    /// "MenuSelect" and "MenuCanSelect" with "Tag" for the items to quit and to tell about the program;
    /// "CreateDocument" and "SaveDocument", handled when the program did it.
    int32_t handleMessage(FMessage* message) override;

    /// A stand-alone program's whole life between `init` and the destructor. False when the start failed.
    bool run();

    /// Loads a skin and remembers it as the last one. Errors reach the user with `show` only. False also when
    /// memory ran out.
    enum class Errors { hide, show };
    bool loadSkin(const FNPath& path, Errors errors);
    /// The last skin, else the default one, else the first. Needs the manager of skin packs.
    bool loadLastSkin(Errors errors);
    /// The same on a thread of its own, which `finishStartup` waits for and then remembers the skin and tells
    /// of errors. Until then the program leaves the wizard, the schemes and the catalogue of skins alone.
    void startLoadingLastSkin(Errors errors);

    ApplicationType getType() const { return type_; }
    bool isQuitting() const { return quit_ != 0; }
    bool isReady() const { return ready_; }
    const FNPath& getPath() const { return path_; }
    const CmString& getTitle() const { return title_; }
    const GuiThread* getGuiThread() const { return guiThread_.get(); }
    /// The files and folders that the command line of a stand-alone program names: each argument that is no
    /// option, all of them behind "--". `FNPath`s, absolute.
    CmLinkedList& documentList() { return documentList_; }
    /// Not owned; it stays open until `closeAbout`.
    void setAboutDialog(AboutDialog* dialog) { aboutDialog_ = dialog; }
    /// How long the splash stays at least, in milliseconds. 0 until it is set.
    void setSplashTime(uint32_t milliseconds) { splashTime_ = milliseconds; }

protected:
    /// Resets the schemes that `createSchemes` made. False when it failed.
    bool startSchemes();
    void setQuit() { quit_ = 1; }
    /// Fills the list of documents by a command line, the program's name first. Throws std::bad_alloc.
    void takeDocuments(std::span<const std::string> arguments);

private:
    friend class SkinLoaderThread;

    int32_t selectMenuItem(const FMessage& message);
    int32_t saveDocumentOf(const FMessage& message);
    bool startStandAlone();
    bool runMainHooks();
    void waitForSplash(uint32_t start);
    bool failStart();
    void finishSkinThread();
    void addDocument(const std::string& path);

    ApplicationType type_;
    int32_t quit_ = 0;
    std::atomic<int32_t> skinThreadState_{noSkinThread};
    FNPath path_;
    UMenu* fileMenu_ = nullptr;
    UMenu* editMenu_ = nullptr;
    AboutDialog* aboutDialog_ = nullptr;
    CmString title_;
    std::unique_ptr<GuiThread> guiThread_;
    bool ready_ = false;
    CmLinkedList documentList_{Ownership::adopt};
    uint32_t splashTime_ = 0;
    Ref<TranslationTable> translation_;
    std::unique_ptr<SkinLoaderThread> skinThread_;
};

/// The teardown that the destructor of the application runs, also for a library without one.
void tearDownApplication();

} // namespace qorl
