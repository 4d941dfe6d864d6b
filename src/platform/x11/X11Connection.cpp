#include "platform/x11/X11Connection.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <xcb/randr.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace qorl::platform {

namespace {

constexpr const char* atomNames[] = {
    "WM_PROTOCOLS",
    "WM_DELETE_WINDOW",
    "WM_STATE",
    "WM_CHANGE_STATE",
    "UTF8_STRING",
    "_NET_SUPPORTED",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_ACTIVE_WINDOW",
    "_NET_WORKAREA",
    "_NET_CURRENT_DESKTOP",
    "_NET_FRAME_EXTENTS",
    "_NET_WM_NAME",
    "_NET_WM_ICON_NAME",
    "_NET_WM_PID",
    "_NET_WM_PING",
    "_NET_WM_ICON",
    "_NET_WM_USER_TIME",
    "_NET_WM_WINDOW_OPACITY",
    "_NET_WM_STATE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_MAXIMIZED_HORZ",
    "_NET_WM_STATE_MAXIMIZED_VERT",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STATE_MODAL",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_STATE_SKIP_PAGER",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_MOTIF_WM_HINTS",
    "MANAGER",
    "_XSETTINGS_SETTINGS",
};
static_assert(std::size(atomNames) == static_cast<size_t>(X11Atom::count));

template <typename T>
bool isPresent(xcb_connection_t* connection, xcb_extension_t& extension, T& data) {
    data = xcb_get_extension_data(connection, &extension);
    return data && data->present;
}

/// 0 for a depth that the server has no images of.
int pixelBitsOf(const xcb_setup_t* setup, uint8_t depth) {
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem; xcb_format_next(&it))
        if (it.data->depth == depth)
            return it.data->bits_per_pixel;
    return 0;
}

const xcb_visualtype_t* findVisual(const xcb_screen_t* screen, xcb_visualid_t id) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem; xcb_depth_next(&depth))
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem; xcb_visualtype_next(&visual))
            if (visual.data->visual_id == id)
                return visual.data;
    return nullptr;
}

} // namespace

std::unique_ptr<X11Connection> X11Connection::open(const std::string& display, std::string& error) {
    int screenNumber = 0;
    std::unique_ptr<X11Connection> made(
        new X11Connection(xcb_connect(display.c_str(), &screenNumber), screenNumber));
    if (xcb_connection_has_error(made->connection_)) {
        error = "no display: cannot connect to the X server \"" + display + "\"";
        return nullptr;
    }
    if (!made->findScreen(error))
        return nullptr;
    made->internAtoms();
    made->findExtensions();
    made->findAlphaVisual();
    return made;
}

X11Connection::X11Connection(xcb_connection_t* connection, int screenNumber)
    : connection_(connection), screenNumber_(screenNumber) {}

X11Connection::~X11Connection() {
    xcb_disconnect(connection_);
}

bool X11Connection::findScreen(std::string& error) {
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (int i = 0; i < screenNumber_ && it.rem > 1; ++i)
        xcb_screen_next(&it);
    screen_ = it.data;
    constexpr int order =
        __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    const bool isNative = setup->image_byte_order == order;
    const int pixelBits = pixelBitsOf(setup, screen_->root_depth);
    const xcb_visualtype_t* visual = findVisual(screen_, screen_->root_visual);
    if (isNative && pixelBits == 32 && visual && visual->red_mask == 0xFF0000 &&
        visual->green_mask == 0xFF00 && visual->blue_mask == 0xFF)
        return true;
    error = "the X server's screen is not supported: it needs 8 bits each of red, green and blue, in this "
            "order, in 32 bits a pixel of this machine's byte order; it has a depth of " +
            std::to_string(screen_->root_depth) + " in " + std::to_string(pixelBits) + " bits a pixel" +
            (isNative ? "" : " of another byte order");
    return false;
}

void X11Connection::findAlphaVisual() {
    constexpr uint8_t alphaDepth = 32;
    for (auto depth = xcb_screen_allowed_depths_iterator(screen_); depth.rem; xcb_depth_next(&depth)) {
        if (depth.data->depth != alphaDepth)
            continue;
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem; xcb_visualtype_next(&visual)) {
            if (visual.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.data->red_mask == 0xFF0000) {
                alphaVisual_ = visual.data->visual_id;
                alphaColormap_ = xcb_generate_id(connection_);
                xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, alphaColormap_, getRoot(),
                                    alphaVisual_);
                return;
            }
        }
    }
}

void X11Connection::internAtoms() {
    xcb_intern_atom_cookie_t cookies[std::size(atomNames)];
    for (size_t i = 0; i < std::size(atomNames); ++i)
        cookies[i] =
            xcb_intern_atom(connection_, 0, static_cast<uint16_t>(std::strlen(atomNames[i])), atomNames[i]);
    for (size_t i = 0; i < std::size(atomNames); ++i) {
        const X11Reply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection_, cookies[i], nullptr));
        atoms_[i] = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }
}

