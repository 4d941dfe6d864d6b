#include "graphics/UColor.h"
#include "skin/SizeExpression.h"
#include "skin/SkinCondition.h"
#include "skin/SkinKeywords.h"
#include "skin/SkinVocabulary.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

/// Answers every field with a number made of its name.
class AnyOperands final : public qorl::SizeOperands {
public:
    bool foreignField(std::string_view owner, std::string_view field, int64_t& value) override {
        if (field.empty())
            return false;
        value = static_cast<int64_t>(owner.size() * 7919) * (field.front() % 2 ? 1 : -1);
        return true;
    }
};

class AnyNames final : public qorl::ConditionNames {
public:
    bool isTrue(std::string_view name) override {
        if (name.empty())
            std::abort(); // a condition has no empty names
        return name.size() % 2;
    }
};

} // namespace

// Sizes, conditions, keywords and colours: the little languages inside of attributes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    AnyOperands operands;
    AnyNames names;
    SizeFields fields;
    if (!parsePlainSize(text, fields))
        evaluateSize(text, operands, fields);
    evaluateCondition(text, names);
    const KeywordValue keywords = parseKeywords(SkinVocabulary::switchStyle, text);
    if (text.empty() && keywords.value != 0)
        std::abort();
    int32_t numbers[4];
    parseInts(text, numbers, 4);
    UColor color;
    color.parse(text);
    return 0;
}
