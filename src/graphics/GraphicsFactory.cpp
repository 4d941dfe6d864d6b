#include "graphics/GraphicsFactory.h"

#include "graphics/BitmapCache.h"
#include "graphics/cairo/CairoFactory.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cctype>

namespace qorl {

namespace {

struct BackEndRow {
    std::string_view name;
    Ref<GraphicsFactory> (*create)();
};

/// The first row is this platform's own, and stands in for every name that no row has.
constexpr BackEndRow backEnds[] = {
    {"Cairo", &createCairoFactory},
};

constexpr std::string_view defaultName = "default";

constinit GraphicsFactory* factory = nullptr;
constinit bool isShutDown = false;
constinit uint32_t generation = 0;

std::string& selectedName() {
    static std::string name;
    return name;
}

const BackEndRow& rowOf(std::string_view name) {
    const auto found = std::find_if(std::begin(backEnds), std::end(backEnds),
                                    [name](const BackEndRow& row) { return row.name == name; });
    return found == std::end(backEnds) ? backEnds[0] : *found;
}

} // namespace

GraphicsFactory* getGraphicsFactory() {
    return factory;
}

Ref<GraphicsImage> createGraphicsImage(CmSize size, uint32_t format) {
    BitmapFactory* bitmaps = factory ? factory->getBitmapFactory() : nullptr;
    return bitmaps ? bitmaps->createBitmap(size, format) : nullptr;
}

const std::string& getGraphicsBackendName() {
    return selectedName();
}

uint32_t graphicsGeneration() {
    return generation;
}

bool selectGraphicsBackend(std::string_view name) {
    if (isShutDown)
        return false;
    if (name == defaultName)
        name = backEnds[0].name;
    if (factory)
        return name == selectedName();
    factory = rowOf(name).create().detach();
    if (!factory)
        return false;
    selectedName() = name;
    ++generation;
    return true;
}

bool selectGraphicsBackendByArguments(std::span<const std::string_view> arguments) {
    std::string_view wanted;
    auto awareness = platform::DpiAwareness::none;
    for (size_t i = 0; i + 1 < arguments.size(); ++i) {
        const std::string_view next = arguments[i + 1];
        if (arguments[i] == "--gfxbackend")
            wanted = arguments[++i];
        else if (arguments[i] == "--dpiawareness" && next == "monitor")
            awareness = platform::DpiAwareness::monitor;
        else if (arguments[i] == "--dpiawareness" && next == "system")
            awareness = platform::DpiAwareness::system;
    }
    if (wanted == "D2D" || wanted == "GDI")
        return selectGraphicsBackend(wanted);
    platform::setDpiAwareness(awareness);
    return selectGraphicsBackend(defaultName);
}

void shutdownGraphics() {
    isShutDown = true;
    if (BitmapCache* cache = BitmapCache::existing())
        cache->clear();
    if (!factory)
        return;
    GraphicsFactory* last = factory;
    factory = nullptr;
    ++generation;
    last->release();
    selectedName() = {};
}

void reopenGraphics() {
    isShutDown = false;
}

void ImageCodecs::add(Ref<ImageCodec> codec) {
    codecs_.push_back(std::move(codec));
}

ImageCodec* ImageCodecs::findByExtension(std::string_view extension) const {
    std::string wanted(extension);
    std::transform(wanted.begin(), wanted.end(), wanted.begin(), [](unsigned char c) {
        return c < 128 ? static_cast<char>(std::tolower(c)) : static_cast<char>(c);
    });
    for (const auto& codec : codecs_) {
        std::string_view names = codec->extensions();
        while (!names.empty()) {
            const size_t end = names.find(';');
            if (names.substr(0, end) == wanted)
                return codec.get();
            names = end == std::string_view::npos ? std::string_view() : names.substr(end + 1);
        }
    }
    return nullptr;
}

ImageCodec* ImageCodecs::findByContents(std::span<const std::byte> head) const {
    for (const auto& codec : codecs_)
        if (codec->recognises(head))
            return codec.get();
    return nullptr;
}

} // namespace qorl
