#include "persistence/urls/UrlMetaHandler.h"

#include "foundation/Singleton.h"
#include "persistence/files/FileErrors.h"
#include "persistence/mounts/FVfsHandler.h"
#include "persistence/urls/FUrlFileHandler.h"
#include "persistence/urls/UrlBytes.h"

#include <algorithm>
#include <new>

namespace qorl {

namespace {

constinit Singleton<UrlMetaHandler> metaHandler;

std::string schemeKey(std::string_view scheme) {
    return UrlBytes::lowerCase(scheme.substr(0, scheme.find(':')));
}

Ref<FUrlHandler> createFileHandler(const FUrl& url) {
    return make<FUrlFileHandler>(url);
}

} // namespace

UrlMetaHandler* UrlMetaHandler::instance() {
    return metaHandler.get();
}

UrlMetaHandler::UrlMetaHandler()
    : handlers_{{"", &createFileHandler},
                {schemeKey(FUrl::fileScheme), &createFileHandler},
                {schemeKey(FUrl::networkScheme), &createFileHandler},
                {schemeKey(FUrl::virtualScheme), &FVfsHandler::create}} {}

bool UrlMetaHandler::registerHandler(std::string_view scheme, CreateHandler create, int32_t port) try {
    std::string key = schemeKey(scheme);
    if (port != 0 && !FUrl::registerPort(key, port))
        return false;
    const FGuard guard(lock_);
    const auto found = std::ranges::find(handlers_, key, &Entry::scheme);
    if (found != handlers_.end())
        found->create = create;
    else
        handlers_.push_back({std::move(key), create});
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

void UrlMetaHandler::unregisterHandler(std::string_view scheme) {
    scheme = scheme.substr(0, scheme.find(':'));
    const FGuard guard(lock_);
    std::erase_if(handlers_, [scheme](const Entry& entry) {
        return ConstString(std::string_view(entry.scheme))
                   .compare(ConstString(scheme), ConstString::all, true) == 0;
    });
}

Ref<FUrlHandler> UrlMetaHandler::makeHandler(const FUrl& url) {
    const std::string key = UrlBytes::lowerCase(url.scheme().toUtf8());
    CreateHandler create = nullptr;
    {
        const FGuard guard(lock_);
        const auto found = std::ranges::find(handlers_, key, &Entry::scheme);
        if (found != handlers_.end())
            create = found->create;
    }
    return create ? create(url) : nullptr;
}

Ref<FUrlHandler> UrlMetaHandler::createHandler(const FUrl& url) try {
    return makeHandler(url);
} catch (const std::bad_alloc&) {
    return nullptr;
}

Ref<FStream> UrlMetaHandler::openUrl(const FUrl& url, int32_t* error) try {
    tellError(error, std::errc());
    const Ref<FUrlHandler> handler = makeHandler(url);
    if (!handler) {
        tellError(error, std::errc::protocol_not_supported);
        return nullptr;
    }
    FStream* stream = handler->open() ? handler->getStream() : nullptr;
    if (!stream)
        tellError(error,
                  handler->error() != 0 ? std::errc(handler->error()) : std::errc::no_such_file_or_directory);
    return retain(stream);
} catch (const std::bad_alloc&) {
    tellError(error, std::errc::not_enough_memory);
    return nullptr;
}

} // namespace qorl
