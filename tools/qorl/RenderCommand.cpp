#include "Session.h"

namespace qorl::tool {

namespace {

constexpr OptionSpec options[] = {
    {"--output", "-o", "PNG", "where the picture goes; TEMPLATE.png unless given"},
    SessionOption::size,
    SessionOption::scale,
    SessionOption::values,
    SessionOption::set,
    SessionOption::condition,
};

int render(const CommandLine& line) {
    Session session;
    if (const int status = session.run(line, Session::Screen::headless))
        return status;
    return session.savePicture(line.valueOf("--output", line.positional()[1] + ".png"));
}

} // namespace

const Command renderCommand{
    "render",
    "SKIN TEMPLATE",
    "Builds a template without a screen and paints it into a PNG.",
    "  qorl render skin.xml Panel -o panel.png --scale 2\n"
    "  qorl render skin.xml Panel --condition DARK --set volume=80\n",
    options,
    2,
    2,
    &render,
};

} // namespace qorl::tool
