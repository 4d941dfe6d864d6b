#pragma once

#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/containers/CmBTree.h"
#include "foundation/containers/CmVariant.h"
#include "foundation/containers/dictionaries/CmAssociation.h"
#include "foundation/messages/FMessage.h"
#include "persistence/attributes/FAttributes.h"
#include "platform/System.h"

#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace qorl {

/// The objects of classes that hold others, all that the factory made since the last `takeApart`. An input
/// can link them in a circle, in which they would keep each other alive for ever.
class ReadObjects {
public:
    /// The factory's records of these classes give way to ones that remember what they make. Nothing is said
    /// of damaged inputs.
    static void watch() {
        static constexpr const char* names[] = {
            "CmArray",       "CmOrderedArray",   "CmLinkedList",      "CmQueue",        "CmStack",
            "CmDLinkedList", "CmDictionary",     "CmILinkedList",     "CmIDLinkedList", "CmBTree",
            "CmHashTable",   "CmHashDictionary", "CmBTreeDictionary", "CmAssociation",  "CmVariant",
            "FAttributes",   "Attributes",       "FMessage"};
        static const bool isWatching = [] {
            platform::setDebugOutput([](std::string_view, void*) {}, nullptr);
            watchEach(names, std::make_index_sequence<std::size(names)>());
            return true;
        }();
        static_cast<void>(isWatching);
    }

    static void takeApart() {
        for (const auto& object : made_) {
            if (auto* container = cast<CmContainer>(object.get())) {
                // The references on elements that were read are the container's, whatever it says of them.
                container->setOwnership(Ownership::adopt);
                container->removeAll();
            } else if (auto* attributes = cast<FAttributes>(object.get()))
                attributes->removeAll();
            else if (auto* variant = cast<CmVariant>(object.get()))
                variant->clear();
            else if (auto* pair = cast<CmAssociation>(object.get()))
                pair->restoreAttributes(make<FAttributes>().get());
            else if (auto* message = cast<FMessage>(object.get()))
                message->attributes().removeAll();
        }
        made_.clear();
    }

private:
    template <size_t... I>
    static void watchEach(const char* const (&names)[sizeof...(I)], std::index_sequence<I...>) {
        (watchOne<I>(names[I]), ...);
    }

    template <size_t I>
    static void watchOne(const char* name) {
        ClassFactory& factory = *ClassFactory::instance();
        auto* const record = const_cast<ClassRecord*>(factory.findByName(name));
        createOf<I> = record->create();
        factory.removeRecord(*record);
        static ClassRecord watched(name, &createRemembered<I>, const_cast<ClassRecord*>(record->parent()),
                                   record->version());
    }

    template <size_t I>
    static FInterface* createRemembered() {
        FInterface* const object = createOf<I>();
        made_.push_back(retain(cast<CmObject>(object)));
        return object;
    }

    template <size_t I>
    static inline CreateFunction createOf = nullptr;
    static inline std::vector<Ref<CmObject>> made_;
};

} // namespace qorl
