# Writes OUTPUT, a C++ file holding the chart description files CHART_DIR/<name>.toml for every
# name of NAMES (comma-separated) as builtinChartTexts() (station/BuiltinChartTexts.h).
string(REPLACE "," ";" names "${NAMES}")
set(rows "")
foreach(name IN LISTS names)
    file(READ ${CHART_DIR}/${name}.toml text)
    if(text MATCHES "\\)talonchart\"")
        message(FATAL_ERROR "${CHART_DIR}/${name}.toml holds the raw string's closing mark")
    endif()
    string(APPEND rows "    {\"${name}\", R\"talonchart(${text})talonchart\"},\n")
endforeach()
file(WRITE ${OUTPUT} "// Written by station/EmbedCharts.cmake from charts/*.toml; edit those.
#include \"station/BuiltinChartTexts.h\"

namespace talonvireo {
namespace station {

namespace {
const BuiltinChartText kCharts[] = {
${rows}};
}  // namespace

BuiltinChartTexts builtinChartTexts() {
    return {kCharts, static_cast<int>(sizeof kCharts / sizeof kCharts[0])};
}

}  // namespace station
}  // namespace talonvireo
")
