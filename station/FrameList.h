// The frame files a batch measures, from what the command line named: files, globs and
// folders.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace talonvireo {
namespace station {

// A frame file and what identifies this version of it: a batch that finds the same path,
// size and modification time already recorded skips it.
struct FrameFileEntry {
    std::string path;  // absolute, normalised
    std::uint64_t size = 0;
    std::int64_t modifiedNs = 0;  // modification time, ns since the epoch
};

// True for a name a folder's listing takes as a frame: the raw (.raw .bin .dat) and image
// extensions the readers know, any case. Hidden files are never frames.
bool looksLikeFrameFile(const std::string& name);

// Every frame the arguments name, sorted by path, each once. A folder gives the frame files
// directly in it (looksLikeFrameFile); an argument with * ? or [ that is not a file is a
// glob. Throws Failure (bad input) naming an argument that matches no file.
std::vector<FrameFileEntry> listFrameFiles(const std::vector<std::string>& arguments);

}  // namespace station
}  // namespace talonvireo
