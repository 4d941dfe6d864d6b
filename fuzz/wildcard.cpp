#include "foundation/containers/CmRegularExpression.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using View = std::u16string_view;

/// The rules as they are told, one way after the other.
bool matches(View pattern, View text) {
    if (pattern.empty())
        return text.empty();
    const View rest = pattern.substr(1);
    if (pattern[0] == u'*') {
        for (size_t taken = 0; taken <= text.size(); ++taken)
            if (matches(rest, text.substr(taken)))
                return true;
        return false;
    }
    if (pattern[0] == u'?')
        return matches(rest, text) || (!text.empty() && matches(rest, text.substr(1)));
    if (pattern[0] == u'\\' && !rest.empty())
        return !text.empty() && text[0] == rest[0] && matches(rest.substr(1), text.substr(1));
    return !text.empty() && text[0] == pattern[0] && matches(rest, text.substr(1));
}

bool hasTwoStars(View pattern) {
    for (size_t i = 0; i + 1 < pattern.size(); ++i)
        if (pattern[i] == u'*' && pattern[i + 1] == u'*' && !(i > 0 && pattern[i - 1] == u'\\'))
            return true;
    return false;
}

} // namespace

// A pattern, a line feed and a text. Short ones are also matched by trying every way.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl;
    const std::u16string all(data, data + size); // bytes as characters: the alphabet stays small
    const size_t end = std::min(all.find(u'\n'), all.size());
    const View pattern = View(all).substr(0, end);
    const View text = View(all).substr(std::min(end + 1, all.size()));
    const CmRegularExpression expression{ConstString(pattern)};
    const bool found = expression.match(ConstString(text));
    if (pattern.size() <= 10 && text.size() <= 12 &&
        found != (hasTwoStars(pattern) ? pattern == text : matches(pattern, text)))
        std::abort();
    const CmRegularExpression blind(ConstString(pattern), CmRegularExpression::Case::ignored);
    if (found && !blind.match(ConstString(text)))
        std::abort();
    return 0;
}
