// A command asked for --json answers in JSON even when it fails, so a script that parses its
// standard output always finds a document, with the message and the exit status.
#pragma once

#include <string>

#include "OptionValues.h"

namespace talonvireo {
namespace cli {

// Runs `body`. When it throws and --json was given, first writes to stdout the document head
// of `kind` (the input from operand `inputOperand`) with "error" (the one-line message) and
// "exit_status", then lets the failure go on to the dispatcher, which reports it as ever.
int runWithJsonOnFailure(const OptionValues& o, const std::string& kind,
                         const std::string& inputOperand, int (*body)(const OptionValues&));

}  // namespace cli
}  // namespace talonvireo
