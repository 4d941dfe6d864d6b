#pragma once

#include <qorl/IAttributes.h>

namespace qorl {

class FAttributeValue;
class FAttributes;

/// A number or a text as other modules know it; a text is viewed, not copied. False, and `described` as it
/// was, for an object and for no value at all.
bool describe(const FAttributeValue& value, FAttributeVariant& described);

/// The face of `FAttributes` for other modules.
class AttributesFace : public IAttributes {
public:
    Result set(const char* key, const FAttributeVariant& value) override;
    Result queue(const char* key, const FAttributeVariant& value) override;
    Result setBinary(const char* key, const void* data, uint32_t size, bool copy) override;
    Result get(const char* key, FAttributeVariant& value) override;
    Result unqueue(const char* key, FAttributeVariant& value) override;
    int32_t getQueueItemCount(const char* key) override;
    Result resetQueue(const char* key) override;
    Result resetAllQueues() override;
    Result getBinaryData(const char* key, void* buffer, uint32_t size) override;
    uint32_t getBinarySize(const char* key) override;
    int32_t getAttributeCount() override;
    const char* getAttributeName(int32_t index) override;

protected:
    AttributesFace() = default;
    ~AttributesFace() = default;

private:
    FAttributes& self();
};

} // namespace qorl
