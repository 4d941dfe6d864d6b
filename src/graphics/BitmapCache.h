#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

class UBitmap;

/// Derived bitmaps under text keys, so that a variant that is asked for again is the same object.
///
/// An entry keeps the derived bitmap. The source is known by its address and takes its entries away when it
/// goes. GUI thread.
class BitmapCache : public FObject {
    QORL_CLASS(BitmapCache, FObject)

public:
    BitmapCache();
    ~BitmapCache() override;

    /// The cache of the process, made at first use; null after the library's teardown has begun.
    static BitmapCache* instance();
    /// The cache if it has been made.
    static BitmapCache* existing();

    /// Keeps a reference on `derived`; replaces what stood under the key. False for a null argument, for
    /// a bitmap under itself, which would never go, and without memory.
    bool put(UBitmap* source, std::string_view key, UBitmap* derived);
    /// Null when there is none.
    Ref<UBitmap> get(const UBitmap* source, std::string_view key) const;
    /// Takes all entries of `source` away.
    void remove(const UBitmap* source);
    void clear();
    size_t count() const { return count_; }

private:
    static constexpr size_t bucketCount = 997;

    struct Entry {
        const UBitmap* source;
        std::string key;
        Ref<UBitmap> derived;
    };

    static size_t bucketOf(const UBitmap* source);

    std::vector<std::vector<Entry>> buckets_;
    size_t count_ = 0;
};

} // namespace qorl
