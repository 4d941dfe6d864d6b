#include "support/SettingsDocument.h"

#include "persistence/streams/FMemoryStream.h"
#include "persistence/xml/FXmlDocument.h"

namespace qorl::bench {

std::vector<PlainSetting> plainSettings(int64_t count) {
    constexpr const char* words[] = {"apply.count", "name.speed", "type.bottom", "colour.right",
                                     "scale.step"};
    std::vector<PlainSetting> settings;
    for (int64_t i = 0; i < count; ++i) {
        const auto mixed = static_cast<int64_t>(static_cast<uint32_t>(i) * 2654435761u >> 12);
        settings.push_back({words[i % 5] + std::to_string(i), static_cast<PlainSetting::Kind>(i % 3), mixed,
                            static_cast<double>(mixed) / 1000, "Name & Copy" + std::to_string(mixed % 100)});
    }
    return settings;
}

void fillSettings(FAttributes& attributes, int64_t count) {
    constexpr int64_t groupSize = 20;
    FAttributes* group = nullptr;
    int64_t number = 0;
    for (const PlainSetting& setting : plainSettings(count)) {
        if (number++ % groupSize == 0) {
            group = new FAttributes;
            attributes.append("group" + std::to_string(number)).setObject(group, FAttributes::Hold::adopt);
        }
        auto& entry = group->append(setting.name);
        if (setting.kind == PlainSetting::Kind::integer)
            entry.setInteger(setting.integer);
        else if (setting.kind == PlainSetting::Kind::real)
            entry.setFloat(setting.real);
        else
            entry.setString(ConstString(std::string_view(setting.text)));
    }
}

const std::string& settingsDocument(int64_t count) {
    static int64_t kept = -1;
    static std::string text;
    if (kept != count) {
        FAttributes attributes;
        fillSettings(attributes, count);
        FMemoryStream stream;
        FXmlDocument(&stream, FXmlDocument::Mode::write).storeAttributes("Settings", attributes);
        text = stream.bytes();
        kept = count;
    }
    return text;
}

} // namespace qorl::bench
