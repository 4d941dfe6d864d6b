#include "persistence/defaults/GroupNames.h"

#include "foundation/text/StoredBytes.h"

#include <algorithm>
#include <glib.h>
#include <memory>

namespace qorl::GroupNames {

namespace {

struct FreeText {
    void operator()(gchar* text) const { g_free(text); }
};

std::string digestOf(const std::string& bytes) {
    const std::unique_ptr<gchar, FreeText> digits(g_compute_checksum_for_data(
        G_CHECKSUM_MD5, reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
    std::string text = digits.get();
    std::transform(text.begin(), text.end(), text.begin(), g_ascii_toupper);
    return text;
}

} // namespace

std::u16string keyOf(const ConstString& group) {
    return group.isWide() ? std::u16string(group.view16())
                          : std::u16string(text::widenStored(group.view8()).view16());
}

std::string fileOf(const ConstString& group) {
    std::string bytes;
    for (const char16_t unit : keyOf(group)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return digestOf(bytes);
}

std::string earlierFileOf(const ConstString& group) {
    return digestOf(group.toUtf8());
}

} // namespace qorl::GroupNames
