#include "platform/x11/X11Wheel.h"

#include <algorithm>
#include <xcb/xinput.h>

namespace qorl::platform {

namespace {

double toDouble(const xcb_input_fp3232_t& number) {
    return number.integral + number.frac / 4294967296.0;
}

} // namespace

std::vector<X11Wheel::Axis> X11Wheel::readAxes(X11Connection& connection) {
    std::vector<Axis> axes;
    const X11Reply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
        connection, xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL), nullptr));
    if (!reply)
        return axes;
    for (auto device = xcb_input_xi_query_device_infos_iterator(reply.get()); device.rem;
         xcb_input_xi_device_info_next(&device)) {
        if (device.data->type != XCB_INPUT_DEVICE_TYPE_SLAVE_POINTER)
            continue;
        for (auto it = xcb_input_xi_device_info_classes_iterator(device.data); it.rem;
             xcb_input_device_class_next(&it)) {
            if (it.data->type != XCB_INPUT_DEVICE_CLASS_TYPE_SCROLL)
                continue;
            const auto& scroll = *reinterpret_cast<const xcb_input_scroll_class_t*>(it.data);
            const double increment = toDouble(scroll.increment);
            if (increment != 0) {
                axes.push_back({device.data->deviceid, scroll.number,
                                scroll.scroll_type == XCB_INPUT_SCROLL_TYPE_VERTICAL, increment});
            }
        }
    }
    return axes;
}

void X11Wheel::forgetPositions() {
    for (Axis& axis : axes_)
        axis.isKnown = false;
}

X11Wheel::Axis* X11Wheel::find(uint16_t device, uint16_t number) {
    const auto axis = std::find_if(axes_.begin(), axes_.end(), [=](const Axis& candidate) {
        return candidate.device == device && candidate.number == number;
    });
    return axis == axes_.end() ? nullptr : &*axis;
}

WheelDistance X11Wheel::move(uint16_t source, const uint32_t* mask, size_t maskWords, const double* values) {
    WheelDistance distance;
    for (size_t bit = 0; bit < maskWords * 32; ++bit) {
        if (!(mask[bit / 32] >> bit % 32 & 1))
            continue;
        const double value = *values++;
        Axis* axis = find(source, static_cast<uint16_t>(bit));
        if (!axis)
            continue;
        const double notches = axis->isKnown ? (value - axis->position) / axis->increment : 0;
        axis->position = value;
        axis->isKnown = true;
        // Axes count towards the user and to the right.
        if (axis->isVertical)
            distance.y -= notches;
        else
            distance.x += notches;
    }
    return distance;
}

WheelDistance wheelOfButton(uint32_t button) {
    switch (button) {
    case 4: return {0, 1};
    case 5: return {0, -1};
    case 6: return {-1, 0};
    case 7: return {1, 0};
    default: return {};
    }
}

} // namespace qorl::platform
