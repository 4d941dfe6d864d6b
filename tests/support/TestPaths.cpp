#include "support/TestPaths.h"

#include <cstdio>
#include <cstdlib>
#include <stdlib.h>
#include <string>
#include <system_error>

namespace qorl::testing {

namespace {

// A program started by hand paints with the same font as one started by CTest. Fontconfig reads the variable
// at its first use, so this comes early enough.
const bool fontConfigured = [] {
    const auto file = testFolder() / "support" / "fonts" / "fonts.conf";
    return setenv("FONTCONFIG_FILE", file.c_str(), 0) == 0;
}();

} // namespace

std::filesystem::path testFolder() {
    return QORL_TEST_FOLDER;
}

std::filesystem::path buildFolder() {
    return QORL_BUILD_FOLDER;
}

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "qorl-test-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        std::perror(name.c_str());
        std::abort();
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace qorl::testing
