#include "Driver.h"

#include <cstdio>

namespace qorl::tool {

namespace {

constexpr OptionSpec options[] = {
    {"--script", "-s", "STEPS", "the file with the steps; - for standard input"},
    SessionOption::size,
    SessionOption::scale,
    SessionOption::values,
    SessionOption::set,
    SessionOption::condition,
};

int drive(const CommandLine& line) {
    const std::string path = line.valueOf("--script");
    if (path.empty())
        return complain(ExitStatus::wrongUsage, "drive needs --script STEPS");
    std::string script;
    if (!loadText(path, script))
        return ExitStatus::badInput;
    std::vector<DriveStep> steps;
    DriveError fault;
    if (!parseDriveScript(script, steps, fault)) {
        std::fprintf(stderr, "%s:%u:%u: error: %s\n", path.c_str(), fault.line, fault.column,
                     fault.text.c_str());
        return ExitStatus::badInput;
    }
    Session session;
    if (const int status = session.run(line, Session::Screen::headless))
        return status;
    return Driver(session, path, std::move(steps)).run();
}

} // namespace

const Command driveCommand{
    "drive",
    "SKIN TEMPLATE --script STEPS",
    "Plays a user on a template, in virtual time and without a screen, and checks what comes of it.",
    "  qorl drive skin.xml Panel --script clicks.txt\n"
    "\n"
    "Steps, one a line, # begins a comment; ID is a view's id, else its name:\n"
    "  click ID    press ID    release    drag ID X,Y -> X,Y    move X,Y    wheel ID N\n"
    "  hold Shift+Ctrl (until hold none)    key Ctrl+Z    resize WxH    wait MS    set NAME VALUE\n"
    "  expect value NAME == N    expect text ID == \"…\"    expect visible ID    expect focus ID\n"
    "  shot PNG    tree FILE\n",
    options,
    2,
    2,
    &drive,
};

} // namespace qorl::tool
