// talonvireo-sfr columns: the table of edge columns every output uses.
#pragma once

#include "Command.h"

namespace talonvireo {
namespace cli {

Command columnsCommand();

}  // namespace cli
}  // namespace talonvireo
