#pragma once

#include <type_traits>
#include <utility>

namespace qorl {

class UView;

/// The test of a search through views.
class ViewPredicate {
public:
    virtual bool test(UView* view) const = 0;

protected:
    ~ViewPredicate() = default;
};

/// A search's test from a callable: `view->findSubView(viewsWhere([](UView* v) { return v->isFocusable();
/// }))`.
template <typename Test>
class ViewPredicateOf final : public ViewPredicate {
public:
    explicit ViewPredicateOf(Test test) : test_(std::move(test)) {}
    bool test(UView* view) const override { return test_(view); }

private:
    Test test_;
};

template <typename Test>
ViewPredicateOf<std::decay_t<Test>> viewsWhere(Test&& test) {
    return ViewPredicateOf<std::decay_t<Test>>(std::forward<Test>(test));
}

} // namespace qorl
