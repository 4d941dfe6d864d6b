#include "foundation/containers/CmRegularExpression.h"

#include "foundation/text/TextConversion.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <algorithm>
#include <new>

namespace qorl {

QORL_REGISTER(CmRegularExpression, "CmRegularExpression", CmObject, 0)

namespace {

using Case = CmRegularExpression::Case;

char16_t folded(char16_t character, Case sensitivity) {
    return sensitivity == Case::sensitive ? character : static_cast<char16_t>(text::lower(character));
}

bool isPlainText(std::u16string_view pattern) {
    for (size_t i = 0; i + 1 < pattern.size(); ++i)
        if (pattern[i] == u'*' && pattern[i + 1] == u'*' && (i == 0 || pattern[i - 1] != u'\\'))
            return true;
    return false;
}

bool areEqual(std::u16string_view a, std::u16string_view b, Case sensitivity) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [sensitivity](char16_t x, char16_t y) {
        return folded(x, sensitivity) == folded(y, sensitivity);
    });
}

/// A part of the pattern.
struct Token {
    enum Kind : uint8_t { character, optional, run };
    Kind kind;
    bool isReached; ///< Whether the text so far can have been matched by all tokens in front of this one.
    char16_t value;
};

/// Follows all ways through the pattern at once, character by character: a way is known by the token in
/// front of which it stands, so there are never more than tokens. That is the simulation of a
/// nondeterministic automaton (K. Thompson, Regular Expression Search Algorithm, CACM 11, 1968).
class Matcher {
public:
    /// `tokens` has room for one more than the pattern has characters.
    Matcher(Token* tokens, std::u16string_view pattern, Case sensitivity) : tokens_(tokens) {
        for (size_t i = 0; i < pattern.size(); ++i, ++end_) {
            Token& token = tokens_[end_];
            token = {Token::character, false, pattern[i]};
            if (pattern[i] == u'*')
                token.kind = Token::run;
            else if (pattern[i] == u'?')
                token.kind = Token::optional;
            else if (pattern[i] == u'\\' && i + 1 < pattern.size())
                token.value = pattern[++i];
            token.value = folded(token.value, sensitivity);
        }
        tokens_[end_] = {Token::character, false, 0};
    }

    bool match(std::u16string_view text, Case sensitivity) {
        reach(0);
        for (const char16_t character : text) {
            if (hasOpenEnd())
                return true;
            if (!step(folded(character, sensitivity)))
                return false;
        }
        return tokens_[end_].isReached;
    }

private:
    /// A way stands in front of `token`, and in front of those behind it that may match nothing.
    void reach(int32_t token) {
        for (; !tokens_[token].isReached; ++token) {
            tokens_[token].isReached = true;
            high_ = std::max(high_, token);
            if (token == end_ || tokens_[token].kind == Token::character)
                return;
            // A run takes whatever comes, so that the ways in front of it lead nowhere else.
            if (tokens_[token].kind == Token::run)
                low_ = std::max(low_, token);
        }
    }

    /// From the last token to the first, so that each way moves once.
    bool step(char16_t character) {
        const int32_t from = high_;
        high_ = -1;
        for (int32_t i = from; i >= low_; --i) {
            Token& token = tokens_[i];
            if (!token.isReached)
                continue;
            token.isReached = false;
            if (token.kind == Token::run) {
                reach(i);
                break;
            }
            if (i < end_ && (token.kind == Token::optional || token.value == character))
                reach(i + 1);
        }
        return high_ >= 0;
    }

    /// What remains is taken by a run at the end of the pattern.
    bool hasOpenEnd() const { return end_ > 0 && low_ == end_ - 1 && tokens_[low_].kind == Token::run; }

    Token* tokens_;
    int32_t end_ = 0;
    int32_t low_ = 0;   ///< No way stands further in front,
    int32_t high_ = -1; ///< none further behind.
};

} // namespace

bool CmRegularExpression::match(const ConstString& given) const {
    const text::WideCopy pattern(pattern_.string());
    const text::WideCopy wide(given);
    if (!pattern.isValid() || !wide.isValid())
        return false;
    if (isPlainText(pattern.view()))
        return areEqual(pattern.view(), wide.view(), sensitivity_);
    text::Scratch<Token, 128> room;
    Token* tokens = room.room(static_cast<int64_t>(pattern.view().size()) + 1);
    return tokens && Matcher(tokens, pattern.view(), sensitivity_).match(wide.view(), sensitivity_);
}

bool CmRegularExpression::writeTo(FObjectArchive* archive) {
    return pattern_.writeTo(archive) && archive->stream().writeUInt8(sensitivity_ == Case::sensitive ? 1 : 0);
}

bool CmRegularExpression::readFrom(FObjectArchive* archive) {
    CmString pattern;
    uint8_t sensitive = 0;
    if (!pattern.readFrom(archive) || !archive->stream().readUInt8(sensitive))
        return false;
    pattern_.string() = std::move(pattern.string());
    sensitivity_ = sensitive ? Case::sensitive : Case::ignored;
    return true;
}

bool CmRegularExpression::storeAttributes(FAttributes* attributes) {
    attributes->setString("Expression", pattern_.string());
    attributes->setInteger("CaseSensitive", sensitivity_ == Case::sensitive ? 1 : 0);
    return true;
}

bool CmRegularExpression::restoreAttributes(FAttributes* attributes) {
    if (!pattern_.string().assign(attributes->getString("Expression")))
        throw std::bad_alloc();
    sensitivity_ = attributes->getInteger("CaseSensitive", 1) ? Case::sensitive : Case::ignored;
    return true;
}

} // namespace qorl
