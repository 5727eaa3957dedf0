// talonvireo-sfr batch: many frame files graded by one member in one process, recorded in
// SQLite, CSV and JSON Lines, with a summary.
#pragma once

#include "Command.h"

namespace talonvireo {
namespace cli {

Command batchCommand();

}  // namespace cli
}  // namespace talonvireo
