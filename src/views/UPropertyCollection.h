#pragma once

#include "foundation/CmObject.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl {

/// Names with texts, in the order in which they were added: what a skin says to the application about a view
/// and the library does not understand. A view has it among its attributes, as "PropertyCollection".
/// Threading: one thread at a time.
class UPropertyCollection : public CmObject {
    QORL_CLASS(UPropertyCollection, CmObject)

public:
    static constexpr std::string_view attributeKey = "PropertyCollection";

    /// Of equal names the first one is found.
    void add(std::string_view name, std::string_view value) { properties_.emplace_back(name, value); }
    int32_t count() const { return static_cast<int32_t>(properties_.size()); }
    /// Empty out of range.
    std::string_view getName(int32_t index) const { return at(index).first; }
    std::string_view getValue(int32_t index) const { return at(index).second; }
    /// False when there is no such property.
    bool find(std::string_view name, std::string_view& value) const;

private:
    std::pair<std::string_view, std::string_view> at(int32_t index) const;

    std::vector<std::pair<std::string, std::string>> properties_;
};

} // namespace qorl
