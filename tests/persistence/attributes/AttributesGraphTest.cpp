#include "BodyBytes.h"
#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/AttributesStream.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/attributes/ReferenceBinder.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "support/FailingAllocation.h"
#include "support/LittleCost.h"
#include "support/Objects.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace qorl {
namespace {

using Hold = FAttributes::Hold;

/// Writes an object that nobody else holds.
class Maker : public CmObject {
    QORL_CLASS(Maker, CmObject)

public:
    explicit Maker(int32_t number) : number_(number) {}

    bool storeAttributes(FAttributes* attributes) override {
        const auto part = make<CmString>(ConstString(std::string_view(std::to_string(number_))));
        attributes->setObject("part", part.get(), Hold::retain);
        return true;
    }

private:
    int32_t number_;
};

std::string documentOf(const FAttributes& attributes) {
    FMemoryStream stream;
    EXPECT_TRUE(FXmlDocument(&stream, FXmlDocument::Mode::write).storeAttributes("State", attributes));
    return std::string(stream.bytes());
}

bool loadDocument(const std::string& document, FAttributes& attributes) {
    FMemoryStream stream{std::string_view(document)};
    return FXmlDocument(&stream, FXmlDocument::Mode::read).restoreAttributes("State", attributes);
}

TEST(AttributesGraph, TellsObjectsApartThatLiveOnlyWhileTheyAreWritten) {
    FAttributes attributes;
    for (int32_t i = 0; i < 20; ++i)
        attributes.appendObject("makers", make<Maker>(i));
    FAttributes read[3];
    ASSERT_TRUE(load(stored(attributes), read[0]));
    ASSERT_TRUE(loadDocument(documentOf(attributes), read[1]));
    read[2] = attributes;
    ASSERT_TRUE(read[2].detachObjects());
    for (FAttributes& one : read) {
        ASSERT_EQ(one.count("makers"), 20);
        for (int32_t i = 0; i < 20; ++i) {
            const Ref<CmObject> part = one.nextXmlAttributes("makers")->getObject("part", "CmString");
            ASSERT_NE(part, nullptr) << i;
            EXPECT_EQ(cast<CmString>(part)->string().toUtf8(), std::to_string(i));
        }
    }
}

/// Empties attributes when it is written, and writes as many as may come to the place of their list.
class Emptier : public CmObject {
    QORL_CLASS(Emptier, CmObject)

public:
    bool storeAttributes(FAttributes* attributes) override {
        *emptied = FAttributes();
        for (int32_t i = 0; i < count; ++i) {
            auto nested = make<FAttributes>();
            nested->setObject("part", make<CmString>("live").get(), Hold::retain);
            attributes->appendAttributes("list", std::move(nested));
        }
        return true;
    }

    static constexpr int32_t count = 8;
    FAttributes* emptied = nullptr;
};

TEST(AttributesGraph, TellsListsApartThatGoWhileTheyAreDetached) {
    const auto emptied = make<FAttributes>();
    emptied->setInteger("x", 1);
    const auto emptier = make<Emptier>();
    emptier->emptied = emptied.get();
    auto last = make<FAttributes>();
    last->setObject("emptier", emptier.get(), Hold::retain);
    FAttributes root;
    root.setObject("last", last.get(), Hold::retain);
    root.setObject("first", emptied.get(), Hold::retain);
    ASSERT_TRUE(root.detachObjects());
    ASSERT_TRUE(emptied->isEmpty());
    FAttributes* stored = last->findAttributes("emptier");
    for (int32_t i = 0; i < Emptier::count; ++i)
        EXPECT_NE(cast<FXmlObject>(stored->nextAttributes("list")->find("part")->getObject()), nullptr) << i;
}

/// An object of a class that nobody registers, with links to others.
class Node : public CmObject {
    QORL_CLASS(Node, CmObject)

public:
    bool storeAttributes(FAttributes* attributes) override { return state.storeAttributes(attributes); }

    FAttributes state;
};

/// Fills attributes with values of all kinds, and with links to any of `nodes`.
class RandomFiller {
public:
    RandomFiller(uint32_t seed, const std::vector<Ref<Node>>& nodes) : random_(seed), nodes_(nodes) {}

