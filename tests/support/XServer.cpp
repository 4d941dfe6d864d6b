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
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace qorl::test {

namespace {

constexpr int64_t longestStart = 60'000; // milliseconds, for a busy machine

pid_t launch(std::vector<const char*> arguments, const std::string& display) {
    arguments.push_back(nullptr);
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (!display.empty())
        setenv("DISPLAY", display.c_str(), 1);
    const int quiet = open("/dev/null", O_RDWR);
    dup2(quiet, STDOUT_FILENO);
    dup2(quiet, STDERR_FILENO);
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

/// The number that the server writes as soon as it takes connections; empty if it never comes.
std::string readDisplayNumber(int descriptor) {
    std::string text;
    const int64_t end = platform::getMonotonicMilliseconds() + longestStart;
    while (text.find('\n') == std::string::npos) {
        pollfd wait = {descriptor, POLLIN, 0};
        const int64_t left = end - platform::getMonotonicMilliseconds();
        char buffer[16];
        if (left <= 0 || ::poll(&wait, 1, static_cast<int>(left)) <= 0)
            return {};
        const ssize_t got = read(descriptor, buffer, sizeof buffer);
        if (got <= 0)
            return {};
        text.append(buffer, static_cast<size_t>(got));
    }
    return text.substr(0, text.find('\n'));
}

/// Shows a window and waits half a second for a window manager to mark it as its own.
bool isOfferTaken(XUser& user) {
    xcb_connection_t* connection = user.getConnection();
    const xcb_window_t window = xcb_generate_id(connection);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, user.getRoot(), 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_map_window(connection, window);
    xcb_flush(connection);
    const int64_t end = platform::getMonotonicMilliseconds() + 500;
    bool isTaken = false;
    while (!isTaken && platform::getMonotonicMilliseconds() < end) {
        pollfd wait = {xcb_get_file_descriptor(connection), POLLIN, 0};
        ::poll(&wait, 1, 50);
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection))
            std::free(event);
        isTaken = !user.getProperty(window, "WM_STATE").empty();
    }
    xcb_destroy_window(connection, window);
    xcb_flush(connection);
    return isTaken;
}

} // namespace

XServer::XServer(Manager manager, SharedMemory memory, int depth) {
    int ends[2];
    if (pipe(ends) != 0) {
        error_ = "no pipe";
        return;
    }
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    const std::string descriptor = std::to_string(ends[1]);
    const std::string screen = "1024x768x" + std::to_string(depth);
    std::vector<const char*> arguments = {"Xvfb",     "-displayfd", descriptor.c_str(),
                                          "-screen",  "0",          screen.c_str(),
                                          "-noreset", "-nolisten",  "tcp",
                                          "-dpi",     "96"};
    if (memory == SharedMemory::absent)
        arguments.insert(arguments.end(), {"-extension", "MIT-SHM"});
    server_ = launch(arguments, "");
    close(ends[1]);
    const std::string number = readDisplayNumber(ends[0]);
    close(ends[0]);
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

void XServer::kill() {
    finish(manager_, SIGKILL);
    finish(server_, SIGKILL);
}

/// Openbox says that it is there some time before it hears of new windows, and those in between it never
/// manages. So windows are offered until one is taken.
void XServer::startManager() {
    XUser user(display_);
    manager_ = launch({"openbox", "--sm-disable", "--config-file", "/etc/xdg/openbox/rc.xml"}, display_);
    const int64_t end = platform::getMonotonicMilliseconds() + longestStart;
    while (!isOfferTaken(user)) {
        if (platform::getMonotonicMilliseconds() > end || waitpid(manager_, nullptr, WNOHANG) != 0) {
            error_ = "openbox did not start";
            return;
        }
    }
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

void XUser::click(CmPoint screen) {
    moveMouse(screen);
    pressButton(1);
    releaseButton(1);
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
