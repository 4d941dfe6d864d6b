#include "foundation/DiagnosticJson.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace qorl {
namespace {

using namespace std::string_view_literals;

TEST(JsonWriter, PutsCommasBetweenAndNowhereElse) {
    JsonWriter json;
    json.beginArray();
    json.number(-7);
    json.beginObject();
    json.endObject();
    json.beginObject();
    json.member("a", 1);
    json.key("b");
    json.beginArray();
    json.endArray();
    json.member("c", "x");
    json.endObject();
    json.string("y");
    json.endArray();
    EXPECT_EQ(json.text(), R"([-7,{},{"a":1,"b":[],"c":"x"},"y"])");
}

TEST(JsonWriter, WritesNumbersThatReadBackEqualAndNoneThatJsonHasNot) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    JsonWriter json;
    json.beginArray();
    for (const double number : {0.1, -0.0, 1e300, 4.9e-324, 2.0, infinity, -infinity, -std::nan("")})
        json.real(number);
    json.boolean(true);
    json.boolean(false);
    json.endArray();
    EXPECT_EQ(json.text(), R"([0.1,-0,1e+300,5e-324,2,"inf","-inf","nan",true,false])");
}

TEST(JsonWriter, LeavesNoCharacterThatAReaderRefuses) {
    const struct {
        std::string_view text, json;
    } cases[] = {
        {"", R"("")"},
        {"a \"b\" \\c/", R"("a \"b\" \\c/")"},
        {"1\n2\t3\r4\0005\x1F\x7F"sv, "\"1\\n2\\t3\\u000d4\\u00005\\u001f\x7F\""},
        {"gr\xC3\xBC\xC3\x9F \xF0\x9F\x8E\x9A", "\"gr\xC3\xBC\xC3\x9F \xF0\x9F\x8E\x9A\""},
        {"\xC3(\xFF", "\"\xEF\xBF\xBD(\xEF\xBF\xBD\""},
    };
    for (const auto& c : cases) {
        JsonWriter json;
        json.string(c.text);
        EXPECT_EQ(json.text(), c.json);
    }
}

TEST(JsonWriter, TellsADiagnosticWithoutWhatIsUnknown) {
    const char* file = internFileName("skin.xml");
    JsonWriter json;
    json.beginArray();
    writeJson(json, Diagnostic{Severity::error, {file, 3, 14}, {{file, 1, 2}, {file, 0, 0}}, "bad \"x\""});
    writeJson(json, Diagnostic{Severity::note, {}, {}, "y"});
    json.endArray();
    EXPECT_EQ(json.text(),
              R"([{"severity":"error","file":"skin.xml","line":3,"column":14,"text":"bad \"x\"",)"
              R"("includes":[{"file":"skin.xml","line":1,"column":2},{"file":"skin.xml"}]},)"
              R"({"severity":"note","text":"y"}])");
}

} // namespace
} // namespace qorl
