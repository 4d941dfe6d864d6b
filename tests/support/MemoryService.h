#pragma once

#include "persistence/mounts/FVFileSystem.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/StreamBytes.h"

#include <map>
#include <string>
#include <vector>

namespace qorl {

/// A service that keeps its files in a map by plain path; folders have a null stream. The root is there
/// always. Writes down in which modes files were opened.
class MemoryService : public VirtualFileService {
public:
    using Nodes = std::map<std::string, Ref<FMemoryStream>>;

    Nodes nodes{{"", nullptr}};
    bool isReadOnly = false;
    std::string opened;

    void add(const std::string& path, const std::string& bytes) {
        auto stream = make<FMemoryStream>();
        stream->write(bytes.data(), static_cast<int64_t>(bytes.size()));
        nodes[path] = stream;
    }
    void addFolder(const std::string& path) { nodes[path] = nullptr; }
    std::string list() const {
        std::string text;
        for (const auto& [path, stream] : nodes)
            text += path.empty() ? "" : path + (stream ? " " : "/ ");
        return text;
    }
    std::string read(const std::string& path) const {
        const auto found = nodes.find(path);
        if (found == nodes.end() || !found->second)
            return "nothing";
        found->second->rewind();
        return contentOf(found->second.get());
    }

    VfsResult openFile(const FUrl& url, uint32_t mode, Ref<FStream>& stream) override {
        opened += std::to_string(mode) + ' ';
        const auto found = nodes.find(pathOf(url));
        if (isReadOnly && (mode & FFileStream::writeAccess))
            return VfsError::readOnly;
        if (found == nodes.end() || !found->second)
            return VfsError::internal;
        stream = found->second;
        stream->rewind();
        return {};
    }
    VfsResult createFile(const FUrl& url, uint32_t, Ref<FStream>& stream) override {
        if (isReadOnly)
            return VfsError::readOnly;
        if (!isFolder(parentOf(pathOf(url))))
            return VfsError::internal;
        stream = nodes[pathOf(url)] = make<FMemoryStream>();
        return {};
    }
    VfsResult deleteFile(const FUrl& url) override {
        return nodes.erase(pathOf(url)) ? VfsResult() : VfsError::internal;
    }
    VfsResult getInfo(const FUrl& url, Info& info) override {
        const auto found = nodes.find(pathOf(url));
        info.isReadOnly = isReadOnly;
        info.written.year = 2001;
        if (found == nodes.end())
            return {};
        info.kind = found->second ? Info::Kind::file : Info::Kind::folder;
        if (found->second)
            found->second->getStreamSize(info.size);
        return {};
    }
    VfsResult move(const FUrl& from, const FUrl& to) override {
        const std::string place = pathOf(from);
        Nodes moved;
        for (auto next = nodes.lower_bound(place); next != nodes.end() && next->first.starts_with(place);) {
            const auto node = next++;
            const std::string rest = node->first.substr(place.size());
            if (rest.empty() || rest.front() == '/')
                moved[pathOf(to) + rest] = nodes.extract(node).mapped();
        }
        for (const auto& [path, stream] : moved)
            nodes[path] = stream;
        return moved.empty() ? VfsResult(VfsError::internal) : VfsResult();
    }
    VfsResult createFolder(const FUrl& url) override {
        if (!isFolder(parentOf(pathOf(url))))
            return VfsError::internal;
        nodes[pathOf(url)] = nullptr;
        return {};
    }
    VfsResult deleteFolder(const FUrl& url) override { return deleteFile(url); }
    VfsResult listFolder(const FUrl& url, std::vector<Entry>& entries) override {
        const std::string folder = pathOf(url);
        for (const auto& [path, stream] : nodes)
            if (!path.empty() && parentOf(path) == folder)
                entries.push_back(
                    {String(std::string_view(path.substr(folder.empty() ? 0 : folder.size() + 1))),
                     stream ? Info::Kind::file : Info::Kind::folder});
        return {};
    }

private:
    static std::string pathOf(const FUrl& url) {
        std::string path = url.plainPath();
        while (path.ends_with('/'))
            path.pop_back();
        return path;
    }
    static std::string parentOf(const std::string& path) {
        const size_t end = path.rfind('/');
        return end == std::string::npos ? "" : path.substr(0, end);
    }
    bool isFolder(const std::string& path) const {
        const auto found = nodes.find(path);
        return found != nodes.end() && !found->second;
    }
};

/// A service that stands for "vfs://HOST" as long as the test runs.
template <typename Service = MemoryService>
struct RegisteredService {
    explicit RegisteredService(const char* place) : uri(place) {
        FVFileSystem::instance()->registerService(uri, service);
    }
    ~RegisteredService() { FVFileSystem::instance()->unregisterService(uri); }
    Service* operator->() const { return service.get(); }

    ConstString uri;
    Ref<Service> service = make<Service>();
};

} // namespace qorl
