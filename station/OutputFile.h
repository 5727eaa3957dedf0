// Writing the tool's outputs: a text file opened for the duration of a scope, and images.
#pragma once

#include <cstdio>
#include <string>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {

class OutputFile {
public:
    // Throws Failure (Cause::Failed) when the file cannot be created (or opened to append).
    explicit OutputFile(const std::string& path, bool append = false);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::FILE* get() const { return file_; }
    // Pushes what was written to the file, so a killed process leaves it there; throws
    // Failure when it cannot.
    void flush();
    // Flushes and closes; throws Failure when anything failed to reach the file.
    void close();

private:
    std::string path_;
    std::FILE* file_;
};

// Throws Failure (Cause::Failed) when the image cannot be written.
void writeImage(const std::string& path, const cv::Mat& image);

// Checked before any work, so a long measurement never ends in "cannot write": throws
// Failure (bad input) when `path` names a directory, its folder does not exist or is
// not writable, or (for an image) OpenCV has no writer for its extension. `option` names
// the option in the message.
void checkOutputPath(const std::string& option, const std::string& path);
void checkImageOutputPath(const std::string& option, const std::string& path);

}  // namespace station
}  // namespace talonvireo
