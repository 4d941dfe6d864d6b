#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "support/FailingAllocation.h"
#include "support/GraphNode.h"
#include "support/XmlLines.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace qorl {

namespace {

constexpr InterfaceId nodeId = InterfaceId::fromText("{DE600000-0000-4000-8000-00000000BEEF}");
QORL_REGISTER_ID(GraphNode, nodeId)

using Hold = FAttributes::Hold;
using Mode = FXmlDocument::Mode;

/// A document over bytes that it owns.
struct Reading {
    explicit Reading(std::string_view text)
        : bytes(text), stream{std::string_view(bytes)}, document(&stream, Mode::read) {}

    std::string bytes;
    FMemoryStream stream;
    FXmlDocument document;
};

struct Loaded : Reading {
    explicit Loaded(std::string_view text) : Reading(text) {
        EXPECT_TRUE(document.load("Doc")) << document.errorText();
    }

    Ref<CmObject> object(const char* name) { return document.getObject(name); }
    FAttributes* data(const char* name) { return document.data().getAttributes(name); }
    CmObject* stored(int32_t index) { return document.objects().at(index)->getObject(); }
};

struct Writing {
    Writing() : document(&stream, Mode::write) {}

    Writing& object(std::string_view name, CmObject* object) {
        document.objects().setObject(name, object, Hold::retain);
        return *this;
    }
    Writing& data(std::string_view name, CmObject* object) {
        document.data().setObject(name, object, Hold::retain);
        return *this;
    }

    std::string_view save() {
        EXPECT_TRUE(document.saveRoots("Doc")) << document.errorText();
        return stream.bytes();
    }

    FMemoryStream stream;
    FXmlDocument document;
};

TEST(XmlRoots, AreWrittenWithTheirDataAndObjects) {
    const auto leaf = make<GraphNode>(2);
    const auto root = make<GraphNode>(1);
    root->next = leaf;
    root->links = {leaf};
    const auto data = make<FAttributes>();
    data->setInteger("n", 7);
    data->setObject("again", leaf.get(), Hold::retain);
    const auto live = make<CmString>("text");
    Writing writing;
    writing.object("first & only", root.get()).object("leaf", leaf.get());
    writing.data("plain", data.get()).data("live", live.get());
    EXPECT_EQ(writing.save(), xmlLines(R"(<?xml version="1.0" encoding="utf-8"?>
<Doc>
   <rootObjects>
      <root name="first &amp; only" ID="ROOT"/>
      <root name="leaf" ID="LEAF"/>
      <root name="plain">
         <int name="n" value="7"/>
         <obj name="again" ID="LEAF"/>
      </root>
      <root name="live">
         <string name="s" value="text"/>
      </root>
   </rootObjects>

   <obj class="GraphNode" ID="ROOT">
      <int name="value" value="1"/>
      <obj name="next" ID="LEAF"/>
      <list name="links" type="obj">
         <item value="LEAF"/>
      </list>
   </obj>

   <obj class="GraphNode" ID="LEAF">
      <int name="value" value="2"/>
   </obj>

</Doc>
)",
                                       {{"ROOT", root.get()}, {"LEAF", leaf.get()}}));
}

TEST(XmlRoots, ComeBackByName) {
    const auto data = make<FAttributes>();
    data->setInteger("n", 3);
    Writing writing;
    writing.object("node", make<GraphNode>(5).get()).object("text", make<CmString>("hello").get());
    Loaded reading(writing.data("data", data.get()).save());
    EXPECT_EQ(reading.data("data")->getInteger("n"), 3);
    EXPECT_EQ(reading.document.getObject("node", "CmString"), nullptr);
    const Ref<CmObject> node = reading.document.getObject("node", "GraphNode");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(reading.object("node"), node);
    EXPECT_EQ(cast<CmString>(reading.object("text"))->string(), ConstString("hello"));
    EXPECT_EQ(reading.object("nothing"), nullptr);
    EXPECT_FALSE(reading.document.saveRoots("Doc")) << "it is open for reading";
    EXPECT_FALSE(reading.document.load("Other"));
}

