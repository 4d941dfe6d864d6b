#include "views/UPropertyCollection.h"

namespace qorl {

std::pair<std::string_view, std::string_view> UPropertyCollection::at(int32_t index) const {
    if (index < 0 || index >= count())
        return {};
    const auto& property = properties_[static_cast<size_t>(index)];
    return {property.first, property.second};
}

bool UPropertyCollection::find(std::string_view name, std::string_view& value) const {
    for (const auto& property : properties_)
        if (property.first == name) {
            value = property.second;
            return true;
        }
    return false;
}

} // namespace qorl
