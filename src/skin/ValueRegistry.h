#pragma once

#include "foundation/CmObject.h"

#include <qorl/Ref.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace qorl {

class IController;
class SkinElement;

namespace Binding {
class Value;
}

/// The values of `valuedefine` elements, which no controller owns.
///
/// A global value goes by its name alone, a local one by its name and the controller for which it was built;
/// it goes when that controller goes. One registry for the process, which lasts as long. Threading: the
/// user-interface thread.
class ValueRegistry final : public CmObject {
    QORL_CLASS(ValueRegistry, CmObject)

public:
    ValueRegistry() = default;
    ~ValueRegistry() override;

    /// Null after the teardown.
    static ValueRegistry* instance();

    /// Local before global. Not counted for the caller.
    Binding::Value* find(std::string_view name, IController* controller);
    /// The value that `element` defines under `name`. One that is there keeps its number and takes the
    /// element's range and title.
    void define(const SkinElement& element, std::string_view name, IController* controller);
    /// Writes persistent values back and forgets all.
    void clear();

    void notify(CmObject* changedObject, int32_t message) override;

private:
    struct Key {
        std::string_view name;
        const CmObject* controller;

        friend bool operator==(const Key& a, const Key& b) = default;
    };
    struct KeyHash {
        size_t operator()(const Key& key) const;
    };
    struct Entry;

    Ref<Binding::Value> create(const SkinElement& element);
    void remove(Entry& entry);

    std::unordered_map<Key, std::unique_ptr<Entry>, KeyHash> entries_;
};

} // namespace qorl
