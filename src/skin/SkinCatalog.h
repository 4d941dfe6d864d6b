#pragma once

#include <cstdint>

namespace qorl {

class FNPath;

/// What the start of an application asks the manager of skin packs. GUI thread, or the one thread that loads
/// a skin.
class SkinCatalog {
public:
    enum class Verdict {
        accepted,
        refused,
        notOfThisApplication, ///< It is a skin, but of another program.
    };

    virtual Verdict judge(const FNPath& skin) = 0;
    virtual bool knows(const FNPath& skin) const = 0;
    /// Null without one. Good until the catalogue changes.
    virtual const FNPath* defaultSkin() const = 0;
    virtual const FNPath* firstSkin() const = 0;

    /// Null without a manager.
    static SkinCatalog* current() { return current_; }
    /// Not owned.
    static void setCurrent(SkinCatalog* catalog) { current_ = catalog; }

protected:
    ~SkinCatalog() = default;

private:
    static inline constinit SkinCatalog* current_ = nullptr;
};

} // namespace qorl
