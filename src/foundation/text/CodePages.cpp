#include "foundation/text/TextConversion.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <unicode/ucnv.h>

namespace qorl::text {

namespace {

/// Code pages whose number ICU does not know as "cpNUMBER".
constexpr struct {
    uint32_t number;
    const char* name;
} names[] = {
    {874, "windows-874"},   {936, "windows-936"},  {949, "windows-949"},  {950, "windows-950"},
    {1361, "johab"},        {10000, "macintosh"},  {20127, "us-ascii"},   {20866, "koi8-r"},
    {20932, "euc-jp"},      {21866, "koi8-u"},     {28591, "iso-8859-1"}, {28592, "iso-8859-2"},
    {28593, "iso-8859-3"},  {28594, "iso-8859-4"}, {28595, "iso-8859-5"}, {28596, "iso-8859-6"},
    {28597, "iso-8859-7"},  {28598, "iso-8859-8"}, {28599, "iso-8859-9"}, {28605, "iso-8859-15"},
    {50220, "iso-2022-jp"}, {51932, "euc-jp"},     {51936, "gb2312"},     {51949, "euc-kr"},
    {54936, "gb18030"},     {65000, "utf-7"},
};

constexpr uint32_t western = 1252;
constexpr uint32_t japanese = 932;

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

Converter openConverter(uint32_t codePage) {
    char generic[16];
    std::snprintf(generic, sizeof generic, "cp%u", codePage);
    const auto* row = std::find_if(std::begin(names), std::end(names),
                                   [codePage](const auto& entry) { return entry.number == codePage; });
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open(row == std::end(names) ? generic : row->name, &status));
    return U_FAILURE(status) ? nullptr : std::move(converter);
}

/// The five bytes without a character in code page 1252, which ICU reads as control characters of the same
/// number.
bool isWesternHole(uint32_t value) {
    return value == 0x81 || value == 0x8D || value == 0x8F || value == 0x90 || value == 0x9D;
}

// ICU's table of code page 932 is that of IBM's PCs, where three control characters have changed places.
char16_t fromJapaneseControl(char16_t unit) {
    return unit == 0x1C ? u'\x1A' : unit == 0x7F ? u'\x1C' : unit == 0x1A ? u'\x7F' : unit;
}

char16_t toJapaneseControl(char16_t unit) {
    return unit == 0x1A ? u'\x1C' : unit == 0x1C ? u'\x7F' : unit == 0x7F ? u'\x1A' : unit;
}

bool decodeWith(uint32_t codePage, std::string_view bytes, std::u16string& out) {
    if (codePage == western && std::any_of(bytes.begin(), bytes.end(),
                                           [](char c) { return isWesternHole(static_cast<uint8_t>(c)); }))
        return false;
    const Converter converter = openConverter(codePage);
    if (!converter)
        return false;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    // No encoding gives more than two units for a byte.
    out.resize(bytes.size() * 2);
    const int32_t length = ucnv_toUChars(converter.get(), out.data(), static_cast<int32_t>(out.size()),
                                         bytes.data(), static_cast<int32_t>(bytes.size()), &status);
    if (U_FAILURE(status))
        return false;
    out.resize(static_cast<size_t>(length));
    if (codePage == japanese)
        std::transform(out.begin(), out.end(), out.begin(), fromJapaneseControl);
    return true;
}

bool encodeWith(uint32_t codePage, std::u16string_view wide, std::string& out) {
    const Converter converter = openConverter(codePage);
    if (!converter)
        return false;
    std::u16string source(wide);
    if (codePage == western)
        std::replace_if(source.begin(), source.end(), isWesternHole, u'?');
    if (codePage == japanese)
        std::transform(source.begin(), source.end(), source.begin(), toJapaneseControl);
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setSubstChars(converter.get(), "?", 1, &status);
    status = U_ZERO_ERROR; // encodings with states keep a substitute of their own
    // As UCNV_GET_MAX_BYTES_FOR_STRING, which overflows for the longest texts.
    const int64_t room = (static_cast<int64_t>(source.size()) + 10) * ucnv_getMaxCharSize(converter.get());
    if (room > std::numeric_limits<int32_t>::max())
        return false;
    out.resize(static_cast<size_t>(room));
    const int32_t length = ucnv_fromUChars(converter.get(), out.data(), static_cast<int32_t>(out.size()),
                                           source.data(), static_cast<int32_t>(source.size()), &status);
    if (U_FAILURE(status))
        return false;
    out.resize(static_cast<size_t>(length));
    return true;
}

} // namespace

bool decode(uint32_t codePage, std::string_view bytes, std::u16string& out) {
    try {
        return decodeWith(codePage, bytes, out);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool encode(uint32_t codePage, std::u16string_view wide, std::string& out) {
    try {
        return encodeWith(codePage, wide, out);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace qorl::text
