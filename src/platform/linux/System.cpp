#include "platform/System.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <pwd.h>
#include <sched.h>
#include <sys/uio.h>
#include <unistd.h>
#include <uuid/uuid.h>

namespace qorl::platform {

namespace {

constinit std::mutex debugLock;
constinit DebugWriter debugWriter = nullptr;
constinit void* debugArgument = nullptr;
constinit std::atomic<UuidSource> uuidSource{nullptr};

/// Without an allocation: that there is no memory is told here too.
void writeToStandardError(std::string_view line) {
    char lineEnd = '\n';
    iovec parts[] = {{const_cast<char*>(line.data()), line.size()},
                     {&lineEnd, line.ends_with('\n') ? 0u : 1u}};
    while (parts[0].iov_len + parts[1].iov_len > 0) {
        const ssize_t written = writev(STDERR_FILENO, parts, 2);
        if (written <= 0)
            return;
        auto left = static_cast<size_t>(written);
        for (iovec& part : parts) {
            const size_t gone = std::min(left, part.iov_len);
            part.iov_base = static_cast<char*>(part.iov_base) + gone;
            part.iov_len -= gone;
            left -= gone;
        }
    }
}

} // namespace

bool generateUuid(UuidKind kind, std::array<uint8_t, 16>& uuid) {
    if (const UuidSource source = uuidSource)
        return source(kind, uuid);
    if (kind == UuidKind::time) {
        uuid_generate_time(uuid.data());
        return true;
    }
    // Not by libuuid, which falls back to weak numbers without a word. Layout: RFC 4122, section 4.4.
    std::array<uint8_t, 16> drawn;
    if (getentropy(drawn.data(), drawn.size()) != 0)
        return false;
    drawn[6] = static_cast<uint8_t>((drawn[6] & 0x0F) | 0x40);
    drawn[8] = static_cast<uint8_t>((drawn[8] & 0x3F) | 0x80);
    uuid = drawn;
    return true;
}

uint64_t randomNumber() {
    uint64_t number = 0;
    if (getentropy(&number, sizeof number) == 0)
        return number;
    // Where the kernel has put the program, and when it came this far.
    const auto now = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return now * 0x9E3779B97F4A7C15 ^ reinterpret_cast<uintptr_t>(&number);
}

void setUuidSource(UuidSource source) {
    uuidSource = source;
}

std::vector<std::string> getCommandLine() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::vector<std::string> arguments;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\0', start), text.size());
        arguments.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return arguments;
}

bool getEnvironment(const char* name, std::string& value) {
    const char* text = std::getenv(name);
    if (!text)
        return false;
    value = text;
    return true;
}

std::string getUserLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        std::string value;
        if (!getEnvironment(name, value) || value.empty())
            continue;
        value.resize(std::min(value.find_first_of(".@"), value.size()));
        return value.empty() || value == "C" || value == "POSIX" ? "en" : value;
    }
    return "en";
}

std::string getUserName() {
    if (const passwd* account = getpwuid(geteuid()); account && account->pw_name)
        return account->pw_name;
    std::string name;
    getEnvironment("USER", name);
    return name;
}

std::string getComputerName() {
    char name[256] = {};
    gethostname(name, sizeof name - 1);
    return name;
}

uint32_t getProcessId() {
    return static_cast<uint32_t>(getpid());
}

int32_t getProcessorCount() {
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
        return CPU_COUNT(&allowed);
    return 1;
}

void debugOutput(std::string_view text) {
    const std::lock_guard guard(debugLock);
    if (debugWriter)
        debugWriter(text, debugArgument);
    else
        writeToStandardError(text);
}

void setDebugOutput(DebugWriter writer, void* argument) {
    const std::lock_guard guard(debugLock);
    debugWriter = writer;
    debugArgument = argument;
}

} // namespace qorl::platform
