// `talonvireo-sfr demo`: render a slanted edge with a known blur, measure it, show both.
#pragma once

#include <string>
#include <vector>

namespace talonvireo {
namespace cli {

int runDemo(const std::vector<std::string>& args);
const char* demoHelp();

}  // namespace cli
}  // namespace talonvireo
