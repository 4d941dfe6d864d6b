#pragma once

#include <string_view>

namespace qorl {

/// Knows the truth of the names in a condition.
class ConditionNames {
public:
    virtual bool isTrue(std::string_view name) = 0;

protected:
    ~ConditionNames() = default;
};

/// The truth of a condition: names and the words "NOT", "AND", "OR", "XOR" between white space, from left to
/// right without precedence. "NOT" flips the next name; a name without an operator in front replaces what
/// stands so far. False for a text without a name: whoever has an optional condition tests for the empty text
/// first.
bool evaluateCondition(std::string_view text, ConditionNames& names);

} // namespace qorl
