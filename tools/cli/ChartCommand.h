// talonvireo-sfr render (also "chart"): a synthetic chart frame written with its ground truth.
#pragma once

#include "Command.h"

namespace talonvireo {
namespace cli {

Command renderCommand();

}  // namespace cli
}  // namespace talonvireo