TEST(XmlRoots, KeepWhatStoodInFrontOfACut) {
    const auto root = make<GraphNode>(1);
    root->next = make<GraphNode>(2);
    root->links = {root, root->next};
    Writing writing;
    const std::string text(writing.object("a", root.get()).save());
    for (size_t length = 0; length <= text.size(); ++length) {
        SCOPED_TRACE(length);
        Reading reading(text.substr(0, length));
        EXPECT_EQ(reading.document.load("Doc"), length >= text.find("</Doc>") + 6);
        EXPECT_EQ(reading.document.objects().contains("a"), length >= text.find("/>") + 2);
        const Ref<CmObject> read = reading.document.getObject("a");
        EXPECT_TRUE(read || length < text.rfind("</obj>")) << "all of it stood there";
    }
    GraphNode::cutAll();
}

TEST(XmlRoots, GraphsComeBackWithCyclesAndSharedObjects) {
    const size_t before = GraphNode::all.size();
    for (uint32_t seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<Ref<GraphNode>> nodes;
        for (uint32_t i = random() % 60 + 1; i > 0; --i)
            nodes.push_back(make<GraphNode>(static_cast<int32_t>(random())));
        for (const auto& node : nodes) {
            if (random() % 3)
                node->next = nodes[random() % nodes.size()];
            for (uint32_t i = random() % 4; i > 0; --i)
                node->links.emplace_back(nodes[random() % nodes.size()]);
        }
        const auto data = make<FAttributes>();
        data->setObject("b", nodes.back().get(), Hold::retain);
        Writing writing;
        Loaded reading(writing.object("a", nodes.front().get()).data("data", data.get()).save());
        const Ref<CmObject> a = reading.object("a");
        const Ref<CmObject> b = reading.data("data")->getObject("b");
        EXPECT_EQ(GraphNode::describe(a.get()), GraphNode::describe(nodes.front().get()));
        EXPECT_EQ(GraphNode::describe(b.get()), GraphNode::describe(nodes.back().get()));
        GraphNode::cutAll();
    }
    EXPECT_EQ(GraphNode::all.size(), before) << "nodes were lost";
}

constexpr std::string_view selectable =
    "<Doc><rootObjects>"
    "<root name='one' ID='1'/><root name='two' ID='2'/>"
    "<root name='data'><int name='n' value='4'/></root>"
    "<root name='links'><obj name='o' ID='3'/></root>"
    "</rootObjects>"
    "<obj class='GraphNode' ID='3'><int name='value' value='30'/></obj>"
    "<obj class='GraphNode' ID='1'><int name='value' value='10'/></obj>"
    "<obj class='GraphNode' ID='2'><int name='value' value='20'/>"
    "<obj name='next' ID='3'/><list name='links' type='obj'><item value='4'/></list></obj>"
    "<obj class='GraphNode' ID='5'><member name='broken'></obj>"
    "<obj class='GraphNode' ID='4'><int name='value' value='40'/></obj>"
    "</Doc>";

TEST(XmlRoots, OneCanBeReadWithoutTheRest) {
    std::string whole(selectable);
    whole.replace(whole.find("<member name='broken'>"), 22, "");
    Reading one(selectable);
    EXPECT_TRUE(one.document.load("Doc", "one")) << "reading stops in front of the damage";
    EXPECT_EQ(cast<GraphNode>(one.document.getObject("one"))->value, 10);
    EXPECT_EQ(one.document.objects().count(), 1);
    EXPECT_EQ(one.document.data().count(), 0);

    // What it refers to stands in front of it and behind it.
    Reading two(whole);
    ASSERT_TRUE(two.document.load("Doc", "two")) << two.document.errorText();
    EXPECT_EQ(GraphNode::describe(two.document.getObject("two").get()), "20: >1 2 \n30: \n40: \n");
    EXPECT_EQ(two.document.getObject("one"), nullptr);

    Reading data(selectable);
    EXPECT_TRUE(data.document.load("Doc", "data"));
    EXPECT_EQ(data.document.data().getAttributes("data")->getInteger("n"), 4);
    Reading links(whole);
    EXPECT_TRUE(links.document.load("Doc", "links"));
    EXPECT_EQ(cast<GraphNode>(links.document.data().getAttributes("links")->getObject("o"))->value, 30);

    Reading none(whole);
    EXPECT_TRUE(none.document.load("Doc", "none"));
    EXPECT_EQ(none.document.objects().count(), 0);
}

