#include "support/PanelDocument.h"

namespace qorl::bench {

namespace {

constexpr int64_t rowsPerColumn = 50;
constexpr int64_t columns = 4;

/// Columns of rows from the top left; the rows that find no more room begin there again.
std::string placeOfRow(int64_t row) {
    const int64_t x = row / rowsPerColumn % columns * 320;
    const int64_t y = row % rowsPerColumn * 16;
    return std::to_string(x) + "," + std::to_string(y) + ",318,16";
}

std::string valuesOf(int64_t row) {
    const std::string id = std::to_string(row);
    return "<valuedefine name=\"s" + id +
           "\" type=\"int\" scope=\"global\" min=\"0\" max=\"100\" default=\"" + std::to_string(row % 100) +
           "\"/>\n<valuedefine name=\"c" + id + "\" type=\"bool\" scope=\"global\" default=\"1\"/>\n";
}

std::string viewsOf(int64_t row) {
    const std::string id = std::to_string(row);
    const std::string place = "\" size=\"0,0,78,16\" attach=\"all\"/>\n";
    return "<rowcol id=\"r" + id + "\" style=\"horizontal|fitinparent\" spacing=\"0,0,1,1\" size=\"" +
           placeOfRow(row) + "\" attach=\"all\">\n<label id=\"l" + id + "\" titleNT=\"Level " + id + place +
           "<button id=\"b" + id + "\" titleNT=\"Reset" + place + "<slider id=\"s" + id + "\" name=\"s" + id +
           "\" style=\"horizontal" + place + "<checkbox id=\"c" + id + "\" name=\"c" + id +
           "\" titleNT=\"On" + place + "</rowcol>\n";
}

} // namespace

const std::string& panelDocument(int64_t count) {
    static std::string text;
    static int64_t made = 0;
    if (made == count)
        return text;
    made = count;
    std::string values;
    std::string views;
    for (int64_t row = 0; row < count / 5; ++row) {
        values += valuesOf(row);
        views += viewsOf(row);
    }
    text = "<skin><templates><template name=\"Main\" size=\"0,0,1280,800\">\n" + values + views +
           "</template></templates></skin>\n";
    return text;
}

} // namespace qorl::bench
