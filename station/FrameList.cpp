#include "station/FrameList.h"

#include <glob.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>

#include "station/Failure.h"
#include "station/FrameFile.h"

namespace talonvireo {
namespace station {

namespace fs = std::filesystem;

namespace {
bool isGlob(const std::string& argument) {
    return argument.find_first_of("*?[") != std::string::npos;
}

// Adds a regular file; false for anything else (a folder, a socket, nothing).
bool addFile(const fs::path& path, std::map<std::string, FrameFileEntry>& found) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (error || !fs::is_regular_file(status)) {
        return false;
    }
    FrameFileEntry entry;
    entry.path = fs::absolute(path, error).lexically_normal().string();
    entry.size = fs::file_size(path, error);
    const auto modified = fs::last_write_time(path, error);
    entry.modifiedNs =
        std::chrono::duration_cast<std::chrono::nanoseconds>(modified.time_since_epoch()).count();
    found[entry.path] = entry;
    return true;
}

std::size_t addFolder(const fs::path& folder, std::map<std::string, FrameFileEntry>& found) {
    std::size_t added = 0;
    std::error_code error;
    for (const fs::directory_entry& each : fs::directory_iterator(folder, error)) {
        if (looksLikeFrameFile(each.path().filename().string()) && addFile(each.path(), found)) {
            ++added;
        }
    }
    return added;
}

std::size_t addGlob(const std::string& pattern, std::map<std::string, FrameFileEntry>& found) {
    glob_t matches{};
    std::size_t added = 0;
    if (glob(pattern.c_str(), 0, nullptr, &matches) == 0) {
        for (std::size_t k = 0; k < matches.gl_pathc; ++k) {
            added += addFile(matches.gl_pathv[k], found) ? 1 : 0;
        }
    }
    globfree(&matches);
    return added;
}
}  // namespace

bool looksLikeFrameFile(const std::string& name) {
    if (name.empty() || name[0] == '.') {
        return false;
    }
    const std::string ext = lowerExtension(name);
    for (const char* known : {"raw", "bin", "dat", "png", "pgm", "pnm", "tif", "tiff", "dng"}) {
        if (ext == known) {
            return true;
        }
    }
    return false;
}

std::vector<FrameFileEntry> listFrameFiles(const std::vector<std::string>& arguments) {
    std::map<std::string, FrameFileEntry> found;
    for (const std::string& argument : arguments) {
        std::error_code error;
        const fs::path path(argument);
        std::size_t added = 0;
        if (fs::is_directory(path, error)) {
            added = addFolder(path, found);
            if (added == 0) {
                throw Failure(Cause::BadInput, "no frame files in the folder " + argument);
            }
            continue;
        }
        if (addFile(path, found)) {
            continue;
        }
        if (isGlob(argument)) {
            added = addGlob(argument, found);
        }
        if (added == 0) {
            throw Failure(Cause::BadInput, fs::exists(path, error)
                                               ? argument + " is not a regular file"
                                               : "no such frame file: " + argument);
        }
    }
    std::vector<FrameFileEntry> frames;
    frames.reserve(found.size());
    for (auto& [path, entry] : found) {
        frames.push_back(std::move(entry));
    }
    return frames;
}

}  // namespace station
}  // namespace talonvireo
