#pragma once

#include <filesystem>
#include <string_view>

namespace qorl::testing {

/// The folder tests/ of the checkout.
std::filesystem::path testFolder();

/// The root of the build tree that this program belongs to.
std::filesystem::path buildFolder();

/// A folder in the system's place for temporary files that lives as long as the object.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

} // namespace qorl::testing
