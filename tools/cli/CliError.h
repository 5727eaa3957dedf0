// Exit statuses of talonvireo-sfr and the error that carries one up to main.
#pragma once

#include <stdexcept>
#include <string>

namespace talonvireo {
namespace cli {

// One distinct status per way a command can end, so scripts can branch on it.
enum ExitStatus {
    kExitOk = 0,
    kExitBelowLimit = 1,      // measured, but an edge reads below --min-sfr
    kExitBadArguments = 2,    // unknown option, missing or malformed value
    kExitUnreadableFile = 3,  // the input cannot be opened or decoded
    kExitWrongFileSize = 4,   // a raw file that is not W x H samples
    kExitNotLocated = 5,      // chart not located
    kExitRegionOutOfBounds = 6,
    kExitSfrFailed = 7,     // SFR calculation failed
    kExitFailed = 8,        // any other failure (writing an output, an internal error)
    kExitWrongChart = 9,    // located centres do not fit the member's chart design
    kExitSampleDepth = 10,  // samples exceed the member's bit depth
};

class CliError : public std::runtime_error {
public:
    CliError(ExitStatus status, const std::string& message)
        : std::runtime_error(message), status_(status) {}
    ExitStatus status() const { return status_; }

private:
    ExitStatus status_;
};

}  // namespace cli
}  // namespace talonvireo
