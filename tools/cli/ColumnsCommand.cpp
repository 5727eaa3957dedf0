#include "ColumnsCommand.h"

#include <cstdio>

#include "ExitStatus.h"
#include "station/EdgeColumns.h"
#include "station/JsonDocument.h"

namespace talonvireo {
namespace cli {

namespace {
void declare(OptionValues& o) {
    o.flag("--json", "the table as JSON: name, type, unit, when and description of each column");
}

int run(const OptionValues& o) {
    if (!o.has("--json")) {
        std::fputs(station::columnsMarkdown().c_str(), stdout);
        return kExitOk;
    }
    station::Json columns = station::Json::array();
    for (const station::EdgeColumn& c : station::edgeColumns()) {
        columns.push_back({{"name", c.name},
                           {"type", station::typeName(c.type)},
                           {"unit", c.unit},
                           {"when", station::presenceName(c.presence)},
                           {"description", c.description}});
    }
    station::Json doc = station::documentHead("columns", "");
    doc["columns"] = columns;
    station::writeJson(stdout, doc);
    return kExitOk;
}
}  // namespace

Command columnsCommand() {
    return {"columns",
            "the edge columns of every output (CSV, JSON, the database, the DataFrame): name, "
            "type, unit, when present, meaning",
            declare, run};
}

}  // namespace cli
}  // namespace talonvireo
