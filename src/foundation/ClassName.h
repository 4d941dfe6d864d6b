#pragma once

#include <cstdint>
#include <cstring>

namespace qorl {

/// The name of a class, linked to the name of its base: what the generated `isTypeOf` walks.
///
/// Each class has one constant record of this kind; that makes a test of kind inside the library a walk over
/// pointers, with text compared only for names that come from elsewhere.
struct ClassName {
    const char* text;
    uint32_t length;
    const ClassName* base;

    constexpr ClassName(const char* name, const ClassName* baseName)
        : text(name), length(lengthOf(name)), base(baseName) {}

    /// Whether `name` is this class, or, with `deep`, one of its bases. False for null.
    bool matches(const char* name, bool deep) const noexcept {
        if (!name)
            return false;
        if (!deep)
            return text == name || std::strcmp(text, name) == 0;
        for (const ClassName* link = this; link; link = link->base)
            if (link->text == name)
                return true;
        return matchesText(name);
    }

private:
    bool matchesText(const char* name) const noexcept {
        const size_t wanted = std::strlen(name);
        for (const ClassName* link = this; link; link = link->base)
            if (link->length == wanted && std::memcmp(link->text, name, wanted) == 0)
                return true;
        return false;
    }

    static constexpr uint32_t lengthOf(const char* name) {
        uint32_t length = 0;
        while (name[length])
            ++length;
        return length;
    }
};

} // namespace qorl
