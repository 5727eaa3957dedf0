#include "station/BuiltinCharts.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "station/BuiltinChartTexts.h"
#include "station/ChartFile.h"
#include "station/Failure.h"

namespace talonvireo {
namespace station {

namespace {
std::string upper(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return s;
}
}  // namespace

bool builtinChart(const std::string& name, ChartDescription& out) {
    const std::string wanted = upper(name);
    const BuiltinChartTexts texts = builtinChartTexts();
    for (int i = 0; i < texts.count; ++i) {
        if (wanted == texts.charts[i].name) {
            out = parseChartDescription(texts.charts[i].text,
                                        std::string(texts.charts[i].name) + " (built in)");
            return true;
        }
    }
    return false;
}

std::vector<std::string> builtinChartNames() {
    const BuiltinChartTexts texts = builtinChartTexts();
    std::vector<std::string> names;
    for (int i = 0; i < texts.count; ++i) {
        names.emplace_back(texts.charts[i].name);
    }
    return names;
}

ChartDescription resolveChart(const std::string& arg) {
    ChartDescription chart;
    if (builtinChart(arg, chart)) {
        return chart;
    }
    std::error_code error;
    if (std::filesystem::is_regular_file(arg, error)) {
        return readChartFile(arg);
    }
    std::string names;
    for (const std::string& n : builtinChartNames()) {
        names += (names.empty() ? "" : ", ") + n;
    }
    throw Failure(Cause::BadInput, "unknown chart '" + arg + "': not a built-in chart (" + names +
                                       ") nor a chart description file");
}

}  // namespace station
}  // namespace talonvireo
