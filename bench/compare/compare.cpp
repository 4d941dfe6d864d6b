// compare DOCUMENTS WORKLOAD...: measures this library on the documents that other toolkits are measured on,
// and prints a line `workload qorl metric value unit` for each figure. PB_CLOCK=cpu counts processor time.
// Quiet for a workload that it has nothing for. `startup` writes '!' when the first window is painted, and
// ends.

#include "compare/Containers.h"
#include "compare/Measure.h"
#include "compare/Settings.h"
#include "compare/Streams.h"
#include "compare/ValueChange.h"
#include "compare/XmlParse.h"
#include "graphics/GraphicsFactory.h"
#include "support/DrawRecorder.h"
#include "support/SkinWindow.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace qorl::bench {
namespace {

constexpr double nanosecondsPerMillisecond = 1e6;
constexpr CmRect screen{0, 0, 1280, 800};
constexpr CmRect damage = CmRect::ofSize({590, 350}, {100, 100});

std::string documents;

std::string document(int32_t elements) {
    const std::string path = documents + "/ui_" + std::to_string(elements) + ".skin.xml";
    std::ifstream file(path, std::ios::binary);
    if (file)
        return {std::istreambuf_iterator<char>(file), {}};
    std::fprintf(stderr, "compare: cannot read %s\n", path.c_str());
    std::exit(2);
}

void expect(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "compare: %s\n", what);
    std::exit(1);
}

/// Fonts, schemes and caches are there once a small document was shown.
void warmUp(HeadlessProgram& program) {
    SkinWindow window(program);
    window.build(document(50));
    window.show();
}

void measureBuild() {
    HeadlessProgram program;
    warmUp(program);
    for (const int32_t count : {1000, 10000}) {
        const std::string text = document(count);
        std::vector<double> builds;
        std::vector<double> layouts;
        for (int i = 0; i < 3; ++i) {
            SkinWindow window(program);
            builds.push_back(timeOf([&] { window.build(text); }));
            layouts.push_back(timeOf([&] { window.layOut(); }));
            expect(window.countViews() + 1 >= count, "elements are missing in the tree");
        }
        const std::string suffix = std::to_string(count);
        report("doc_build", "build_" + suffix, median(builds) / nanosecondsPerMillisecond, "ms");
        report("doc_build", "first_layout_" + suffix, median(layouts) / nanosecondsPerMillisecond, "ms");
    }
}

void measureMemory(int32_t count) {
    HeadlessProgram program;
    warmUp(program);
    const std::string text = document(count);
    SkinWindow window(program);
    const PeakMemory memory;
    window.build(text);
    const double built = memory.megabytes();
    window.layOut();
    const std::string suffix = std::to_string(count);
    report("doc_build", "peak_rss_" + suffix, built, "MB");
    report("doc_build", "peak_rss_laid_out_" + suffix, memory.megabytes(), "MB");
}

void measureRelayout() {
    HeadlessProgram program;
    SkinWindow window(program);
    window.build(document(10000));
    window.show();
    UView& leaf = window.lastLeaf();
    const int32_t height = window.content().getFrameSize().height;
    CmRect before;
    int moves = 0;
    std::vector<double> times;
    for (int i = 0; i < 100; ++i) {
        const CmSize size{1700 + i % 10 * 20, height + 100 + i % 7 * 50};
        times.push_back(timeOf([&] { window.window().setSize(size); }));
        expect(window.content().getFrameSize() == size, "the tree did not follow its window");
        const CmRect after = leaf.getFrameRect().moved(leaf.clientToWindow({}).x, leaf.clientToWindow({}).y);
        moves += after != before;
        before = after;
    }
    expect(moves == 100, "the last leaf did not move in each step");
    report("relayout", "resize_10000", median(times) / nanosecondsPerMillisecond, "ms");
}

