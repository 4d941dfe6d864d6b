#include "foundation/DiagnosticJson.h"

namespace qorl {

namespace {

void writeMembers(JsonWriter& json, const SourcePosition& position) {
    if (position.file)
        json.member("file", position.file);
    if (position.line)
        json.member("line", position.line);
    if (position.column)
        json.member("column", position.column);
}

} // namespace

void writeJson(JsonWriter& json, const SourcePosition& position) {
    json.beginObject();
    writeMembers(json, position);
    json.endObject();
}

void writeJson(JsonWriter& json, const Diagnostic& diagnostic) {
    json.beginObject();
    json.member("severity", nameOf(diagnostic.severity));
    writeMembers(json, diagnostic.position);
    json.member("text", diagnostic.text);
    if (!diagnostic.includes.empty()) {
        json.key("includes");
        json.beginArray();
        for (const SourcePosition& include : diagnostic.includes)
            writeJson(json, include);
        json.endArray();
    }
    json.endObject();
}

} // namespace qorl
