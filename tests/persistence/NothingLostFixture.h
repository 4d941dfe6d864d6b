#pragma once

#include "support/DebugOutput.h"
#include "support/FailingDisk.h"
#include "support/SettingsFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace qorl {

using Outcome = FailingDisk::Outcome;

/// What is stored, by a number; each test begins with 1 and stores 2.
enum State { none, before, after, later };

enum class Length { few, many };

/// Of `many` characters, it takes several of the blocks in which files are written.
inline const std::string& textOf(int64_t state, Length length) {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> made(2 * (later + 1));
        for (size_t i = 1; i <= later; ++i)
            made[i] = "text " + std::to_string(i);
        for (size_t i = later + 2; i < made.size(); ++i)
            while (made[i].size() < 320'000 + i)
                made[i] += std::to_string(i * made[i].size()) + ' ';
        return made;
    }();
    return texts[static_cast<size_t>(state) + (length == Length::many && state < later ? later + 1 : 0)];
}

/// Everything that the library stores, with each call that changes the disk failing, cut short, and ending
/// the program, and with power cuts. What follows is as a program that starts afresh sees it.
class NothingLostFixture : public ::testing::Test {
protected:
    NothingLostFixture() { textOf(before, length_); }

    std::string settings() const { return folder_ / "settings"; }
    void beginAnew() const { std::filesystem::remove_all(settings()); }

    /// What a crash leaves of the file of that name, beside half a new one.
    enum class Leftover { onlyTheOld, brokenFileAndOld };
    static constexpr Leftover leftovers[] = {Leftover::onlyTheOld, Leftover::brokenFileAndOld};

    void leave(Leftover leftover, const std::string& name, const char* broken) const {
        const std::filesystem::path file = settings() + '/' + name;
        const auto folder = file.parent_path();
        const auto old = folder / (file.stem().string() + "_old" + file.extension().string());
        std::filesystem::rename(file, old);
        if (leftover == Leftover::brokenFileAndOld)
            folder_.write("settings/" + name, broken);
        std::filesystem::copy_file(old, folder / ('.' + file.filename().string() + ".new"));
    }

    /// That no file or folder of the settings has any of these in its name.
    void expectNone(std::initializer_list<const char*> parts) const {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(settings()))
            for (const char* part : parts)
                EXPECT_EQ(entry.path().filename().string().find(part), std::string::npos) << entry.path();
    }
    void expectTidy() const { expectNone({"_old", ".new", "(Earlier)", "(New"}); }

    DebugOutput output_;
    SettingsFolder folder_;
    Length length_ = Length::few;
};

} // namespace qorl
