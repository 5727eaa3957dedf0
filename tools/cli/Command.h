// One command of talonvireo-sfr: its name, the options it declares and what it does.
#pragma once

#include "OptionValues.h"

namespace talonvireo {
namespace cli {

struct Command {
    const char* name;
    const char* summary;
    // Declares the command's operands and options (and its help footer).
    void (*declare)(OptionValues& options);
    // Runs on the parsed options; returns the exit status or throws station::Failure.
    int (*run)(const OptionValues& options);
};

}  // namespace cli
}  // namespace talonvireo
