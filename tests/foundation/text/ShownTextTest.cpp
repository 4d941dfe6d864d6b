#include "foundation/text/ShownText.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

namespace qorl {
namespace {

TEST(ShownText, ShowsNoControlCharacters) {
    using std::string_view_literals::operator""sv;
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"plain \xC3\xA4 \xF0\x9F\x98\x80", "plain \xC3\xA4 \xF0\x9F\x98\x80"},
        {"\x1B[31m\n\0\x7F"sv, "\\x1B[31m\\x0A\\x00\\x7F"},
        {"\xC2\x9B\xFF", "\\x9B\\xFF"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text::printable(text), expected);
    EXPECT_EQ(text::brief(std::string(63, 'x') + "\xC3\xA4"), std::string(63, 'x') + "...");
}

} // namespace
} // namespace qorl
