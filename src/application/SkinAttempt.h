#pragma once

#include "application/UApplication.h"

#include <string>
#include <vector>

namespace qorl {

/// Loads a skin, whichever of several can be had.
///
/// What belongs to the user-interface thread waits for `finish`, so that `loadLast` may run on a thread of
/// its own: settings are read when the attempt is made and written at its end, and only then the user hears
/// of faults. Threading: made and finished on the user-interface thread; in between one thread at a time.
class SkinAttempt {
public:
    explicit SkinAttempt(UApplication& application);

    bool load(const FNPath& path);
    /// The skin that the settings name, else the default one, else the first. Needs the manager of skin
    /// packs.
    bool loadLast();

    /// Remembers the skin that was loaded, and with `Errors::show` tells why others were not. What there is
    /// no memory for stays undone.
    void finish(UApplication::Errors errors);

private:
    struct Fault {
        enum class Kind : uint8_t { missing, notOfThisApplication, notParsed };

        Kind kind;
        String path = {};
        /// Of the parser.
        std::string message = {};
        std::string context = {};

        String text() const;
    };

    bool isAccepted(const FNPath& path);

    UApplication& application_;
    FNPath last_;
    String loaded_;
    std::vector<Fault> faults_;
};

} // namespace qorl
