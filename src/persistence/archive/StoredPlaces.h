#pragma once

#include "foundation/CmObject.h"

#include <qorl/Ref.h>

#include <cstdint>
#include <unordered_map>

namespace qorl {

/// Under which number, or at which place, a storing archive has put its classes and tracked objects.
///
/// Objects are held, so that no other one can come at the address of one that is gone and be taken for it.
class StoredPlaces {
public:
    /// Null when the class has not occurred. Objects of one class mostly stand together.
    const int32_t* find(const ClassRecord& record) {
        if (&record != lastClass_) {
            const auto known = classes_.find(&record);
            if (known == classes_.end())
                return nullptr;
            lastClass_ = &record;
            lastPlace_ = &known->second;
        }
        return lastPlace_;
    }
    void add(const ClassRecord& record, int32_t place) { classes_.emplace(&record, place); }

    /// Null when the object has not occurred.
    const int32_t* find(const CmObject& object) const {
        const auto known = objects_.find(&object);
        return known != objects_.end() ? &known->second.place : nullptr;
    }
    void add(CmObject& object, int32_t place) { objects_.try_emplace(&object, retain(&object), place); }

private:
    struct Held {
        Held(Ref<CmObject> heldObject, int32_t itsPlace) : object(std::move(heldObject)), place(itsPlace) {}

        Ref<CmObject> object;
        int32_t place;
    };

    std::unordered_map<const ClassRecord*, int32_t> classes_;
    std::unordered_map<const CmObject*, Held> objects_;
    const ClassRecord* lastClass_ = nullptr;
    const int32_t* lastPlace_ = nullptr;
};

} // namespace qorl
