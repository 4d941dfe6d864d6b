#pragma once

#include "foundation/threads/FLock.h"
#include "persistence/urls/FUrlHandler.h"

#include <string>
#include <string_view>
#include <vector>

namespace qorl {

/// Knows who reads URLs of which scheme. "file:", "smb:" and "vfs:" stand from the start; other schemes of
/// virtual file systems come with their services, and archives register themselves here. Threading: any.
class UrlMetaHandler : public CmObject {
    QORL_CLASS(UrlMetaHandler, CmObject)

public:
    /// A handler that is not open yet. May throw std::bad_alloc.
    using CreateHandler = Ref<FUrlHandler> (*)(const FUrl& url);

    /// Made on first use; null once the library has released its singletons, and without memory.
    static UrlMetaHandler* instance();

    UrlMetaHandler();
    UrlMetaHandler(const UrlMetaHandler&) = delete;

    /// `scheme` counts up to its colon, case aside. Takes the place of an earlier one. With a `port`, URLs of
    /// the scheme have it when they name none. False without memory, and for what is no port.
    bool registerHandler(std::string_view scheme, CreateHandler create, int32_t port = 0);
    void unregisterHandler(std::string_view scheme);

    /// Not open yet; null for a scheme that nobody reads. A path alone is read as a file.
    Ref<FUrlHandler> createHandler(const FUrl& url);
    /// The contents, from the start; null when they can't be read. `error`, if it is given, then says why, by
    /// the system's number: "Protocol not supported" where nobody reads the scheme, what the handler tells,
    /// or "No such file or directory".
    Ref<FStream> openUrl(const FUrl& url, int32_t* error = nullptr);

private:
    Ref<FUrlHandler> makeHandler(const FUrl& url);

    struct Entry {
        std::string scheme;
        CreateHandler create;
    };

    FLock lock_{"UrlMetaHandler"};
    std::vector<Entry> handlers_;
};

} // namespace qorl