    void fill(FAttributes& attributes, int32_t depth) {
        const uint32_t count = below(5);
        for (uint32_t i = 0; i < count; ++i)
            add(attributes, "k" + std::to_string(i), depth);
    }

private:
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_()) % limit; }

    CmObject* node() { return nodes_[below(static_cast<uint32_t>(nodes_.size()))].get(); }

    void add(FAttributes& attributes, const std::string& key, int32_t depth) {
        switch (below(depth > 3 ? 9 : 12)) {
        case 0: attributes.setInteger(key, static_cast<int32_t>(random_())); break;
        case 1: attributes.setFloat(key, below(1000) / 8.0); break;
        case 2: attributes.setText8(key, "narrow"); break;
        case 3: attributes.setText16(key, u"wide \u00E4"); break;
        case 4: attributes.setBinary(key, "bytes", below(6), true); break;
        case 5: attributes.appendInteger(key, below(9)); break;
        case 6: attributes.appendText16(key, u"item"); break;
        case 7:
        case 8: attributes.setObject(key, node(), Hold::plain); break;
        case 9:
            for (uint32_t i = below(4); i > 0; --i)
                attributes.appendWatched(key, node());
            break;
        case 10: {
            const auto nested = make<FAttributes>();
            fill(*nested, depth + 1);
            attributes.setObject(key, nested.get(), Hold::retain);
            break;
        }
        default:
            for (uint32_t i = below(3); i > 0; --i) {
                auto nested = make<FAttributes>();
                fill(*nested, depth + 1);
                attributes.appendAttributes(key, std::move(nested));
            }
        }
    }

    std::mt19937 random_;
    const std::vector<Ref<Node>>& nodes_;
};

TEST(AttributesGraph, IsTheSameInBothFormsAndDetached) {
    for (uint32_t seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed);
        std::vector<Ref<Node>> nodes;
        for (uint32_t i = 0; i < 1 + seed * 2; ++i)
            nodes.push_back(make<Node>());
        RandomFiller filler(seed, nodes);
        for (const auto& node : nodes)
            filler.fill(node->state, 0);
        FAttributes graph;
        graph.setObject("first", nodes[0].get(), Hold::plain);
        filler.fill(graph, 0);
        // In it each object stands in full where it is met first, and by its number after that.
        const std::string document = documentOf(graph);
        FAttributes fromXml;
        ASSERT_TRUE(loadDocument(document, fromXml));
        EXPECT_EQ(documentOf(fromXml), document);
        const auto byteOrder = static_cast<uint16_t>(seed % 2);
        const std::string bytes = stored(graph, byteOrder);
        FAttributes read;
        ASSERT_TRUE(load(bytes, read, byteOrder));
        EXPECT_EQ(documentOf(read), document);
        EXPECT_EQ(stored(read, byteOrder), bytes) << "nobody was asked for an object";
        ASSERT_TRUE(graph.detachObjects());
        EXPECT_EQ(documentOf(graph), document);
        for (const auto& node : nodes)
            node->state.removeAll();
        EXPECT_EQ(documentOf(graph), document) << "what is detached stands by itself";
    }
}

/// `depth` lists of attributes in each other, by turns as an entry, in a list and as a stored object.
void nest(FAttributes& root, int32_t depth) {
    auto inner = make<FAttributes>();
    inner->setInteger("deepest", 1);
    inner->appendInteger("list", 2);
    for (int32_t i = 0; i < depth; ++i) {
        auto outer = make<FAttributes>();
        if (i % 3 == 0)
            outer->setObject("n", inner.get(), Hold::retain);
        else if (i % 3 == 1)
            outer->appendAttributes("n", inner);
        else
            outer->setObject("n", new FXmlInstance(static_cast<uint64_t>(i), "C", inner), Hold::adopt);
        inner = std::move(outer);
    }
    inner->shareWith(root);
}

TEST(AttributesGraph, TakesNoStackForItsDepth) {
    constexpr int32_t depth = 100000;
    FAttributes deep;
    nest(deep, depth);
    FAttributeVariant value{};
    EXPECT_TRUE(deep.findValue("deepest", value));
    EXPECT_EQ(value.integerValue, 1);
    EXPECT_EQ(deep.findAttributes("nowhere"), nullptr);
    deep.resetAllCursors();
    EXPECT_TRUE(deep.detachObjects());
    const FAttributes copy(deep);
    EXPECT_TRUE(copy.findValue("deepest", value));
    deep.removeAll();
    EXPECT_TRUE(copy.findValue("deepest", value));
    FAttributes other;
    nest(other, depth);
    other = FAttributes();
}

TEST(AttributesGraph, LetsGoOfListsThatSeveralShareWhileTheyGo) {
    const auto shared = make<FAttributes>();
    shared->setInteger("x", 1);
    FAttributes root;
    for (const char* key : {"a", "b", "c"}) {
        const auto sharer = make<FAttributes>();
        shared->shareWith(*sharer);
        root.setObject(key, sharer.get(), Hold::retain);
    }
    root.removeAll();
    EXPECT_EQ(shared->getInteger("x"), 1);
}

TEST(AttributesGraph, StandsAttributesThatHoldThemselves) {
    FAttributes ring;
    ring.setObject("self", &ring, Hold::plain);
    ring.appendInteger("list", 5);
    int64_t item = 0;
    ring.nextInteger("list", item);
    ring.resetAllCursors();
    EXPECT_TRUE(ring.nextInteger("list", item));
    FAttributeVariant value{};
    EXPECT_FALSE(ring.findValue("nothing", value));
    EXPECT_EQ(ring.findAttributes("self"), &ring);
    const FAttributes copy(ring);
    EXPECT_EQ(copy.getAttributes("self"), &copy);
    FMemoryStream stream;
    EXPECT_FALSE(writeAttributes(stream, ring)) << "it has no end";
    EXPECT_TRUE(ring.detachObjects());
    ring.removeAll();
}

