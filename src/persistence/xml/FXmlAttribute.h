#pragma once

#include "foundation/text/CmString.h"

#include <qorl/Ref.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace qorl {

/// A parsed attribute of a tag: two 8-bit texts, with entities decoded.
class FXmlAttribute : public CmObject {
    QORL_CLASS(FXmlAttribute, CmObject)
    QORL_CLONE(FXmlAttribute)

public:
    FXmlAttribute(const ConstString& name, const ConstString& value) : name_(name), value_(value) {}

    const CmString& name() const { return name_; }
    /// Wide where the parser was asked to make it so.
    const CmString& value() const { return value_; }

private:
    CmString name_;
    CmString value_;
};

/// The attributes of one tag, in its order, as a parser hands them out.
///
/// They lie in the parser's buffer and are good until it reads on. What is to stay is copied, or taken as an
/// `FXmlAttribute`.
class FXmlAttributes {
public:
    struct View {
        std::string_view name;
        std::string_view value;
        bool isWide = false; ///< As an object the value is made wide.
    };

    size_t size() const { return views_.size(); }
    const View& operator[](size_t index) const { return views_[index]; }
    auto begin() const { return views_.begin(); }
    auto end() const { return views_.end(); }

    /// The first one of that name; nothing when there is none.
    std::optional<std::string_view> find(std::string_view name) const {
        for (const View& view : views_)
            if (view.name == name)
                return view.value;
        return std::nullopt;
    }
    /// An attribute with texts of its own. Null without memory for them.
    Ref<FXmlAttribute> attribute(size_t index) const;

private:
    friend class FXmlParser;

    std::vector<View> views_;
    uint32_t codePage_ = 0;
};

} // namespace qorl
