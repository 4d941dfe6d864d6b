#include "views/GeometryAttributes.h"

#include "views/Reach.h"

#include <array>

namespace qorl {

namespace {

template <size_t count>
using Numbers = std::array<int32_t, count>;

template <size_t count>
void store(FAttributes& attributes, std::string_view key, const Numbers<count>& numbers) {
    std::array<uint8_t, count * 4> bytes;
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(static_cast<uint32_t>(numbers[i / 4]) >> (i % 4 * 8));
    attributes.setBinary(key, bytes.data(), static_cast<int64_t>(bytes.size()), true);
}

template <size_t count>
bool load(const FAttributes& attributes, std::string_view key, Numbers<count>& numbers) {
    std::array<uint8_t, count * 4> bytes;
    if (!attributes.getBinaryData(key, bytes.data(), static_cast<int64_t>(bytes.size())))
        return false;
    for (size_t i = 0; i < count; ++i) {
        const auto number =
            static_cast<int32_t>(bytes[i * 4] | bytes[i * 4 + 1] << 8 | bytes[i * 4 + 2] << 16 |
                                 static_cast<uint32_t>(bytes[i * 4 + 3]) << 24);
        numbers[i] = withinReach(number);
    }
    return true;
}

} // namespace

void setPoint(FAttributes& attributes, std::string_view key, CmPoint value) {
    store<2>(attributes, key, {value.x, value.y});
}

void setSize(FAttributes& attributes, std::string_view key, CmSize value) {
    store<2>(attributes, key, {value.width, value.height});
}

void setRect(FAttributes& attributes, std::string_view key, const CmRect& value) {
    store<4>(attributes, key, {value.left, value.top, value.right, value.bottom});
}

bool getPoint(const FAttributes& attributes, std::string_view key, CmPoint& value) {
    Numbers<2> numbers;
    if (!load(attributes, key, numbers))
        return false;
    value = {numbers[0], numbers[1]};
    return true;
}

bool getSize(const FAttributes& attributes, std::string_view key, CmSize& value) {
    Numbers<2> numbers;
    if (!load(attributes, key, numbers))
        return false;
    value = {numbers[0], numbers[1]};
    return true;
}

bool getRect(const FAttributes& attributes, std::string_view key, CmRect& value) {
    Numbers<4> numbers;
    if (!load(attributes, key, numbers))
        return false;
    value = {numbers[0], numbers[1], numbers[2], numbers[3]};
    return true;
}

} // namespace qorl
