#include "platform/x11/X11Pointer.h"

#include "platform/DynamicLibrary.h"

#include <iterator>
#include <xcb/render.h>

namespace qorl::platform {

namespace {

/// The names of a shape in pointer themes, the newer one first, and its glyph in the cursor font.
struct ShapeRow {
    const char* names[2];
    uint16_t glyph;
};

constexpr ShapeRow shapes[] = {
    {{"default", "left_ptr"}, 68},
    {{"crosshair", "cross"}, 34},
    {{"not-allowed", "circle"}, 0},
    {{"help", "question_arrow"}, 92},
    {{"text", "xterm"}, 152},
    {{"ew-resize", "sb_h_double_arrow"}, 108},
    {{"ns-resize", "sb_v_double_arrow"}, 116},
    {{"nwse-resize", "bd_double_arrow"}, 134},
    {{"nesw-resize", "fd_double_arrow"}, 136},
    {{"all-scroll", "fleur"}, 52},
    {{"wait", "watch"}, 150},
    {{"copy", "left_ptr"}, 68},
    {{"pointer", "hand2"}, 60},
    {{"grab", "hand1"}, 58},
};
static_assert(std::size(shapes) == cursorShapeCount);

xcb_render_pictformat_t findArgbFormat(xcb_connection_t* connection) {
    const X11Reply<xcb_render_query_pict_formats_reply_t> reply(
        xcb_render_query_pict_formats_reply(connection, xcb_render_query_pict_formats(connection), nullptr));
    if (!reply)
        return 0;
    for (auto it = xcb_render_query_pict_formats_formats_iterator(reply.get()); it.rem;
         xcb_render_pictforminfo_next(&it)) {
        const xcb_render_directformat_t& direct = it.data->direct;
        if (it.data->depth == 32 && direct.alpha_mask == 0xFF && direct.alpha_shift == 24 &&
            direct.red_shift == 16 && direct.blue_shift == 0)
            return it.data->id;
    }
    return 0;
}

xcb_cursor_t createFromFont(xcb_connection_t* connection, uint16_t glyph) {
    const xcb_font_t font = xcb_generate_id(connection);
    constexpr char name[] = "cursor";
    xcb_open_font(connection, font, sizeof name - 1, name);
    const xcb_cursor_t cursor = xcb_generate_id(connection);
    constexpr uint16_t full = 0xFFFF;
    xcb_create_glyph_cursor(connection, cursor, font, font, glyph, static_cast<uint16_t>(glyph + 1), 0, 0, 0,
                            full, full, full);
    xcb_close_font(connection, font);
    return cursor;
}

} // namespace

/// The operations of the theme library, which is opened when the first pointer is made: most runs of a
/// program without a screen never need it, and it brings several more libraries along.
struct X11Pointers::Theme {
    using New = int (*)(xcb_connection_t*, xcb_screen_t*, void**);
    using Load = xcb_cursor_t (*)(void*, const char*);
    using Free = void (*)(void*);

    LibraryHandle library = nullptr;
    void* context = nullptr;
    Load load = nullptr;
    Free free = nullptr;
};

X11Pointers::~X11Pointers() {
    if (!theme_)
        return;
    theme_->free(theme_->context);
    freeLibrary(theme_->library);
    delete theme_;
}

void X11Pointers::loadTheme() {
    isThemeTried_ = true;
    std::string error;
    Theme theme;
    theme.library = loadLibrary("libxcb-cursor.so.0", error);
    const auto create = reinterpret_cast<Theme::New>(findSymbol(theme.library, "xcb_cursor_context_new"));
    theme.load = reinterpret_cast<Theme::Load>(findSymbol(theme.library, "xcb_cursor_load_cursor"));
    theme.free = reinterpret_cast<Theme::Free>(findSymbol(theme.library, "xcb_cursor_context_free"));
    if (create && theme.load && theme.free &&
        create(connection_, connection_.getScreen(), &theme.context) == 0)
        theme_ = new Theme(theme);
    else
        freeLibrary(theme.library);
}

Ref<PlatformCursor> X11Pointers::create(CursorShape shape) {
    const auto index = static_cast<size_t>(shape);
    if (index >= std::size(shapes))
        return nullptr;
    if (!isThemeTried_)
        loadTheme();
    const ShapeRow& row = shapes[index];
    for (const char* name : row.names) {
        const xcb_cursor_t cursor = theme_ ? theme_->load(theme_->context, name) : 0;
        if (cursor != XCB_CURSOR_NONE)
            return make<X11Cursor>(connection_, cursor);
    }
    return make<X11Cursor>(connection_, createFromFont(connection_, row.glyph));
}

Ref<PlatformCursor> X11Pointers::create(const PixelSurface& picture, CmPoint hotSpot) {
    constexpr int32_t longest = 512;
    const xcb_render_pictformat_t format = findArgbFormat(connection_);
    if (!format || picture.isEmpty() || picture.width > longest || picture.height > longest)
        return nullptr;
    constexpr uint8_t depth = 32;
    const auto width = static_cast<uint16_t>(picture.width);
    const auto height = static_cast<uint16_t>(picture.height);
    const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
    xcb_create_pixmap(connection_, depth, pixmap, connection_.getRoot(), width, height);
    const xcb_gcontext_t context = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context, pixmap, 0, nullptr);
    for (int32_t y = 0; y < picture.height; ++y) {
        xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, 1, 0,
                      static_cast<int16_t>(y), 0, depth, uint32_t{width} * 4,
                      reinterpret_cast<const uint8_t*>(picture.getRow(y)));
    }
    const xcb_render_picture_t source = xcb_generate_id(connection_);
    xcb_render_create_picture(connection_, source, pixmap, format, 0, nullptr);
    const xcb_cursor_t cursor = xcb_generate_id(connection_);
    xcb_render_create_cursor(connection_, cursor, source, static_cast<uint16_t>(hotSpot.x),
                             static_cast<uint16_t>(hotSpot.y));
    xcb_render_free_picture(connection_, source);
    xcb_free_gc(connection_, context);
    xcb_free_pixmap(connection_, pixmap);
    return make<X11Cursor>(connection_, cursor);
}

Ref<PlatformCursor> X11Pointers::createHidden() {
    const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
    xcb_create_pixmap(connection_, 1, pixmap, connection_.getRoot(), 1, 1);
    const xcb_gcontext_t context = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context, pixmap, 0, nullptr);
    const xcb_rectangle_t all = {0, 0, 1, 1};
    xcb_poly_fill_rectangle(connection_, pixmap, context, 1, &all);
    const xcb_cursor_t cursor = xcb_generate_id(connection_);
    xcb_create_cursor(connection_, cursor, pixmap, pixmap, 0, 0, 0, 0, 0, 0, 0, 0);
    xcb_free_gc(connection_, context);
    xcb_free_pixmap(connection_, pixmap);
    return make<X11Cursor>(connection_, cursor);
}

} // namespace qorl::platform
