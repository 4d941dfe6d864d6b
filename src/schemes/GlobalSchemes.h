#pragma once

#include "schemes/UScheme.h"

#include <qorl/Ref.h>

namespace qorl {

/// The schemes of the process. GUI thread.
///
/// A program fills the slots at its start; the library fills what is left empty. Everything that the builder
/// makes without naming a scheme takes `currentScheme(main)`.
class GlobalSchemes {
public:
    /// The schemes are null until the start. Not counted for the caller.
    static UScheme* main() { return main_; }
    static UScheme* dialog() { return dialog_; }
    /// Only read by the framework; an application fills it when it wants to.
    static UScheme* control() { return control_; }
    static UScheme* system() { return system_; }

    /// Each takes a reference; null empties the slot.
    static void setMain(UScheme* scheme);
    static void setDialog(UScheme* scheme);
    static void setControl(UScheme* scheme);
    static void setSystem(UScheme* scheme);

    /// The scheme of the build or drawing pass that is running, or `fallback` when there is none.
    static UScheme* currentScheme(UScheme* fallback) { return current_ ? current_ : fallback; }
    /// Not counted: whoever sets it keeps it until it is set back.
    static void setCurrent(UScheme* scheme) { current_ = scheme; }
    /// What stands there, null too.
    static UScheme* current() { return current_; }

    /// Start of a stand-alone program: a new main, the same as dialog, a new system scheme.
    static bool createForProgram();
    /// Start inside the library: one new scheme for main, dialog, system and current.
    static bool createForLibrary();
    /// What is still empty after the application's own step: main is made, dialog and system become main.
    /// Current is main when system had to be filled, else system.
    static void fillEmpty();
    /// Colours, fonts and metrics to their defaults, on each of main, dialog and system once.
    static void resetAll();
    /// At shutdown: main, dialog, control, system.
    static void releaseAll();

private:
    static void set(UScheme*& slot, UScheme* scheme);

    static UScheme* main_;
    static UScheme* dialog_;
    static UScheme* control_;
    static UScheme* system_;
    static UScheme* current_;
    static class CurrentScheme* scopes_; ///< the innermost
    friend class CurrentScheme;
};

/// Another current scheme for as long as the object stands, on the stack. What comes back then is the scheme
/// of before, or what took its place as a global one meanwhile.
class CurrentScheme {
public:
    explicit CurrentScheme(UScheme* scheme)
        : outer_(GlobalSchemes::current()), around_(GlobalSchemes::scopes_) {
        GlobalSchemes::scopes_ = this;
        GlobalSchemes::setCurrent(scheme);
    }
    ~CurrentScheme() {
        GlobalSchemes::scopes_ = around_;
        GlobalSchemes::setCurrent(outer_);
    }
    CurrentScheme(const CurrentScheme&) = delete;
    CurrentScheme& operator=(const CurrentScheme&) = delete;

private:
    friend class GlobalSchemes;

    UScheme* outer_;
    CurrentScheme* around_;
};

} // namespace qorl
