#include "JsonOnFailure.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "ExitStatus.h"
#include "station/JsonDocument.h"

namespace talonvireo {
namespace cli {

namespace {
void writeFailure(const OptionValues& o, const std::string& kind, const std::string& inputOperand,
                  const std::string& message, int status,
                  const std::vector<std::string>& warnings = {}) {
    station::Json doc = station::documentHead(kind, o.text(inputOperand));
    doc["error"] = message;
    doc["exit_status"] = status;
    doc["warnings"] = warnings;
    station::writeJson(stdout, doc);
    std::fflush(stdout);
}
}  // namespace

int runWithJsonOnFailure(const OptionValues& o, const std::string& kind,
                         const std::string& inputOperand, int (*body)(const OptionValues&)) {
    if (!o.has("--json")) {
        return body(o);
    }
    try {
        return body(o);
    } catch (const station::Failure& e) {
        writeFailure(o, kind, inputOperand, e.what(), exitStatusFor(e.cause()), e.warnings());
        throw;
    } catch (const std::exception& e) {
        writeFailure(o, kind, inputOperand, std::string("failed: ") + e.what(), kExitFailed);
        throw;
    }
}

}  // namespace cli
}  // namespace talonvireo
