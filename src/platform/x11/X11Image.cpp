#include "platform/x11/X11Image.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <vector>
#include <xcb/shm.h>

namespace qorl::platform {

namespace {

constexpr int32_t pixelSize = 4;

} // namespace

X11Image::X11Image(X11Connection& connection, int32_t width, int32_t height)
    : connection_(connection), width_(width), height_(height) {}

std::unique_ptr<X11Image> X11Image::create(X11Connection& connection, int32_t width, int32_t height) {
    std::unique_ptr<X11Image> image(new (std::nothrow) X11Image(connection, width, height));
    if (!image)
        return nullptr;
    if (connection.hasShm() && image->attachShared())
        return image;
    image->own_.reset(new (std::nothrow)
                          uint8_t[static_cast<size_t>(width) * static_cast<size_t>(height) * pixelSize]);
    image->pixels_ = image->own_.get();
    return image->pixels_ ? std::move(image) : nullptr;
}

X11Image::~X11Image() {
    waitForServer();
    if (segment_) {
        xcb_shm_detach(connection_, segment_);
        shmdt(pixels_);
    }
}

bool X11Image::attachShared() {
    const size_t size = static_cast<size_t>(width_) * static_cast<size_t>(height_) * pixelSize;
    const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
    if (id < 0)
        return false;
    void* memory = shmat(id, nullptr, 0);
    const bool isMapped = memory != reinterpret_cast<void*>(-1);
    const xcb_shm_seg_t segment = xcb_generate_id(connection_);
    // A server on another machine, or in another container, refuses.
    X11Reply<xcb_generic_error_t> error;
    if (isMapped)
        error.reset(xcb_request_check(
            connection_, xcb_shm_attach_checked(connection_, segment, static_cast<uint32_t>(id), 0)));
    // The segment lives as long as somebody has it mapped, so that a crash leaves none behind.
    shmctl(id, IPC_RMID, nullptr);
    if (!isMapped)
        return false;
    if (error) {
        shmdt(memory);
        return false;
    }
    pixels_ = static_cast<uint8_t*>(memory);
    segment_ = segment;
    return true;
}

PixelSurface X11Image::getSurface() const {
    return {pixels_, width_, height_, width_ * pixelSize, 1.0};
}

void X11Image::put(xcb_window_t window, xcb_gcontext_t context, uint8_t depth, const Region& region) {
    for (const CmRect& rect : region.getRects()) {
        if (!segment_) {
            putAlongWire(window, context, depth, rect);
            continue;
        }
        xcb_shm_put_image(connection_, window, context, static_cast<uint16_t>(width_),
                          static_cast<uint16_t>(height_), static_cast<uint16_t>(rect.left),
                          static_cast<uint16_t>(rect.top), static_cast<uint16_t>(rect.width()),
                          static_cast<uint16_t>(rect.height()), static_cast<int16_t>(rect.left),
                          static_cast<int16_t>(rect.top), depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0, segment_, 0);
    }
    if (segment_ && !region.isEmpty()) {
        if (isPending_)
            xcb_discard_reply(connection_, pending_.sequence);
        pending_ = xcb_get_input_focus(connection_);
        isPending_ = true;
    }
    xcb_flush(connection_);
}

void X11Image::putAlongWire(xcb_window_t window, xcb_gcontext_t context, uint8_t depth, const CmRect& rect) {
    const int32_t rowBytes = rect.width() * pixelSize;
    const int64_t room = int64_t{xcb_get_maximum_request_length(connection_)} * 4 - 64;
    const int32_t rows = static_cast<int32_t>(std::max<int64_t>(room / rowBytes, 1));
    std::vector<uint8_t> block;
    const PixelSurface surface = getSurface();
    for (int32_t y = rect.top; y < rect.bottom; y += rows) {
        const int32_t count = std::min(rows, rect.bottom - y);
        block.resize(static_cast<size_t>(count) * static_cast<size_t>(rowBytes));
        for (int32_t i = 0; i < count; ++i)
            std::memcpy(block.data() + int64_t{i} * rowBytes, surface.getRow(y + i) + rect.left,
                        static_cast<size_t>(rowBytes));
        xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, context,
                      static_cast<uint16_t>(rect.width()), static_cast<uint16_t>(count),
                      static_cast<int16_t>(rect.left), static_cast<int16_t>(y), 0, depth,
                      static_cast<uint32_t>(block.size()), block.data());
    }
}

void X11Image::waitForServer() {
    if (!isPending_)
        return;
    isPending_ = false;
    const X11Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, pending_, nullptr));
}

} // namespace qorl::platform
