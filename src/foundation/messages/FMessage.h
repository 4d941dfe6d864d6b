#pragma once

#include "foundation/text/CmString.h"

#include <qorl/IMessageAttributes.h>
#include <qorl/IMessageObjects.h>
#include <qorl/Ref.h>

#include <string_view>

namespace qorl {

/// A named record with attributes, sent to one target: at once by `handleMessage`, or later through
/// `FMessenger`.
///
/// The attribute list is made on first use. A getter for a missing key gives 0, null or an empty text.
class FMessage : public CmObject, public IMessageAttributes, public IMessageObjects {
    QORL_CLASS(FMessage, CmObject)
    QORL_CLONE(FMessage)
    QORL_RECORD(FMessage)

public:
    FMessage();
    /// Throws std::bad_alloc, as a copy does.
    explicit FMessage(const ConstString& name);
    /// A new message; null when memory is short.
    static Ref<FMessage> named(const ConstString& name) noexcept;
    /// Copies the attributes; objects in them are shared.
    FMessage(const FMessage& other);
    FMessage& operator=(const FMessage&) = delete;
    ~FMessage() override;

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return CmObject::addRef(); }
    uint32_t release() override { return CmObject::release(); }

    const CmString& getName() const { return name_; }
    void setName(const ConstString& name) { name_.string() = name; }
    /// By exact text.
    bool isNamed(const char* text) const { return name_.string() == ConstString(text); }

    void setInt(std::string_view key, int64_t value);
    int64_t getInt(std::string_view key) const;
    void setFloat(std::string_view key, double value);
    double getFloat(std::string_view key) const;
    /// Copies, in the width of `text`.
    void setString(std::string_view key, const ConstString& text);
    /// A view that is good until the attribute changes.
    ConstString getString(std::string_view key) const;
    /// Takes a reference of its own; null removes the attribute.
    void setObject(std::string_view key, CmObject* object);
    /// Without a reference for the caller.
    CmObject* getObject(std::string_view key) const;
    bool remove(std::string_view key);
    bool contains(std::string_view key) const;

    /// The list, made now if there was none.
    FAttributes& attributes();
    bool hasAttributes() const { return attributes_ != nullptr; }

    /// In a stream: the name, then the body of the attributes.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;

    Result setInt8(const char* key, int64_t value) override;
    Result setInt16(const char16_t* key, int64_t value) override;
    Result getInt8(const char* key, int64_t* value) override;
    Result getInt16(const char16_t* key, int64_t* value) override;
    Result setFloat8(const char* key, double value) override;
    Result setFloat16(const char16_t* key, double value) override;
    Result getFloat8(const char* key, double* value) override;
    Result getFloat16(const char16_t* key, double* value) override;
    Result setString8(const char* key, const char16_t* text) override;
    Result setString16(const char16_t* key, const char16_t* text) override;
    Result getString8(const char* key, IStringSink* sink) override;
    Result getString16(const char16_t* key, IStringSink* sink) override;
    Result setObject8(const char* key, FInterface* object) override;
    Result setObject16(const char16_t* key, FInterface* object) override;
    Result getObject8(const char* key, FInterface** object) override;
    Result getObject16(const char16_t* key, FInterface** object) override;
    Result remove8(const char* key) override;
    Result contains8(const char* key) override;

    Result storeObject(const char* key, FInterface* object) override;
    Result fetchObject(const char* key, FInterface** object) override;
    Result removeObject(const char* key) override;

private:
    CmString name_;
    Ref<FAttributes> attributes_;
};

} // namespace qorl
