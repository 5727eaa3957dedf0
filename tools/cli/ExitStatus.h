// Exit statuses of talonvireo-sfr, and the station's failure causes mapped onto them.
#pragma once

#include "station/Failure.h"

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
    kExitSfrFailed = 7,         // SFR calculation failed
    kExitFailed = 8,            // any other failure (writing an output, an internal error)
    kExitWrongChart = 9,        // located centres do not fit the member's chart design
    kExitSampleDepth = 10,      // samples exceed the member's bit depth
    kExitMisplaced = 11,        // the chart was found, but edges off its design
    kExitNoQuadrilateral = 12,  // --chart: the frame holds no quadrilateral
    kExitInterrupted = 130,     // a batch stopped by SIGINT or SIGTERM (the shell's 128 + 2)
};

inline ExitStatus exitStatusFor(station::Cause cause) {
    switch (cause) {
        case station::Cause::None:
            return kExitOk;
        case station::Cause::BadInput:
            return kExitBadArguments;
        case station::Cause::UnreadableFile:
            return kExitUnreadableFile;
        case station::Cause::WrongFileSize:
            return kExitWrongFileSize;
        case station::Cause::NotLocated:
            return kExitNotLocated;
        case station::Cause::RegionOutOfBounds:
            return kExitRegionOutOfBounds;
        case station::Cause::SfrFailed:
            return kExitSfrFailed;
        case station::Cause::Failed:
            return kExitFailed;
        case station::Cause::WrongChart:
            return kExitWrongChart;
        case station::Cause::SampleDepth:
            return kExitSampleDepth;
        case station::Cause::Misplaced:
            return kExitMisplaced;
        case station::Cause::NoQuadrilateral:
            return kExitNoQuadrilateral;
    }
    return kExitFailed;
}

}  // namespace cli
}  // namespace talonvireo
