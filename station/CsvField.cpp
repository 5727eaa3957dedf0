#include "station/CsvField.h"

namespace talonvireo {
namespace station {

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\n\r") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + "\"";
}

}  // namespace station
}  // namespace talonvireo
