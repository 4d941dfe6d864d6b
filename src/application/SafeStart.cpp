#include "application/SafeStart.h"

#include "application/UController.h"
#include "foundation/text/TranslationTable.h"
#include "persistence/defaults/FDefaultPool.h"
#include "platform/PlatformEvents.h"
#include "windows/AlertPresenter.h"

namespace qorl {

namespace {

constexpr uint32_t safeStartKeys = platform::shift | platform::ctrl | platform::alt;

// What this run would save is not to come back.
constinit bool preferencesDeleted = false;
// There is no copy of what this run would replace.
constinit bool preferencesUncopied = false;

constexpr const char* question =
    "You activated the safe-start mode by pressing <Ctrl>+<Shift>+<Alt> during program startup.\n\n"
    "Corrupted preference settings may lead to lock-ups or other erratic program behavior.\n"
    "If you experience such behavior, please try to temporary disable your custom preferences and if it "
    "helps, "
    "consider deleting and re-initializing the preferences. \n\n"
    "You have three options:\n\n"
    "Use current program preferences\n"
    "- This option uses the preferences currently stored in the program.\n\n"
    "Disable program preferences\n"
    "- This option disables your custom preferences and temporarily initializes the program with factory "
    "settings.\n"
    "  Your preferences are available after restarting the program.\n\n"
    "Delete program preferences\n"
    "- This option deletes the preferences of current and older program installations and initializes the "
    "program with factory settings.\n"
    "  Please be aware that all your custom settings will be removed. This operation cannot be undone.\n\n";

constexpr const char* notBroughtBack =
    "Your preferences could not be brought back. They are kept, and the next start of the program tries "
    "again.";
constexpr const char* notDisabled =
    "Your preferences could not be put aside. The program starts with factory settings, and nothing that you "
    "change in them is saved.";
constexpr const char* notDeleted =
    "Your preferences could not be deleted. The program starts with factory settings, and the next start may "
    "find your preferences again.";

void alertUser(const char* text) {
    AlertRecord alert;
    alert.text = translate(text);
    AlertPresenter::current().show(alert);
}

} // namespace

bool checkSafeStart() {
    preferencesDeleted = preferencesUncopied = false;
    FGlobalDefaultPool* pool = FGlobalDefaultPool::instance();
    // What an earlier run put aside for its own time comes back.
    pool->restore();
    if (pool->isBackupStuck())
        alertUser(notBroughtBack);
    const UController* controller = UController::instance();
    if (!controller || controller->currentModifiers() != safeStartKeys)
        return true;
    AlertRecord alert;
    alert.kind = AlertRecord::Kind::question;
    alert.text = translate(question);
    alert.button1 = translate("Use current program preferences");
    alert.button2 = translate("Disable program preferences");
    alert.button3 = translate("Delete program preferences");
    switch (AlertPresenter::current().show(alert)) {
    case AlertPresenter::second:
        preferencesUncopied = !pool->backup();
        if (preferencesUncopied)
            alertUser(notDisabled);
        return false;
    case AlertPresenter::third:
        preferencesDeleted = true;
        if (!pool->trash())
            alertUser(notDeleted);
        return false;
    default: return true;
    }
}

bool maySaveDefaults() {
    return !preferencesDeleted && !preferencesUncopied;
}

} // namespace qorl
