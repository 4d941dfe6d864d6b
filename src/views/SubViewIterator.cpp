#include "views/SubViewIterator.h"

#include "views/UView.h"

namespace qorl {

SubViewIterator::SubViewIterator(ViewFields& view, Walk walk) : items_(view.getItem().children(), walk) {}

SubViewIterator::SubViewIterator(ViewFields& view, Walk walk, int32_t index)
    : items_(view.getItem().children(), walk, index) {}

} // namespace qorl
