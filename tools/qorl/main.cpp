#include "Manual.h"
#include "foundation/Version.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

using namespace qorl::tool;

const Command* const commands[] = {&renderCommand, &showCommand,     &checkCommand,  &driveCommand,
                                   &treeCommand,   &documentCommand, &objectsCommand};

const Command* findCommand(const char* name) {
    const auto found = std::find_if(std::begin(commands), std::end(commands), [name](const Command* command) {
        return std::strcmp(command->name, name) == 0;
    });
    return found == std::end(commands) ? nullptr : *found;
}

bool hasAction(const Command& command, std::string_view word) {
    std::string_view left = command.actions;
    while (!left.empty()) {
        const std::string_view action = left.substr(0, left.find(' '));
        if (action == word)
            return true;
        left.remove_prefix(std::min(action.size() + 1, left.size()));
    }
    return false;
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
    if (command.actions && !hasAction(command, line.positional()[0]))
        return complain(ExitStatus::wrongUsage, std::string("qorl ") + command.name +
                                                    " does one of these: " + command.actions + "; not \"" +
                                                    line.positional()[0] + '"');
    return command.run(line);
}

} // namespace

int main(int argumentCount, char** arguments) try {
    if (argumentCount < 2) {
        printOverview(commands, stderr);
        return ExitStatus::wrongUsage;
    }
    const char* word = arguments[1];
    if (std::strcmp(word, "--help") == 0 || std::strcmp(word, "-h") == 0) {
        printOverview(commands, stdout);
        return ExitStatus::success;
    }
    if (std::strcmp(word, "--version") == 0) {
        std::printf("qorl %s\n", qorl::libraryVersion());
        return ExitStatus::success;
    }
    if (std::strcmp(word, "--man") == 0) {
        printManPage(commands);
        return ExitStatus::success;
    }
    if (std::strcmp(word, "--completion") == 0) {
        printBashCompletion(commands);
        return ExitStatus::success;
    }
    const Command* command = findCommand(word);
    if (!command)
        return complain(ExitStatus::wrongUsage,
                        std::string("\"") + word + "\" is no command; see qorl --help");
    return runCommand(*command, {arguments + 2, static_cast<size_t>(argumentCount - 2)});
} catch (const std::bad_alloc&) {
    std::fputs("qorl: error: out of memory\n", stderr);
    return ExitStatus::badInput;
}
