#pragma once

namespace qorl {

class CmObject;

/// Gives back the reference that a container, a pair or a variant held on `object`, which is not null.
///
/// Objects that hold each other in a chain of any length go without taking stack for each: below some levels
/// they wait for their turn, and are gone when the outermost of those calls returns. Each thread releases its
/// own.
void releaseDeep(CmObject* object);

} // namespace qorl
