// The one table of an edge's columns: name, type, unit and meaning, and which reports carry
// each. The CSV header, the JSON keys, the SQLite columns, the DataFrame columns and the
// README's table of names all come from it, so one concept has one name everywhere.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "station/EdgeReport.h"

namespace talonvireo {
namespace station {

enum class ColumnType { Integer, Real, Text, Boolean };

// Which reports carry a column.
enum class Presence {
    Always,
    Custom,         // a custom frequency was asked for (freq_divisor)
    Pitch,          // a pixel pitch was given
    Precise,        // the precise method
    PreciseCustom,  // the precise method and a custom frequency
    PrecisePitch,   // the precise method and a pixel pitch
    Planes,         // the raw colour planes
    Truth,          // a rendered frame, beside its truth
    Limits,         // graded against a limits file
    Graded,         // graded: a limits file or a minimum SFR
    Chart,          // measured as a chart (--chart): found or described edges
};

// "always", "custom", "pitch", "precise", "precise+custom", "precise+pitch", "planes",
// "truth", "limits", "graded", "chart".
const char* presenceName(Presence presence);

bool carries(const FrameReport& report, Presence presence);

// A value, or none (std::monostate): CSV empty, JSON null, SQL NULL, a DataFrame's None.
using Cell = std::variant<std::monostate, long long, double, std::string, bool>;

struct EdgeColumn {
    const char* name;
    ColumnType type;
    const char* unit;  // "" for none
    const char* description;
    // Which reports carry the column; every column exists in the database.
    Presence presence;
    Cell (*value)(const FrameReport& report, const EdgeRow& row);
    bool present(const FrameReport& report) const { return carries(report, presence); }
};

// Every column, in output order.
const std::vector<EdgeColumn>& edgeColumns();

// The columns a report carries.
std::vector<const EdgeColumn*> columnsOf(const FrameReport& report);

// "INTEGER", "REAL", "TEXT"; booleans are INTEGER 0/1.
const char* sqlType(ColumnType type);

// The table as Markdown (name | type | unit | when | meaning), as the README shows it.
std::string columnsMarkdown();

// "integer", "real", "text", "boolean".
const char* typeName(ColumnType type);

// Warnings joined into one text field: "first; second".
std::string joinWarnings(const std::vector<std::string>& warnings);

}  // namespace station
}  // namespace talonvireo
