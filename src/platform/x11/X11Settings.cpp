#include "platform/x11/X11Settings.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

namespace qorl::platform {

namespace {

constexpr double dotsAtScaleOne = 96.0;

double scaleFromDpi(double dpi) {
    constexpr double least = 0.5;
    constexpr double most = 8.0;
    // Finer steps than a hundredth come from rounding in the desktop's own arithmetic.
    return std::clamp(std::round(dpi / dotsAtScaleOne * 100) / 100, least, most);
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
        text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.remove_suffix(1);
    return text;
}

/// Walks the bytes of a settings block in the byte order that the block names.
class BlockReader {
public:
    explicit BlockReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool isGood() const { return isGood_; }
    void setBigEndian(bool isBig) { isBig_ = isBig; }

    uint32_t number(size_t width) {
        uint32_t value = 0;
        const std::span<const uint8_t> part = take(width);
        for (size_t i = 0; i < part.size(); ++i)
            value |= uint32_t{part[i]} << 8 * (isBig_ ? width - 1 - i : i);
        return value;
    }

    std::string_view text(size_t length) {
        const std::span<const uint8_t> part = take(length);
        take((4 - length % 4) % 4);
        return {reinterpret_cast<const char*>(part.data()), part.size()};
    }

    void skip(size_t count) { take(count); }

private:
    std::span<const uint8_t> take(size_t count) {
        if (count > bytes_.size()) {
            isGood_ = false;
            bytes_ = {};
            return {};
        }
        const auto part = bytes_.first(count);
        bytes_ = bytes_.subspan(count);
        return part;
    }

    std::span<const uint8_t> bytes_;
    bool isBig_ = false;
    bool isGood_ = true;
};

bool isDarkTheme(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return lower.ends_with("-dark") || lower.ends_with(":dark") || lower.ends_with("_dark");
}

} // namespace

double parseResourceDpi(std::string_view resources) {
    constexpr std::string_view key = "Xft.dpi:";
    double dpi = 0;
    while (!resources.empty()) {
        const size_t end = std::min(resources.find('\n'), resources.size());
        const std::string_view line = resources.substr(0, end);
        resources.remove_prefix(std::min(end + 1, resources.size()));
        if (!line.starts_with(key))
            continue;
        const std::string_view value = trimmed(line.substr(key.size()));
        double number = 0;
        const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
        if (result.ec == std::errc() && number >= 1 && number <= 10'000)
            dpi = number;
    }
    return dpi;
}

bool parseXSettings(std::span<const uint8_t> block, X11Look& look) {
    enum Type : uint32_t { integer = 0, string = 1, color = 2 };
    BlockReader reader(block);
    reader.setBigEndian(reader.number(1) == 1);
    reader.skip(3 + 4); // unused bytes and the serial number
    const uint32_t count = reader.number(4);
    X11Look found = look;
    int32_t dpi = 0;
    bool prefersDark = false;
    for (uint32_t i = 0; i < count && reader.isGood(); ++i) {
        const uint32_t type = reader.number(1);
        reader.skip(1);
        const std::string_view name = reader.text(reader.number(2));
        reader.skip(4); // the serial number of its last change
        if (type == integer) {
            const auto value = static_cast<int32_t>(reader.number(4));
            if (name == "Xft/DPI")
                dpi = value;
            if (name == "Gtk/ApplicationPreferDarkTheme")
                prefersDark = value != 0;
        } else if (type == string) {
            const std::string_view value = reader.text(reader.number(4));
            if (name == "Net/ThemeName")
                found.appearance = isDarkTheme(value) ? Appearance::dark : Appearance::light;
        } else if (type == color) {
            reader.skip(8);
        } else {
            return false;
        }
    }
    if (!reader.isGood())
        return false;
    if (dpi > 0)
        found.scale = scaleFromDpi(dpi / 1024.0);
    if (prefersDark)
        found.appearance = Appearance::dark;
    look = found;
    return true;
}

X11Settings::X11Settings(X11Connection& connection)
    : connection_(connection),
      selection_(connection.intern("_XSETTINGS_S" + std::to_string(connection.getScreenNumber()))) {
    findDaemon();
    reload();
}

void X11Settings::findDaemon() {
    const X11Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
    daemon_ = owner ? owner->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    if (daemon_ == XCB_WINDOW_NONE)
        return;
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, daemon_, XCB_CW_EVENT_MASK, &mask);
}

bool X11Settings::reload() {
    X11Look look;
    const std::vector<uint8_t> resources =
        connection_.getProperty(connection_.getRoot(), XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING);
    const double dpi = parseResourceDpi({reinterpret_cast<const char*>(resources.data()), resources.size()});
    if (dpi > 0)
        look.scale = scaleFromDpi(dpi);
    if (daemon_ != XCB_WINDOW_NONE) {
        const xcb_atom_t settings = connection_[X11Atom::xsettingsSettings];
        parseXSettings(connection_.getProperty(daemon_, settings, settings), look);
    }
    if (look == look_)
        return false;
    look_ = look;
    return true;
}

bool X11Settings::handleEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
    case XCB_PROPERTY_NOTIFY: {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        const bool isResources =
            change.window == connection_.getRoot() && change.atom == XCB_ATOM_RESOURCE_MANAGER;
        const bool isSettings =
            change.window == daemon_ && change.atom == connection_[X11Atom::xsettingsSettings];
        return (isResources || isSettings) && reload();
    }
    case XCB_CLIENT_MESSAGE: {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (message.type != connection_[X11Atom::manager] || message.data.data32[1] != selection_)
            return false;
        findDaemon();
        return reload();
    }
    case XCB_DESTROY_NOTIFY: {
        const auto& gone = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        if (gone.window != daemon_ || daemon_ == XCB_WINDOW_NONE)
            return false;
        daemon_ = XCB_WINDOW_NONE;
        return reload();
    }
    default: return false;
    }
}

} // namespace qorl::platform
