#include "graphics/BitmapFilterFactory.h"

#include "graphics/GraphicsFactory.h"
#include "graphics/PixelFilters.h"
#include "graphics/TransformMatrix.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace qorl {

namespace {

/// A new image whose pixel at each place is `pick(source, x, y)`.
template <typename Pick>
Ref<GraphicsImage> mapped(GraphicsImage& input, Pick pick) {
    Ref<GraphicsImage> result = createGraphicsImage({input.getWidth(), input.getHeight()});
    if (!result)
        return nullptr;
    const PixelLock from(input, PixelAccess::read);
    const PixelLock to(*result);
    for (int32_t y = 0; y < to->height; ++y)
        for (int32_t x = 0; x < to->width; ++x)
            to->getRow(y)[x] = pick(*from, x, y);
    return result;
}

Ref<GraphicsImage> copied(GraphicsImage& input) {
    return mapped(input,
                  [](const platform::PixelSurface& from, int32_t x, int32_t y) { return from.getRow(y)[x]; });
}

class AdjustHslFilter final : public FilterBase {
    void declareParameters() override {
        declare("hueOffset", 0.0);
        declare("saturationShift", 0.0);
        declare("luminanceShift", 0.0);
    }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        auto result = copied(image);
        if (result)
            PixelFilters::adjustHsl(*result, parameter<double>("hueOffset"),
                                    parameter<double>("saturationShift"),
                                    parameter<double>("luminanceShift"));
        return result;
    }
};

class DesaturateFilter final : public FilterBase {
    void declareParameters() override {
        declare("grayFactor", 1.0);
        declare("alphaFactor", 1.0);
    }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        auto result = copied(image);
        if (result)
            PixelFilters::desaturate(*result, static_cast<float>(parameter<double>("grayFactor")),
                                     static_cast<float>(parameter<double>("alphaFactor")));
        return result;
    }
};

class ReplaceColorFilter final : public FilterBase {
    void declareParameters() override {
        declare("colorToReplace", UColor());
        declare("replaceColor", UColor());
    }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        auto result = copied(image);
        if (result)
            PixelFilters::replaceColor(*result, parameter<UColor>("colorToReplace"),
                                       parameter<UColor>("replaceColor"));
        return result;
    }
};

class TintFilter final : public FilterBase {
    void declareParameters() override {
        declare("color", UColor(StandardColor::black));
        declare("factor", 0.0);
    }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        auto result = copied(image);
        if (result)
            PixelFilters::tint(*result, parameter<UColor>("color"),
                               static_cast<float>(parameter<double>("factor")));
        return result;
    }
};

class MirrorFilter final : public FilterBase {
    void declareParameters() override {
        declare("vertical", false);
        declare("horizontal", false);
    }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        const bool vertical = parameter<bool>("vertical");
        const bool horizontal = parameter<bool>("horizontal");
        return mapped(image, [=](const platform::PixelSurface& from, int32_t x, int32_t y) {
            return from.getRow(vertical ? from.height - 1 - y : y)[horizontal ? from.width - 1 - x : x];
        });
    }
};

/// By the nearest pixel, or with `interpolation` from the four around the place. What lies outside is
/// transparent, or with `extend` the nearest edge.
class RotateFilter final : public FilterBase {
    void declareParameters() override {
        declare("angle", 0.0);
        declare("center", Geometry::Point{0.5, 0.5});
        declare("interpolation", true);
        declare("extend", false);
    }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        const Geometry::Point share = parameter<Geometry::Point>("center");
        const double degrees = parameter<double>("angle");
        const TransformMatrix back = TransformMatrix::rotation(
            -degrees * std::numbers::pi / 180, {share.x * image.getWidth(), share.y * image.getHeight()});
        const bool smooth = parameter<bool>("interpolation");
        const bool extend = parameter<bool>("extend");
        return mapped(image, [=](const platform::PixelSurface& from, int32_t x, int32_t y) {
            const Geometry::Point place = back.map({x + 0.5, y + 0.5});
            return smooth ? between(from, place, extend)
                          : pixelAt(from, std::floor(place.x), std::floor(place.y), extend);
        });
    }

    static uint32_t pixelAt(const platform::PixelSurface& from, double x, double y, bool extend) {
        if (extend) {
            x = std::clamp(x, 0.0, from.width - 1.0);
            y = std::clamp(y, 0.0, from.height - 1.0);
        }
        const bool inside = x >= 0 && y >= 0 && x < from.width && y < from.height;
        return inside ? from.getRow(static_cast<int32_t>(y))[static_cast<int32_t>(x)] : 0;
    }

    static uint32_t between(const platform::PixelSurface& from, Geometry::Point place, bool extend) {
        const double left = std::floor(place.x - 0.5);
        const double top = std::floor(place.y - 0.5);
        const double right = place.x - 0.5 - left;
        const double low = place.y - 0.5 - top;
        const uint32_t corners[] = {pixelAt(from, left, top, extend), pixelAt(from, left + 1, top, extend),
                                    pixelAt(from, left, top + 1, extend),
                                    pixelAt(from, left + 1, top + 1, extend)};
        const double shares[] = {(1 - right) * (1 - low), right * (1 - low), (1 - right) * low, right * low};
        uint32_t mixed = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            double channel = 0;
            for (int i = 0; i < 4; ++i)
                channel += shares[i] * (corners[i] >> shift & 0xFF);
            mixed |= static_cast<uint32_t>(std::lround(channel)) << shift;
        }
        return mixed;
    }
};

