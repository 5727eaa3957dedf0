// talonvireo-sfr roi: the SFR of one region read from a file, with its whole curve.
#pragma once

#include "Command.h"

namespace talonvireo {
namespace cli {

Command roiCommand();

}  // namespace cli
}  // namespace talonvireo
