#include "persistence/attributes/AttributesStream.h"
#include "persistence/streams/FMemoryStream.h"
#include "support/Ratio.h"

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

namespace qorl::bench {
namespace {

std::vector<std::string> keysFor(int64_t count) {
    std::vector<std::string> keys;
    for (int64_t i = 0; i < count; ++i)
        keys.push_back("key" + std::to_string(i));
    return keys;
}

constexpr const char* fewKeys[] = {"left", "top", "width", "height", "name", "visible"};

/// The few values of an object on their way through its attributes.
void attributeRoundTrip(benchmark::State& state) {
    for (auto _ : state) {
        FAttributes attributes;
        for (const char* key : fewKeys)
            attributes.setInteger(key, 7);
        int64_t sum = 0;
        for (const char* key : fewKeys)
            sum += attributes.getInteger(key);
        benchmark::DoNotOptimize(sum);
    }
}
void attributeRoundTripFloor(benchmark::State& state) {
    for (auto _ : state) {
        std::map<std::string, int64_t, std::less<>> attributes;
        for (const char* key : fewKeys)
            attributes[key] = 7;
        int64_t sum = 0;
        for (const char* key : fewKeys)
            sum += attributes.find(key)->second;
        benchmark::DoNotOptimize(sum);
    }
}
QORL_RATIO(attributeRoundTrip, attributeRoundTripFloor, 1.0);

/// Sets each key of a new list, and once more.
void attributesSet(benchmark::State& state) {
    const auto keys = keysFor(state.range(0));
    for (auto _ : state) {
        FAttributes attributes;
        for (int64_t round = 0; round < 2; ++round)
            for (const auto& key : keys)
                attributes.setInteger(key, round);
        benchmark::DoNotOptimize(attributes.count());
    }
}
void attributesSetFloor(benchmark::State& state) {
    const auto keys = keysFor(state.range(0));
    for (auto _ : state) {
        std::unordered_map<std::string, std::variant<int64_t, double, std::string>> map;
        for (int64_t round = 0; round < 2; ++round)
            for (const auto& key : keys)
                map[key] = round;
        benchmark::DoNotOptimize(map.size());
    }
}
QORL_RATIO(attributesSet, attributesSetFloor, 1.0, 10, 1000, 10000, 100000);

void attributesGet(benchmark::State& state) {
    const auto keys = keysFor(state.range(0));
    FAttributes attributes;
    for (const auto& key : keys)
        attributes.setInteger(key, 1);
    for (auto _ : state) {
        int64_t sum = 0;
        for (const auto& key : keys)
            sum += attributes.getInteger(key);
        benchmark::DoNotOptimize(sum);
    }
}
void attributesGetFloor(benchmark::State& state) {
    const auto keys = keysFor(state.range(0));
    std::unordered_map<std::string, std::variant<int64_t, double, std::string>> map;
    for (const auto& key : keys)
        map[key] = int64_t{1};
    for (auto _ : state) {
        int64_t sum = 0;
        for (const auto& key : keys)
            sum += std::get<int64_t>(map.find(key)->second);
        benchmark::DoNotOptimize(sum);
    }
}
QORL_RATIO(attributesGet, attributesGetFloor, 1.0, 10, 1000, 10000, 100000);

/// A field of the floor: what a program would write by hand that needs no conversion, no sharing and no
/// objects.
struct Field {
    std::string key;
    std::variant<int64_t, double, std::string> value;
};

std::vector<Field> fieldsFor(int64_t count) {
    std::vector<Field> fields;
    for (int64_t i = 0; i < count; ++i)
        switch (i % 3) {
        case 0: fields.push_back({"int" + std::to_string(i), i}); break;
        case 1: fields.push_back({"real" + std::to_string(i), static_cast<double>(i) / 3}); break;
        default: fields.push_back({"text" + std::to_string(i), "a text of some length"}); break;
        }
    return fields;
}

void fillFrom(const std::vector<Field>& fields, FAttributes& attributes) {
    for (const auto& [key, value] : fields)
        if (const auto* integer = std::get_if<int64_t>(&value))
            attributes.append(key).setInteger(*integer);
        else if (const auto* real = std::get_if<double>(&value))
            attributes.append(key).setFloat(*real);
        else
            attributes.append(key).setString(ConstString(std::string_view(std::get<std::string>(value))));
}

template <typename Number>
void put(std::string& out, Number number) {
    out.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void putText(std::string& out, const std::string& text) {
    put(out, static_cast<int32_t>(text.size() + 1));
    out.append(text.c_str(), text.size() + 1);
}

void putFields(std::string& out, const std::vector<Field>& fields) {
    put(out, static_cast<int32_t>(fields.size()));
    for (const auto& [key, value] : fields) {
        putText(out, key);
        if (const auto* integer = std::get_if<int64_t>(&value)) {
            put(out, uint16_t{1});
            put(out, *integer);
        } else if (const auto* real = std::get_if<double>(&value)) {
            put(out, uint16_t{4});
            put(out, *real);
        } else {
            put(out, uint16_t{8});
            putText(out, std::get<std::string>(value));
        }
    }
}

void bodyWrite(benchmark::State& state) {
    FAttributes attributes;
    fillFrom(fieldsFor(state.range(0)), attributes);
    for (auto _ : state) {
        FMemoryStream stream;
        benchmark::DoNotOptimize(writeAttributes(stream, attributes));
    }
}
void bodyWriteFloor(benchmark::State& state) {
    const auto fields = fieldsFor(state.range(0));
    for (auto _ : state) {
        std::string out;
        putFields(out, fields);
        benchmark::DoNotOptimize(out.data());
    }
}
QORL_RATIO(bodyWrite, bodyWriteFloor, 2.0, 100000, 1000000);

/// Reads what is there and stops where it ends.
class FieldReader {
public:
    explicit FieldReader(std::string_view bytes) : bytes_(bytes) {}

    bool read(std::vector<Field>& fields) {
        int32_t count = 0;
        if (!take(count))
            return false;
        for (int32_t i = 0; i < count; ++i) {
            Field& field = fields.emplace_back();
            uint16_t kind = 0;
            if (!takeText(field.key) || !take(kind) || !takeValue(kind, field))
                return false;
        }
        return true;
    }

private:
    template <typename Number>
    bool take(Number& number) {
        if (bytes_.size() < sizeof number)
            return false;
        std::memcpy(&number, bytes_.data(), sizeof number);
        bytes_.remove_prefix(sizeof number);
        return true;
    }
    bool takeText(std::string& text) {
        int32_t count = 0;
        if (!take(count) || count < 1 || static_cast<size_t>(count) > bytes_.size())
            return false;
        text.assign(bytes_.data(), static_cast<size_t>(count) - 1);
        bytes_.remove_prefix(static_cast<size_t>(count));
        return true;
    }
    bool takeValue(uint16_t kind, Field& field) {
        if (kind == 1)
            return take(field.value.emplace<int64_t>());
        if (kind == 4)
            return take(field.value.emplace<double>());
        return takeText(field.value.emplace<std::string>());
    }

    std::string_view bytes_;
};

void bodyRead(benchmark::State& state) {
    std::string bytes;
    putFields(bytes, fieldsFor(state.range(0)));
    for (auto _ : state) {
        FMemoryStream stream{std::string_view(bytes)};
        FAttributes attributes;
        benchmark::DoNotOptimize(readAttributes(stream, attributes));
    }
}
void bodyReadFloor(benchmark::State& state) {
    std::string bytes;
    putFields(bytes, fieldsFor(state.range(0)));
    for (auto _ : state) {
        std::vector<Field> fields;
        benchmark::DoNotOptimize(FieldReader(bytes).read(fields));
    }
}
QORL_RATIO(bodyRead, bodyReadFloor, 1.5, 100000, 1000000);

} // namespace
} // namespace qorl::bench
