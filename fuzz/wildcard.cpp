#include "foundation/containers/CmRegularExpression.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using View = std::u16string_view;

/// Latin letters, of which the alphabet here has no more: bytes as characters. Three have no other form
/// there.
char16_t fold(char16_t c) {
    const bool isLarge = (c >= u'A' && c <= u'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
    return isLarge ? static_cast<char16_t>(c + 32) : c;
}

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
    using Case = CmRegularExpression::Case;
    const bool found = CmRegularExpression(ConstString(pattern)).match(ConstString(text));
    const bool foundBlind = CmRegularExpression(ConstString(pattern), Case::ignored).match(ConstString(text));
    if (found && !foundBlind)
        std::abort();
    if (pattern.size() > 10 || text.size() > 12)
        return 0;
    const auto expected = [](View wanted, View given) {
        return hasTwoStars(wanted) ? wanted == given : matches(wanted, given);
    };
    const auto folded = [](View some) {
        std::u16string all(some);
        std::transform(all.begin(), all.end(), all.begin(), fold);
        return all;
    };
    if (found != expected(pattern, text) || foundBlind != expected(folded(pattern), folded(text)))
        std::abort();
    return 0;
}
