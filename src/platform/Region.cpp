#include "platform/Region.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qorl::platform {

namespace {

using Rects = std::vector<CmRect>;

enum class Operation : uint8_t { unite, subtract, intersect };

/// Appends bands of rectangles and joins a band to the one above it where both have the same gaps.
class BandWriter {
public:
    explicit BandWriter(Rects& rects) : rects_(rects), previous_(rects.size()), current_(rects.size()) {}

    void begin(int32_t top, int32_t bottom) {
        top_ = top;
        bottom_ = bottom;
        current_ = rects_.size();
    }

    void add(int32_t left, int32_t right) {
        if (left >= right)
            return;
        if (rects_.size() > current_ && rects_.back().right == left)
            rects_.back().right = right;
        else
            rects_.push_back({left, top_, right, bottom_});
    }

    void end() {
        if (rects_.size() == current_)
            return;
        if (continuesPrevious()) {
            for (size_t i = previous_; i < current_; ++i)
                rects_[i].bottom = bottom_;
            rects_.resize(current_);
        } else {
            previous_ = current_;
        }
    }

private:
    bool continuesPrevious() const {
        const size_t count = rects_.size() - current_;
        if (current_ - previous_ != count || rects_[previous_].bottom != top_)
            return false;
        for (size_t i = 0; i < count; ++i) {
            const CmRect& above = rects_[previous_ + i];
            const CmRect& below = rects_[current_ + i];
            if (above.left != below.left || above.right != below.right)
                return false;
        }
        return true;
    }

    Rects& rects_;
    size_t previous_;
    size_t current_;
    int32_t top_ = 0;
    int32_t bottom_ = 0;
};

/// Walks the bands of one operand from top to bottom.
class BandReader {
public:
    explicit BandReader(std::span<const CmRect> rects) : rects_(rects) { findEnd(); }

    bool isDone() const { return begin_ == rects_.size(); }
    int32_t getTop() const { return isDone() ? std::numeric_limits<int32_t>::max() : rects_[begin_].top; }
    int32_t getBottom() const { return rects_[begin_].bottom; }

    bool covers(int32_t y) const { return !isDone() && getTop() <= y; }
    int32_t nextEdge(int32_t y) const {
        if (isDone())
            return std::numeric_limits<int32_t>::max();
        return covers(y) ? getBottom() : getTop();
    }
    void leave(int32_t y) {
        while (!isDone() && getBottom() <= y) {
            begin_ = end_;
            findEnd();
        }
    }
    std::span<const CmRect> getBand(int32_t y) const {
        return covers(y) ? rects_.subspan(begin_, end_ - begin_) : std::span<const CmRect>();
    }

private:
    void findEnd() {
        end_ = begin_;
        while (end_ < rects_.size() && rects_[end_].top == rects_[begin_].top)
            ++end_;
    }

    std::span<const CmRect> rects_;
    size_t begin_ = 0;
    size_t end_ = 0;
};

bool isIn(Operation operation, bool inA, bool inB) {
    switch (operation) {
    case Operation::unite: return inA || inB;
    case Operation::subtract: return inA && !inB;
    case Operation::intersect: return inA && inB;
    }
    return false;
}

/// Both bands' edges in order; between two neighbours the pixels are all in or all out.
void combineBand(Operation operation, std::span<const CmRect> a, std::span<const CmRect> b,
                 BandWriter& writer) {
    constexpr int32_t last = std::numeric_limits<int32_t>::max();
    size_t i = 0;
    size_t j = 0;
    bool inA = false;
    bool inB = false;
    int32_t from = 0;
    while (i < a.size() || j < b.size()) {
        const int32_t edgeA = i == a.size() ? last : inA ? a[i].right : a[i].left;
        const int32_t edgeB = j == b.size() ? last : inB ? b[j].right : b[j].left;
        const int32_t edge = std::min(edgeA, edgeB);
        if (isIn(operation, inA, inB))
            writer.add(from, edge);
        if (edgeA == edge) {
            i += inA;
            inA = !inA;
        }
        if (edgeB == edge) {
            j += inB;
            inB = !inB;
        }
        from = edge;
    }
}

Rects combine(Operation operation, std::span<const CmRect> a, std::span<const CmRect> b) {
    Rects result;
    result.reserve(a.size() + b.size());
    BandReader readA(a);
    BandReader readB(b);
    BandWriter writer(result);
    int32_t y = std::min(readA.getTop(), readB.getTop());
    while (!readA.isDone() || !readB.isDone()) {
        const int32_t bottom = std::min(readA.nextEdge(y), readB.nextEdge(y));
        writer.begin(y, bottom);
        combineBand(operation, readA.getBand(y), readB.getBand(y), writer);
        writer.end();
        readA.leave(bottom);
        readB.leave(bottom);
        y = bottom;
    }
    return result;
}

int32_t toEdge(double value) {
    constexpr double lowest = std::numeric_limits<int32_t>::min();
    constexpr double highest = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::clamp(value, lowest, highest));
}

} // namespace