TEST(XmlRoots, ASelectedOneCostsNoMoreThanItsPlace) {
    std::string text = "<Doc><rootObjects><root name='one' ID='1'/></rootObjects>"
                       "<obj class='GraphNode' ID='1'/>";
    const size_t needed = text.size();
    text += std::string(1 << 20, ' ') + "</Doc>";
    Reading reading(text);
    EXPECT_TRUE(reading.document.load("Doc", "one"));
    EXPECT_LT(reading.stream.tell(), static_cast<int64_t>(needed) + 4096);
}

TEST(XmlRoots, SaysWhatIsWrongWithThem) {
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {"<Doc><root ID='1'/></Doc>", "1:6: Not enough actual attributes in tag!"},
        {"<Doc><root name='a'/></Doc>", "1:6: Not enough actual attributes in tag!"},
        {"<Doc><root name='a' ID='0'/></Doc>", "1:6: Not enough actual attributes in tag!"},
        {"<Doc><root></root></Doc>", "1:6: Not enough actual attributes in tag!"},
        {"<Doc><int name='a' value='1'/></Doc>",
         "1:6: Unexpected tag or invalid attributes! (<int> can't stand here)"},
        {"<Doc><root name='a'><root name='b' ID='1'/></root></Doc>",
         "1:21: Unexpected tag or invalid attributes! (<root> can't stand here)"},
        {"<Doc><rootObjects><member name='a'/></rootObjects></Doc>",
         "1:19: Unexpected tag or invalid attributes! (<member> can't stand here)"},
    };
    for (const auto& c : cases) {
        Reading reading(c.text);
        EXPECT_FALSE(reading.document.load("Doc")) << c.text;
        EXPECT_EQ(reading.document.errorText(), c.error) << c.text;
    }
    Loaded old("<Doc><root name='a' ID='-2'/><obj class='GraphNode' ID='4294967294'/></Doc>");
    EXPECT_NE(old.object("a"), nullptr);
    EXPECT_EQ(Loaded("<Doc><root name='a' ID='1'/></Doc>").object("a"), nullptr);
}

TEST(XmlRoots, PassThroughUnchangedWithoutTheirClasses) {
    const std::string text = xmlLines(R"(<?xml version="1.0" encoding="utf-8"?>
<Doc>
   <rootObjects>
      <root name="a" ID="18446744073709551615"/>
      <root name="d">
         <obj class="Gone" name="in" ID="7">
            <obj name="unbound" ID="99"/>
            <string name="s" value=""/>
         </obj>
      </root>
   </rootObjects>

   <obj class="Gone" ID="18446744073709551615">
      <list name="l" type="obj">
         <obj class="Lost" ID="8">
            <obj name="up" ID="18446744073709551615"/>
         </obj>
         <item value="7"/>
      </list>
   </obj>

</Doc>
)");
    Loaded reading(text);
    Writing writing;
    writing.object("a", reading.stored(0)).data("d", reading.data("d"));
    EXPECT_EQ(writing.save(), text);
}

TEST(XmlRoots, KeepObjectsApartWhoseNumbersAreTheSame) {
    // Both were the first object of their documents.
    Loaded one("<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='1'/></obj></Doc>");
    Loaded two("<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='2'/></obj></Doc>");
    Writing writing;
    Loaded both(writing.object("a", one.stored(0)).object("b", two.stored(0)).save());
    for (const int32_t i : {0, 1}) {
        auto* stored = cast<FXmlObject>(both.stored(i));
        ASSERT_NE(stored->getAttributes(), nullptr);
        EXPECT_EQ(stored->getAttributes()->getInteger("n"), i + 1);
    }
}

TEST(XmlRoots, AStoredObjectAndTheLiveOneThatCameOfItAreOne) {
    Loaded reading("<Doc><root name='a' ID='7'/><obj class='GraphNode' ID='7'/></Doc>");
    const Ref<CmObject> live = reading.object("a");
    ASSERT_NE(live, nullptr);
    Writing writing;
    Loaded again(writing.object("a", reading.stored(0)).object("b", live.get()).save());
    EXPECT_EQ(again.object("a"), again.object("b"));
    EXPECT_EQ(cast<FXmlObject>(again.stored(1))->id(), 7u);
}

