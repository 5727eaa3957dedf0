// The tool's JSON documents: strict JSON (a figure that does not exist is null, never a bare
// nan or inf), snake_case keys, and a common head naming the schema, the tool and the input.
#pragma once

#include <cstdio>
#include <string>

#include <nlohmann/json.hpp>

namespace talonvireo {
namespace station {

using Json = nlohmann::ordered_json;  // keys stay in the order they are written

// `v`, or null when it is NaN or infinite.
Json figure(double v);

// {"schema_version", "tool_version", "kind", "input"}: `input` is the file measured, null
// when there is none (a rendered frame).
Json documentHead(const std::string& kind, const std::string& input);

// Two-space indented, one trailing newline.
void writeJson(std::FILE* out, const Json& document);

}  // namespace station
}  // namespace talonvireo
