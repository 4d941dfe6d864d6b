#include "foundation/Cast.h"
#include "foundation/ClassMacros.h"
#include "foundation/CmObject.h"
#include "objects/DynamicCast.h"
#include "support/Ratio.h"

#include <memory>
#include <string>
#include <thread>

namespace qorl::bench {
namespace {

class First : public CmObject {
    QORL_CLASS(First, CmObject)
};
class Middle : public First {
    QORL_CLASS(Middle, First)
};
class Third : public Middle {
    QORL_CLASS(Third, Middle)
};
class Leaf : public Third {
    QORL_CLASS(Leaf, Third)
};
class Beside : public First {
    QORL_CLASS(Beside, First)
};

void castToBase(benchmark::State& state) {
    const Ref<CmObject> object = make<Leaf>();
    for (auto _ : state)
        benchmark::DoNotOptimize(cast<Middle>(object.get()));
}
void castToBaseFloor(benchmark::State& state) {
    const Base& object = leaf();
    for (auto _ : state)
        benchmark::DoNotOptimize(isMiddle(object));
}
QORL_RATIO(castToBase, castToBaseFloor, 0.5);

void castRefused(benchmark::State& state) {
    const Ref<CmObject> object = make<Leaf>();
    for (auto _ : state)
        benchmark::DoNotOptimize(cast<Beside>(object.get()));
}
void castRefusedFloor(benchmark::State& state) {
    const Base& object = leaf();
    for (auto _ : state)
        benchmark::DoNotOptimize(isBeside(object));
}
QORL_RATIO(castRefused, castRefusedFloor, 1.0);

/// A name that comes from a document or a message shares no pointer with the class's own.
void isTypeOfForeignName(benchmark::State& state) {
    const Ref<CmObject> object = make<Leaf>();
    const std::string name("Middle");
    for (auto _ : state)
        benchmark::DoNotOptimize(object->isTypeOf(name.c_str(), true));
}
QORL_RATIO(isTypeOfForeignName, castToBaseFloor, 1.5);

/// Making, sharing and releasing an object, against the standard's shared pointer.
void makeAndShare(benchmark::State& state) {
    for (auto _ : state) {
        const Ref<CmObject> object = make<First>();
        const Ref<CmObject> second = object;
        benchmark::DoNotOptimize(second.get());
    }
}
void makeAndShareFloor(benchmark::State& state) {
    struct Plain {
        virtual ~Plain() = default;
        void* fields[2] = {};
    };
    // Before its first thread a program counts shared pointers without atomic operations; ours have threads.
    std::thread([] {}).join();
    for (auto _ : state) {
        const auto object = std::make_shared<Plain>();
        const auto second = object;
        benchmark::DoNotOptimize(second.get());
    }
}
QORL_RATIO(makeAndShare, makeAndShareFloor, 1.0);

} // namespace
} // namespace qorl::bench
