#include "foundation/Cast.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttrList.h"
#include "persistence/attributes/FXmlObject.h"
#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"
#include "support/FailingAllocation.h"
#include "support/GraphNode.h"
#include "support/Objects.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace qorl {

namespace {

using Hold = FAttributes::Hold;
using Mode = FXmlDocument::Mode;

std::string lines(std::string text) {
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.insert(at, "\r");
    return text;
}

std::string idText(const CmObject* object) {
    return std::to_string(idOf(object));
}

/// A document over bytes that it owns.
struct Reading {
    explicit Reading(std::string_view text)
        : bytes(text), stream{std::string_view(bytes)}, document(&stream, Mode::read) {}

    std::string bytes;
    FMemoryStream stream;
    FXmlDocument document;
};

struct Writing {
    Writing() : document(&stream, Mode::write) {}

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
    Writing writing;
    writing.document.objects().setObject("first & only", root.get(), Hold::retain);
    writing.document.objects().setObject("leaf", leaf.get(), Hold::retain);
    const auto data = make<FAttributes>();
    data->setInteger("n", 7);
    data->setObject("again", leaf.get(), Hold::retain);
    writing.document.data().setObject("plain", data.get(), Hold::retain);
    const auto live = make<CmString>("text");
    writing.document.data().setObject("live", live.get(), Hold::retain);
    EXPECT_EQ(writing.save(), lines("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                    "<Doc>\n"
                                    "   <rootObjects>\n"
                                    "      <root name=\"first &amp; only\" ID=\"" +
                                    idText(root.get()) +
                                    "\"/>\n"
                                    "      <root name=\"leaf\" ID=\"" +
                                    idText(leaf.get()) +
                                    "\"/>\n"
                                    "      <root name=\"plain\">\n"
                                    "         <int name=\"n\" value=\"7\"/>\n"
                                    "         <obj name=\"again\" ID=\"" +
                                    idText(leaf.get()) +
                                    "\"/>\n"
                                    "      </root>\n"
                                    "      <root name=\"live\">\n"
                                    "         <string name=\"s\" value=\"text\"/>\n"
                                    "      </root>\n"
                                    "   </rootObjects>\n"
                                    "\n"
                                    "   <obj class=\"GraphNode\" ID=\"" +
                                    idText(root.get()) +
                                    "\">\n"
                                    "      <int name=\"value\" value=\"1\"/>\n"
                                    "      <obj name=\"next\" ID=\"" +
                                    idText(leaf.get()) +
                                    "\"/>\n"
                                    "      <list name=\"links\" type=\"obj\">\n"
                                    "         <item value=\"" +
                                    idText(leaf.get()) +
                                    "\"/>\n"
                                    "      </list>\n"
                                    "   </obj>\n"
                                    "\n"
                                    "   <obj class=\"GraphNode\" ID=\"" +
                                    idText(leaf.get()) +
                                    "\">\n"
                                    "      <int name=\"value\" value=\"2\"/>\n"
                                    "   </obj>\n"
                                    "\n"
                                    "</Doc>\n"));
}

TEST(XmlRoots, ComeBackByName) {
    Writing writing;
    writing.document.objects().setObject("node", new GraphNode(5), Hold::adopt);
    writing.document.objects().setObject("text", new CmString("hello"), Hold::adopt);
    writing.document.data().setObject("data", new FAttributes, Hold::adopt);
    writing.document.data().getAttributes("data")->setInteger("n", 3);
    Reading reading(writing.save());
    ASSERT_TRUE(reading.document.load("Doc")) << reading.document.errorText();
    EXPECT_EQ(reading.document.data().getAttributes("data")->getInteger("n"), 3);
    EXPECT_EQ(reading.document.getObject("node", "CmString"), nullptr);
    const Ref<CmObject> node = reading.document.getObject("node", "GraphNode");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(reading.document.getObject("node"), node);
    EXPECT_EQ(cast<CmString>(reading.document.getObject("text"))->string(), ConstString("hello"));
    EXPECT_EQ(reading.document.getObject("nothing"), nullptr);
    EXPECT_FALSE(reading.document.saveRoots("Doc")) << "it is open for reading";
    EXPECT_FALSE(reading.document.load("Other"));
}

TEST(XmlRoots, KeepWhatStoodInFrontOfACut) {
    const auto root = make<GraphNode>(1);
    root->next = make<GraphNode>(2);
    root->links = {root, root->next};
    Writing writing;
    writing.document.objects().setObject("a", root.get(), Hold::retain);
    const std::string text(writing.save());
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
        Writing writing;
        writing.document.objects().setObject("a", nodes.front().get(), Hold::retain);
        const auto data = make<FAttributes>();
        data->setObject("b", nodes.back().get(), Hold::retain);
        writing.document.data().setObject("data", data.get(), Hold::retain);
        Reading reading(writing.save());
        ASSERT_TRUE(reading.document.load("Doc")) << reading.document.errorText();
        const Ref<CmObject> a = reading.document.getObject("a");
        const Ref<CmObject> b = reading.document.data().getAttributes("data")->getObject("b");
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

struct RootFault {
    const char* text;
    const char* error;
};

TEST(XmlRoots, SaysWhatIsWrongWithThem) {
    const RootFault cases[] = {
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
    for (const RootFault& c : cases) {
        Reading reading(c.text);
        EXPECT_FALSE(reading.document.load("Doc")) << c.text;
        EXPECT_EQ(reading.document.errorText(), c.error) << c.text;
    }
    Reading old("<Doc><root name='a' ID='-2'/><obj class='GraphNode' ID='4294967294'/></Doc>");
    EXPECT_TRUE(old.document.load("Doc"));
    EXPECT_NE(old.document.getObject("a"), nullptr);
    Reading lost("<Doc><root name='a' ID='1'/></Doc>");
    EXPECT_TRUE(lost.document.load("Doc"));
    EXPECT_EQ(lost.document.getObject("a"), nullptr);
}

TEST(XmlRoots, PassThroughUnchangedWithoutTheirClasses) {
    const std::string text = lines("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                                   "<Doc>\n"
                                   "   <rootObjects>\n"
                                   "      <root name=\"a\" ID=\"18446744073709551615\"/>\n"
                                   "      <root name=\"d\">\n"
                                   "         <obj class=\"Gone\" name=\"in\" ID=\"7\">\n"
                                   "            <obj name=\"unbound\" ID=\"99\"/>\n"
                                   "            <string name=\"s\" value=\"\"/>\n"
                                   "         </obj>\n"
                                   "      </root>\n"
                                   "   </rootObjects>\n"
                                   "\n"
                                   "   <obj class=\"Gone\" ID=\"18446744073709551615\">\n"
                                   "      <list name=\"l\" type=\"obj\">\n"
                                   "         <obj class=\"Lost\" ID=\"8\">\n"
                                   "            <obj name=\"up\" ID=\"18446744073709551615\"/>\n"
                                   "         </obj>\n"
                                   "         <item value=\"7\"/>\n"
                                   "      </list>\n"
                                   "   </obj>\n"
                                   "\n"
                                   "</Doc>\n");
    Reading reading(text);
    ASSERT_TRUE(reading.document.load("Doc")) << reading.document.errorText();
    Writing writing;
    const auto copy = [](FAttributes& from, FAttributes& to) {
        for (int32_t i = 0; i < from.count(); ++i)
            to.setObject(from.at(i)->key(), from.at(i)->getObject(), Hold::retain);
    };
    copy(reading.document.objects(), writing.document.objects());
    copy(reading.document.data(), writing.document.data());
    EXPECT_EQ(writing.save(), text);
}

TEST(XmlRoots, KeepObjectsApartWhoseNumbersAreTheSame) {
    // Both were the first object of their documents.
    Reading one("<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='1'/></obj></Doc>");
    Reading two("<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='2'/></obj></Doc>");
    ASSERT_TRUE(one.document.load("Doc") && two.document.load("Doc"));
    Writing writing;
    writing.document.objects().setObject("a", one.document.objects().at(0)->getObject(), Hold::retain);
    writing.document.objects().setObject("b", two.document.objects().at(0)->getObject(), Hold::retain);
    Reading both(writing.save());
    ASSERT_TRUE(both.document.load("Doc"));
    for (const auto& [name, value] : {std::pair("a", 1), std::pair("b", 2)}) {
        auto* stored = cast<FXmlObject>(both.document.objects().find(name)->getObject());
        ASSERT_NE(stored->getAttributes(), nullptr);
        EXPECT_EQ(stored->getAttributes()->getInteger("n"), value);
    }
}

TEST(XmlRoots, AStoredObjectAndTheLiveOneThatCameOfItAreOne) {
    Reading reading("<Doc><root name='a' ID='7'/><obj class='GraphNode' ID='7'/></Doc>");
    ASSERT_TRUE(reading.document.load("Doc"));
    const Ref<CmObject> live = reading.document.getObject("a");
    ASSERT_NE(live, nullptr);
    Writing writing;
    writing.document.objects().setObject("a", reading.document.objects().at(0)->getObject(), Hold::retain);
    writing.document.objects().setObject("b", live.get(), Hold::retain);
    Reading again(writing.save());
    ASSERT_TRUE(again.document.load("Doc"));
    EXPECT_EQ(again.document.getObject("a"), again.document.getObject("b"));
    EXPECT_EQ(cast<FXmlObject>(again.document.objects().at(1)->getObject())->id(), 7u);
}

TEST(XmlRoots, AReferenceThatNamesNothingNamesNoOtherObjectLater) {
    Reading one("<Doc><root name='lost' ID='1'/><root name='too' ID='1'/></Doc>");
    Reading two("<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='2'/></obj></Doc>");
    ASSERT_TRUE(one.document.load("Doc") && two.document.load("Doc"));
    for (const bool isObjectFirst : {false, true}) {
        Writing writing;
        FAttributes& objects = writing.document.objects();
        if (isObjectFirst)
            objects.setObject("a", two.document.objects().at(0)->getObject(), Hold::retain);
        objects.setObject("lost", one.document.objects().at(0)->getObject(), Hold::retain);
        objects.setObject("too", one.document.objects().at(1)->getObject(), Hold::retain);
        if (!isObjectFirst)
            objects.setObject("a", two.document.objects().at(0)->getObject(), Hold::retain);
        Reading both(writing.save());
        ASSERT_TRUE(both.document.load("Doc"));
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
    Reading reading(
        "<Doc><root name='a' ID='1'/><obj class='Gone' ID='1'><int name='n' value='2'/></obj></Doc>");
    ASSERT_TRUE(reading.document.load("Doc"));
    auto* reference = cast<FXmlReference>(reading.document.objects().at(0)->getObject());
    for (CmObject* object :
         {static_cast<CmObject*>(reference), static_cast<CmObject*>(reference->target())}) {
        Writing writing;
        writing.document.data().setObject("d", object, Hold::retain);
        Reading again(writing.save());
        ASSERT_TRUE(again.document.load("Doc"));
        EXPECT_EQ(again.document.data().getAttributes("d")->getInteger("n"), 2);
    }
}

TEST(XmlRoots, AreNotWrittenInHalf) {
    const auto node = make<GraphNode>();
    node->isStorable = false;
    Writing object;
    object.document.objects().setObject("a", node.get(), Hold::retain);
    EXPECT_FALSE(object.document.saveRoots("Doc"));
    EXPECT_EQ(object.document.errorText(), "an object of the class GraphNode has no attributes to store");
    Writing data;
    data.document.data().setObject("a", node.get(), Hold::retain);
    EXPECT_FALSE(data.document.saveRoots("Doc"));
    EXPECT_EQ(data.document.errorText(),
              "an object of the class GraphNode under \"a\" has no attributes to store");
    node->isStorable = true;
    for (const std::string& name : {std::string(), std::string(2049, 'k')}) {
        Writing named;
        named.document.objects().setObject(name, node.get(), Hold::retain);
        EXPECT_FALSE(named.document.saveRoots("Doc"));
        EXPECT_EQ(named.document.errorText(), name.empty() ? "a root has no name"
                                                           : "the name of a root, \"" + name.substr(0, 64) +
                                                                 "...\", is longer than 2048 bytes");
        Writing nested;
        nested.document.data().setObject(name, make<FAttributes>().get(), Hold::retain);
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
        Reading reading(writing.save());
        EXPECT_TRUE(reading.document.load("Doc")) << reading.document.errorText();
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
        Reading reading(begin + className + "' ID='1'><int name='n' value='1'/></obj></Doc>");
        ASSERT_TRUE(reading.document.load("Doc"));
        EXPECT_EQ(reading.document.getObject("a"), nullptr);
        Writing writing;
        writing.document.objects().setObject("a", reading.document.objects().at(0)->getObject(),
                                             Hold::retain);
        const std::string expected =
            "   <obj class=\"" + className + "\" ID=\"1\">\r\n" + body + "   </obj>\r\n";
        EXPECT_NE(writing.save().find(expected), std::string_view::npos) << className;
    }
}

TEST(XmlRoots, ReadAndWrittenWithoutMemoryTellOfIt) {
    const auto leaf = make<GraphNode>(2);
    const auto root = make<GraphNode>(1);
    root->next = leaf;
    root->links = {leaf};
    const auto save = [&](Writing& writing) {
        writing.document.objects().setObject("root", root.get(), Hold::retain);
        writing.document.data().setObject("leaf", leaf.get(), Hold::retain);
    };
    Writing whole;
    save(whole);
    const std::string text(whole.save());
    // What finds another way is whole, too.
    failEachAllocation([&](FailingAllocation& allocation) {
        Writing writing;
        save(writing);
        const bool isSaved = allocation.during([&] { return writing.document.saveRoots("Doc"); });
        EXPECT_TRUE(isSaved || allocation.hasFailed());
        EXPECT_EQ(isSaved, writing.stream.bytes() == text);
    });
    for (const char* selected : {static_cast<const char*>(nullptr), "root"}) {
        failEachAllocation([&](FailingAllocation& allocation) {
            Reading reading(text);
            const bool isRead = allocation.during([&] { return reading.document.load("Doc", selected); });
            EXPECT_TRUE(isRead || allocation.hasFailed());
            const std::string graph = GraphNode::describe(reading.document.getObject("root").get());
            EXPECT_TRUE(!isRead || graph == GraphNode::describe(root.get()));
        });
    }
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
