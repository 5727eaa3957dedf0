// talonvireo-sfr focus: a through-focus stack of frames measured edge by edge, each edge's
// best focus, the zones' astigmatism, the image surface's tilt and curvature, the common
// focus window.
#pragma once

#include "Command.h"

namespace talonvireo {
namespace cli {

Command focusCommand();

}  // namespace cli
}  // namespace talonvireo