TEST(AttributesGraph, BindsWhatWasReferredToBeforeItsPlaceWasRead) {
    // As in a document whose objects stand one behind the other: the root names "inner", which stands in
    // "outer", as an entry or in a list, which only "inner" names.
    for (const char* place : {"entry", "list"})
        failEachAllocation([place](FailingAllocation& memory) {
            SCOPED_TRACE(place);
            FAttributes root;
            const auto innerState = make<FAttributes>();
            bool isBound = false;
            {
                ReferenceBinder binder;
                const auto outerState = make<FAttributes>();
                const auto inner = make<FXmlInstance>(1, "Inner", innerState);
                binder.addInstance(inner);
                binder.addInstance(make<FXmlInstance>(2, "Outer", outerState));
                root.setObject("inner", binder.addReference(1).get(), Hold::retain);
                if (std::string_view(place) == "list")
                    outerState->appendObject(place, inner);
                else
                    outerState->setObject(place, inner.get(), Hold::retain);
                outerState->find(place)->setForeign();
                innerState->setObject("owner", binder.addReference(2).get(), Hold::retain);
                isBound = memory.completes([&] { binder.bind(root); });
            }
            auto* outer = cast<FXmlReference>(innerState->find("owner")->getObject())->target();
            if (isBound) {
                auto* inner = cast<FXmlReference>(root.find("inner")->getObject())->target();
                ASSERT_NE(inner, nullptr);
                ASSERT_NE(outer, nullptr);
                const FStringIDAttribute& entry = *outer->getAttributes()->find(place);
                const auto* list = cast<FObjectList>(entry.getObject());
                auto* reference = cast<FXmlReference>(list ? list->at(0) : entry.getObject());
                ASSERT_NE(reference, nullptr);
                EXPECT_EQ(reference->target(), inner);
                EXPECT_TRUE(entry.isHidden());
            }
            root.removeAll();
            EXPECT_EQ(cast<FXmlReference>(innerState->find("owner")->getObject())->target(), outer);
            EXPECT_EQ(referencesOn(innerState.get()), 1u) << "nothing but the test holds what has gone";
        });
}

TEST(AttributesGraph, KeepsThePartsOfAnObjectThatOthersOnlyWatch) {
    void (*const places[])(FAttributes&, Ref<FXmlInstance>) = {
        [](FAttributes& a, Ref<FXmlInstance> part) { a.setObject("x", part.get(), Hold::retain); },
        [](FAttributes& a, Ref<FXmlInstance> part) { a.appendObject("x", part); },
        [](FAttributes& a, Ref<FXmlInstance> part) {
            a.setObject("x", new FAttributes, Hold::adopt);
            a.getAttributes("x")->setObject("y", part.get(), Hold::retain);
        },
        [](FAttributes& a, Ref<FXmlInstance> part) {
            auto item = make<FAttributes>();
            item->setObject("y", part.get(), Hold::retain);
            a.appendAttributes("x", std::move(item));
        },
    };
    for (const auto& place : places) {
        SCOPED_TRACE(&place - places);
        FXmlReference watcher(2);
        auto body = make<FAttributes>();
        {
            const auto part = make<FXmlInstance>(2, "CmString", make<FAttributes>());
            watcher.bind(part.get(), FXmlReference::Binding::watch);
            place(*body, part);
        }
        FXmlInstance owner(1, "CmString", std::move(body));
        owner.getObject();
        EXPECT_EQ(owner.getAttributes(), nullptr) << "they went with the object";
        EXPECT_NE(watcher.target(), nullptr);
    }
}

std::string nestedBody(int32_t depth) {
    BodyBytes bytes(0);
    for (int32_t i = 0; i < depth; ++i)
        bytes.int32(1).object("n", 6);
    return bytes.int32(0).bytes();
}

TEST(AttributesGraph, EndAtTheirDepth) {
    const std::string deep = nestedBody(100000);
    const LittleCost cost(deep.size());
    FAttributes read;
    std::string fault;
    EXPECT_FALSE(load(deep, read, 0, &fault));
    EXPECT_NE(fault.find("deeper than 10000"), std::string::npos) << fault;
    FAttributes whole;
    ASSERT_TRUE(load(nestedBody(9999), whole));
    EXPECT_EQ(stored(whole), nestedBody(9999));
    FAttributes above;
    above.setObject("n", &whole, Hold::plain);
    FMemoryStream stream;
    EXPECT_FALSE(writeAttributes(stream, above, &fault));
    EXPECT_EQ(stream.size(), 0);
    EXPECT_NE(fault.find("\"n|n|"), std::string::npos) << fault;
}

} // namespace
} // namespace qorl
