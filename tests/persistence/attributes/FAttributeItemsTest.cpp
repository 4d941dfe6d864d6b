#include "foundation/Cast.h"
#include "persistence/attributes/FAttributes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace qorl {
namespace {

/// What a list of attributes must be to those who search it.
struct PlainList {
    std::vector<std::pair<std::string, int64_t>> entries;

    auto find(const std::string& key) {
        return std::find_if(entries.begin(), entries.end(),
                            [&](const auto& entry) { return entry.first == key; });
    }
    void set(const std::string& key, int64_t value) {
        if (const auto found = find(key); found != entries.end())
            found->second = value;
        else
            entries.emplace_back(key, value);
    }
};

void expectEqual(const FAttributes& attributes, PlainList& plain, uint32_t keys) {
    ASSERT_EQ(attributes.count(), static_cast<int32_t>(plain.entries.size()));
    for (int32_t i = 0; i < attributes.count(); ++i) {
        ASSERT_EQ(attributes.at(i)->key(), plain.entries[static_cast<size_t>(i)].first) << "place " << i;
        ASSERT_EQ(attributes.at(i)->getInteger(), plain.entries[static_cast<size_t>(i)].second)
            << "place " << i;
    }
    for (uint32_t i = 0; i < keys; i += 1 + keys / 100) {
        const std::string key = "key" + std::to_string(i);
        const auto found = plain.find(key);
        ASSERT_EQ(attributes.contains(key), found != plain.entries.end()) << key;
        ASSERT_EQ(attributes.getInteger(key, -1), found != plain.entries.end() ? found->second : -1) << key;
    }
}

TEST(FAttributeItems, FindsTheFirstOfEqualKeysWhateverHappens) {
    struct Case {
        uint32_t seed, keys, steps;
        // In parts of a hundred; the rest are searches.
        uint32_t sets, appends, removes;
    };
    const Case cases[] = {
        {1, 8, 2000, 30, 10, 30},   {2, 40, 4000, 30, 20, 20}, {3, 40, 4000, 10, 30, 40},
        {4, 300, 6000, 40, 20, 10}, {5, 300, 6000, 50, 0, 40}, {6, 2000, 6000, 60, 10, 10},
        {7, 4, 3000, 10, 40, 30},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "seed " << c.seed);
        std::mt19937 random(c.seed);
        FAttributes attributes;
        FAttributes sharer;
        attributes.shareWith(sharer);
        PlainList plain;
        for (uint32_t step = 0; step < c.steps; ++step) {
            const std::string key = "key" + std::to_string(random() % c.keys);
            FAttributes& used = random() % 2 ? attributes : sharer;
            const uint32_t action = static_cast<uint32_t>(random()) % 100;
            const auto found = plain.find(key);
            if (action < c.sets) {
                used.setInteger(key, step);
                plain.set(key, step);
            } else if (action < c.sets + c.appends) {
                used.append(key).setInteger(step);
                plain.entries.emplace_back(key, step);
            } else if (action < c.sets + c.appends + c.removes) {
                ASSERT_EQ(used.remove(key), found != plain.entries.end()) << key;
                if (found != plain.entries.end())
                    plain.entries.erase(found);
            } else {
                ASSERT_EQ(used.getInteger(key, -1), found != plain.entries.end() ? found->second : -1) << key;
            }
            if (step % 1000 == 999) {
                ASSERT_NO_FATAL_FAILURE(expectEqual(attributes, plain, c.keys)) << "step " << step;
                ASSERT_NO_FATAL_FAILURE(expectEqual(FAttributes(sharer), plain, c.keys)) << "a copy";
            }
        }
        attributes.removeAll();
        plain.entries.clear();
        sharer.setInteger("key1", 5);
        plain.set("key1", 5);
        ASSERT_NO_FATAL_FAILURE(expectEqual(attributes, plain, c.keys)) << "emptied";
    }
}

} // namespace
} // namespace qorl
