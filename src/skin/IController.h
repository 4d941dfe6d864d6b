#pragma once

#include <qorl/FInterface.h>

#include <cstdint>

namespace qorl {

class CmObject;
class FMessage;
class UIDescription;
class UView;
class ViewElement;

namespace Binding {
class Value;
}

/// How the builder asks the application about a template: for values, conditions and controllers of parts.
///
/// Names are UTF-8. What a getter gives is owned by the controller. The values that a `valuedefine` made for
/// one controller go by its address: an implementation that is no `FController` calls
/// `ValueRegistry::forget` when it ends, or the next controller at that address finds them. Threading: the
/// user-interface thread.
class IController : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{61E8B7A2-C001-4A7E-8274-058E930171CD}");

    /// Hears, for one, "WizardForLoopParams" with "data": the range of a `for` element. Whoever handles it
    /// sets "first" and "final", which count together only, and "step", which also counts alone.
    virtual int32_t handleMessage(FMessage* message) = 0;
    /// The value for a control, or null.
    virtual Binding::Value* getValue(const char* name) = 0;
    /// The truth of a name in a condition.
    virtual bool getCondition(const char* name) = 0;
    virtual IController* getSubController(const char* name) = 0;
    /// `owned` hands over a reference on `object`.
    virtual void setSubController(const char* name, CmObject* object, bool owned) = 0;
    /// May build the element itself; the view carries a reference for the builder. Null leaves it to the
    /// builder.
    virtual UView* createView(const ViewElement* element, UIDescription* description) = 0;
    /// A last look at a view. The result replaces it: the same one, another one with a reference for the
    /// builder, or null, which drops the view.
    virtual UView* viewCreated(UView* view, const ViewElement* element) = 0;
    /// `view` stands with all its children.
    virtual void templateCreated(UView* view, const ViewElement* templateElement) = 0;
};

} // namespace qorl
