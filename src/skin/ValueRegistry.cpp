#include "skin/ValueRegistry.h"

#include "binding/IntValue.h"
#include "binding/StringValue.h"
#include "foundation/Cast.h"
#include "foundation/Singleton.h"
#include "foundation/messages/FMessage.h"
#include "foundation/text/CmString.h"
#include "foundation/text/TranslationTable.h"
#include "persistence/defaults/FDefaultPool.h"
#include "skin/SizeExpression.h"
#include "skin/SkinElement.h"

#include <new>
#include <utility>

namespace qorl {

namespace {

enum class ValueType : int64_t { boolean = 0x65, integer = 0x66, scroll = 0x67, text = 0x68 };
enum class ValueScope : int64_t { local = 0xC9, global = 0xCA };

constexpr int32_t standardMaximum = 100;
constexpr const char* persistentGroup = "UGuiValues";

constinit Singleton<ValueRegistry> registry;

int32_t minimumOf(const SkinElement& element) {
    return element.integer(SkinAttribute::min);
}

int32_t maximumOf(const SkinElement& element) {
    return element.integer(SkinAttribute::max, standardMaximum);
}

/// Without one, numbers start at their minimum.
int32_t defaultOf(const SkinElement& element, int32_t absent = 0) {
    return element.has(SkinAttribute::default_) ? parseInt(element.text(SkinAttribute::default_)) : absent;
}

Ref<Binding::Value> createValue(const SkinElement& element) {
    switch (ValueType(element.keywords(SkinAttribute::type))) {
    case ValueType::boolean: {
        auto value = make<Binding::Value>();
        value->setValue(defaultOf(element));
        return value;
    }
    case ValueType::text:
        return make<Binding::StringValue>(ConstString(element.text(SkinAttribute::default_)));
    case ValueType::scroll: {
        auto value = make<Binding::IntValue>(minimumOf(element), maximumOf(element));
        value->setValue(defaultOf(element, minimumOf(element)));
        return value;
    }
    default: {
        const int32_t standard = defaultOf(element, minimumOf(element));
        auto value = make<Binding::IntDefValue>(minimumOf(element), maximumOf(element), standard);
        value->setValue(standard);
        return value;
    }
    }
}

void takeRange(const SkinElement& element, Binding::Value& value) {
    if (!cast<Binding::IntValue>(&value))
        return;
    // In the order in which the two ranges meet, or the number would be left outside of the new one.
    if (maximumOf(element) < value.getMin()) {
        value.setMin(minimumOf(element));
        value.setMax(maximumOf(element));
    } else {
        value.setMax(maximumOf(element));
        value.setMin(minimumOf(element));
    }
    value.setDefault(defaultOf(element, minimumOf(element)));
}

uint64_t loadOf(const SkinElement& element) {
    return element.source().store().serial();
}

FAttributes* persistentValues() {
    FGlobalDefaultPool* pool = FGlobalDefaultPool::instance();
    FDefaults* group = pool ? pool->getGroup(ConstString(persistentGroup)) : nullptr;
    return group ? &group->values() : nullptr;
}

void recall(Binding::Value& value, std::string_view key) {
    FAttributes* stored = persistentValues();
    if (!stored || !stored->contains(key))
        return;
    if (auto* textValue = cast<Binding::StringValue>(&value))
        textValue->setString(stored->getString(key));
    else
        value.setValue(limitToInt32(stored->getInteger(key)));
}

void keep(Binding::Value& value, const std::string& key) {
    FAttributes* stored = key.empty() ? nullptr : persistentValues();
    if (!stored)
        return;
    if (auto* textValue = cast<Binding::StringValue>(&value))
        stored->setString(key, textValue->getText());
    else
        stored->setInteger(key, value.getValue());
}

void storeBeforeSave() {
    if (ValueRegistry* values = registry.peek())
        values->storePersistent();
}

} // namespace

ValueRegistry::ValueRegistry() = default;

ValueRegistry::~ValueRegistry() {
    clear();
}

ValueRegistry* ValueRegistry::instance() {
    return registry.get();
}

ValueRegistry* ValueRegistry::peek() {
    return registry.peek();
}

Binding::Value* ValueRegistry::find(std::string_view name, const IController* controller) const {
    if (const auto scope = local_.find(controller); scope != local_.end())
        if (const auto found = scope->second.find(name); found != scope->second.end())
            return found->second->value.get();
    const auto found = global_.find(name);
    return found == global_.end() ? nullptr : found->second->value.get();
}

void ValueRegistry::define(const SkinElement& element, std::string_view name, const IController* controller) {
    const bool isLocal =
        controller && ValueScope(element.keywords(SkinAttribute::scope)) == ValueScope::local;
    Entries& entries = isLocal ? local_[controller] : global_;
    // Each start of the program has its own callbacks.
    const std::string_view persistence = element.text(SkinAttribute::persistence);
    if (FGlobalDefaultPool* pool = persistence.empty() ? nullptr : FGlobalDefaultPool::instance())
        pool->addBeforeSaveCallback(&storeBeforeSave);
    if (const auto found = entries.find(name); found != entries.end()) {
        Entry& entry = *found->second;
        if (entry.load == loadOf(element))
            return;
        const Ref<Binding::Value> value = entry.value;
        takeTitle(element, *value);
        entry.load = loadOf(element);
        // Who hears of the new range may be the end of the entry.
        takeRange(element, *value);
        return;
    }
    auto entry = std::make_unique<Entry>();
    entry->name = name;
    entry->load = loadOf(element);
    entry->value = createValue(element);
    entry->persistence = persistence;
    const std::string_view key = entry->name;
    Binding::Value& value = *entry->value;
    entries.emplace(key, std::move(entry));
    takeTitle(element, value);
    if (!persistence.empty())
        recall(value, persistence);
}

/// A target that somebody else has set meanwhile stays.
void ValueRegistry::takeTitle(const SkinElement& element, Binding::Value& value) {
    const std::string_view title = element.text(SkinAttribute::title);
    if (title.empty()) {
        titles_.erase(&value);
        return;
    }
    titles_.insert_or_assign(&value, std::string(title));
    if (!value.target())
        value.setTarget(this, 0, false);
}

void ValueRegistry::forget(const IController* controller) {
    if (const auto gone = local_.extract(controller))
        removeAll(gone.mapped());
}

/// Of entries that are taken out already: a value may be the last to hold another controller. Controls may
/// keep the values.
void ValueRegistry::removeAll(const Entries& entries) {
    for (const auto& [name, entry] : entries) {
        try {
            keep(*entry->value, entry->persistence);
        } catch (const std::bad_alloc&) {
            // Controllers end here, which can't tell anybody: the number of before stays stored.
        }
        titles_.erase(entry->value.get());
        if (entry->value->target() == this)
            entry->value->setTarget(nullptr, 0, false);
    }
}

int32_t ValueRegistry::handleMessage(FMessage* message) {
    auto* name = cast<CmString>(message->getObject("String"));
    if (!message->isNamed("Get Value Name") || !name)
        return CmObject::handleMessage(message);
    const auto found = titles_.find(message->getObject("Value"));
    if (found == titles_.end())
        return notHandled;
    name->string() = translate(ConstString(found->second));
    return handled;
}

void ValueRegistry::storePersistent() {
    const auto keepAll = [](const Entries& entries) {
        for (const auto& [name, entry] : entries)
            keep(*entry->value, entry->persistence);
    };
    keepAll(global_);
    for (const auto& [controller, entries] : local_)
        keepAll(entries);
}

void ValueRegistry::clear() {
    const auto global = std::exchange(global_, {});
    const auto local = std::exchange(local_, {});
    removeAll(global);
    for (const auto& [controller, entries] : local)
        removeAll(entries);
}

} // namespace qorl
