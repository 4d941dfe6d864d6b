#pragma once

#include <qorl/FInterface.h>

#include <cstdlib>

namespace qorl {

/// The plain value record: one bare value where it crosses an interface, a number, a text or an object, with
/// its kind beside it.
///
/// It has neither constructor nor destructor, so `FAttributeVariant value{};` holds nothing, and a copy of
/// the record is a second look at the same value. Texts are zero-terminated. With `ownedFlag` in `kind` the
/// value passes with its ownership: a reference for an object, a block from `malloc` for a text; whoever has
/// the record then calls `clear`, once. `ConstString` views its text, `String::printVariant` prints it.
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
    bool isOwned() const { return (kind & ownedFlag) != 0; }

    /// Gives up what the record owns. It holds nothing afterwards; other copies of it are stale.
    void clear() {
        const FAttributeVariant old = *this;
        *this = {};
        if (!old.isOwned())
            return;
        switch (old.bareKind()) {
        case text8: std::free(const_cast<char*>(old.text8Value)); break;
        case text16: std::free(const_cast<char16_t*>(old.text16Value)); break;
        case object:
            if (old.objectValue)
                old.objectValue->release();
            break;
        default: break;
        }
    }
};

} // namespace qorl
