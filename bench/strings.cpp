#include "foundation/containers/CmRegularExpression.h"
#include "foundation/text/String.h"
#include "support/Ratio.h"

#include <string>

namespace qorl::bench {
namespace {

// Sizes are characters of a text: a name, a sentence, a page.
std::u16string sample(int64_t length) {
    std::u16string text;
    for (int64_t i = 0; i < length; ++i)
        text.push_back(static_cast<char16_t>(u'a' + i * 7 % 26));
    return text;
}

void copy(benchmark::State& state) {
    const std::u16string text = sample(state.range(0));
    const String source{std::u16string_view(text)};
    for (auto _ : state) {
        const String made(source);
        benchmark::DoNotOptimize(made.data());
    }
}
void copyFloor(benchmark::State& state) {
    const std::u16string source = sample(state.range(0));
    for (auto _ : state) {
        const std::u16string made(source);
        benchmark::DoNotOptimize(made.data());
    }
}
QORL_RATIO(copy, copyFloor, 1.5, 20, 200, 2000);

void compareEqual(benchmark::State& state) {
    const std::u16string text = sample(state.range(0));
    const String a{std::u16string_view(text)};
    const String b{std::u16string_view(text)};
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
}
void compareEqualFloor(benchmark::State& state) {
    const std::u16string a = sample(state.range(0));
    const std::u16string b = a;
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
}
QORL_RATIO(compareEqual, compareEqualFloor, 1.5, 20, 200, 2000);

/// Sorting asks for the order of texts that begin alike.
void compareOrder(benchmark::State& state) {
    const std::u16string text = sample(state.range(0));
    const String a{std::u16string_view(text + u"1")};
    const String b{std::u16string_view(text + u"2")};
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b));
}
void compareOrderFloor(benchmark::State& state) {
    const std::u16string a = sample(state.range(0)) + u"1";
    const std::u16string b = sample(state.range(0)) + u"2";
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b));
}
QORL_RATIO(compareOrder, compareOrderFloor, 1.5, 20, 200, 2000);

void findAtEnd(benchmark::State& state) {
    const std::u16string text = sample(state.range(0)) + u"#end";
    const String whole{std::u16string_view(text)};
    const ConstString part(u"#end");
    for (auto _ : state)
        benchmark::DoNotOptimize(whole.find(part));
}
void findAtEndFloor(benchmark::State& state) {
    const std::u16string whole = sample(state.range(0)) + u"#end";
    const std::u16string part(u"#end");
    for (auto _ : state)
        benchmark::DoNotOptimize(whole.find(part));
}
QORL_RATIO(findAtEnd, findAtEndFloor, 1.5, 20, 200, 2000);

/// A path or a label is put together from a few parts. The buffer of a `String` fits exactly, so each part
/// moves it.
void join(benchmark::State& state) {
    const ConstString parts[] = {u"Channel", u" ", u"12", u": ", u"Level"};
    for (auto _ : state) {
        String text;
        for (const auto& part : parts)
            text += part;
        benchmark::DoNotOptimize(text.data());
    }
}
void joinFloor(benchmark::State& state) {
    const std::u16string_view parts[] = {u"Channel", u" ", u"12", u": ", u"Level"};
    for (auto _ : state) {
        std::u16string text;
        for (const auto& part : parts)
            text += part;
        benchmark::DoNotOptimize(text.data());
    }
}
QORL_RATIO(join, joinFloor, 4.0);

/// What could take a lifetime: a part may begin at each place of the text, almost matches at each, and in
/// each length. Beside it the least that a matcher can do which reads the text once for each part.
constexpr size_t wildcardStars = 64;
constexpr size_t wildcardText = 10'000;

void matchWildcards(benchmark::State& state) {
    std::u16string part = u"*";
    for (int i = 0; i < 31; ++i)
        part += u"a?";
    std::u16string pattern;
    for (size_t i = 0; i < wildcardStars; ++i)
        pattern += part + u"b";
    const CmRegularExpression expression{ConstString(pattern)};
    const std::u16string text(wildcardText, u'a');
    for (auto _ : state)
        benchmark::DoNotOptimize(expression.match(ConstString(text)));
}
void matchWildcardsFloor(benchmark::State& state) {
    const std::u16string text(wildcardText, u'a');
    for (auto _ : state)
        for (size_t i = 0; i < wildcardStars; ++i) {
            benchmark::DoNotOptimize(text.data());
            size_t found = 0;
            for (const char16_t c : text)
                found += c == u'a';
            benchmark::DoNotOptimize(found);
        }
}
QORL_RATIO(matchWildcards, matchWildcardsFloor, 50.0);

void parseNumber(benchmark::State& state) {
    const String text(u"-1234567");
    for (auto _ : state) {
        int64_t value = 0;
        benchmark::DoNotOptimize(text.toInt64(value));
        benchmark::DoNotOptimize(value);
    }
}
void parseNumberFloor(benchmark::State& state) {
    const std::u16string text(u"-1234567");
    for (auto _ : state) {
        int64_t value = std::stoll(std::string(text.begin(), text.end()));
        benchmark::DoNotOptimize(value);
    }
}
QORL_RATIO(parseNumber, parseNumberFloor, 1.0);

/// What a first reader of the other width pays, beside copying the wide text that it would have had
/// otherwise.
void widen(benchmark::State& state) {
    const std::u16string text = sample(state.range(0));
    const std::string narrow(text.begin(), text.end());
    for (auto _ : state) {
        const String made{std::string_view(narrow)};
        benchmark::DoNotOptimize(made.text16());
    }
}
void widenFloor(benchmark::State& state) {
    const std::u16string text = sample(state.range(0));
    const std::string narrow(text.begin(), text.end());
    for (auto _ : state) {
        const std::string made(narrow);
        const std::u16string wide(made.begin(), made.end());
        benchmark::DoNotOptimize(wide.data());
    }
}
QORL_RATIO(widen, widenFloor, 2.0, 20, 200, 2000);

/// Texts of different width, as a table key meets a text of the user.
void compareMixed(benchmark::State& state) {
    const std::u16string text = sample(state.range(0));
    const std::string narrow(text.begin(), text.end());
    const String a{std::string_view(narrow)};
    const String b{std::u16string_view(text)};
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
}
void compareMixedFloor(benchmark::State& state) {
    const std::u16string wide = sample(state.range(0));
    const std::string narrow(wide.begin(), wide.end());
    for (auto _ : state)
        benchmark::DoNotOptimize(std::u16string(narrow.begin(), narrow.end()) == wide);
}
QORL_RATIO(compareMixed, compareMixedFloor, 1.5, 20, 200, 2000);

} // namespace
} // namespace qorl::bench
