#include "persistence/mounts/VfsResult.h"

#include <iterator>
#include <new>
#include <string>

namespace qorl {

namespace {

struct Meaning {
    const char* text;
    std::errc condition;
};

constexpr Meaning meanings[] = {
    {"", std::errc()},
    {"internal filesystem returned error", std::errc::io_error},
    {"filesystem is readonly", std::errc::read_only_file_system},
    {"no archive registered for this uri", std::errc::no_such_file_or_directory},
    {"no filesystem registered to handle URI", std::errc::protocol_not_supported},
    {"not implemented", std::errc::not_supported},
    {"unknown error", std::errc::io_error},
};

const Meaning& meaningOf(int code) {
    const bool isKnown = code >= 0 && code < static_cast<int>(std::size(meanings));
    return meanings[isKnown ? code : static_cast<int>(VfsError::unknown)];
}

class VfsCategory : public std::error_category {
public:
    const char* name() const noexcept override { return "system"; }
    std::string message(int code) const override { return meaningOf(code).text; }
    std::error_condition default_error_condition(int code) const noexcept override {
        return meaningOf(code).condition;
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
