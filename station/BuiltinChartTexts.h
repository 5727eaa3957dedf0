// The built-in chart description files as text, compiled in from charts/*.toml by the build
// (station/EmbedCharts.cmake writes the table); BuiltinCharts reads them.
#pragma once

namespace talonvireo {
namespace station {

struct BuiltinChartText {
    const char* name;  // "K74T16BX"
    const char* text;  // the file's contents
};

struct BuiltinChartTexts {
    const BuiltinChartText* charts;
    int count;
};

BuiltinChartTexts builtinChartTexts();

}  // namespace station
}  // namespace talonvireo