TEST(XmlRoots, AReferenceThatNamesNothingNamesNoOtherObjectLater) {
    Loaded one("<Doc><root name='lost' ID='1'/><root name='too' ID='1'/></Doc>");
    Loaded two("<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='2'/></obj></Doc>");
    for (const bool isObjectFirst : {false, true}) {
        Writing writing;
        if (isObjectFirst)
            writing.object("a", two.stored(0));
        writing.object("lost", one.stored(0)).object("too", one.stored(1));
        if (!isObjectFirst)
            writing.object("a", two.stored(0));
        Loaded both(writing.save());
        const auto stored = [&](const char* name) {
            return cast<FXmlReference>(both.document.objects().find(name)->getObject());
        };
        EXPECT_EQ(stored("lost")->target(), nullptr);
        EXPECT_EQ(stored("lost")->id(), stored("too")->id());
        ASSERT_NE(stored("a")->target(), nullptr);
        EXPECT_EQ(stored("a")->getAttributes()->getInteger("n"), 2);
    }
}

TEST(XmlRoots, AStoredObjectAmongTheDataGivesItsAttributes) {
    Loaded reading(
        "<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='2'/></obj></Doc>");
    auto* reference = cast<FXmlReference>(reading.stored(0));
    for (CmObject* object :
         {static_cast<CmObject*>(reference), static_cast<CmObject*>(reference->target())}) {
        Writing writing;
        EXPECT_EQ(Loaded(writing.data("d", object).save()).data("d")->getInteger("n"), 2);
    }
}

TEST(XmlRoots, AreNotWrittenInHalf) {
    const auto node = make<GraphNode>();
    node->isStorable = false;
    Writing object;
    object.object("a", node.get());
    EXPECT_FALSE(object.document.saveRoots("Doc"));
    EXPECT_EQ(object.document.errorText(), "an object of the class GraphNode has no attributes to store");
    Writing data;
    data.data("a", node.get());
    EXPECT_FALSE(data.document.saveRoots("Doc"));
    EXPECT_EQ(data.document.errorText(),
              "an object of the class GraphNode under \"a\" has no attributes to store");
    node->isStorable = true;
    for (const std::string& name : {std::string(), std::string(2049, 'k')}) {
        Writing named;
        named.object(name, node.get());
        EXPECT_FALSE(named.document.saveRoots("Doc"));
        EXPECT_EQ(named.document.errorText(), name.empty() ? "a root has no name"
                                                           : "the name of a root, \"" + name.substr(0, 64) +
                                                                 "...\", is longer than 2048 bytes");
        Writing nested;
        nested.data(name, make<FAttributes>().get());
        EXPECT_FALSE(nested.document.saveRoots("Doc"));
    }

    FMemoryStream full(std::string_view("read only"));
    FXmlDocument document(&full, Mode::write);
    EXPECT_FALSE(document.saveRoots("Doc"));
    EXPECT_EQ(document.errorText(),
              "the stream doesn't take all of the document: it is full, or not open for writing");
    FXmlDocument none(nullptr, Mode::write);
    EXPECT_FALSE(none.saveRoots("Doc"));
}

/// Does something else when it is asked for its attributes.
class Meddler : public CmObject {
    QORL_CLASS(Meddler, CmObject)

public:
    bool storeAttributes(FAttributes*) override {
        meddle();
        return true;
    }

    std::function<void()> meddle;
};

TEST(XmlRoots, AnObjectMayEmptyWhatItStandsInWhileItIsWritten) {
    enum Place { itself, inBody, inList, inListOfBodies };
    // Too long to stand within the entry, with which it goes.
    const std::string key(64, 'k');
    for (const Place place : {itself, inBody, inList, inListOfBodies}) {
        SCOPED_TRACE(place);
        Writing writing;
        FAttributes& data = writing.document.data();
        {
            const auto meddler = make<Meddler>();
            const auto list = make<FObjectList>();
            list->add(meddler);
            list->add(make<GraphNode>());
            const auto body = make<FAttributes>();
            body->setObject(key, place == inList ? Ref<CmObject>(list).get() : meddler.get(), Hold::retain);
            body->setInteger("behind", 1);
            const auto outer = make<FAttributes>();
            outer->appendAttributes("bodies", body);
            meddler->meddle = [&data, list = place == inList ? list.get() : nullptr,
                               body = place == itself ? nullptr : body.get()] {
                for (int32_t i = 0; list && i < list->count(); ++i)
                    list->replace(i, nullptr);
                if (body)
                    body->removeAll();
                data.removeAll();
            };
            const Ref<CmObject> roots[] = {meddler, body, body, outer};
            data.setObject(key, roots[place].get(), Hold::retain);
        }
        const Loaded reading(writing.save());
    }
}

