#include "schemes/GlobalSchemes.h"

#include "schemes/USystemScheme.h"

namespace qorl {

namespace {

/// Colours by the name of a key of the main scheme, then by a name that its skin defined.
bool findSchemeColorByName(std::string_view name, UColor& color) {
    const UScheme* scheme = GlobalSchemes::main();
    if (!scheme)
        return false;
    const int32_t key = UScheme::colorIndex(name);
    if (key < 0)
        return scheme->findNamedColor(name, color);
    color = scheme->getColor(key);
    return true;
}

[[maybe_unused]] const NamedColorLookup earlier = UColor::setNamedColorLookup(&findSchemeColorByName);

} // namespace

constinit UScheme* GlobalSchemes::main_ = nullptr;
constinit UScheme* GlobalSchemes::dialog_ = nullptr;
constinit UScheme* GlobalSchemes::control_ = nullptr;
constinit UScheme* GlobalSchemes::system_ = nullptr;
constinit UScheme* GlobalSchemes::current_ = nullptr;
constinit CurrentScheme* GlobalSchemes::scopes_ = nullptr;

void GlobalSchemes::set(UScheme*& slot, UScheme* scheme) {
    if (scheme)
        scheme->addRef();
    UScheme* old = slot;
    slot = scheme;
    if (!old)
        return;
    const bool isHeld = old == main_ || old == dialog_ || old == control_ || old == system_;
    if (!isHeld) {
        if (current_ == old)
            current_ = scheme;
        for (CurrentScheme* scope = scopes_; scope; scope = scope->around_)
            if (scope->outer_ == old)
                scope->outer_ = scheme;
    }
    old->release();
}

void GlobalSchemes::setMain(UScheme* scheme) {
    set(main_, scheme);
}

void GlobalSchemes::setDialog(UScheme* scheme) {
    set(dialog_, scheme);
}

void GlobalSchemes::setControl(UScheme* scheme) {
    set(control_, scheme);
}

void GlobalSchemes::setSystem(UScheme* scheme) {
    set(system_, scheme);
}

bool GlobalSchemes::createForProgram() {
    const auto scheme = make<UScheme>();
    setMain(scheme.get());
    setDialog(scheme.get());
    setSystem(make<USystemScheme>().get());
    return true;
}

bool GlobalSchemes::createForLibrary() {
    if (!main_)
        setMain(make<UScheme>().get());
    if (!dialog_)
        setDialog(main_);
    if (!system_)
        setSystem(main_);
    setCurrent(main_);
    return true;
}

void GlobalSchemes::fillEmpty() {
    if (!main_)
        setMain(make<UScheme>().get());
    if (!dialog_)
        setDialog(main_);
    const bool fillsSystem = !system_;
    if (fillsSystem)
        setSystem(main_);
    setCurrent(fillsSystem ? main_ : system_);
}

void GlobalSchemes::resetAll() {
    UScheme* const schemes[] = {main_, dialog_, system_};
    for (size_t i = 0; i < std::size(schemes); ++i) {
        UScheme* scheme = schemes[i];
        const bool isDone = (i > 0 && scheme == schemes[0]) || (i > 1 && scheme == schemes[1]);
        if (!scheme || isDone)
            continue;
        scheme->resetColors();
        scheme->resetFonts();
        scheme->resetMetrics();
    }
}

void GlobalSchemes::releaseAll() {
    current_ = nullptr;
    setMain(nullptr);
    setDialog(nullptr);
    setControl(nullptr);
    setSystem(nullptr);
}

} // namespace qorl
