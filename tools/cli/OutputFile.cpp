#include "OutputFile.h"

#include <opencv2/imgcodecs.hpp>

#include "CliError.h"

namespace talonvireo {
namespace cli {

OutputFile::OutputFile(const std::string& path)
    : path_(path), file_(std::fopen(path.c_str(), "w")) {
    if (file_ == nullptr) {
        throw CliError(kExitFailed, "cannot write " + path);
    }
}

OutputFile::~OutputFile() {
    if (file_ != nullptr) {
        std::fclose(file_);
    }
}

void OutputFile::close() {
    const bool ok = std::ferror(file_) == 0;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!ok || !closed) {
        throw CliError(kExitFailed, "cannot write " + path_);
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
        throw CliError(kExitFailed, "cannot write " + path);
    }
}

}  // namespace cli
}  // namespace talonvireo
