#pragma once

#include "foundation/CmObject.h"
#include "skin/IController.h"

#include <qorl/Ref.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl {

/// The standard controller: knows no values, keeps sub-controllers by name. Applications derive from it.
class FController : public CmObject, public IController {
    QORL_CLASS(FController, CmObject)
    QORL_FACES(FController, CmObject, IController)

public:
    FController();
    ~FController() override;

    int32_t handleMessage(FMessage* message) override;
    Binding::Value* getValue(const char* name) override;
    bool getCondition(const char* name) override;
    IController* getSubController(const char* name) override;
    /// Replaces what stood under `name`; null takes it away. An object that is not `owned` must outlive its
    /// entry.
    void setSubController(const char* name, CmObject* object, bool owned) override;
    UView* createView(const ViewElement* element, UIDescription* description) override;
    UView* viewCreated(UView* view, const ViewElement* element) override;
    void templateCreated(UView* view, const ViewElement* templateElement) override;

private:
    struct SubController {
        std::string name;
        IController* controller;
        Ref<CmObject> owner;
    };

    std::vector<SubController> subControllers_;
};

/// A controller that is a plain dictionary of values by name.
class UValueContainer : public FController {
    QORL_CLASS(UValueContainer, FController)

public:
    UValueContainer();
    ~UValueContainer() override;

    /// Replaces what stood under `name`; null takes it away.
    void setValue(std::string_view name, Ref<Binding::Value> value);
    Binding::Value* getValue(const char* name) override;

private:
    std::vector<std::pair<std::string, Ref<Binding::Value>>> values_;
};

} // namespace qorl