CmRect Region::getBounds() const {
    if (rects_.empty())
        return {};
    CmRect bounds{rects_.front().left, rects_.front().top, rects_.front().right, rects_.back().bottom};
    for (const CmRect& rect : rects_) {
        bounds.left = std::min(bounds.left, rect.left);
        bounds.right = std::max(bounds.right, rect.right);
    }
    return bounds;
}

int64_t Region::getArea() const {
    int64_t area = 0;
    for (const CmRect& rect : rects_)
        area += int64_t{rect.width()} * rect.height();
    return area;
}

bool Region::contains(CmPoint point) const {
    return std::any_of(rects_.begin(), rects_.end(),
                       [&](const CmRect& rect) { return rect.contains(point); });
}

bool Region::contains(const CmRect& rect) const {
    if (rect.isEmpty())
        return true;
    return combine(Operation::subtract, std::span(&rect, 1), rects_).empty();
}

bool Region::intersects(const CmRect& rect) const {
    if (rect.isEmpty())
        return false;
    return std::any_of(rects_.begin(), rects_.end(), [&](const CmRect& own) { return own.intersects(rect); });
}

void Region::add(const CmRect& rect) {
    if (rect.isEmpty())
        return;
    if (rects_.empty()) {
        rects_.push_back(rect);
        return;
    }
    if (rects_.size() == 1 && rects_.front().contains(rect))
        return;
    rects_ = combine(Operation::unite, rects_, std::span(&rect, 1));
}

void Region::add(const Region& other) {
    if (other.isEmpty())
        return;
    if (isEmpty())
        rects_ = other.rects_;
    else
        rects_ = combine(Operation::unite, rects_, other.rects_);
}

void Region::subtract(const CmRect& rect) {
    if (intersects(rect))
        rects_ = combine(Operation::subtract, rects_, std::span(&rect, 1));
}

void Region::subtract(const Region& other) {
    if (!isEmpty() && !other.isEmpty())
        rects_ = combine(Operation::subtract, rects_, other.rects_);
}

void Region::intersect(const CmRect& rect) {
    if (rect.isEmpty())
        rects_.clear();
    else if (!rect.contains(getBounds()))
        rects_ = combine(Operation::intersect, rects_, std::span(&rect, 1));
}

void Region::intersect(const Region& other) {
    if (other.isEmpty())
        rects_.clear();
    else
        rects_ = combine(Operation::intersect, rects_, other.rects_);
}

void Region::move(int32_t dx, int32_t dy) {
    for (CmRect& rect : rects_)
        rect = rect.moved(dx, dy);
}

void Region::simplify(size_t most) {
    most = std::max<size_t>(most, 1);
    while (rects_.size() > most) {
        size_t best = 0;
        int64_t bestCost = std::numeric_limits<int64_t>::max();
        for (size_t i = 0; i + 1 < rects_.size(); ++i) {
            const CmRect both = rects_[i].unite(rects_[i + 1]);
            const int64_t cost = int64_t{both.width()} * both.height() -
                                 int64_t{rects_[i].width()} * rects_[i].height() -
                                 int64_t{rects_[i + 1].width()} * rects_[i + 1].height();
            if (cost < bestCost) {
                bestCost = cost;
                best = i;
            }
        }
        const size_t before = rects_.size();
        add(rects_[best].unite(rects_[best + 1]));
        // A union may cut neighbours into more bands than it saved.
        if (rects_.size() >= before)
            rects_ = {getBounds()};
    }
}

Region Region::scaled(double factor) const {
    Region result;
    for (const CmRect& rect : rects_)
        result.add(scaledOutward(rect, factor));
    return result;
}

CmRect scaledOutward(const CmRect& rect, double factor) {
    if (rect.isEmpty())
        return {};
    constexpr double slack = 0.001;
    return {toEdge(std::floor(rect.left * factor + slack)), toEdge(std::floor(rect.top * factor + slack)),
            toEdge(std::ceil(rect.right * factor - slack)), toEdge(std::ceil(rect.bottom * factor - slack))};
}

int64_t squaredDistance(const CmRect& rect, CmPoint point) {
    const auto beyond = [](int64_t place, int64_t first, int64_t end) {
        return std::max({first - place, int64_t{0}, place - end + 1});
    };
    const int64_t dx = beyond(point.x, rect.left, rect.right);
    const int64_t dy = beyond(point.y, rect.top, rect.bottom);
    return dx * dx + dy * dy;
}

} // namespace qorl::platform
