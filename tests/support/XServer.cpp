#include "support/XServer.h"

#include "platform/Clock.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace qorl::test {

namespace {

constexpr int64_t longestStart = 60'000; // milliseconds, for a busy machine

/// The two ends of a pipe; what a child writes into one is read from the other.
class Pipe {
public:
    Pipe() {
        if (pipe2(ends_, O_CLOEXEC) != 0)
            ends_[0] = ends_[1] = -1;
    }
    ~Pipe() {
        close(ends_[0]);
        closeInput();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int input() const { return ends_[1]; }
    /// From here on the end of the children that have the input is the end of what can be read.
    void closeInput() { close(std::exchange(ends_[1], -1)); }

    /// The next line, as soon as it is there; empty if it never comes.
    std::string readLine() {
        const int64_t end = platform::getMonotonicMilliseconds() + longestStart;
        size_t length = 0;
        while ((length = text_.find('\n')) == std::string::npos) {
            pollfd wait = {ends_[0], POLLIN, 0};
            const int64_t left = end - platform::getMonotonicMilliseconds();
            char buffer[16];
            if (left <= 0 || ::poll(&wait, 1, static_cast<int>(left)) <= 0)
                return {};
            const ssize_t got = read(ends_[0], buffer, sizeof buffer);
            if (got <= 0)
                return {};
            text_.append(buffer, static_cast<size_t>(got));
        }
        std::string line = text_.substr(0, length);
        text_.erase(0, length + 1);
        return line;
    }

private:
    int ends_[2];
    std::string text_;
};

/// `output` is what the program writes to as its standard output, and knows as `kept` if that isn't -1.
pid_t launch(std::vector<const char*> arguments, const std::string& display, int output, int kept = -1) {
    arguments.push_back(nullptr);
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (!display.empty())
        setenv("DISPLAY", display.c_str(), 1);
    const int quiet = open("/dev/null", O_RDWR);
    dup2(output < 0 ? quiet : output, STDOUT_FILENO);
    dup2(quiet, STDERR_FILENO);
    if (kept >= 0)
        fcntl(kept, F_SETFD, 0);
    execvp(arguments[0], const_cast<char* const*>(arguments.data()));
    _exit(127);
}

void finish(pid_t& pid, int signal) {
    if (pid <= 0)
        return;
    ::kill(pid, signal);
    waitpid(pid, nullptr, 0);
    pid = -1;
}

} // namespace

XServer::XServer(Manager manager, const char* absent, int depth) {
    Pipe started;
    const std::string descriptor = std::to_string(started.input());
    const std::string screen = "1024x768x" + std::to_string(depth);
    std::vector<const char*> arguments = {"Xvfb",     "-displayfd", descriptor.c_str(),
                                          "-screen",  "0",          screen.c_str(),
                                          "-noreset", "-nolisten",  "tcp",
                                          "-dpi",     "96"};
    if (absent)
        arguments.insert(arguments.end(), {"-extension", absent});
    server_ = launch(arguments, "", -1, started.input());
    started.closeInput();
    // The server writes its number as soon as it takes connections.
    const std::string number = started.readLine();
    if (number.empty()) {
        error_ = "Xvfb did not start";
        return;
    }
    display_ = ":" + number;
    if (manager == Manager::openbox)
        startManager();
}

XServer::~XServer() {
    finish(manager_, SIGKILL);
    finish(server_, SIGTERM);
}

bool XServer::setLayout(const char* name) {
    const pid_t child = launch({"setxkbmap", name}, display_, -1);
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

void XServer::kill() {
    finish(manager_, SIGKILL);
    finish(server_, SIGKILL);
}

/// Openbox says on the root window that it is there some time before it hears of new windows, and those in
/// between it never manages. Its start-up command it runs when it does.
void XServer::startManager() {
    Pipe started;
    manager_ = launch(
        {"openbox", "--sm-disable", "--config-file", "/etc/xdg/openbox/rc.xml", "--startup", "echo ready"},
        display_, started.input());
    started.closeInput();
    // In front of it stands what it has to say of its menus.
    std::string line = started.readLine();
    while (!line.empty() && line != "ready")
        line = started.readLine();
    if (line.empty())
        error_ = "openbox did not start";
}

std::string XServer::tellEnd() {
    int status = 0;
    if (server_ <= 0 || waitpid(server_, &status, WNOHANG) != server_)
        return {};
    server_ = -1;
    return WIFSIGNALED(status) ? "Xvfb ended by signal " + std::to_string(WTERMSIG(status))
                               : "Xvfb ended with status " + std::to_string(WEXITSTATUS(status));
}

XUser::XUser(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (!xcb_connection_has_error(connection_))
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

XUser::~XUser() {
    xcb_disconnect(connection_);
}

uint32_t XUser::getRoot() const {
    return screen_->root;
}

void XUser::fake(uint8_t type, uint8_t detail, CmPoint place) {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, screen_->root,
                        static_cast<int16_t>(place.x), static_cast<int16_t>(place.y), 0);
    // The answer comes when the server has taken the input.
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

void XUser::moveMouse(CmPoint screen) {
    fake(XCB_MOTION_NOTIFY, 0, screen);
}

void XUser::pressButton(uint8_t number) {
    fake(XCB_BUTTON_PRESS, number, {});
}

void XUser::releaseButton(uint8_t number) {
    fake(XCB_BUTTON_RELEASE, number, {});
}

void XUser::clickButton(uint8_t number) {
    pressButton(number);
    releaseButton(number);
}

void XUser::click(CmPoint screen) {
    moveMouse(screen);
    clickButton(1);
}

uint8_t XUser::toKeyCode(uint32_t symbol) {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    xcb_get_keyboard_mapping_reply_t* reply = xcb_get_keyboard_mapping_reply(
        connection_, xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr);
    if (!reply)
        return 0;
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(reply);
    uint8_t code = 0;
    for (int i = 0; i < count && code == 0; ++i) {
        if (symbols[i * reply->keysyms_per_keycode] == symbol)
            code = static_cast<uint8_t>(setup->min_keycode + i);
    }
    std::free(reply);
    return code;
}

void XUser::pressKey(uint32_t symbol) {
    fake(XCB_KEY_PRESS, toKeyCode(symbol), {});
}

void XUser::releaseKey(uint32_t symbol) {
    fake(XCB_KEY_RELEASE, toKeyCode(symbol), {});
}

void XUser::typeKey(uint32_t symbol) {
    pressKey(symbol);
    releaseKey(symbol);
}

uint32_t XUser::getPixel(CmPoint screen) {
    xcb_get_image_reply_t* reply = xcb_get_image_reply(
        connection_,
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, static_cast<int16_t>(screen.x),
                      static_cast<int16_t>(screen.y), 1, 1, ~0U),
        nullptr);
    uint32_t pixel = 0xFFFFFFFF;
    if (reply && xcb_get_image_data_length(reply) >= 4)
        std::memcpy(&pixel, xcb_get_image_data(reply), sizeof pixel);
    std::free(reply);
    return pixel & 0xFFFFFF;
}

uint32_t XUser::intern(const std::string& name) {
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<uint16_t>(name.size()), name.c_str()),
        nullptr);
    const uint32_t atom = reply ? reply->atom : 0;
    std::free(reply);
    return atom;
}

void XUser::sendToWindow(uint32_t window, const std::string& type, uint32_t first, uint32_t second) {
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = intern(type);
    event.data.data32[0] = first;
    event.data.data32[1] = second;
    xcb_send_event(connection_, 0, window, 0, reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

void XUser::setRootProperty(const std::string& name, const std::string& text) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, screen_->root, intern(name), XCB_ATOM_STRING, 8,
                        static_cast<uint32_t>(text.size()), text.data());
    xcb_flush(connection_);
}

std::string XUser::getProperty(uint32_t window, const std::string& name) {
    xcb_get_property_reply_t* reply = xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, window, intern(name), XCB_ATOM_ANY, 0, 100'000),
        nullptr);
    std::string bytes;
    if (reply) {
        bytes.assign(static_cast<const char*>(xcb_get_property_value(reply)),
                     static_cast<size_t>(xcb_get_property_value_length(reply)));
    }
    std::free(reply);
    return bytes;
}

} // namespace qorl::test
