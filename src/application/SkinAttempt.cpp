#include "application/SkinAttempt.h"

#include "foundation/text/TranslationTable.h"
#include "persistence/defaults/FDefaultPool.h"
#include "persistence/defaults/FDefaults.h"
#include "persistence/files/FNFileSystem.h"
#include "persistence/urls/FUrl.h"
#include "platform/System.h"
#include "skin/SkinCatalog.h"
#include "skin/SkinLimits.h"
#include "skin/UIWizard.h"
#include "windows/AlertPresenter.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constexpr const char* settingsGroup = "UApplication";
constexpr const char* lastSkinKey = "LastSkinfile";
constexpr std::string_view hereMark = "  <====== HERE ======  ";
constexpr size_t largestSide = 200;

String fullPath(const FNPath& path) {
    String text;
    path.getFullPath(text);
    return text;
}

/// At most `largestSide` bytes on each side of a place in a line, cut between characters.
std::string_view sideBefore(std::string_view text) {
    size_t start = text.size() - std::min(text.size(), largestSide);
    while (start < text.size() && (text[start] & 0xC0) == 0x80)
        ++start;
    return text.substr(start);
}

std::string_view sideBehind(std::string_view text) {
    size_t end = std::min(text.size(), largestSide);
    while (end < text.size() && end > 0 && (text[end] & 0xC0) == 0x80)
        --end;
    return text.substr(0, end);
}

/// The byte of a line in which its `column`th character begins.
size_t offsetOf(uint32_t column, std::string_view line) {
    size_t at = 0;
    for (uint32_t i = 1; i < column && at < line.size(); ++i) {
        ++at;
        while (at < line.size() && (line[at] & 0xC0) == 0x80)
            ++at;
    }
    return at;
}

/// Where the document broke, and the line, with a mark at the place. The place alone when the file can't be
/// read.
std::string contextOf(const SourcePosition& position) {
    std::string context = toText(position);
    std::string document;
    if (!position.file || position.line == 0 ||
        !FNFileSystem::instance()->readWholeFile(FNPath(position.file), document, SkinLimits::documentBytes))
        return context;
    std::string_view rest = document;
    for (uint32_t line = 1; line < position.line; ++line) {
        const size_t end = rest.find('\n');
        if (end == std::string_view::npos)
            return context;
        rest.remove_prefix(end + 1);
    }
    const std::string_view line = rest.substr(0, rest.find_first_of("\r\n"));
    const size_t place = offsetOf(position.column, line);
    context.append("\n").append(sideBefore(line.substr(0, place))).append(hereMark);
    return context.append(sideBehind(line.substr(place)));
}

FAttributes* settings() {
    FGlobalDefaultPool* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(settingsGroup) : nullptr;
    return group ? &group->values() : nullptr;
}

/// The translated text with the path in the place of "%s".
String withPath(const char* key, const String& path) {
    String text(translate(ConstString(key)));
    text.replace(text.find(ConstString("%s")), 2, path);
    return text;
}

} // namespace

String SkinAttempt::Fault::text() const {
    if (kind == Kind::missing)
        return withPath("Skin file '%s' not found!", path);
    if (kind == Kind::notOfThisApplication)
        return withPath("'%s' is not a valid skin file for this application!", path);
    std::string text = translate(ConstString("Skin parsing failed")).toUtf8();
    if (!message.empty())
        text += ": " + message;
    return String(text + "\n" + translate(ConstString("Context:")).toUtf8() + context);
}

SkinAttempt::SkinAttempt(UApplication& application) : application_(application) {
    if (const FAttributes* values = settings())
        last_ = FNPath(values->getString(lastSkinKey));
}

/// False when the manager of skin packs, if there is one, turns the file down.
bool SkinAttempt::isAccepted(const FNPath& path) {
    SkinCatalog* catalog = SkinCatalog::current();
    if (!catalog)
        return true;
    const SkinCatalog::Verdict verdict = catalog->judge(path);
    if (verdict == SkinCatalog::Verdict::notOfThisApplication)
        faults_.push_back({Fault::Kind::notOfThisApplication, fullPath(path)});
    return verdict == SkinCatalog::Verdict::accepted;
}

bool SkinAttempt::load(const FNPath& path) {
    UIWizard* wizard = UIWizard::instance();
    FNFileSystem* files = FNFileSystem::instance();
    if (!wizard || !files)
        return false;
    if (!files->exists(path)) {
        faults_.push_back({Fault::Kind::missing, fullPath(path)});
        return false;
    }
    if (!isAccepted(path))
        return false;
    if (!wizard->load(FUrl(path))) {
        faults_.push_back({Fault::Kind::notParsed, fullPath(path), wizard->getErrorText(),
                           contextOf(wizard->getErrorPosition())});
        return false;
    }
    if (!application_.skinLoaded())
        return false;
    loaded_ = fullPath(path);
    return true;
}

bool SkinAttempt::loadLast() {
    const SkinCatalog* catalog = SkinCatalog::current();
    if (!catalog)
        return false;
    std::vector<String> tried;
    const auto tryPath = [&](const FNPath& path) {
        String name = fullPath(path);
        if (std::find(tried.begin(), tried.end(), name) != tried.end())
            return false;
        tried.push_back(std::move(name));
        return load(path);
    };
    if (last_.isValid() && catalog->knows(last_) && tryPath(last_))
        return true;
    const FNPath* standard = catalog->defaultSkin();
    if (standard && tryPath(*standard))
        return true;
    const FNPath* first = catalog->firstSkin();
    return first && tryPath(*first);
}

void SkinAttempt::finish(UApplication::Errors errors) try {
    FAttributes* values = loaded_.isEmpty() ? nullptr : settings();
    if (values)
        values->setString(lastSkinKey, loaded_);
    for (const Fault& fault : faults_) {
        if (errors == UApplication::Errors::hide)
            break;
        AlertRecord alert;
        alert.text = fault.text();
        AlertPresenter::current().show(alert);
    }
} catch (const std::bad_alloc&) {
    platform::debugOutput("no memory to remember a skin, or to tell why it wasn't loaded");
}

} // namespace qorl
