// `talonvireo-sfr chart`: render a synthetic chart frame and write it with its ground truth.
#pragma once

#include <string>
#include <vector>

namespace talonvireo {
namespace cli {

int runChart(const std::vector<std::string>& args);
const char* chartHelp();

}  // namespace cli
}  // namespace talonvireo
