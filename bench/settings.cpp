#include "support/Ratio.h"
#include "support/StoredSettings.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <expat.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <unordered_map>

namespace qorl::bench {
namespace {

std::string pathOf(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string() + std::to_string(getpid());
}

void expect(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "bench-settings: %s\n", what);
    std::exit(1);
}

void save(benchmark::State& state) {
    const std::vector<Setting> settings = makeSettings(state.range(0));
    const StoredSettings store(pathOf("qorl-bench-settings-"));
    for (auto _ : state) {
        state.PauseTiming();
        store.forget();
        state.ResumeTiming();
        expect(store.save(settings), "the store was not saved");
    }
}

void load(benchmark::State& state) {
    const std::vector<Setting> settings = makeSettings(state.range(0));
    const StoredSettings store(pathOf("qorl-bench-settings-"));
    store.begin();
    expect(store.save(settings), "the store was not saved");
    for (auto _ : state)
        expect(store.load(settings) == state.range(0), "a setting did not come back");
}

// What a program would write that has nothing but Expat and the standard library: the values are texts, the
// file is not flushed, and nothing is left of it when the program crashes.

void escapeInto(std::string& out, const std::string& text) {
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '"')
            out += "&quot;";
        else
            out += c;
    }
}

void saveByHand(const std::vector<Setting>& settings, const std::string& path) {
    std::string out = "<settings>\n";
    const std::string* group = nullptr;
    for (const Setting& setting : settings) {
        if (!group || *group != setting.group) {
            if (group)
                out += "</group>\n";
            out += "<group name=\"" + setting.group + "\">\n";
            group = &setting.group;
        }
        out += "<v k=\"";
        escapeInto(out, setting.key);
        out += "\" t=\"";
        out += setting.type;
        out += "\" v=\"";
        escapeInto(out, setting.text);
        out += "\"/>\n";
    }
    out += "</group>\n</settings>\n";
    std::ofstream file(path, std::ios::binary);
    file.write(out.data(), static_cast<std::streamsize>(out.size()));
}

struct Loaded {
    std::string group;
    std::unordered_map<std::string, std::string> values;
};

void XMLCALL enterElement(void* data, const XML_Char* name, const XML_Char** attributes) {
    auto* loaded = static_cast<Loaded*>(data);
    if (std::strcmp(name, "group") == 0)
        loaded->group = attributes[1];
    else if (name[0] == 'v')
        loaded->values.emplace(loaded->group + '/' + attributes[1], attributes[5]);
}

int64_t loadByHand(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    Loaded loaded;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &loaded);
    XML_SetStartElementHandler(parser, &enterElement);
    XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
    XML_ParserFree(parser);
    return static_cast<int64_t>(loaded.values.size());
}

void saveFloor(benchmark::State& state) {
    const std::vector<Setting> settings = makeSettings(state.range(0));
    const std::string path = pathOf("qorl-bench-floor-");
    for (auto _ : state)
        saveByHand(settings, path);
    std::filesystem::remove(path);
}

void loadFloor(benchmark::State& state) {
    const std::vector<Setting> settings = makeSettings(state.range(0));
    const std::string path = pathOf("qorl-bench-floor-");
    saveByHand(settings, path);
    for (auto _ : state)
        expect(loadByHand(path) == state.range(0), "the floor lost a setting");
    std::filesystem::remove(path);
}

QORL_RATIO(save, saveFloor, 1.5, 10000, 100000);
QORL_RATIO(load, loadFloor, 1.0, 10000, 100000);

} // namespace
} // namespace qorl::bench
