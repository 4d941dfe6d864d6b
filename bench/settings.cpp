#include "support/Ratio.h"
#include "support/StoredSettings.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <expat.h>
#include <fcntl.h>
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

// What a program would do that has nothing but Expat, the standard library and the system: the same document
// by hand, out of a vector, and the same steps that let a crash leave the earlier file or the new one. Unlike
// the store it keeps no settings, so it has none to set.

constexpr const char* nameByHand = "Defaults.xml";

void escapeInto(std::string& out, const std::string& text) {
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else
            out += c;
    }
}

template <typename Number, typename... Format>
void numberInto(std::string& out, Number number, Format... format) {
    char digits[128];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, number, format...).ptr);
}

void valueInto(std::string& out, const Setting& setting) {
    constexpr int mostDigits = 50;
    const char* element = setting.type == 'd' ? "float" : setting.type == 's' ? "string" : "int";
    out += "            <";
    out += element;
    out += " name=\"";
    escapeInto(out, setting.key);
    out += "\" value=\"";
    switch (setting.type) {
    case 'd': numberInto(out, setting.number, std::chars_format::general, mostDigits); break;
    case 's': escapeInto(out, setting.text); break;
    default: numberInto(out, setting.integer); break;
    }
    out += "\"/>\r\n";
}

std::string documentByHand(const std::vector<Setting>& settings) {
    constexpr const char* groupEnd = "         </member>\r\n      </item>\r\n";
    std::string out = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<Defaults>\r\n"
                      "   <list name=\"Entries\" type=\"list\">\r\n";
    const std::string* group = nullptr;
    const auto begin = [&](const std::string& name) {
        out += "      <item>\r\n         <string name=\"Group\" value=\"" + name +
               "\"/>\r\n         <member name=\"Values\">\r\n";
    };
    begin("FGlobalDefaultPool");
    out += "            <int name=\"Preferences extraced\" value=\"1\"/>\r\n";
    out += groupEnd;
    for (const Setting& setting : settings) {
        if (!group || *group != setting.group) {
            if (group)
                out += groupEnd;
            begin(setting.group);
            group = &setting.group;
        }
        valueInto(out, setting);
    }
    out += groupEnd;
    out += "   </list>\r\n</Defaults>\r\n";
    return out;
}

void flushToDisk(const std::filesystem::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    expect(descriptor >= 0 && fsync(descriptor) == 0 && close(descriptor) == 0, "the floor was not flushed");
}

void saveByHand(const std::vector<Setting>& settings, const std::filesystem::path& folder) {
    const std::string out = documentByHand(settings);
    if (std::filesystem::create_directory(folder))
        flushToDisk(folder.parent_path());
    const std::filesystem::path file = folder / nameByHand;
    std::filesystem::path beside = file;
    beside += ".new";
    expect(bool(std::ofstream(beside, std::ios::binary).write(out.data(), std::ssize(out)).flush()),
           "the floor was not written");
    flushToDisk(beside);
    std::filesystem::rename(beside, file);
    flushToDisk(folder);
}

struct Loaded {
    std::string group;
    std::unordered_map<std::string, std::string> values;
};

void XMLCALL enterElement(void* data, const XML_Char*, const XML_Char** attributes) {
    auto* loaded = static_cast<Loaded*>(data);
    if (!attributes[0] || !attributes[2] || std::strcmp(attributes[2], "value") != 0)
        return;
    if (std::strcmp(attributes[1], "Group") == 0)
        loaded->group = attributes[3];
    else
        loaded->values.emplace(loaded->group + '/' + attributes[1], attributes[3]);
}

std::string textOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int64_t loadByHand(const std::string& path) {
    constexpr int64_t marksOfTheStore = 1;
    const std::string text = textOf(path);
    Loaded loaded;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &loaded);
    XML_SetStartElementHandler(parser, &enterElement);
    XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
    XML_ParserFree(parser);
    return static_cast<int64_t>(loaded.values.size()) - marksOfTheStore;
}

void saveFloor(benchmark::State& state) {
    const std::vector<Setting> settings = makeSettings(state.range(0));
    const std::filesystem::path folder = pathOf("qorl-bench-floor-");
    {
        const std::string stored = pathOf("qorl-bench-settings-");
        const StoredSettings store(stored);
        store.begin();
        // Which group comes first is not told.
        expect(store.save(settings) &&
                   textOf(stored + "/Defaults.xml").size() == documentByHand(settings).size(),
               "the floor writes something else than the store");
    }
    for (auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove_all(folder);
        state.ResumeTiming();
        saveByHand(settings, folder);
    }
    std::filesystem::remove_all(folder);
}

void loadFloor(benchmark::State& state) {
    const std::vector<Setting> settings = makeSettings(state.range(0));
    const std::filesystem::path folder = pathOf("qorl-bench-floor-");
    saveByHand(settings, folder);
    for (auto _ : state)
        expect(loadByHand(folder / nameByHand) == state.range(0), "the floor lost a setting");
    std::filesystem::remove_all(folder);
}

QORL_RATIO(save, saveFloor, 1.5, 10000, 100000);
QORL_RATIO(load, loadFloor, 1.0, 10000, 100000);

} // namespace
} // namespace qorl::bench
