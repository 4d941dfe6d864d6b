#pragma once

#include "persistence/streams/FCompressionEngine.h"

namespace qorl {

/// Compression by zlib: the deflate method in zlib's own wrapping, with its header and check sum (RFC 1950
/// and 1951).
class ZLibCompressor : public FCompressionEngine {
    QORL_CLASS(ZLibCompressor, FCompressionEngine)

public:
    static constexpr InterfaceId classId =
        InterfaceId::fromWords(0x443752F1, 0x5680439C, 0xAC5CB48A, 0x13A8D6DE);

    std::unique_ptr<FCompressor> createCompressor() override;
    std::unique_ptr<FDecompressor> createDecompressor() override;
    Result getClassId(FUID& id) override;

    /// zlib's level for a quality: the integer part of nine times it, from 0 to 9; -1, zlib's own choice, for
    /// a negative one and for what is no number.
    static int32_t levelOf(float quality);
};

} // namespace qorl
