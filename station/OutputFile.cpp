#include "station/OutputFile.h"

#include <unistd.h>

#include <filesystem>

#include <opencv2/imgcodecs.hpp>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

OutputFile::OutputFile(const std::string& path, bool append)
    : path_(path), file_(std::fopen(path.c_str(), append ? "a" : "w")) {
    if (file_ == nullptr) {
        throw Failure(Cause::Failed, "cannot write " + path);
    }
}

OutputFile::~OutputFile() {
    if (file_ != nullptr) {
        std::fclose(file_);
    }
}

void OutputFile::flush() {
    if (std::fflush(file_) != 0 || std::ferror(file_) != 0) {
        throw Failure(Cause::Failed, "cannot write " + path_);
    }
}

void OutputFile::close() {
    const bool ok = std::ferror(file_) == 0;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!ok || !closed) {
        throw Failure(Cause::Failed, "cannot write " + path_);
    }
}

void writeImage(const std::string& path, const cv::Mat& image) {
    bool ok = false;
    try {
        ok = cv::imwrite(path, image);
    } catch (const cv::Exception&) {
        ok = false;  // an unknown extension, for one
    }
    if (!ok) {
        throw Failure(Cause::Failed, "cannot write " + path);
    }
}

void checkOutputPath(const std::string& option, const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    if (path.empty()) {
        throw Failure(Cause::BadInput, option + " needs a file name");
    }
    if (fs::is_directory(path, ignored)) {
        throw Failure(Cause::BadInput, option + " " + path + " is a directory");
    }
    const fs::path folder =
        fs::path(path).parent_path().empty() ? fs::path(".") : fs::path(path).parent_path();
    if (!fs::is_directory(folder, ignored)) {
        throw Failure(Cause::BadInput,
                      option + " " + path + ": folder " + folder.string() + " does not exist");
    }
    if (::access(folder.c_str(), W_OK) != 0) {
        throw Failure(Cause::BadInput,
                      option + " " + path + ": folder " + folder.string() + " is not writable");
    }
}

void checkImageOutputPath(const std::string& option, const std::string& path) {
    checkOutputPath(option, path);
    bool writable = false;
    try {
        writable = cv::haveImageWriter(path);
    } catch (const cv::Exception&) {
        writable = false;
    }
    if (!writable) {
        throw Failure(Cause::BadInput,
                      option + " " + path + ": no image writer for that extension (use .png)");
    }
}

}  // namespace station
}  // namespace talonvireo
