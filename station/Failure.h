// Why the station could not do what it was asked: a typed cause and a one-line message.
//
// The command line turns a cause into its exit status, the Python module into its exception
// class. The causes' values are the codes the batch records carry (and the command line's
// exit statuses for the same causes), so records stay comparable across versions.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace talonvireo {
namespace station {

enum class Cause {
    None = 0,               // no failure: the frame was measured
    BadInput = 2,           // an option, a parameter or a file's declared layout is refused
    UnreadableFile = 3,     // the input cannot be opened or decoded
    WrongFileSize = 4,      // a raw file that is not W x H samples
    NotLocated = 5,         // chart not located
    RegionOutOfBounds = 6,  // a region reaches past the frame
    SfrFailed = 7,          // SFR calculation failed
    Failed = 8,             // any other failure (writing an output, an internal error)
    WrongChart = 9,         // located centres do not fit the member's chart design
    SampleDepth = 10,       // samples exceed the member's bit depth
    Misplaced = 11,         // the chart was found, but some edges were found off its design
    NoQuadrilateral = 12,   // a frame measured as a chart holds no quadrilateral at all
};

// What a cause means, in a few words, for summaries and records ("chart not located").
inline const char* causeName(Cause cause) {
    switch (cause) {
        case Cause::None:
            return "measured";
        case Cause::BadInput:
            return "bad arguments";
        case Cause::UnreadableFile:
            return "unreadable file";
        case Cause::WrongFileSize:
            return "wrong file size";
        case Cause::NotLocated:
            return "chart not located";
        case Cause::RegionOutOfBounds:
            return "region out of bounds";
        case Cause::SfrFailed:
            return "SFR calculation failed";
        case Cause::Failed:
            return "failed";
        case Cause::WrongChart:
            return "wrong chart";
        case Cause::SampleDepth:
            return "samples exceed the bit depth";
        case Cause::Misplaced:
            return "chart misplaced";
        case Cause::NoQuadrilateral:
            return "no quadrilateral";
    }
    return "failed";
}

class Failure : public std::runtime_error {
public:
    Failure(Cause cause, const std::string& message) : std::runtime_error(message), cause_(cause) {}
    Cause cause() const { return cause_; }
    // What was found worth saying before the failure (a dim frame that was then not
    // located): it travels with the failure into the records.
    const std::vector<std::string>& warnings() const { return warnings_; }
    void addWarnings(const std::vector<std::string>& more) {
        warnings_.insert(warnings_.end(), more.begin(), more.end());
    }

private:
    Cause cause_;
    std::vector<std::string> warnings_;
};

}  // namespace station
}  // namespace talonvireo
