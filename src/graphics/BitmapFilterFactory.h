#pragma once

#include "foundation/ClassMacros.h"
#include "foundation/FObject.h"
#include "graphics/GraphicsImage.h"
#include "graphics/UColor.h"

#include <qorl/Ref.h>

#include <string_view>
#include <variant>
#include <vector>

namespace qorl {

/// A value of a filter's parameter. A point is a share of the size.
using FilterValue = std::variant<double, bool, UColor, Geometry::Point, CmSize>;

/// One change of an image, with named parameters. It takes an input and gives one result.
///
/// Threading: one thread at a time, any thread.
class FilterBase : public FObject {
    QORL_CLASS(FilterBase, FObject)

public:
    /// `invalidArgument` for an unknown name, a value of another kind, and what the filter itself answers.
    Result setParameter(std::string_view name, const FilterValue& value);
    /// Runs the filter when it is asked for what that answers. `invalidArgument` for an unknown name.
    Result getParameter(std::string_view name, FilterValue& value);

    void setInput(Ref<GraphicsImage> image);
    /// Runs the filter at the first call. Null without an input, or when there is no memory.
    Ref<GraphicsImage> getResult();

protected:
    FilterBase() = default;

    virtual void declareParameters() = 0;
    virtual Ref<GraphicsImage> apply(GraphicsImage& input) = 0;

    enum class Role : uint8_t { input, answer };

    void declare(std::string_view name, const FilterValue& initial, Role role = Role::input);
    /// For `apply`: the value of a parameter that was declared as an answer.
    void answer(std::string_view name, const FilterValue& value) { find(name)->value = value; }
    template <typename T>
    const T& parameter(std::string_view name) {
        return std::get<T>(find(name)->value);
    }

private:
    friend class BitmapFilterFactory;

    struct Parameter {
        std::string_view name;
        FilterValue value;
        Role role;
    };

    Parameter* find(std::string_view name);

    std::vector<Parameter> parameters_;
    Ref<GraphicsImage> input_;
    Ref<GraphicsImage> result_;
};

/// The filters by name. GUI thread; a row that is added later replaces the one of its name.
class BitmapFilterFactory : public FObject {
    QORL_CLASS(BitmapFilterFactory, FObject)

public:
    using Creator = Ref<FilterBase> (*)();

    /// Holds the built-in rows.
    BitmapFilterFactory();

    /// `name` must live as long as the factory.
    void add(std::string_view name, Creator create);
    /// Null for an unknown name.
    Ref<FilterBase> create(std::string_view name) const;
    size_t count() const { return rows_.size(); }
    std::string_view getName(size_t index) const { return rows_[index].name; }

private:
    struct Row {
        std::string_view name;
        Creator create;
    };

    std::vector<Row> rows_;
};

} // namespace qorl
