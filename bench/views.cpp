#include "support/Ratio.h"
#include "views/UView.h"
#include "windows/URenderWindow.h"

#include <memory>
#include <vector>

namespace qorl::bench {
namespace {

constexpr int32_t fanOut = 10;
constexpr CmRect rootFrame{0, 0, 1000, 1000};
constexpr CmRect childFrame{5, 5, 900, 900};

/// What holds others stretches, so that a resize reaches every view; every second leaf moves instead.
uint32_t attachOf(int64_t index, int64_t count) {
    const bool moves = index * fanOut >= count && index % 2 != 0;
    return moves ? viewAttachRight | viewAttachTop : viewAttachAll;
}

/// `count` views breadth first below `root`, `fanOut` in each.
void grow(UView& root, int64_t count) {
    std::vector<UView*> views{&root};
    for (int64_t i = 0; i < count; ++i) {
        auto view = make<UView>(childFrame);
        view->setAttach(attachOf(i, count));
        UView* parent = views[static_cast<size_t>(i / fanOut)];
        views.push_back(view.get());
        parent->addSubView(std::move(view));
    }
}

void relayout(benchmark::State& state) {
    const auto window = make<URenderWindow>(rootFrame);
    const auto root = make<UView>(rootFrame);
    grow(*root, state.range(0));
    window->addSubView(root);
    window->attached(nullptr);
    int32_t step = 0;
    for (auto _ : state) {
        step ^= 1;
        root->setFrame({0, 0, 1000 + step, 1000 + step}, true);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// A box that follows its parent by the same rule and does nothing else.
struct Box {
    CmRect frame = childFrame;
    uint32_t attach = 0;
    std::vector<std::unique_ptr<Box>> boxes;

    void resize(const CmRect& rect) {
        const int32_t dx = rect.width() - frame.width();
        const int32_t dy = rect.height() - frame.height();
        frame = rect;
        for (const std::unique_ptr<Box>& box : boxes) {
            CmRect next = box->frame;
            next.right += box->attach & viewAttachRight ? dx : 0;
            next.left += box->attach & viewAttachRight && !(box->attach & viewAttachLeft) ? dx : 0;
            next.bottom += box->attach & viewAttachBottom ? dy : 0;
            next.top += box->attach & viewAttachBottom && !(box->attach & viewAttachTop) ? dy : 0;
            if (next != box->frame)
                box->resize(next);
        }
    }
};

void relayoutFloor(benchmark::State& state) {
    Box root;
    root.frame = rootFrame;
    std::vector<Box*> all{&root};
    for (int64_t i = 0; i < state.range(0); ++i) {
        auto box = std::make_unique<Box>();
        box->attach = attachOf(i, state.range(0));
        all.push_back(box.get());
        all[static_cast<size_t>(i / fanOut)]->boxes.push_back(std::move(box));
    }
    int32_t step = 0;
    for (auto _ : state) {
        step ^= 1;
        root.resize({0, 0, 1000 + step, 1000 + step});
        benchmark::DoNotOptimize(all.back()->frame);
    }
}
QORL_RATIO(relayout, relayoutFloor, 25, 1000, 10000);

void buildTree(benchmark::State& state) {
    for (auto _ : state) {
        const auto root = make<UView>(rootFrame);
        grow(*root, state.range(0));
        benchmark::DoNotOptimize(root->getLastSubView());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// One block of a view's size for each, entered in the vectors of a tree.
void buildTreeFloor(benchmark::State& state) {
    struct Node {
        unsigned char block[sizeof(UView)] = {};
        std::vector<std::unique_ptr<Node>> nodes;
    };
    for (auto _ : state) {
        Node root;
        std::vector<Node*> all{&root};
        for (int64_t i = 0; i < state.range(0); ++i) {
            auto node = std::make_unique<Node>();
            all.push_back(node.get());
            all[static_cast<size_t>(i / fanOut)]->nodes.push_back(std::move(node));
        }
        benchmark::DoNotOptimize(all.back());
    }
}
QORL_RATIO(buildTree, buildTreeFloor, 2.5, 1000, 10000);

} // namespace
} // namespace qorl::bench
