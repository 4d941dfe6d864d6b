#include "Session.h"
#include "views/ViewDump.h"

#include <cstdio>

namespace qorl::tool {

namespace {

constexpr OptionSpec options[] = {
    {"--output", "-o", "FILE", "where the text goes; standard output unless given"},
    {"--json", nullptr, nullptr, "as JSON: an object for each view, with its subviews in \"views\""},
    SessionOption::size,
    SessionOption::values,
    SessionOption::set,
    SessionOption::condition,
};

int tree(const CommandLine& line) {
    Session session;
    if (const int status = session.run(line, Session::Screen::headless))
        return status;
    UView& window = session.window();
    const std::string dump = line.has("--json") ? dumpViewTreeAsJson(window) : dumpViewTree(window);
    if (line.has("--output"))
        return saveText(line.valueOf("--output"), dump);
    std::fwrite(dump.data(), 1, dump.size(), stdout);
    return ExitStatus::success;
}

} // namespace

const Command treeCommand{
    "tree",
    "SKIN TEMPLATE",
    "Prints the built view tree: class, name, rect, flags, value, place in the document.",
    "  qorl tree skin.xml Panel\n  qorl tree skin.xml Panel --size 640x400 -o tree.txt\n"
    "  qorl tree skin.xml Panel --json | jq .views\n",
    options,
    2,
    2,
    &tree,
};

} // namespace qorl::tool
