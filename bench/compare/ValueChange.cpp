#include "compare/ValueChange.h"

#include "compare/Measure.h"
#include "foundation/ClassMacros.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/messages/UpdateHandler.h"

#include <cstdio>
#include <memory>
#include <string>

namespace qorl::bench {

namespace {

class Source : public CmObject {
    QORL_CLASS(Source, CmObject)

public:
    enum class Mode { immediate, deferred };

    void setValue(int32_t value, Mode mode) {
        if (value == value_)
            return;
        value_ = value;
        if (mode == Mode::immediate)
            changed();
        else
            deferUpdate();
    }
    int32_t getValue() const { return value_; }

private:
    int32_t value_ = 0;
};

class Dependent : public CmObject {
    QORL_CLASS(Dependent, CmObject)

public:
    void notify(CmObject* changed, int32_t) override {
        got = static_cast<Source*>(changed)->getValue();
        ++calls;
    }
    int32_t got = 0;
    int64_t calls = 0;
};

struct Size {
    int32_t dependents;
    int32_t sets;
};
constexpr Size sizes[] = {{1, 1000000}, {10, 100000}, {1000, 1000}};

class Bound {
public:
    explicit Bound(int32_t dependents) : dependents_(new Dependent[static_cast<size_t>(dependents)]) {
        last_ = &dependents_[dependents - 1];
        for (int32_t i = 0; i < dependents; ++i)
            source_.addDependent(&dependents_[i]);
    }
    ~Bound() { source_.removeDependent(nullptr); }

    void set(Source::Mode mode) { source_.setValue(++serial_, mode); }
    static void turn() { UpdateHandler::instance()->triggerDeferredUpdates(nullptr); }

    void expectHeard(int64_t calls) const {
        if (last_->got == serial_ && last_->calls == calls)
            return;
        std::fprintf(stderr, "compare: a dependent missed a change\n");
        std::exit(1);
    }

private:
    Source source_;
    std::unique_ptr<Dependent[]> dependents_;
    const Dependent* last_;
    int32_t serial_ = 0;
};

void measure(const Size& size, const char* kind, int32_t repetitions, int32_t turns, int32_t setsPerTurn,
             Source::Mode mode) {
    Bound bound(size.dependents);
    const double time = medianOf(repetitions, [&] {
        for (int32_t turn = 0; turn < turns; ++turn) {
            for (int32_t i = 0; i < setsPerTurn; ++i)
                bound.set(mode);
            if (mode == Source::Mode::deferred)
                Bound::turn();
        }
    });
    // What is deferred is told once a turn; what is immediate, at each set.
    const int64_t told = mode == Source::Mode::deferred ? turns : int64_t{turns} * setsPerTurn;
    bound.expectHeard(told * repetitions);
    report("value_change", kind + std::to_string(size.dependents),
           time / static_cast<double>(told) / size.dependents, "ns/notification");
}

} // namespace

void measureValueChange() {
    const EventLoop loop;
    UpdateHandler::instance();
    for (const Size& size : sizes) {
        measure(size, "direct_deps", 5, size.sets, 1, Source::Mode::immediate);
        measure(size, "deferred_deps", 3, size.sets / 10, 1, Source::Mode::deferred);
        measure(size, "coalesced10_deps", 3, size.sets / 10, 10, Source::Mode::deferred);
    }
}

} // namespace qorl::bench