/// The same tree drawn by a loop of bare Cairo calls, and how long that takes.
void measureReplay(UView& content) {
    const Ref<DrawRecorder> recorder = DrawRecorder::record(content, content.getClientBounds());
    expect(recorder->isComplete() && recorder->count() > 1000, "the drawing could not be recorded");
    cairo_surface_t* surface =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, screen.width(), screen.height());
    cairo_t* context = cairo_create(surface);
    recorder->replay(context, screen);
    report("paint", "full_1000_replayed",
           medianOf(20, [&] { recorder->replay(context, screen); }) / nanosecondsPerMillisecond, "ms");
    report("paint", "damage_100x100_replayed",
           medianOf(50, [&] { recorder->replay(context, damage); }) / nanosecondsPerMillisecond, "ms");
    if (const char* folder = std::getenv("PB_PNG"))
        cairo_surface_write_to_png(surface, (std::string(folder) + "/qorl-replayed.png").c_str());
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}

void savePicture(UWindow& window, const std::string& path) {
    GraphicsFactory* factory = getGraphicsFactory();
    const auto image = factory->getBitmapFactory()->wrapPixels(window.getPlatformWindow()->getSurface());
    std::vector<std::byte> file;
    if (image && factory->getImageCodecs()->findByExtension("png")->encode(*image, file))
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
}

void measurePaint() {
    HeadlessProgram program;
    SkinWindow window(program);
    window.build(document(1000));
    window.show();
    window.window().setSize(screen.size());
    program.settle();
    const auto paint = [&](const CmRect& area) {
        window.window().invalidate(area);
        window.window().update();
    };
    paint(screen);
    report("paint", "full_1000", medianOf(20, [&] { paint(screen); }) / nanosecondsPerMillisecond, "ms");
    report("paint", "damage_100x100", medianOf(50, [&] { paint(damage); }) / nanosecondsPerMillisecond, "ms");
    if (const char* folder = std::getenv("PB_PNG"))
        savePicture(window.window(), std::string(folder) + "/qorl.png");
    measureReplay(window.content());
}

/// A fixed piece of work, the same in all programs that are compared: how fast the machine was.
void measureCalibration() {
    const double time = medianOf(3, [] {
        uint64_t x = 88172645463325252u;
        for (int i = 0; i < 20'000'000; ++i) {
            x ^= x << 13;
            x ^= x >> 7;
            x ^= x << 17;
        }
        asm volatile("" : : "r"(x) : "memory");
    });
    report("calibration", "fixed_loop", time / nanosecondsPerMillisecond, "ms");
}

void measureStartup() {
    HeadlessProgram program;
    SkinWindow window(program);
    window.build(document(50));
    window.show();
    const bool told = ::write(STDOUT_FILENO, "!", 1) == 1;
    ::_exit(told ? 0 : 1);
}

struct Workload {
    std::string_view name;
    void (*measure)();
};

constexpr Workload workloads[] = {
    {"calibration", &measureCalibration},
    {"doc_build", &measureBuild},
    {"doc_mem_1000", [] { measureMemory(1000); }},
    {"doc_mem_10000", [] { measureMemory(10000); }},
    {"value_change", &measureValueChange},
    {"relayout", &measureRelayout},
    {"paint", &measurePaint},
    {"xml_parse", [] { measureXml(documents); }},
    {"containers", &measureContainers},
    {"settings", [] { measureSettings(documents); }},
    {"compress", [] { measureCompression(documents); }},
    {"bin_serialise", &measureFields},
    {"startup", &measureStartup},
};

} // namespace
} // namespace qorl::bench

int main(int argc, char** argv) {
    using namespace qorl::bench;
    if (argc < 3) {
        std::fprintf(stderr, "usage: compare DOCUMENTS WORKLOAD...\n");
        return 2;
    }
    documents = argv[1];
    for (int i = 2; i < argc; ++i)
        for (const Workload& workload : workloads)
            if (workload.name == argv[i])
                workload.measure();
    return 0;
}
