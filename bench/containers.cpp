// Sizes are numbers of elements. Both sides hold the same counted objects, with a reference on each, and ask
// them for order, equality and hash.

#include "foundation/containers/CmArray.h"
#include "foundation/containers/CmBTree.h"
#include "foundation/containers/CmHashTable.h"
#include "foundation/containers/CmIDLinkedList.h"
#include "foundation/containers/CmILinkedList.h"
#include "foundation/containers/CmLinkedList.h"
#include "foundation/containers/CmOrderedArray.h"
#include "foundation/containers/dictionaries/CmBTreeDictionary.h"
#include "foundation/containers/dictionaries/CmHashDictionary.h"
#include "support/Ratio.h"

#include <algorithm>
#include <list>
#include <map>
#include <random>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace qorl::bench {
namespace {

template <typename Base>
class Numbered : public Base {
public:
    explicit Numbered(uint32_t value) : value(value) {}
    bool isEqual(const CmObject* other) const override { return value == of(other); }
    int32_t compare(const CmObject* other) const override {
        return value < of(other) ? -1 : value > of(other);
    }
    uint32_t hashCode(uint32_t size) const override { return value % size; }

    static uint32_t of(const CmObject* other) { return static_cast<const Numbered*>(other)->value; }

    uint32_t value;
};

class Element : public Numbered<CmObject> {
    QORL_CLASS(Element, CmObject)
public:
    using Numbered::Numbered;
};
class LinkElement : public Numbered<CmILink> {
    QORL_CLASS(LinkElement, CmILink)
public:
    using Numbered::Numbered;
};
class DoubleLinkElement : public Numbered<CmIDLink> {
    QORL_CLASS(DoubleLinkElement, CmIDLink)
public:
    using Numbered::Numbered;
};

using Object = Ref<CmObject>;
using Objects = std::vector<Object>;

void shuffle(Objects& objects) {
    std::shuffle(objects.begin(), objects.end(), std::mt19937(7));
}

/// Each number as another one, without any order: the last step of MurmurHash3.
uint32_t mixed(uint32_t number) {
    number = (number ^ number >> 16) * 0x85EBCA6B;
    number = (number ^ number >> 13) * 0xC2B2AE35;
    return number ^ number >> 16;
}

/// Objects of mixed numbers, each once, in the order of their making.
template <typename Type = Element>
Objects makeObjects(const benchmark::State& state) {
    Objects objects;
    for (uint32_t i = 0; i < state.range(0); ++i)
        objects.push_back(make<Type>(mixed(i)));
    return objects;
}

// The standard's containers ask the same operations, as they have to for objects of any class.
struct Less {
    bool operator()(const Object& a, const Object& b) const { return a->compare(b.get()) < 0; }
};
struct Equal {
    bool operator()(const Object& a, const Object& b) const { return a->isEqual(b.get()); }
};
struct Hash {
    size_t operator()(const Object& object) const { return object->hashCode(UINT32_MAX); }
};

/// Fills and empties a container.
template <typename Type, typename MakeContainer, typename Add>
void fill(benchmark::State& state, MakeContainer makeContainer, Add add) {
    const auto objects = makeObjects<Type>(state);
    for (auto _ : state) {
        auto container = makeContainer();
        for (const auto& object : objects)
            add(*container, object);
        benchmark::DoNotOptimize(container.get());
    }
}
/// Asks a filled container for each object.
template <typename MakeContainer, typename Add, typename Find>
void search(benchmark::State& state, MakeContainer makeContainer, Add add, Find find) {
    auto objects = makeObjects(state);
    const auto container = makeContainer();
    for (const auto& object : objects)
        add(*container, object);
    shuffle(objects);
    for (auto _ : state)
        for (const auto& object : objects)
            benchmark::DoNotOptimize(find(*container, object));
}
template <typename Type, typename MakeContainer, typename Add, typename Walk>
void walkOver(benchmark::State& state, MakeContainer makeContainer, Add add, Walk walk) {
    const auto objects = makeObjects<Type>(state);
    const auto container = makeContainer();
    for (const auto& object : objects)
        add(*container, object);
    for (auto _ : state)
        benchmark::DoNotOptimize(walk(*container));
}

const auto addOurs = [](CmContainer& container, const auto& object) { container.add(object.get()); };
const auto findOurs = [](const CmContainer& container, const auto& object) {
    return container.find(object.get());
};
const auto pushBack = [](auto& container, const auto& object) { container.push_back(object); };
const auto insert = [](auto& container, const auto& object) { container.insert(object); };
const auto findKey = [](const auto& container, const auto& object) { return &*container.find(object); };
const auto walkOurs = [](const auto& container) {
    uint32_t sum = 0;
    for (typename std::decay_t<decltype(container)>::Iterator it(container); !it.done();)
        sum += Element::of(it.next());
    return sum;
};
const auto walkTheirs = [](const auto& container) {
    uint32_t sum = 0;
    for (const auto& object : container)
        sum += Element::of(object.get());
    return sum;
};

template <typename Container>
auto makeEmpty() {
    return std::make_unique<Container>();
}
auto makeArray() {
    return std::make_unique<CmArray>(0, CmArray::doubling, Ownership::share);
}
auto makeOrderedArray() {
    return std::make_unique<CmOrderedArray>(0, CmArray::doubling, Ownership::share);
}
auto makeTree() {
    return std::make_unique<CmBTree>(CmBTree::wideOrder, Ownership::share);
}
auto makeTable() {
    return std::make_unique<CmHashTable>(CmHashTable::defaultBuckets, CmHashTable::Growth::automatic,
                                         Ownership::share);
}
template <typename Container>
auto makeList() {
    return std::make_unique<Container>(Ownership::share);
}

using Vector = std::vector<Object>;
using Set = std::multiset<Object, Less>;
using HashSet = std::unordered_multiset<Object, Hash, Equal>;
using List = std::list<Object>;

void arrayAdd(benchmark::State& state) {
    fill<Element>(state, makeArray, addOurs);
}
void arrayAddFloor(benchmark::State& state) {
    fill<Element>(state, makeEmpty<Vector>, pushBack);
}
QORL_RATIO(arrayAdd, arrayAddFloor, 1.2, 1000, 10000, 100000);

void arrayWalk(benchmark::State& state) {
    walkOver<Element>(state, makeArray, addOurs, [](const CmArray& array) {
        uint32_t sum = 0;
        for (const CmObject* object : array.elements())
            sum += Element::of(object);
        return sum;
    });
}
void arrayWalkFloor(benchmark::State& state) {
    walkOver<Element>(state, makeEmpty<Vector>, pushBack, walkTheirs);
}
QORL_RATIO(arrayWalk, arrayWalkFloor, 1.2, 1000, 10000, 100000);

void arrayIterator(benchmark::State& state) {
    walkOver<Element>(state, makeArray, addOurs, walkOurs);
}
QORL_RATIO(arrayIterator, arrayWalkFloor, 1.2, 1000, 10000, 100000);

void orderedArrayAdd(benchmark::State& state) {
    fill<Element>(state, makeOrderedArray, addOurs);
}
void orderedArrayAddFloor(benchmark::State& state) {
    fill<Element>(state, makeEmpty<Vector>, [](Vector& vector, const Object& object) {
        vector.insert(std::upper_bound(vector.begin(), vector.end(), object, Less()), object);
    });
}
QORL_RATIO(orderedArrayAdd, orderedArrayAddFloor, 1.2, 1000, 10000);

void orderedArrayFind(benchmark::State& state) {
    search(state, makeOrderedArray, addOurs, findOurs);
}
void orderedArrayFindFloor(benchmark::State& state) {
    auto objects = makeObjects(state);
    std::sort(objects.begin(), objects.end(), Less());
    auto wanted = objects;
    shuffle(wanted);
    for (auto _ : state) {
        for (const auto& object : wanted) {
            const auto place = std::lower_bound(objects.begin(), objects.end(), object, Less());
            benchmark::DoNotOptimize(object->isEqual(place->get()));
        }
    }
}
QORL_RATIO(orderedArrayFind, orderedArrayFindFloor, 1.2, 1000, 10000, 100000);

void listAdd(benchmark::State& state) {
    fill<Element>(state, makeList<CmLinkedList>, addOurs);
}
void listAddFloor(benchmark::State& state) {
    fill<Element>(state, makeEmpty<List>, pushBack);
}
QORL_RATIO(listAdd, listAddFloor, 1.2, 1000, 10000, 100000);

void intrusiveListAdd(benchmark::State& state) {
    fill<LinkElement>(state, makeList<CmILinkedList>, addOurs);
}
void intrusiveListAddFloor(benchmark::State& state) {
    fill<LinkElement>(state, makeEmpty<List>, pushBack);
}
QORL_RATIO(intrusiveListAdd, intrusiveListAddFloor, 1.0, 1000, 10000, 100000);

const auto walkLinks = [](const CmIDLinkedList& list) {
    uint32_t sum = 0;
    for (CmIDLinkedListIterator it(list); !it.done();)
        sum += DoubleLinkElement::of(it.next());
    return sum;
};
// Each step waits for the element itself, where a list of nodes is denser and the elements are fetched ahead.
void intrusiveListWalk(benchmark::State& state) {
    walkOver<DoubleLinkElement>(state, makeList<CmIDLinkedList>, addOurs, walkLinks);
}
void intrusiveListWalkFloor(benchmark::State& state) {
    walkOver<DoubleLinkElement>(state, makeEmpty<List>, pushBack, walkTheirs);
}
QORL_RATIO(intrusiveListWalk, intrusiveListWalkFloor, 1.0, 1000, 10000, 100000);

/// Elements go and come by themselves, as timers or animations do.
void intrusiveListReplace(benchmark::State& state) {
    const auto objects = makeObjects<DoubleLinkElement>(state);
    CmIDLinkedList list(Ownership::share);
    for (const auto& object : objects)
        list.add(object.get());
    for (auto _ : state) {
        for (const auto& object : objects) {
            list.remove(object.get());
            list.add(object.get());
        }
    }
}
void intrusiveListReplaceFloor(benchmark::State& state) {
    const auto objects = makeObjects<DoubleLinkElement>(state);
    List list;
    std::vector<List::iterator> places;
    for (const auto& object : objects)
        places.push_back(list.insert(list.end(), object));
    for (auto _ : state) {
        for (size_t i = 0; i < objects.size(); ++i) {
            list.erase(places[i]);
            places[i] = list.insert(list.end(), objects[i]);
        }
    }
}
QORL_RATIO(intrusiveListReplace, intrusiveListReplaceFloor, 1.0, 1000, 10000, 100000);

void treeAdd(benchmark::State& state) {
    fill<Element>(state, makeTree, addOurs);
}
void treeAddFloor(benchmark::State& state) {
    fill<Element>(state, makeEmpty<Set>, insert);
}
QORL_RATIO(treeAdd, treeAddFloor, 1.5, 1000, 10000, 100000);

void treeFind(benchmark::State& state) {
    search(state, makeTree, addOurs, findOurs);
}
void treeFindFloor(benchmark::State& state) {
    search(state, makeEmpty<Set>, insert, findKey);
}
QORL_RATIO(treeFind, treeFindFloor, 1.5, 1000, 10000, 100000);

void treeWalk(benchmark::State& state) {
    walkOver<Element>(state, makeTree, addOurs, walkOurs);
}
void treeWalkFloor(benchmark::State& state) {
    walkOver<Element>(state, makeEmpty<Set>, insert, walkTheirs);
}
QORL_RATIO(treeWalk, treeWalkFloor, 1.5, 1000, 10000, 100000);

/// Each object is taken off and added again.
void treeReplace(benchmark::State& state) {
    const auto tree = makeTree();
    search(
        state, [&tree] { return tree.get(); }, addOurs,
        [](CmBTree& container, const Object& object) {
            return container.remove(object.get()) && container.add(object.get());
        });
}
void treeReplaceFloor(benchmark::State& state) {
    Set set;
    search(
        state, [&set] { return &set; }, insert,
        [](Set& container, const Object& object) {
            container.erase(container.find(object));
            return &*container.insert(object);
        });
}
QORL_RATIO(treeReplace, treeReplaceFloor, 1.5, 1000, 10000, 100000);

void tableAdd(benchmark::State& state) {
    fill<Element>(state, makeTable, addOurs);
}
void tableAddFloor(benchmark::State& state) {
    fill<Element>(state, makeEmpty<HashSet>, insert);
}
QORL_RATIO(tableAdd, tableAddFloor, 1.5, 1000, 10000, 100000);

void tableFind(benchmark::State& state) {
    search(state, makeTable, addOurs, findOurs);
}
void tableFindFloor(benchmark::State& state) {
    search(state, makeEmpty<HashSet>, insert, findKey);
}
QORL_RATIO(tableFind, tableFindFloor, 1.5, 1000, 10000, 100000);

void tableWalk(benchmark::State& state) {
    walkOver<Element>(state, makeTable, addOurs, walkOurs);
}
void tableWalkFloor(benchmark::State& state) {
    walkOver<Element>(state, makeEmpty<HashSet>, insert, walkTheirs);
}
QORL_RATIO(tableWalk, tableWalkFloor, 1.5, 1000, 10000, 100000);

const auto addPair = [](CmContainer& dictionary, const Object& object) {
    dictionary.add(new CmAssociation(object.get(), object.get()));
};
const auto insertPair = [](auto& map, const Object& object) { map.emplace(object, object); };
const auto lookUp = [](const auto& dictionary, const Object& object) {
    return dictionary.lookup(object.get())->getObject();
};
const auto findPair = [](const auto& map, const Object& object) { return map.find(object)->second.get(); };
auto makeTreeDictionary() {
    return std::make_unique<CmBTreeDictionary>(CmBTree::wideOrder, Ownership::adopt);
}
auto makeHashDictionary() {
    return std::make_unique<CmHashDictionary>(CmHashTable::defaultBuckets, CmHashTable::Growth::automatic,
                                              Ownership::adopt);
}
using Map = std::map<Object, Object, Less>;
using HashMap = std::unordered_map<Object, Object, Hash, Equal>;

void treeDictionaryAdd(benchmark::State& state) {
    fill<Element>(state, makeTreeDictionary, addPair);
}
void treeDictionaryAddFloor(benchmark::State& state) {
    fill<Element>(state, makeEmpty<Map>, insertPair);
}
QORL_RATIO(treeDictionaryAdd, treeDictionaryAddFloor, 1.5, 1000, 10000, 100000);

void treeDictionaryFind(benchmark::State& state) {
    search(state, makeTreeDictionary, addPair, lookUp);
}
void treeDictionaryFindFloor(benchmark::State& state) {
    search(state, makeEmpty<Map>, insertPair, findPair);
}
QORL_RATIO(treeDictionaryFind, treeDictionaryFindFloor, 1.5, 1000, 10000, 100000);

void hashDictionaryAdd(benchmark::State& state) {
    fill<Element>(state, makeHashDictionary, addPair);
}
void hashDictionaryAddFloor(benchmark::State& state) {
    fill<Element>(state, makeEmpty<HashMap>, insertPair);
}
QORL_RATIO(hashDictionaryAdd, hashDictionaryAddFloor, 1.5, 1000, 10000, 100000);

void hashDictionaryFind(benchmark::State& state) {
    search(state, makeHashDictionary, addPair, lookUp);
}
void hashDictionaryFindFloor(benchmark::State& state) {
    search(state, makeEmpty<HashMap>, insertPair, findPair);
}
QORL_RATIO(hashDictionaryFind, hashDictionaryFindFloor, 1.5, 1000, 10000, 100000);

} // namespace
} // namespace qorl::bench
