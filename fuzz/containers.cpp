#include "foundation/Cast.h"
#include "foundation/ClassFactory.h"
#include "foundation/containers/CmContainer.h"
#include "persistence/archive/FCompactArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FMemoryStream.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string_view>

namespace {

using namespace qorl;

constexpr std::string_view containers[] = {
    "CmArray",           "CmOrderedArray", "CmLinkedList",    "CmQueue",        "CmStack",
    "CmDLinkedList",     "CmDictionary",   "CmILinkedList",   "CmIDLinkedList", "CmBTree",
    "CmBTreeDictionary", "CmHashTable",    "CmHashDictionary"};
constexpr std::string_view elements[] = {
    "CmAssociation",       "CmString", "CmUID",  "CmILink", "CmIDLink", "CmBuffer", "CmVariant", "CmRational",
    "CmRegularExpression", "CmDate",   "CmTime", "FMessage"};

/// Gives nothing but containers and values, no object twice, and lets each container own what it holds.
class OwningArchive : public FCompactArchive {
public:
    using FCompactArchive::FCompactArchive;

    using FCompactArchive::readObject;
    using FCompactArchive::writeObject;
    bool writeObject(CmObject* object, bool) override { return FCompactArchive::writeObject(object, false); }
    CmObject* readObject(const char* className, bool) override {
        auto object = Ref<CmObject>::adopt(FCompactArchive::readObject(className, false));
        const auto isNamed = [&](std::string_view name) { return name == object->getClassName(); };
        if (!object || (std::ranges::none_of(containers, isNamed) && std::ranges::none_of(elements, isNamed)))
            return nullptr;
        auto* container = cast<CmContainer>(object.get());
        if (container && !releases(container->getOwnership()))
            container->setOwnership(Ownership::adopt);
        return object.detach();
    }
};

void expect(bool condition) {
    if (!condition)
        std::abort();
}

int32_t countBackwards(const CmContainer& container) {
    const std::unique_ptr<CmIterator> iterator(container.newIterator());
    int32_t count = 0;
    for (iterator->last(); !iterator->done(); ++count)
        expect(iterator->previous() != nullptr);
    return count;
}

/// What came from a stream has to go to one and come back.
void writeAndRead(CmContainer& container) {
    FMemoryStream stream;
    OwningArchive storing(stream, FObjectArchive::Direction::storing);
    expect(container.writeTo(&storing));
    stream.rewind();
    OwningArchive reading(stream, FObjectArchive::Direction::reading);
    const int32_t count = container.count();
    expect(container.readFrom(&reading) && container.count() == count);
}

/// The same for its other form. An element that carries its link is on one container at a time.
void storeAndRestore(CmContainer& container) {
    const int32_t count = container.count();
    const Ref<FAttributes> stored = make<FAttributes>();
    expect(container.storeAttributes(stored.get()));
    container.removeAll();
    expect(container.restoreAttributes(stored.get()) && container.count() == count);
}

} // namespace

// Both forms of containers, nested too: the first byte says of which class the outermost is.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const std::string_view name = containers[data[0] % std::size(containers)];
    const Ref<FInterface> made = ClassFactory::instance()->createByName(name.data());
    auto& container = *cast<CmContainer>(made.get());
    FMemoryStream stream(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
    OwningArchive archive(stream, FObjectArchive::Direction::reading);
    const bool isComplete = container.readFrom(&archive);
    if (!releases(container.getOwnership()))
        container.setOwnership(Ownership::adopt);
    expect(countBackwards(container) == container.count());
    // Keys of several classes have no order that would hold for other addresses.
    if (isComplete && !container.isA("CmBTreeDictionary")) {
        writeAndRead(container);
        storeAndRestore(container);
    }
    return 0;
}
