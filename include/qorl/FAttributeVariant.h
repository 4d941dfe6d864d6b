#pragma once

#include <qorl/FInterface.h>

namespace qorl {

/// One value as it crosses an interface: a number, a text or an object, with its kind beside it.
///
/// A plain record without constructor or destructor. Texts are zero-terminated. With `ownedFlag` in `kind`
/// the value passes with its ownership: a reference for an object, a block from `malloc` for a text.
struct FAttributeVariant {
    enum Kind : uint32_t {
        none = 0,
        integer = 1,
        real = 2,
        text8 = 4,
        object = 8,
        ownedFlag = 16,
        text16 = 32,
    };

    uint32_t kind;
    union {
        int64_t integerValue;
        double realValue;
        const char* text8Value;
        const char16_t* text16Value;
        FInterface* objectValue;
    };

    /// The kind without the mark of ownership.
    uint32_t bareKind() const { return kind & ~uint32_t{ownedFlag}; }
};

} // namespace qorl
