#include "support/DrawRecorder.h"
#include "support/PanelDocument.h"
#include "support/Ratio.h"
#include "support/SkinWindow.h"

namespace qorl::bench {
namespace {

constexpr CmRect screen{0, 0, 1280, 800};
constexpr CmRect damage = CmRect::ofSize({590, 350}, {100, 100});

/// A window full of controls, and what it draws as a list of primitives.
struct Panel {
    explicit Panel(int64_t elements) {
        window.build(panelDocument(elements));
        window.show();
    }

    HeadlessProgram program;
    SkinWindow window{program};
};

void repaint(benchmark::State& state, const CmRect& area) {
    Panel panel(state.range(0));
    for (auto _ : state) {
        panel.window.window().invalidate(area);
        panel.window.window().update();
    }
}

/// Bare Cairo calls in a loop, for everything that shows in the area.
void replay(benchmark::State& state, const CmRect& area) {
    Panel panel(state.range(0));
    const Ref<DrawRecorder> drawing = DrawRecorder::record(panel.window.content(), screen);
    if (!drawing->isComplete())
        state.SkipWithError("the panel draws what can't be recorded");
    cairo_surface_t* surface =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, screen.width(), screen.height());
    cairo_t* context = cairo_create(surface);
    for (auto _ : state)
        drawing->replay(context, area);
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}

void repaintAll(benchmark::State& state) {
    repaint(state, screen);
}
void replayAll(benchmark::State& state) {
    replay(state, screen);
}
QORL_RATIO(repaintAll, replayAll, 1.1, 100, 1000);

void repaintDamage(benchmark::State& state) {
    repaint(state, damage);
}
void replayDamage(benchmark::State& state) {
    replay(state, damage);
}
QORL_RATIO(repaintDamage, replayDamage, 1.3, 1000);

} // namespace
} // namespace qorl::bench
