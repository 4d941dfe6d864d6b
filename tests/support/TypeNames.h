#pragma once

#include <string>
#include <string_view>

namespace qorl::testing {

/// Names the tests of a typed suite by its classes: TYPED_TEST_SUITE(Suite, Types, TypeNames).
struct TypeNames {
    template <typename Class>
    static std::string GetName(int) {
        // "... [with Class = qorl::CmArray; ...]" or "... [Class = qorl::CmArray]"
        std::string_view name = __PRETTY_FUNCTION__;
        name.remove_prefix(name.find("Class = ") + 8);
        name = name.substr(0, name.find_first_of(";],"));
        name.remove_prefix(name.rfind(':') + 1);
        return std::string(name);
    }
};

} // namespace qorl::testing
