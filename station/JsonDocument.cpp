#include "station/JsonDocument.h"

#include <cmath>

#include "station/ToolVersion.h"

namespace talonvireo {
namespace station {

Json figure(double v) {
    return std::isfinite(v) ? Json(v) : Json(nullptr);
}

Json documentHead(const std::string& kind, const std::string& input) {
    Json head;
    head["schema_version"] = kSchemaVersion;
    head["tool_version"] = kToolVersion;
    head["kind"] = kind;
    head["input"] = input.empty() ? Json(nullptr) : Json(input);
    return head;
}

void writeJson(std::FILE* out, const Json& document) {
    // Replace any byte sequence that is not UTF-8 (a file name, say) rather than throw.
    const std::string text = document.dump(2, ' ', false, Json::error_handler_t::replace);
    std::fprintf(out, "%s\n", text.c_str());
}

}  // namespace station
}  // namespace talonvireo