xcb_atom_t X11Connection::intern(const std::string& name) const {
    const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<uint16_t>(name.size()), name.c_str()),
        nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

void X11Connection::findExtensions() {
    for (xcb_extension_t* extension : {&xcb_shm_id, &xcb_randr_id, &xcb_xfixes_id, &xcb_input_id})
        xcb_prefetch_extension_data(connection_, extension);
    const xcb_query_extension_reply_t* data = nullptr;
    hasShm_ = isPresent(connection_, xcb_shm_id, data);
    if (isPresent(connection_, xcb_randr_id, data)) {
        const X11Reply<xcb_randr_query_version_reply_t> version(
            xcb_randr_query_version_reply(connection_, xcb_randr_query_version(connection_, 1, 5), nullptr));
        hasRandr_ = version && (version->major_version > 1 || version->minor_version >= 5);
        randrEvent_ = data->first_event;
    }
    if (isPresent(connection_, xcb_xfixes_id, data)) {
        const X11Reply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
            connection_, xcb_xfixes_query_version(connection_, 5, 0), nullptr));
        hasFixes_ = version && version->major_version >= 2;
    }
    if (isPresent(connection_, xcb_input_id, data)) {
        const X11Reply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            connection_, xcb_input_xi_query_version(connection_, 2, 2), nullptr));
        if (version && (version->major_version > 2 || version->minor_version >= 2))
            inputOpcode_ = data->major_opcode;
    }
    xkb_x11_setup_xkb_extension(connection_, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &xkbEvent_, nullptr);
}

std::vector<uint8_t> X11Connection::getProperty(xcb_window_t window, xcb_atom_t property,
                                                xcb_atom_t type) const {
    constexpr uint32_t mostWords = 1 << 20;
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, window, property, type, 0, mostWords), nullptr));
    if (!reply || reply->format == 0)
        return {};
    const auto* bytes = static_cast<const uint8_t*>(xcb_get_property_value(reply.get()));
    return {bytes, bytes + xcb_get_property_value_length(reply.get())};
}

std::vector<uint32_t> X11Connection::getProperty32(xcb_window_t window, xcb_atom_t property,
                                                   xcb_atom_t type) const {
    const std::vector<uint8_t> bytes = getProperty(window, property, type);
    std::vector<uint32_t> values(bytes.size() / sizeof(uint32_t));
    if (!values.empty())
        std::memcpy(values.data(), bytes.data(), values.size() * sizeof(uint32_t));
    return values;
}

void X11Connection::setProperty32(xcb_window_t window, X11Atom property, xcb_atom_t type,
                                  std::span<const uint32_t> values) const {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, (*this)[property], type, 32,
                        static_cast<uint32_t>(values.size()), values.data());
}

void X11Connection::setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                            std::string_view text) const {
    constexpr size_t longest = 16'000; // bytes; the smallest limit that the protocol allows is 16384
    if (text.size() > longest) {
        const auto isInsideCharacter = [](char byte) { return (static_cast<uint8_t>(byte) & 0xC0) == 0x80; };
        size_t end = longest;
        while (end > 0 && isInsideCharacter(text[end]))
            --end;
        text = text.substr(0, end);
    }
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<uint32_t>(text.size()), text.data());
}

size_t X11Connection::getMostValues() const {
    constexpr size_t headWords = 8;
    return xcb_get_maximum_request_length(connection_) - headWords;
}

void X11Connection::sendToManager(xcb_window_t window, X11Atom message,
                                  std::span<const uint32_t> values) const {
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = (*this)[message];
    std::copy_n(values.begin(), std::min<size_t>(values.size(), 5), event.data.data32);
    xcb_send_event(connection_, 0, getRoot(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
}

bool X11Connection::hasManager() const {
    const auto check = getProperty32(getRoot(), (*this)[X11Atom::netSupportingWmCheck], XCB_ATOM_WINDOW);
    if (check.empty())
        return false;
    // A manager that died leaves the property of the root behind, but not its window.
    const auto echo = getProperty32(check.front(), (*this)[X11Atom::netSupportingWmCheck], XCB_ATOM_WINDOW);
    return !echo.empty() && echo.front() == check.front();
}

bool X11Connection::supports(X11Atom hint) const {
    if (!hasManager())
        return false;
    const auto hints = getProperty32(getRoot(), (*this)[X11Atom::netSupported], XCB_ATOM_ATOM);
    return std::find(hints.begin(), hints.end(), (*this)[hint]) != hints.end();
}

bool X11Connection::hasCompositor() const {
    const xcb_atom_t selection = intern("_NET_WM_CM_S" + std::to_string(screenNumber_));
    const X11Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection_, xcb_get_selection_owner(connection_, selection), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

} // namespace qorl::platform
