#include "foundation/containers/dictionaries/CmBTreeDictionary.h"

#include <functional>

namespace qorl {

QORL_REGISTER(CmBTreeDictionary, "CmBTreeDictionary", CmBTree, 0)

namespace {

CmAssociation* pairOf(CmObject* element) {
    return static_cast<CmAssociation*>(element);
}

/// What a plain pair with that key says of its rank, without asking each element what it is.
struct RankOfKey {
    const CmObject* key;

    int32_t operator()(CmObject* element) const {
        const CmObject* other = pairOf(element)->getKey();
        return other ? key->compare(other) : 1;
    }
};

/// Whether a pair ranks in front of all others, itself among them, as one without a key does.
bool isUnranked(const CmAssociation& pair) {
    return !pair.getKey() && pair.compare(&pair) != 0;
}

/// Unranked pairs stand in front by their addresses, so that the place of one tells whether it is here.
struct RankOfUnranked {
    const CmAssociation* pair;

    int32_t operator()(CmObject* element) const {
        const CmAssociation* other = pairOf(element);
        if (pair == other)
            return 0;
        return isUnranked(*other) && std::less<>()(other, pair) ? 1 : -1;
    }
};

} // namespace

bool CmBTreeDictionary::add(CmObject* object) {
    const auto* pair = cast<CmAssociation>(object);
    if (!pair)
        return false;
    if (isUnranked(*pair))
        return insert<EqualKeys::refuse>(object, RankOfUnranked{pair});
    // A class derived from the pair may have an order of its own.
    if (pair->getKey() && pair->isTypeOf(CmAssociation::className(), false))
        return insert<EqualKeys::refuse>(object, RankOfKey{pair->getKey()});
    return insert<EqualKeys::refuse>(object, RankOf{object});
}

CmAssociation* CmBTreeDictionary::lookup(const CmObject* key) const {
    if (!key)
        return nullptr;
    const RankOfKey rank{key};
    for (BTreePlace place = placeAtEquals(getRoot(), rank); place; place = place.next()) {
        CmAssociation* pair = pairOf(place.key());
        if (pair->getKey() && key->isEqual(pair->getKey()))
            return pair;
        if (rank(pair) != 0)
            return nullptr;
    }
    return nullptr;
}

} // namespace qorl
