#include "skin/SkinAttributeReader.h"

#include "skin/SizeExpression.h"
#include "skin/Suggestion.h"
#include "skin/Wording.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace qorl {

using Wording::quoted;
using Wording::tag;

namespace {

int64_t packPoint(CmPoint point) {
    return static_cast<int64_t>(static_cast<uint64_t>(static_cast<uint32_t>(point.x)) << 32 |
                                static_cast<uint32_t>(point.y));
}

CmPoint parsePoint(std::string_view text) {
    int32_t numbers[2] = {};
    parseInts(text, numbers, 2);
    return {numbers[0], numbers[1]};
}

int64_t parseOpacity(std::string_view text) {
    if (text.empty() || text.front() != '#')
        return parseInt(text);
    uint32_t number = 0;
    std::from_chars(text.data() + 1, text.data() + text.size(), number, 16);
    return number;
}

size_t slotOf(const KeywordSet& set, std::string_view text, size_t slots) {
    size_t hash = reinterpret_cast<uintptr_t>(&set) / sizeof(KeywordSet) + text.size() * 7;
    hash += static_cast<uint8_t>(text.front()) * 31u + static_cast<uint8_t>(text.back()) * 17u;
    hash += static_cast<uint8_t>(text[text.size() / 2]) * 5u;
    return hash % slots;
}

} // namespace

void SkinAttributeReader::begin(const char* const* attributes, SkinType type, SourceMark mark) {
    rest_ = attributes;
    type_ = type;
    mark_ = mark;
}

void SkinAttributeReader::report(Severity severity, std::string text) {
    if (sink_)
        sink_->report(mark_.finding(severity, std::move(text)));
}

AttributeValue SkinAttributeReader::keepForeign(std::string_view name, std::string_view text) {
    const std::string_view kept = store_.keep(text);
    AttributeValue value{kept.data(), {}, static_cast<uint32_t>(kept.size()), SkinAttribute::foreign};
    value.name = store_.keep(name).data();
    return value;
}

AttributeValue SkinAttributeReader::convert(SkinStore& store, SkinType type, SkinAttribute attribute,
                                            std::string_view text) {
    std::string path;
    if (attribute == SkinAttribute::path && text.find('\\') != std::string_view::npos) {
        path = text;
        std::ranges::replace(path, '\\', '/');
        text = path;
    }
    const std::string_view kept = store.keep(text);
    AttributeValue value{kept.data(), {}, static_cast<uint32_t>(kept.size()), attribute};
    value.number = 0;
    const AttributeRule& rule = ruleOf(type, attribute);
    switch (rule.form) {
    case AttributeForm::integer: value.number = parseInt(kept); break;
    case AttributeForm::point: value.number = packPoint(parsePoint(kept)); break;
    case AttributeForm::opacity: value.number = parseOpacity(kept); break;
    case AttributeForm::keywords: value.number = parseKeywords(*rule.keywords, kept).value; break;
    case AttributeForm::text:
    case AttributeForm::illegal: break;
    }
    return value;
}

void SkinAttributeReader::reportUnknownWords(const KeywordSet& set, std::string_view text) {
    size_t position = 0;
    for (auto word = nextKeyword(text, position); !word.empty() && wantsWarnings();
         word = nextKeyword(text, position)) {
        if (hasKeyword(set, word))
            continue;
        Suggestion suggestion(word);
        for (const auto& table : {set.choice, set.flags, set.moreFlags, set.furtherFlags})
            for (const Keyword& keyword : table)
                suggestion.offer(keyword.word);
        report(Severity::warning, tag(type_) + " knows no " + std::string(nameOf(value_.attribute)) + " " +
                                      quoted(word) + suggestion.text("'", "'"));
    }
}

void SkinAttributeReader::reportIllegal(std::string_view name) {
    Suggestion suggestion(name);
    for (size_t i = 1; i < static_cast<size_t>(SkinAttribute::count); ++i) {
        const auto attribute = static_cast<SkinAttribute>(i);
        if (ruleOf(type_, attribute).form != AttributeForm::illegal)
            suggestion.offer(nameOf(attribute));
    }
    report(Severity::warning, tag(type_) + " has no attribute " + quoted(name) + suggestion.text("'", "'"));
}

void SkinAttributeReader::reportIdle(SkinAttribute attribute) {
    const std::pair known{type_, attribute};
    if (std::ranges::find(idle_, known) != idle_.end())
        return;
    idle_.push_back(known);
    report(Severity::warning, quoted(nameOf(attribute)) + " of " + tag(type_) + " has no effect");
}

void SkinAttributeReader::convertKeywords(const KeywordSet& set, std::string_view text,
                                          AttributeValue& value) {
    value.number = 0;
    if (text.empty()) {
        value.text = "";
        return;
    }
    CachedKeywords& cached = cache_[slotOf(set, text, cacheSize)];
    if (cached.set != &set || cached.text != text)
        cached = {&set, store_.keep(text), parseKeywords(set, text)};
    value.text = cached.text.data();
    value.number = cached.value.value;
    if (cached.value.hasUnknown && wantsWarnings())
        reportUnknownWords(set, text);
}

const AttributeValue* SkinAttributeReader::next() {
    if (!*rest_)
        return nullptr;
    const std::string_view name = rest_[0];
    const std::string_view text = rest_[1];
    rest_ += 2;
    const SkinAttribute attribute = findSkinAttribute(name);
    const AttributeRule& rule = ruleOf(type_, attribute);
    if (rule.form == AttributeForm::illegal) {
        if (!traitsOf(type_).keepsUnknown && wantsWarnings())
            reportIllegal(name);
        value_ = keepForeign(name, text);
        return &value_;
    }
    if (rule.isIdle && wantsWarnings())
        reportIdle(attribute);
    if (rule.form != AttributeForm::keywords) {
        value_ = convert(store_, type_, attribute, text);
        return &value_;
    }
    value_ = {text.data(), {}, static_cast<uint32_t>(text.size()), attribute};
    convertKeywords(*rule.keywords, text, value_);
    return &value_;
}

} // namespace qorl
