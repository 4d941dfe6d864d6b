#include "CommandLine.h"
#include "foundation/Version.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

using namespace qorl::tool;

const Command* const commands[] = {&renderCommand, &showCommand, &checkCommand, &driveCommand, &treeCommand};

void printOverview(std::FILE* out) {
    std::fputs("usage: qorl COMMAND …\n\nLooks at skins, draws them, and plays a user on them.\n\n", out);
    for (const Command* command : commands)
        std::fprintf(out, "  %-8s %s\n", command->name, command->summary);
    std::fputs(
        "\n  qorl COMMAND --help tells more. Exit status: 0 success, 1 the input is bad, 2 wrong usage.\n",
        out);
}

void printHelp(const Command& command) {
    std::printf("usage: qorl %s %s [OPTION…]\n\n%s\n\n", command.name, command.arguments, command.summary);
    for (const OptionSpec& option : command.options) {
        std::string name = option.shortName ? std::string(option.shortName) + ", " : "";
        name += option.name;
        if (option.value)
            name += std::string(" ") + option.value;
        std::printf("  %-24s %s\n", name.c_str(), option.help);
    }
    std::printf("\nExamples:\n%s", command.examples);
}

const Command* findCommand(const char* name) {
    const auto found = std::find_if(std::begin(commands), std::end(commands), [name](const Command* command) {
        return std::strcmp(command->name, name) == 0;
    });
    return found == std::end(commands) ? nullptr : *found;
}

int runCommand(const Command& command, std::span<char* const> words) {
    for (const char* word : words) {
        if (std::strcmp(word, "--help") == 0 || std::strcmp(word, "-h") == 0) {
            printHelp(command);
            return ExitStatus::success;
        }
    }
    CommandLine line;
    std::string error;
    if (!line.parse(command.options, words, error))
        return complain(ExitStatus::wrongUsage, error);
    const size_t count = line.positional().size();
    if (count < command.leastPositional || count > command.mostPositional)
        return complain(ExitStatus::wrongUsage,
                        std::string("usage: qorl ") + command.name + " " + command.arguments);
    return command.run(line);
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) {
        printOverview(stderr);
        return ExitStatus::wrongUsage;
    }
    const char* word = arguments[1];
    if (std::strcmp(word, "--help") == 0 || std::strcmp(word, "-h") == 0) {
        printOverview(stdout);
        return ExitStatus::success;
    }
    if (std::strcmp(word, "--version") == 0) {
        std::printf("qorl %s\n", qorl::libraryVersion());
        return ExitStatus::success;
    }
    const Command* command = findCommand(word);
    if (!command)
        return complain(ExitStatus::wrongUsage,
                        std::string("\"") + word + "\" is no command; see qorl --help");
    return runCommand(*command, {arguments + 2, static_cast<size_t>(argumentCount - 2)});
}
