#pragma once

#include <qorl/IBStream.h>

namespace qorl {

class FStream;

/// The face of `FStream` for other modules.
class StreamFace : public IBStream {
public:
    Result read(void* buffer, int64_t count, int64_t* got) override;
    Result write(const void* buffer, int64_t count, int64_t* got) override;
    Result seek(int64_t offset, int32_t mode, int64_t* result) override;
    Result tell(int64_t* position) override;

protected:
    StreamFace() = default;
    ~StreamFace() = default;

private:
    FStream& self();
};

} // namespace qorl
