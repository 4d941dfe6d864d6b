#include "skin/SizeExpression.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace qorl {

namespace {

constexpr int64_t largest = std::numeric_limits<int32_t>::max();

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

constexpr bool isOperator(char c) {
    return c == '+' || c == '-' || c == '*' || c == '/';
}

std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The text up to the next `divider`, which is taken off with it.
std::string_view takeUpTo(std::string_view& text, char divider) {
    const size_t end = text.find(divider);
    const std::string_view head = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return head;
}

int64_t parseNumber(std::string_view digits) {
    int64_t number = 0;
    for (const char c : digits) {
        if (!isDigit(c))
            break;
        number = std::min(number * 10 + (c - '0'), largest + 1);
    }
    return number;
}

/// One field without its sign, from left to right.
class FieldReader {
public:
    FieldReader(std::string_view text, const SizeFields& known, SizeOperands& operands)
        : text_(text), known_(known), operands_(operands) {}

    bool read(int64_t& result) {
        int64_t value = 0;
        char op = '+';
        if (!text_.empty() && (text_.front() == '-' || text_.front() == '+')) {
            op = text_.front();
            text_.remove_prefix(1);
        }
        while (!text_.empty()) {
            const size_t end = operandLength();
            int64_t operand = 0;
            if (!readOperand(withoutBlanks(text_.substr(0, end)), operand))
                return false;
            value = apply(value, op, operand);
            if (end == text_.size())
                break;
            op = text_[end];
            text_.remove_prefix(end + 1);
        }
        result = value;
        return true;
    }

private:
    /// A `*` where an operand is due is one, and not an operator.
    size_t operandLength() const {
        size_t start = 0;
        while (start < text_.size() && isBlank(text_[start]))
            ++start;
        if (start < text_.size() && text_[start] == '*')
            ++start;
        while (start < text_.size() && !isOperator(text_[start]))
            ++start;
        return start;
    }

    bool readOperand(std::string_view operand, int64_t& value) {
        if (operand.empty())
            return true;
        if (operand.front() == '*') {
            value = largest;
            return true;
        }
        if (isDigit(operand.front())) {
            value = parseNumber(operand);
            return true;
        }
        const size_t point = operand.rfind('.');
        if (point == std::string_view::npos) {
            value = known_.get(operand);
            return true;
        }
        return operands_.foreignField(operand.substr(0, point), operand.substr(point + 1), value);
    }

    /// Kept well inside 64 bits, so that no chain of operators overflows.
    static int64_t apply(int64_t value, char op, int64_t operand) {
        constexpr int64_t bound = int64_t{1} << 31;
        operand = std::clamp(operand, -bound, bound);
        switch (op) {
        case '+': value += operand; break;
        case '-': value -= operand; break;
        case '*': value *= operand; break;
        default: value = operand == 0 ? value : value / operand; break;
        }
        return std::clamp(value, -bound, bound);
    }

    std::string_view text_;
    const SizeFields& known_;
    SizeOperands& operands_;
};

} // namespace

int64_t SizeFields::get(std::string_view field) const {
    if (field == "left")
        return left;
    if (field == "top")
        return top;
    if (field == "width")
        return width;
    if (field == "height")
        return height;
    if (field == "right")
        return int64_t{left} + width;
    if (field == "bottom")
        return int64_t{top} + height;
    return 0;
}

CmRect SizeFields::rect() const {
    return {left, top, limitToInt32(int64_t{left} + width), limitToInt32(int64_t{top} + height)};
}

int32_t limitToInt32(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(), largest));
}

int32_t parseInt(std::string_view text) {
    text = withoutBlanks(text);
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+'))
        text.remove_prefix(1);
    const int64_t number = parseNumber(text);
    return limitToInt32(negative ? -number : number);
}

int32_t parseInts(std::string_view text, int32_t* numbers, int32_t count) {
    int32_t found = 0;
    while (found < count && !text.empty())
        numbers[found++] = parseInt(takeUpTo(text, ','));
    return found;
}

bool parsePlainSize(std::string_view text, SizeFields& fields) {
    SizeFields result = fields;
    int32_t* const targets[] = {&result.left, &result.top, &result.width, &result.height};
    for (int32_t* target : targets) {
        if (text.empty())
            break;
        std::string_view field = withoutBlanks(takeUpTo(text, ','));
        if (field.empty())
            continue;
        if (field == "*") {
            *target = static_cast<int32_t>(largest);
            continue;
        }
        const size_t start = !field.empty() && (field.front() == '-' || field.front() == '+') ? 1 : 0;
        if (!std::all_of(field.begin() + static_cast<ptrdiff_t>(start), field.end(), isDigit))
            return false;
        *target = parseInt(field);
    }
    if (!std::ranges::all_of(
            text, [](char c) { return isDigit(c) || isBlank(c) || c == '-' || c == '+' || c == ','; }))
        return false;
    fields = result;
    return true;
}

bool evaluateSize(std::string_view text, SizeOperands& operands, SizeFields& fields) {
    SizeFields result;
    int32_t* const targets[] = {&result.left, &result.top, &result.width, &result.height};
    for (int32_t* target : targets) {
        if (text.empty())
            break;
        int64_t value = 0;
        if (!FieldReader(withoutBlanks(takeUpTo(text, ',')), result, operands).read(value))
            return false;
        *target = limitToInt32(value);
    }
    fields = result;
    return true;
}

} // namespace qorl
