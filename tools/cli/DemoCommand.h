// talonvireo-sfr demo: a rendered chart frame measured end to end beside its truth.
#pragma once

#include "Command.h"

namespace talonvireo {
namespace cli {

Command demoCommand();

}  // namespace cli
}  // namespace talonvireo
