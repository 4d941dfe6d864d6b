#pragma once

#include "components/FComponentDescription.h"
#include "foundation/messages/ListenerList.h"

#include <functional>
#include <map>
#include <vector>

namespace qorl {

/// Hears of changes to the directory of components.
class ComponentListener {
public:
    virtual void componentAdded(FComponentDescription* component) = 0;
    virtual void componentRemoved(FComponentDescription* component) = 0;
    virtual void componentsLoaded() = 0;

protected:
    ~ComponentListener() = default;
};

/// The directory of classes that can be created, by category; each category sorted by name.
///
/// Made by the application's `init`, in each of its lives; the start-up hook "FComponentRegistry" makes it
/// where hooks run without an application. Threading: the user-interface thread.
class FComponentRegistry : public CmObject {
    QORL_CLASS(FComponentRegistry, CmObject)

public:
    /// Null before the start-up and after the end.
    static FComponentRegistry* instance();
    /// Makes the one registry, unless it stands, and lets wrappers of foreign objects be restored through it.
    static void makeInstance();
    /// Lets it go. `makeInstance` makes a new one.
    static void dropInstance();

    FComponentRegistry() = default;
    FComponentRegistry(const FComponentRegistry&) = delete;

    /// Reads from the settings whether the component is available, tells listeners and dependents, and enters
    /// it only then. Throws std::bad_alloc: for want of room before anybody is told, and what a listener
    /// throws; it isn't entered then.
    void addComponent(Ref<FComponentDescription> description);
    /// An unknown id changes nothing.
    void removeComponent(const FUID& id);
    /// Empties the directory and lets modules go.
    void unloadAll();

    int32_t countInCategory(const ConstString& category) const;
    FComponentDescription* getComponent(const ConstString& category, int32_t index) const;
    /// The category with case, the name without.
    FComponentDescription* findByName(const ConstString& category, const ConstString& name) const;
    FComponentDescription* findByNumber(const ConstString& category, int32_t number) const;
    /// In all categories when none is given.
    FComponentDescription* findById(const FUID& id, const ConstString& category = {}) const;
    /// 1 when there is no such description.
    int32_t getCardinality(const ConstString& category, int32_t index) const;

    Ref<CmObject> create(FInterface* context, const ConstString& category, int32_t index);
    Ref<CmObject> create(FInterface* context, const ConstString& category, const ConstString& name);
    Ref<CmObject> create(FInterface* context, const FUID& id);
    /// By `createRaw`: what a wrapper of a foreign object is restored through.
    Ref<FInterface> createById(const FUID& id, bool wrapped);

    /// Writes for each class of the category whether it is available.
    void saveAvailability(const ConstString& category);

    void addListener(ComponentListener* listener);
    void removeListener(ComponentListener* listener);

private:
    using Descriptions = std::vector<Ref<FComponentDescription>>;

    const Descriptions* category(const ConstString& name) const;
    Descriptions& makeRoom(const String& category);

    std::map<String, Descriptions, std::less<>> categories_;
    ListenerList<ComponentListener> listeners_;
};

} // namespace qorl
