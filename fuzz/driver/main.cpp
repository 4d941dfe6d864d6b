// Runs a fuzz target over stored inputs: `fuzz-NAME FILE|FOLDER…`. An empty set is a failure, so that lost
// seeds are noticed.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool runFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
        return false;
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return true;
}

int runAll(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path))
        return runFile(path) ? 1 : 0;
    int count = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path, error)) {
        if (entry.is_regular_file() && runFile(entry.path()))
            ++count;
    }
    return count;
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const int count = runAll(argv[i]);
        if (count == 0) {
            std::fprintf(stderr, "%s: no inputs\n", argv[i]);
            return 1;
        }
        std::printf("%s: %d inputs\n", argv[i], count);
    }
    return argc > 1 ? 0 : 2;
}