TEST(XmlRoots, AnObjectThatCouldNotBeMadeIsWrittenWithWhatIsLeftOfIt) {
    const std::string begin = "<Doc><root name='a' ID='1'/><obj class='";
    struct Case {
        std::string className;
        std::string body;
    };
    const Case cases[] = {
        {"FAttributeValue", ""}, // It refuses attributes, and then they are gone.
        {"NoSuchClass", "      <int name=\"n\" value=\"1\"/>\r\n"},
    };
    for (const auto& [className, body] : cases) {
        Loaded reading(begin + className + "' ID='1'><int name='n' value='1'/></obj></Doc>");
        EXPECT_EQ(reading.object("a"), nullptr);
        Writing writing;
        writing.object("a", reading.stored(0));
        const std::string expected =
            "   <obj class=\"" + className + "\" ID=\"1\">\r\n" + body + "   </obj>\r\n";
        EXPECT_NE(writing.save().find(expected), std::string_view::npos) << className;
    }
}

TEST(XmlRoots, ReadAndWrittenWithoutMemoryTellOfIt) {
    const auto leaf = make<GraphNode>(2);
    const auto root = make<GraphNode>(1);
    root->next = leaf;
    root->links = {leaf, make<GraphNode>(3)};
    Writing whole;
    const std::string text(whole.object("root", root.get()).data("leaf", leaf.get()).save());
    const std::string graph = GraphNode::describe(root.get());
    // What finds another way is whole, too.
    failEachAllocation([&](FailingAllocation& allocation) {
        Writing writing;
        writing.object("root", root.get()).data("leaf", leaf.get());
        const bool isSaved = allocation.during([&] { return writing.document.saveRoots("Doc"); });
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        EXPECT_EQ(isSaved, writing.stream.bytes() == text);
    });
    const struct {
        std::string text;
        const char* selected;
        std::string graph;
    } cases[] = {
        {text, nullptr, graph},
        {text, "root", graph},
        {"<Doc><root name='root' ID='1'/><obj class='GraphNode' ID='1'><obj name='next' ID='1'/></obj></Doc>",
         nullptr, "0: >0 \n"},
    };
    for (const auto& c : cases) {
        failEachAllocation([&](FailingAllocation& allocation) {
            Reading reading(c.text);
            const bool isRead = allocation.during([&] { return reading.document.load("Doc", c.selected); });
            EXPECT_TRUE(isRead || allocation.hasFailed());
            const Ref<CmObject> object = reading.document.getObject("root");
            EXPECT_TRUE(!isRead || GraphNode::describe(object.get()) == c.graph);
            GraphNode::cutAll();
        });
    }
    // An object is whole, or there is none, and nothing of it is lost for the next time.
    std::string byId = text;
    for (size_t at = 0; (at = byId.find("GraphNode", at)) != std::string::npos;)
        byId.replace(at, 9, "DE60000000004000800000000000BEEF");
    for (const std::string& stored : {text, byId})
        failEachAllocation([&](FailingAllocation& allocation) {
            Loaded reading(stored);
            Ref<CmObject> object;
            const bool isMade = allocation.completes([&] { object = reading.object("root"); });
            EXPECT_EQ(isMade, object != nullptr);
            if (!object)
                object = reading.object("root");
            EXPECT_EQ(GraphNode::describe(object.get()), graph);
        });
}

TEST(XmlRoots, ReadNamedEntitiesOfTheMacintosh) {
    const std::string_view text = "<Doc><root name='d'><string name='s' value='&Auml;&Auml;'/>"
                                  "<string name='u' value='\xC3\xA4'/></root></Doc>";
    for (const bool isMacintosh : {false, true}) {
        Reading reading(text);
        ASSERT_TRUE(reading.document.load("Doc", nullptr, isMacintosh));
        const FAttributes* data = reading.document.data().getAttributes("d");
        EXPECT_EQ(std::u16string(data->getText16("s")), u"\u00C4\u00C4")
            << "read as the set that it was decoded to";
        EXPECT_EQ(std::u16string(data->getText16("u")), u"\u00E4");
    }
}

} // namespace
} // namespace qorl
