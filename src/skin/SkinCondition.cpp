#include "skin/SkinCondition.h"

namespace qorl {

namespace {

enum class Operator { replace, and_, or_, xor_ };

constexpr bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

std::string_view nextWord(std::string_view& text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    size_t length = 0;
    while (length < text.size() && !isSpace(text[length]))
        ++length;
    const std::string_view word = text.substr(0, length);
    text.remove_prefix(length);
    return word;
}

bool combine(bool left, Operator op, bool right) {
    switch (op) {
    case Operator::and_: return left && right;
    case Operator::or_: return left || right;
    case Operator::xor_: return left != right;
    case Operator::replace: break;
    }
    return right;
}

} // namespace

bool evaluateCondition(std::string_view text, ConditionNames& names) {
    bool result = false;
    bool flip = false;
    Operator op = Operator::replace;
    for (auto word = nextWord(text); !word.empty(); word = nextWord(text)) {
        if (word == "NOT") {
            flip = !flip;
        } else if (word == "AND") {
            op = Operator::and_;
        } else if (word == "OR") {
            op = Operator::or_;
        } else if (word == "XOR") {
            op = Operator::xor_;
        } else {
            result = combine(result, op, names.isTrue(word) != flip);
            op = Operator::replace;
            flip = false;
        }
    }
    return result;
}

} // namespace qorl
