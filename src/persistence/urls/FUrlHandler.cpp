#include "persistence/urls/FUrlHandler.h"

namespace qorl {

void FUrlHandler::cancel() {}
FStream* FUrlHandler::getStream() const {
    return stream_.get();
}
int64_t FUrlHandler::getSize() const {
    return size_;
}

} // namespace qorl
