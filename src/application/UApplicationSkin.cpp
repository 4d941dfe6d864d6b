// The skin of a program: which one it loads, and what the user hears when it can't be loaded.
#include "application/SkinLoaderThread.h"
#include "foundation/text/TranslationTable.h"
#include "persistence/FDefaultPool.h"
#include "persistence/FDefaults.h"
#include "persistence/FNFileSystem.h"
#include "persistence/FUrl.h"
#include "skin/SkinCatalog.h"
#include "skin/UIWizard.h"
#include "windows/AlertPresenter.h"

#include <algorithm>

namespace qorl {

namespace {

constexpr const char* settingsGroup = "UApplication";
constexpr const char* lastSkinKey = "LastSkinfile";

String fullPath(const FNPath& path) {
    String text;
    path.getFullPath(text);
    return text;
}

void alertUser(std::string_view text) {
    AlertRecord alert;
    alert.text = String(text);
    AlertPresenter::current().show(alert);
}

/// The translated text with the path in the place of "%s".
void alertAboutFile(const char* key, const FNPath& path) {
    String text(translate(ConstString(key)));
    text.replace(text.find(ConstString("%s")), 2, fullPath(path));
    alertUser(text.toUtf8());
}

void alertAboutParsing(const UIWizard& wizard) {
    std::string text = translate(ConstString("Skin parsing failed")).toUtf8();
    if (!wizard.getErrorText().empty())
        text += ": " + wizard.getErrorText();
    text += "\n" + translate(ConstString("Context:")).toUtf8() + " " + toText(wizard.getErrorPosition());
    alertUser(text);
}

FAttributes* settings() {
    FGlobalDefaultPool* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(settingsGroup) : nullptr;
    return group ? &group->values() : nullptr;
}

/// False when the manager of skin packs, if there is one, turns the file down.
bool isAccepted(const FNPath& path, UApplication::Errors errors) {
    SkinCatalog* catalog = SkinCatalog::current();
    if (!catalog)
        return true;
    const SkinCatalog::Verdict verdict = catalog->judge(path);
    if (verdict == SkinCatalog::Verdict::notOfThisApplication && errors == UApplication::Errors::show)
        alertAboutFile("'%s' is not a valid skin file for this application!", path);
    return verdict == SkinCatalog::Verdict::accepted;
}

} // namespace

bool UApplication::loadSkin(const FNPath& path, Errors errors) {
    UIWizard* wizard = UIWizard::instance();
    FNFileSystem* files = FNFileSystem::instance();
    if (!wizard || !files)
        return false;
    if (!files->exists(path)) {
        if (errors == Errors::show)
            alertAboutFile("Skin file '%s' not found!", path);
        return false;
    }
    if (!isAccepted(path, errors))
        return false;
    if (!wizard->load(FUrl(path))) {
        if (errors == Errors::show)
            alertAboutParsing(*wizard);
        return false;
    }
    if (!skinLoaded())
        return false;
    if (FAttributes* values = settings())
        values->setString(lastSkinKey, fullPath(path));
    return true;
}

bool UApplication::loadLastSkin(Errors errors) {
    const SkinCatalog* catalog = SkinCatalog::current();
    if (!catalog)
        return false;
    std::vector<std::string> tried;
    const auto tryPath = [&](const FNPath& path) {
        std::string name = fullPath(path).toUtf8();
        if (std::find(tried.begin(), tried.end(), name) != tried.end())
            return false;
        tried.push_back(std::move(name));
        return loadSkin(path, errors);
    };
    const FAttributes* values = settings();
    const FNPath last(values ? values->getString(lastSkinKey) : ConstString());
    if (last.isValid() && catalog->knows(last) && tryPath(last))
        return true;
    const FNPath* standard = catalog->defaultSkin();
    if (standard && tryPath(*standard))
        return true;
    const FNPath* first = catalog->firstSkin();
    return first && tryPath(*first);
}

void UApplication::startLoadingLastSkin(Errors errors) {
    skinThreadState_ = skinLoading;
    skinThread_ = std::make_unique<SkinLoaderThread>(*this, errors);
    if (!skinThread_->start())
        skinThread_->run();
}

} // namespace qorl
