#include "foundation/text/String.h"
#include "foundation/text/TranslationTable.h"
#include "foundation/time/CmTime.h"
#include "foundation/time/Duration.h"

#include <qorl/Ref.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

// The first byte chooses a language, the rest is the text of a date or a time.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace qorl;
    if (size == 0)
        return 0;
    constexpr const char* languages[] = {"us", "de", "jp", "ar", "fr", "ko", "fa", "bp"};
    const Ref<TranslationTable> table = make<TranslationTable>();
    table->setupForLanguage(languages[data[0] % 8]);
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const ConstString view(text.c_str(), static_cast<int32_t>(text.size()));

    CmDate date;
    if (date.fromText(view)) {
        String printed;
        if (!date.isValid() || !date.toText(printed, CmDate::longStyle) || printed.isEmpty())
            std::abort();
        CmDate again;
        if (date.getYear() >= 1000 && date.getYear() < 10'000 && (!again.fromText(printed) || again != date))
            std::abort();
    } else if (date.isValid()) {
        std::abort(); // a failed reading changes nothing
    }
    CmTime time;
    if (time.fromText(view)) {
        String printed;
        if (!time.toText(printed) || printed.isEmpty())
            std::abort();
        CmTime again;
        if (!again.fromText(printed) || again.getHour() != time.getHour() ||
            again.getMinute() != time.getMinute() || again.getSecond() != time.getSecond())
            std::abort();
    }
    if (CmDate(1, text.c_str(), 2000).isValid() && text.size() < 3)
        std::abort(); // no month has so short a name
    date.previous(text.c_str());

    int64_t number = 0;
    std::memcpy(&number, text.data(), text.size() < sizeof number ? text.size() : sizeof number);
    String duration;
    formatClock(duration, number, size % 2 == 0, DurationUnits::words);
    formatLong(duration, number, size % 2 == 0);
    if (duration.isEmpty())
        std::abort();
    return 0;
}
