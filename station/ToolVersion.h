// Versions the tool reports: its own (the project's) and that of its JSON documents.
#pragma once

namespace talonvireo {
namespace station {

inline constexpr const char* kToolVersion = TALONVIREO_VERSION;  // set by the build
// Raised whenever a JSON document's keys or their meaning change.
inline constexpr int kSchemaVersion = 3;

}  // namespace station
}  // namespace talonvireo
