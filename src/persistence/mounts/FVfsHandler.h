#pragma once

#include "persistence/urls/FUrlHandler.h"

namespace qorl {

/// Reads a file of a virtual file system.
class FVfsHandler : public FUrlHandler {
    QORL_CLASS(FVfsHandler, FUrlHandler)

public:
    using FUrlHandler::FUrlHandler;
    static Ref<FUrlHandler> create(const FUrl& url) { return make<FVfsHandler>(url); }

    bool open() override;
    void close() override;
};

} // namespace qorl
