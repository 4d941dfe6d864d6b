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
    value.setMax(maximumOf(element));
    value.setMin(minimumOf(element));
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
    FAttributes* stored = persistentValues();
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

size_t ValueRegistry::KeyHash::operator()(const Key& key) const {
    return std::hash<std::string_view>()(key.name) ^ (reinterpret_cast<uintptr_t>(key.controller) >> 4);
}

Binding::Value* ValueRegistry::find(std::string_view name, const IController* controller) const {
    if (controller && localCount_ > 0)
        if (const auto found = entries_.find({name, controller}); found != entries_.end())
            return found->second->value.get();
    const auto found = entries_.find({name, nullptr});
    return found == entries_.end() ? nullptr : found->second->value.get();
}

void ValueRegistry::define(const SkinElement& element, std::string_view name, const IController* controller) {
    if (ValueScope(element.keywords(SkinAttribute::scope)) != ValueScope::local)
        controller = nullptr;
    // Each start of the program has its own callbacks.
    const std::string_view persistence = element.text(SkinAttribute::persistence);
    if (FGlobalDefaultPool* pool = persistence.empty() ? nullptr : FGlobalDefaultPool::instance())
        pool->addBeforeSaveCallback(&storeBeforeSave);
    if (const auto found = entries_.find({name, controller}); found != entries_.end()) {
        Entry& entry = *found->second;
        if (std::exchange(entry.load, loadOf(element)) != loadOf(element)) {
            takeRange(element, *entry.value);
            takeTitle(element, *entry.value);
        }
        return;
    }
    auto entry = std::make_unique<Entry>();
    entry->name = name;
    entry->load = loadOf(element);
    entry->value = createValue(element);
    entry->persistence = persistence;
    const Key key{entry->name, controller};
    Binding::Value& value = *entry->value;
    entries_.emplace(key, std::move(entry));
    localCount_ += controller ? 1 : 0;
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
    if (localCount_ == 0)
        return;
    localCount_ -= std::erase_if(entries_, [this, controller](const Entries::value_type& item) {
        if (item.first.controller != controller)
            return false;
        remove(*item.second);
        return true;
    });
}

/// Controls may keep the value.
void ValueRegistry::remove(Entry& entry) {
    if (!entry.persistence.empty())
        keep(*entry.value, entry.persistence);
    titles_.erase(entry.value.get());
    if (entry.value->target() == this)
        entry.value->setTarget(nullptr, 0, false);
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
    for (const auto& [key, entry] : entries_)
        if (!entry->persistence.empty())
            keep(*entry->value, entry->persistence);
}

void ValueRegistry::clear() {
    for (const auto& [key, entry] : entries_)
        remove(*entry);
    entries_.clear();
    localCount_ = 0;
}

} // namespace qorl
