#include "Manual.h"

#include "foundation/Version.h"

namespace qorl::tool {

namespace {

constexpr const char* purpose =
    "Looks at skins, draws them, and plays a user on them; shows and converts what programs stored.";
constexpr const char* exitStatus = "Exit status: 0 success, 1 the input is bad, 2 wrong usage.";

struct GeneralOption {
    const char* name;
    const char* help;
};

constexpr GeneralOption generalOptions[] = {
    {"--help", "tells of all commands; behind a command, of that"},
    {"--version", "tells the version"},
    {"--man", "prints the manual page"},
    {"--completion", "prints a script that completes commands and options in bash"},
};

std::string withValue(const OptionSpec& option) {
    std::string text = option.shortName ? std::string(option.shortName) + ", " : "";
    text += option.name;
    if (option.value)
        text += std::string(" ") + option.value;
    return text;
}

/// For roff, in which a hyphen of a command line, a backslash and a dot or quote that begins a line have
/// other meanings.
std::string roff(std::string_view text) {
    std::string result;
    bool isLineStart = true;
    for (const char c : text) {
        if (isLineStart && (c == '.' || c == '\''))
            result += "\\&";
        if (c == '-')
            result += "\\-";
        else if (c == '\\')
            result += "\\e";
        else
            result += c;
        isLineStart = c == '\n';
    }
    return result;
}

void printManOption(const std::string& name, const char* help) {
    std::printf(".TP\n.B %s\n%s\n", roff(name).c_str(), roff(help).c_str());
}

void printManCommand(const Command& command) {
    std::printf(".SS \"%s %s\"\n%s\n", command.name, roff(command.arguments).c_str(),
                roff(command.summary).c_str());
    for (const OptionSpec& option : command.options)
        printManOption(withValue(option), option.help);
    std::printf(".PP\n.nf\n%s.fi\n", roff(command.examples).c_str());
}

/// The options of a command as a bash word list, those that take a file among them apart.
void printBashCase(const Command& command) {
    std::string all;
    std::string withFile;
    for (const OptionSpec& option : command.options) {
        for (const char* name : {option.name, option.shortName}) {
            if (!name)
                continue;
            all += std::string(name) + " ";
            const std::string_view value = option.value ? option.value : "";
            if (value == "FILE" || value == "PNG" || value == "STEPS")
                withFile += (withFile.empty() ? "" : "|") + std::string(name);
        }
    }
    std::printf("    %s) options='%s--help'; files='@(%s)'; actions='%s' ;;\n", command.name, all.c_str(),
                withFile.c_str(), command.actions ? command.actions : "");
}

} // namespace

void printOverview(CommandList commands, std::FILE* out) {
    std::fprintf(out, "usage: qorl COMMAND …\n\n%s\n\n", purpose);
    for (const Command* command : commands)
        std::fprintf(out, "  %-13s %s\n", command->name, command->summary);
    std::fputs("\n", out);
    for (const GeneralOption& option : generalOptions)
        std::fprintf(out, "  %-13s %s\n", option.name, option.help);
    std::fprintf(out, "\n%s\n", exitStatus);
}

void printHelp(const Command& command) {
    std::printf("usage: qorl %s %s [OPTION…]\n\n%s\n\n", command.name, command.arguments, command.summary);
    for (const OptionSpec& option : command.options)
        std::printf("  %-24s %s\n", withValue(option).c_str(), option.help);
    std::printf("\nExamples:\n%s", command.examples);
}

void printManPage(CommandList commands) {
    std::printf(
        ".TH QORL 1 \"\" \"qorl-frame %s\"\n.SH NAME\nqorl \\- looks at skins, draws them, plays a user on "
        "them, and shows what programs stored\n.SH SYNOPSIS\n",
        roff(libraryVersion()).c_str());
    for (const Command* command : commands)
        std::printf(".B qorl %s\n%s [OPTION…]\n.br\n", command->name, roff(command->arguments).c_str());
    std::fputs(
        ".SH DESCRIPTION\nA skin is an XML document that names templates, trees of views. The tool works on "
        "skins without an application: each control gets a value of its name.\n.SH OPTIONS\n",
        stdout);
    for (const GeneralOption& option : generalOptions)
        printManOption(option.name, option.help);
    std::fputs(".SH COMMANDS\n", stdout);
    for (const Command* command : commands)
        printManCommand(*command);
    std::fputs(
        ".SH EXIT STATUS\n0 success, 1 the input is bad, 2 wrong usage. What is bad is told on standard "
        "error as file:line:column.\n",
        stdout);
}

void printBashCompletion(CommandList commands) {
    std::string words;
    for (const Command* command : commands)
        words += std::string(command->name) + " ";
    for (const GeneralOption& option : generalOptions)
        words += std::string(option.name) + " ";
    std::printf("# bash completion for qorl\n"
                "_qorl() {\n"
                "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
                "  local options='' files='' actions='' skin\n"
                "  COMPREPLY=()\n"
                "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
                "    mapfile -t COMPREPLY < <(compgen -W '%s' -- \"$word\")\n"
                "    return\n"
                "  fi\n"
                "  case ${COMP_WORDS[1]} in\n",
                words.c_str());
    for (const Command* command : commands)
        printBashCase(*command);
    std::fputs("  esac\n"
               "  if [[ $word == -* ]]; then\n"
               "    mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
               "    return\n"
               "  fi\n"
               "  if [[ $COMP_CWORD -eq 2 && -n $actions ]]; then\n"
               "    mapfile -t COMPREPLY < <(compgen -W \"$actions\" -- \"$word\")\n"
               "    return\n"
               "  fi\n"
               "  skin=${COMP_WORDS[2]/#\\~/$HOME}\n"
               "  if [[ $COMP_CWORD -eq 3 && $before != -* && ${COMP_WORDS[1]} != check && -z $actions && -f "
               "$skin ]]; then\n"
               "    mapfile -t COMPREPLY < <(compgen -W \"$(sed -n "
               "'s/.*<template[^>]* name=\"\\([^\"]*\\)\".*/\\1/p' \"$skin\")\" -- \"$word\")\n"
               "  elif [[ $before != -* || $before == $files ]]; then\n"
               "    compopt -o filenames 2>/dev/null\n"
               "    mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
               "  fi\n"
               "}\n"
               "complete -F _qorl qorl\n",
               stdout);
}

} // namespace qorl::tool
