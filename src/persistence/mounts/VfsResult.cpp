#include "persistence/mounts/VfsResult.h"

#include <iterator>
#include <new>
#include <string>

namespace qorl {

namespace {

constexpr const char* texts[] = {
    "",
    "internal filesystem returned error",
    "filesystem is readonly",
    "no archive registered for this uri",
    "no filesystem registered to handle URI",
    "not implemented",
    "unknown error",
};

class VfsCategory : public std::error_category {
public:
    const char* name() const noexcept override { return "system"; }
    std::string message(int code) const override {
        const bool isKnown = code >= 0 && code < static_cast<int>(std::size(texts));
        return texts[isKnown ? code : static_cast<int>(VfsError::unknown)];
    }
};

} // namespace

const std::error_category& vfsCategory() noexcept {
    // Never destroyed: results may be asked for their text as long as the library is there.
    alignas(VfsCategory) static unsigned char room[sizeof(VfsCategory)];
    static const VfsCategory& category = *new (room) VfsCategory;
    return category;
}

std::error_code make_error_code(VfsError error) noexcept {
    return {static_cast<int>(error), vfsCategory()};
}

} // namespace qorl
