#include "persistence/defaults/Md5.h"

#include <algorithm>
#include <glib.h>
#include <memory>

namespace qorl {

namespace {

struct FreeText {
    void operator()(gchar* text) const { g_free(text); }
};

} // namespace

std::string md5Digits(const void* bytes, size_t size) {
    const std::unique_ptr<gchar, FreeText> digits(
        g_compute_checksum_for_data(G_CHECKSUM_MD5, static_cast<const guchar*>(bytes), size));
    std::string text = digits.get();
    std::transform(text.begin(), text.end(), text.begin(), g_ascii_toupper);
    return text;
}

} // namespace qorl
