#include "foundation/Diagnostic.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

TEST(Diagnostic, SaysWhereAndWhat) {
    const char* file = internFileName("skin.xml");
    const struct {
        SourcePosition position;
        Severity severity;
        const char* text;
    } cases[] = {
        {{file, 3, 14}, Severity::error, "skin.xml:3:14: error: what is wrong"},
        {{file, 3, 0}, Severity::warning, "skin.xml:3: warning: what is wrong"},
        {{file, 0, 0}, Severity::note, "skin.xml: note: what is wrong"},
        {{nullptr, 0, 0}, Severity::error, "error: what is wrong"},
        {{nullptr, 2, 1}, Severity::error, "2:1: error: what is wrong"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(toText(Diagnostic{c.severity, c.position, {}, "what is wrong"}), c.text);
    const Diagnostic included{Severity::error,
                              {file, 1, 1},
                              {{internFileName("b.xml"), 2, 3}, {internFileName("a.xml"), 4, 5}},
                              "x"};
    EXPECT_EQ(toText(included),
              "skin.xml:1:1: error: x\n  included from b.xml:2:3\n  included from a.xml:4:5");
}

TEST(Diagnostic, KeepsOneCopyOfAFileName) {
    std::string name = "some/where.xml";
    const char* interned = internFileName(name);
    name[0] = 'X';
    EXPECT_STREQ(interned, "some/where.xml");
    for (int i = 0; i < 1000; ++i)
        internFileName(std::to_string(i));
    EXPECT_EQ(internFileName("some/where.xml"), interned);
}

TEST(DiagnosticList, CountsBySeverity) {
    DiagnosticList list;
    list.report({Severity::warning, {}, {}, "w"});
    EXPECT_FALSE(list.hasErrors());
    list.report({Severity::error, {}, {}, "e"});
    EXPECT_TRUE(list.hasErrors());
    EXPECT_EQ(list.count(Severity::warning), 1u);
    EXPECT_EQ(list.all()[1].text, "e");
    list.clear();
    EXPECT_FALSE(list.hasErrors());
}

} // namespace
} // namespace qorl
