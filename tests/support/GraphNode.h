#pragma once

#include "foundation/Cast.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace qorl {

/// A number and links to other objects: what archives and documents store graphs of.
class GraphNode : public CmObject {
    QORL_CLASS(GraphNode, CmObject)
    QORL_RECORD(GraphNode)

public:
    explicit GraphNode(int32_t value = 0) : value(value) { all.insert(this); }
    GraphNode(const GraphNode&) = delete;
    ~GraphNode() override { all.erase(this); }

    bool writeTo(FObjectArchive* archive) override {
        FStream& stream = archive->stream();
        bool isDone = stream.writeInt32(value) && stream.writeInt32(static_cast<int32_t>(links.size()));
        for (size_t i = 0; isDone && i < links.size(); ++i)
            isDone = archive->writeObject(links[i].get());
        return isDone;
    }
    bool readFrom(FObjectArchive* archive) override {
        int32_t count = 0;
        bool isDone = archive->stream().readInt32(value) && archive->stream().readInt32(count);
        for (; isDone && count > 0; --count) {
            auto link = Ref<CmObject>::adopt(archive->readObject(nullptr));
            isDone = link || archive->lastError() == 0;
            links.push_back(std::move(link));
        }
        if (!isDone)
            links.clear();
        return isDone;
    }

    bool storeAttributes(FAttributes* attributes) override {
        attributes->setInteger("value", value);
        if (next)
            attributes->setObject("next", next.get(), FAttributes::Hold::retain);
        for (const auto& link : links)
            attributes->appendObject("links", link);
        return isStorable;
    }
    bool restoreAttributes(FAttributes* attributes) override {
        value = static_cast<int32_t>(attributes->getInteger("value"));
        next = attributes->getObject("next");
        while (Ref<CmObject> link = attributes->nextObject("links"))
            links.push_back(std::move(link));
        return true;
    }

    /// The graph as text, equal for equal graphs: each node's value and links, by order of their first visit.
    static std::string describe(CmObject* root) {
        std::map<CmObject*, size_t> numbers;
        std::vector<CmObject*> all;
        std::string text;
        const auto number = [&](CmObject* object) {
            if (numbers.try_emplace(object, all.size()).second)
                all.push_back(object);
            return std::to_string(numbers[object]) + ' ';
        };
        number(root);
        for (size_t i = 0; i < all.size(); ++i) {
            auto* node = cast<GraphNode>(all[i]);
            text += node ? std::to_string(node->value) + ": " : all[i] ? all[i]->getClassName() : "null";
            if (node && node->next)
                text += '>' + number(node->next.get());
            for (size_t link = 0; node && link < node->links.size(); ++link)
                text += number(node->links[link].get());
            text += '\n';
        }
        return text;
    }

    /// Takes all graphs apart, cycles too.
    static void cutAll() {
        std::vector<Ref<CmObject>> links;
        for (GraphNode* node : all) {
            for (auto& link : node->links)
                links.push_back(std::move(link));
            node->links.clear();
            links.push_back(std::move(node->next));
        }
    }

    static inline std::set<GraphNode*> all;

    int32_t value;
    std::vector<Ref<CmObject>> links;
    /// One link more, by a name; only documents store it.
    Ref<CmObject> next;
    bool isStorable = true;
};

} // namespace qorl
