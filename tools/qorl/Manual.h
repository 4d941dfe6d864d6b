#pragma once

#include "CommandLine.h"

#include <cstdio>
#include <span>

namespace qorl::tool {

using CommandList = std::span<const Command* const>;

// What the tool tells of itself, all from the table of commands. UTF-8.

void printOverview(CommandList commands, std::FILE* out);
void printHelp(const Command& command);
/// The man page `qorl(1)`.
void printManPage(CommandList commands);
/// A script for bash that completes commands, options, files and the names of templates.
void printBashCompletion(CommandList commands);

} // namespace qorl::tool
