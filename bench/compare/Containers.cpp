#include "compare/Containers.h"

#include "compare/Measure.h"
#include "foundation/containers/CmArray.h"
#include "foundation/containers/dictionaries/CmHashDictionary.h"
#include "foundation/text/CmString.h"

#include <memory>
#include <string>
#include <vector>

namespace qorl::bench {

namespace {

constexpr int32_t many = 1'000'000;
constexpr int32_t pairs = 100'000;

/// A number as an object.
class NumberObject : public CmObject {
    QORL_CLASS(NumberObject, CmObject)

public:
    explicit NumberObject(int32_t value) : value(value) {}
    bool isEqual(const CmObject* other) const override {
        return value == static_cast<const NumberObject*>(other)->value;
    }
    uint32_t hashCode(uint32_t size) const override { return static_cast<uint32_t>(value) % size; }

    const int32_t value;
};

/// The numbers that all programs take.
int32_t mixed(int32_t i) {
    return static_cast<int32_t>(static_cast<uint32_t>(i) * 2654435761u >> 4);
}

std::unique_ptr<CmHashDictionary> makeDictionary() {
    return std::make_unique<CmHashDictionary>(CmHashTable::defaultBuckets, CmHashTable::Growth::automatic,
                                              Ownership::adopt);
}

void measureArray(const std::vector<Ref<NumberObject>>& numbers) {
    const double push = medianOf(5, [&] {
        CmArray array(0, CmArray::doubling);
        for (const auto& number : numbers)
            array.add(number.get());
    });
    report("containers", "vector_push_1M", push / many, "ns/op");
    CmArray array(0, CmArray::doubling);
    for (const auto& number : numbers)
        array.add(number.get());
    const double iterate = medianOf(5, [&] {
        int64_t sum = 0;
        for (CmArrayIterator iterator(array); !iterator.done();) {
            sum += static_cast<NumberObject*>(iterator.next())->value;
            asm volatile("" : "+r"(sum));
        }
    });
    report("containers", "vector_iterate_1M", iterate / many, "ns/op");
}

void measureDictionary(const char* kind, const std::vector<Ref<CmObject>>& keys,
                       const std::vector<Ref<NumberObject>>& values) {
    std::unique_ptr<CmHashDictionary> dictionary;
    std::vector<double> inserts;
    for (int i = 0; i < 5; ++i) {
        dictionary = makeDictionary();
        inserts.push_back(timeOf([&] {
            for (size_t k = 0; k < keys.size(); ++k)
                dictionary->add(new CmAssociation(keys[k].get(), values[k].get()));
        }));
    }
    int64_t sum = 0;
    const double find = medianOf(5, [&] {
        for (const auto& key : keys)
            sum += static_cast<NumberObject*>(dictionary->lookup(key.get())->getObject())->value;
        asm volatile("" : "+r"(sum));
    });
    const std::string name = std::string("umap_") + kind;
    report("containers", name + "_insert_100k", median(inserts) / pairs, "ns/op");
    report("containers", name + "_find_100k", find / pairs, "ns/op");
}

} // namespace

void measureContainers() {
    std::vector<Ref<NumberObject>> numbers;
    for (int32_t i = 0; i < many; ++i)
        numbers.push_back(make<NumberObject>(mixed(i)));
    measureArray(numbers);
    numbers.resize(pairs);
    std::vector<Ref<CmObject>> keys(numbers.begin(), numbers.end());
    measureDictionary("int", keys, numbers);
    for (int32_t i = 0; i < pairs; ++i) {
        const std::string text = "group" + std::to_string(i / 500) + "/key" + std::to_string(mixed(i));
        keys[static_cast<size_t>(i)] = make<CmString>(text.c_str());
    }
    measureDictionary("str", keys, numbers);
}

} // namespace qorl::bench
