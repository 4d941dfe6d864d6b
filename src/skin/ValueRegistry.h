#pragma once

#include "foundation/CmObject.h"

#include <qorl/Ref.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace qorl {

class FMessage;
class IController;
class SkinElement;

namespace Binding {
class Value;
}

/// The values of `valuedefine` elements, which no controller owns.
///
/// A global value goes by its name alone, a local one by its name and the controller that it was built for;
/// it goes with that controller. A value with a title has the registry as its target, until it is given
/// another one, and so knows what to call itself. One registry for the process. Threading: the user-interface
/// thread.
class ValueRegistry final : public CmObject {
    QORL_CLASS(ValueRegistry, CmObject)

public:
    ValueRegistry();
    ~ValueRegistry() override;

    /// Made on first use; null after the teardown.
    static ValueRegistry* instance();
    /// The registry if it has been made.
    static ValueRegistry* peek();

    /// Answers "Get Value Name" for values that were defined with a title.
    int32_t handleMessage(FMessage* message) override;

    /// Local before global. Not counted for the caller.
    Binding::Value* find(std::string_view name, const IController* controller) const;
    /// Makes the value that `element` defines as `name`, unless there is one. After a document was loaded
    /// again, its first definition of the name gives the value its range and title anew; number and text
    /// stay.
    void define(const SkinElement& element, std::string_view name, const IController* controller);
    /// `controller` is going away, and its local values with it.
    void forget(const IController* controller);
    /// Writes persistent values to the defaults store.
    void storePersistent();
    /// Stores what is persistent and drops all values.
    void clear();

private:
    struct Entry {
        std::string name;
        std::string persistence;
        Ref<Binding::Value> value;
        uint64_t load = 0; ///< The serial number of the store of the document that defined it last.
    };
    /// By the names that lie in the entries.
    using Entries = std::unordered_map<std::string_view, std::unique_ptr<Entry>>;

    void takeTitle(const SkinElement& element, Binding::Value& value);
    void removeAll(const Entries& entries);

    Entries global_;
    std::unordered_map<const IController*, Entries> local_;
    /// What few values have: their name for the user, before translation.
    std::unordered_map<const CmObject*, std::string> titles_;
};

} // namespace qorl
