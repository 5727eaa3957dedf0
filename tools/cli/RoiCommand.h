// talonvireo-sfr roi: the SFR of one region read from a file, with its whole curve.
#pragma once

#include <string>
#include <vector>

namespace talonvireo {
namespace cli {

const char* roiHelp();
int runRoi(const std::vector<std::string>& args);

}  // namespace cli
}  // namespace talonvireo
