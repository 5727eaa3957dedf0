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
    kExitSfrFailed = 7,      // SFR calculation failed
    kExitFailed = 8,         // any other failure (writing an output, an internal error)
    kExitWrongChart = 9,     // located centres do not fit the member's chart design
    kExitSampleDepth = 10,   // samples exceed the member's bit depth
    kExitInterrupted = 130,  // a batch stopped by SIGINT or SIGTERM (the shell's 128 + 2)
};

// What a status means, in a few words, for summaries and records ("chart not located").
inline const char* exitStatusName(ExitStatus status) {
    switch (status) {
        case kExitOk:
            return "measured";
        case kExitBelowLimit:
            return "below limit";
        case kExitBadArguments:
            return "bad arguments";
        case kExitUnreadableFile:
            return "unreadable file";
        case kExitWrongFileSize:
            return "wrong file size";
        case kExitNotLocated:
            return "chart not located";
        case kExitRegionOutOfBounds:
            return "region out of bounds";
        case kExitSfrFailed:
            return "SFR calculation failed";
        case kExitFailed:
            return "failed";
        case kExitWrongChart:
            return "wrong chart";
        case kExitSampleDepth:
            return "samples exceed the bit depth";
        case kExitInterrupted:
            return "interrupted";
    }
    return "failed";
}

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
