// talonvireo-sfr measure: one raw frame from a file, measured by a named member.
#pragma once

#include <string>
#include <vector>

namespace talonvireo {
namespace cli {

const char* measureHelp();
int runMeasure(const std::vector<std::string>& args);

}  // namespace cli
}  // namespace talonvireo
