#include "graphics/cairo/CairoFactory.h"

#include "foundation/FObject.h"
#include "graphics/BitmapFilterFactory.h"
#include "graphics/PngCodec.h"
#include "graphics/cairo/CairoDevice.h"
#include "graphics/cairo/CairoFontCollection.h"
#include "graphics/cairo/CairoImage.h"

#include <atomic>
#include <new>
#include <thread>

namespace qorl {

namespace {

/// An object that is made once, by whichever thread asks first. Null when memory runs out; the next call
/// tries again.
template <typename T>
class MadeOnce {
public:
    template <typename Create>
    T* get(Create create) {
        while (state_.load(std::memory_order_acquire) != State::made) {
            State expected = State::notMade;
            if (!state_.compare_exchange_strong(expected, State::beingMade, std::memory_order_acquire)) {
                std::this_thread::yield();
                continue;
            }
            try {
                object_ = create();
            } catch (const std::bad_alloc&) {
                state_.store(State::notMade, std::memory_order_release);
                return nullptr;
            }
            state_.store(State::made, std::memory_order_release);
        }
        return object_.get();
    }

private:
    enum class State : uint32_t { notMade = 0, beingMade = 1, made = 2 };

    std::atomic<State> state_{State::notMade};
    Ref<T> object_;
};

class CairoBitmapFactory final : public BitmapFactory {
    QORL_CLASS(CairoBitmapFactory, BitmapFactory)

public:
    Ref<GraphicsImage> createBitmap(CmSize size, uint32_t) override { return CairoImage::create(size); }
    Ref<GraphicsImage> wrapPixels(const platform::PixelSurface& memory) override {
        return CairoImage::wrap(memory);
    }
};

class CairoFactory final : public FObject, public GraphicsFactory {
    QORL_CLASS(CairoFactory, FObject)
    QORL_FACES(CairoFactory, FObject, GraphicsFactory)

public:
    ~CairoFactory() override { CairoFontFace::releaseOptions(); }

    BitmapFactory* getBitmapFactory() override {
        return bitmaps_.get([] { return make<CairoBitmapFactory>(); });
    }
    BitmapFilterFactory* getBitmapFilterFactory() override {
        return filters_.get([] { return make<BitmapFilterFactory>(); });
    }
    FontCollection* getFontCollection() override {
        return fonts_.get([] { return make<CairoFontCollection>(); });
    }
    Ref<GraphicsPath> createGraphicsPath() override { return make<GraphicsPath>(); }
    Ref<DrawBackEnd> createDrawDevice(DrawTarget* target) override { return CairoDevice::open(target); }
    FInterface* getCompositor() override { return nullptr; }
    FInterface* createSwapChain(DrawTarget*) override { return nullptr; }
    ImageCodecs* getImageCodecs() override {
        return codecs_.get([] {
            auto codecs = make<ImageCodecs>();
            codecs->add(make<PngCodec>());
            return codecs;
        });
    }

private:
    MadeOnce<BitmapFactory> bitmaps_;
    MadeOnce<BitmapFilterFactory> filters_;
    MadeOnce<FontCollection> fonts_;
    MadeOnce<ImageCodecs> codecs_;
};

} // namespace

Ref<GraphicsFactory> createCairoFactory() {
    return make<CairoFactory>();
}

} // namespace qorl
