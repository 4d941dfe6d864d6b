#include "graphics/BitmapCache.h"

#include "foundation/Singleton.h"
#include "graphics/UBitmap.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace qorl {

namespace {

constinit Singleton<BitmapCache> cache;

} // namespace

BitmapCache::BitmapCache() : buckets_(bucketCount) {}

BitmapCache::~BitmapCache() {
    clear();
}

BitmapCache* BitmapCache::instance() {
    return cache.get();
}

BitmapCache* BitmapCache::existing() {
    return cache.peek();
}

size_t BitmapCache::bucketOf(const UBitmap* source) {
    return (reinterpret_cast<uintptr_t>(source) >> 4) % bucketCount;
}

bool BitmapCache::put(UBitmap* source, std::string_view key, UBitmap* derived) try {
    if (!source || !derived || source == derived)
        return false;
    auto& bucket = buckets_[bucketOf(source)];
    for (auto& entry : bucket) {
        if (entry.source == source && entry.key == key) {
            const Ref<UBitmap> old = std::exchange(entry.derived, retain(derived));
            return true;
        }
    }
    bucket.push_back({source, std::string(key), retain(derived)});
    ++count_;
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

Ref<UBitmap> BitmapCache::get(const UBitmap* source, std::string_view key) const {
    for (const auto& entry : buckets_[bucketOf(source)])
        if (entry.source == source && entry.key == key)
            return entry.derived;
    return nullptr;
}

void BitmapCache::remove(const UBitmap* source) {
    // A derived bitmap may be a source itself and come back here when it goes, so entries leave the table
    // first.
    std::vector<Ref<UBitmap>> leaving;
    auto& bucket = buckets_[bucketOf(source)];
    std::erase_if(bucket, [&](Entry& entry) {
        if (entry.source != source)
            return false;
        leaving.push_back(std::move(entry.derived));
        return true;
    });
    count_ -= leaving.size();
}

void BitmapCache::clear() {
    std::vector<std::vector<Entry>> leaving(bucketCount);
    leaving.swap(buckets_);
    count_ = 0;
}

} // namespace qorl
