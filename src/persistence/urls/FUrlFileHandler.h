#pragma once

#include "persistence/urls/FUrlHandler.h"

namespace qorl {

/// Reads a file of the native disk, of a mounted volume or of a mounted share of the network, by the native
/// path of the URL (see `FUrl::getNativePath`), and what lies in a mounted file. Others may read it
/// meanwhile.
class FUrlFileHandler : public FUrlHandler {
    QORL_CLASS(FUrlFileHandler, FUrlHandler)

public:
    using FUrlHandler::FUrlHandler;

    bool open() override;
    /// Closes the file: the stream is at its end for everybody.
    void close() override;
};

} // namespace qorl
