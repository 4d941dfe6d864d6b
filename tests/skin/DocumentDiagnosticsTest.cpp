#include "SkinFixture.h"
#include "persistence/urls/FUrl.h"
#include "skin/UIWizard.h"
#include "support/TestPaths.h"
#include "views/UView.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace qorl::testing {
namespace {

namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// One line a finding: "file:line:column: severity: text", the file relative to `folder` and left out for
/// `document`.
std::string format(const std::vector<Diagnostic>& findings, const fs::path& folder,
                   const fs::path& document) {
    std::string lines;
    for (const Diagnostic& finding : findings) {
        const fs::path file =
            fs::path(finding.position.file ? finding.position.file : "?").lexically_relative(folder);
        if (file != document.filename())
            lines += file.string() + ":";
        std::string text = finding.text;
        for (size_t at = 0; (at = text.find('\n')) != std::string::npos;)
            text.replace(at, 1, "\\n");
        for (size_t at; (at = text.find(folder.string() + "/")) != std::string::npos;)
            text.erase(at, folder.string().size() + 1);
        lines += std::to_string(finding.position.line) + ":" + std::to_string(finding.position.column) +
                 ": " + nameOf(finding.severity) + ": " + text + "\n";
    }
    return lines;
}

/// What is expected of a document. With QORL_UPDATE_GOLDEN set, what was told now is written down for the
/// next run, and this one fails by the old expectations.
std::string expectation(const fs::path& file, const std::string& told) {
    std::string expected = readFile(file);
    if (std::getenv("QORL_UPDATE_GOLDEN"))
        std::ofstream(file, std::ios::binary) << told;
    return expected;
}

std::vector<std::string> documentsIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(testFolder() / "skin/documents" / folder))
        if (entry.path().extension() == ".xml")
            names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

std::string nameOfParameter(const ::testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::ranges::replace(name, '-', '_');
    return name;
}

class LoadedDocument : public SkinFixture, public ::testing::WithParamInterface<std::string> {};

TEST_P(LoadedDocument, TellsWhatItsExpectationsSay) {
    const fs::path folder = testFolder() / "skin/documents/load";
    const fs::path document = folder / (GetParam() + ".xml");
    UIDescriptionLoader& loader = wizard().loader();
    loader.setMisplaced(UIDescriptionLoader::Misplaced::isSkipped);

    const bool loaded = wizard().load(FUrl(ConstString(document.string())));

    const std::string told = format(loader.diagnostics(), folder, document);
    const std::string expected = expectation(folder / (GetParam() + ".expected"), told);
    EXPECT_EQ(told, expected);
    EXPECT_EQ(loaded, expected.find(": error: ") == std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Documents, LoadedDocument, ::testing::ValuesIn(documentsIn("load")),
                         nameOfParameter);

class BuiltDocument : public SkinFixture, public ::testing::WithParamInterface<std::string> {};

TEST_P(BuiltDocument, TellsWhatItsExpectationsSay) {
    const fs::path folder = testFolder() / "skin/documents/build";
    const fs::path document = folder / (GetParam() + ".xml");
    ASSERT_TRUE(wizard().load(FUrl(ConstString(document.string())))) << wizard().getErrorText();

    const Ref<UView> view = wizard().createView("Main", nullptr, nullptr);

    EXPECT_TRUE(view) << "a build never fails as a whole";
    const std::string told = format(wizard().diagnostics(), folder, document);
    EXPECT_EQ(told, expectation(folder / (GetParam() + ".expected"), told));
}

INSTANTIATE_TEST_SUITE_P(Documents, BuiltDocument, ::testing::ValuesIn(documentsIn("build")),
                         nameOfParameter);

} // namespace
} // namespace qorl::testing
