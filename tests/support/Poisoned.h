#pragma once

#include <cstddef>
#include <new>

namespace qorl::testing {

/// A `Base` that fills its memory with a pattern when it goes, so that whoever uses it later fails at once,
/// without a sanitizer too.
template <typename Base>
class Poisoned : public Base {
public:
    using Base::Base;

    static void* operator new(size_t size) { return ::operator new(size); }
    static void operator delete(void* memory, size_t size) {
        constexpr unsigned char pattern = 0xDD;
        auto* bytes = static_cast<volatile unsigned char*>(memory);
        for (size_t i = 0; i < size; ++i)
            bytes[i] = pattern;
        ::operator delete(memory);
    }
};

} // namespace qorl::testing
