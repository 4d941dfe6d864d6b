#pragma once

#include <qorl/Geometry.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl::tool {

/// What a command answers to the shell.
namespace ExitStatus {
constexpr int success = 0;
constexpr int badInput = 1;
constexpr int wrongUsage = 2;
} // namespace ExitStatus

/// One option of a command. Without `value` it is a switch.
struct OptionSpec {
    const char* name; ///< "--size"
    const char* shortName = nullptr;
    const char* value = nullptr; ///< What stands behind it, for the help: "WxH".
    const char* help = "";
};

/// The words behind a command, split by its options.
class CommandLine {
public:
    /// False, with a line for the user in `error`, for an unknown option or one without its value.
    bool parse(std::span<const OptionSpec> options, std::span<char* const> words, std::string& error);

    const std::vector<std::string>& positional() const { return positional_; }
    bool has(std::string_view option) const;
    /// The last one given, or `standard`.
    std::string valueOf(std::string_view option, std::string_view standard = {}) const;
    std::vector<std::string> allOf(std::string_view option) const;

    // False, with a line for the user in `error`, when the option is there and isn't understood; `out` stays
    // then, and when it isn't there.
    bool readSize(std::string_view option, CmSize& out, std::string& error) const;
    bool readNumber(std::string_view option, double least, double most, double& out,
                    std::string& error) const;

private:
    std::vector<std::string> positional_;
    std::vector<std::pair<std::string, std::string>> options_;
};

/// One command of the tool. `run` gets the words behind the command's name.
struct Command {
    const char* name;
    const char* arguments; ///< "SKIN TEMPLATE"
    const char* summary;
    const char* examples;
    std::span<const OptionSpec> options;
    size_t leastPositional;
    size_t mostPositional;
    int (*run)(const CommandLine& line);
    const char* actions = nullptr; ///< "dump convert": the first of the words has to be one of these.
};

extern const Command renderCommand;
extern const Command showCommand;
extern const Command checkCommand;
extern const Command driveCommand;
extern const Command treeCommand;
extern const Command documentCommand;
extern const Command objectsCommand;

/// Prints `qorl: TEXT` on standard error.
int complain(int status, std::string_view text);

} // namespace qorl::tool
