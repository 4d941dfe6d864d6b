#include "foundation/ClassFactory.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

// This program is linked twice: with the library's objects in their usual order and in the reversed one, so
// that static initialisers run both ways round.

namespace qorl {
namespace {

struct Registration {
    std::string file;
    std::string form; ///< "", "_ABSTRACT" or "_ALIAS"
    std::string name;
    std::string version; ///< empty for an alias, which takes that of its source
};

std::string readAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// What the sources register: the list that the factory is measured against.
std::vector<Registration> registrations() {
    static const std::regex pattern(
        R"re(^QORL_REGISTER(_ABSTRACT|_ALIAS|)\(\s*[\w:]+,\s*"([^"]+)"(?:,\s*[\w:]+,\s*(\d+))?\))re",
        std::regex::ECMAScript | std::regex::multiline);
    std::vector<Registration> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(QORL_SOURCE_FOLDER)) {
        if (entry.path().extension() != ".cpp")
            continue;
        const std::string text = readAll(entry.path());
        for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
            found.push_back({entry.path().filename().string(), (*match)[1], (*match)[2], (*match)[3]});
    }
    return found;
}

TEST(Registration, FindsEveryClassOfTheSourcesInEitherLinkOrder) {
    const auto expected = registrations();
    ASSERT_FALSE(expected.empty());
    const ClassFactory& factory = *ClassFactory::instance();
    for (const auto& registration : expected) {
        SCOPED_TRACE(registration.file + ": " + registration.name);
        const ClassRecord* record = factory.findByName(registration.name.c_str());
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->name(), registration.name);
        EXPECT_EQ(record->create() == nullptr, registration.form == "_ABSTRACT");
        if (!registration.version.empty()) {
            EXPECT_EQ(std::to_string(record->version()), registration.version);
        }
    }
}

} // namespace
} // namespace qorl