class ScaleFilter final : public FilterBase {
    void declareParameters() override { declare("destinationSize", CmSize{}); }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        return image.createScaled(parameter<CmSize>("destinationSize"), Interpolation::best);
    }
};

/// Its result is the picture as it was; the answer is the parameter `color`, computed when it is first read.
class MeanColorFilter final : public FilterBase {
    void declareParameters() override { declare("color", UColor(), Role::answer); }
    Ref<GraphicsImage> apply(GraphicsImage& image) override {
        answer("color", PixelFilters::meanColor(image));
        return retain(&image);
    }
};

template <typename T>
Ref<FilterBase> createFilter() {
    return make<T>();
}

} // namespace

void FilterBase::declare(std::string_view name, const FilterValue& initial, Role role) {
    parameters_.push_back({name, initial, role});
}

FilterBase::Parameter* FilterBase::find(std::string_view name) {
    const auto found = std::find_if(parameters_.begin(), parameters_.end(),
                                    [name](const Parameter& parameter) { return parameter.name == name; });
    return found == parameters_.end() ? nullptr : &*found;
}

Result FilterBase::setParameter(std::string_view name, const FilterValue& value) {
    Parameter* parameter = find(name);
    if (!parameter || parameter->role == Role::answer || parameter->value.index() != value.index())
        return Result::invalidArgument;
    parameter->value = value;
    result_.reset();
    return Result::ok;
}

Result FilterBase::getParameter(std::string_view name, FilterValue& value) {
    const Parameter* parameter = find(name);
    if (!parameter)
        return Result::invalidArgument;
    if (parameter->role == Role::answer)
        getResult();
    value = parameter->value;
    return Result::ok;
}

void FilterBase::setInput(Ref<GraphicsImage> image) {
    input_ = std::move(image);
    result_.reset();
}

Ref<GraphicsImage> FilterBase::getResult() {
    if (!result_ && input_)
        result_ = apply(*input_);
    return result_;
}

BitmapFilterFactory::BitmapFilterFactory()
    : rows_{{"AdjustHSL", &createFilter<AdjustHslFilter>},
            {"Desaturate", &createFilter<DesaturateFilter>},
            {"ReplaceColor", &createFilter<ReplaceColorFilter>},
            {"Tint", &createFilter<TintFilter>},
            {"Mirror", &createFilter<MirrorFilter>},
            {"Rotate", &createFilter<RotateFilter>},
            {"PNMScale", &createFilter<ScaleFilter>},
            {"MeanColor", &createFilter<MeanColorFilter>}} {}

void BitmapFilterFactory::add(std::string_view name, Creator create) {
    const auto found =
        std::find_if(rows_.begin(), rows_.end(), [name](const Row& row) { return row.name == name; });
    if (found != rows_.end())
        found->create = create;
    else
        rows_.push_back({name, create});
}

Ref<FilterBase> BitmapFilterFactory::create(std::string_view name) const {
    const auto found =
        std::find_if(rows_.begin(), rows_.end(), [name](const Row& row) { return row.name == name; });
    if (found == rows_.end())
        return nullptr;
    Ref<FilterBase> filter = found->create();
    filter->declareParameters();
    return filter;
}

} // namespace qorl
