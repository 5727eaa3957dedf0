// talonvireo-sfr measure: one raw frame from a file, measured by a named member.
#pragma once

#include "Command.h"

namespace talonvireo {
namespace cli {

Command measureCommand();

}  // namespace cli
}  // namespace talonvireo
