// talonvireo-sfr demo: a rendered chart frame measured end to end beside its truth.
#pragma once

#include <string>
#include <vector>

namespace talonvireo {
namespace cli {

const char* demoHelp();
int runDemo(const std::vector<std::string>& args);

}  // namespace cli
}  // namespace talonvireo
