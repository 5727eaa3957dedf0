#include "FrameFile.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "CliError.h"

namespace talonvireo {
namespace cli {

namespace {
// A directory opens as a stream on Linux and reads as empty: say what it is instead.
void refuseDirectory(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw CliError(kExitUnreadableFile, path + " is a directory");
    }
}

std::vector<unsigned char> readBytes(const std::string& path) {
    refuseDirectory(path);
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw CliError(kExitUnreadableFile, "cannot read " + path);
    }
    std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)),
                                     std::istreambuf_iterator<char>());
    if (in.bad()) {
        throw CliError(kExitUnreadableFile, "cannot read " + path);
    }
    return bytes;
}

std::uint64_t packedSize(std::uint64_t samples, Packing packing) {
    return packing == Packing::Words16 ? samples * 2 : (samples * 5 + 3) / 4;
}
}  // namespace

bool isImagePath(const std::string& path) {
    const std::string name = std::filesystem::path(path).filename().string();
    const auto dot = name.find_last_of('.');
    if (dot == std::string::npos || dot == 0) {
        return false;  // no extension: raw samples
    }
    std::string ext = name.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const char* raw : {"raw", "bin", "dat"}) {
        if (ext == raw) {
            return false;
        }
    }
    for (const char* image :
         {"png", "pgm", "ppm", "pnm", "tif", "tiff", "jpg", "jpeg", "bmp", "webp"}) {
        if (ext == image) {
            return true;
        }
    }
    throw CliError(kExitUnreadableFile,
                   "unsupported image type '." + ext + "' of " + path +
                       " (images: png pgm ppm pnm tif tiff jpg jpeg bmp webp; raw: raw bin dat)");
}

cv::Mat readRawImage(const std::string& path, int width, int height, int type) {
    if (width <= 0 || height <= 0) {
        throw CliError(kExitBadArguments, "a raw file needs --width and --height above 0");
    }
    const std::vector<unsigned char> bytes = readBytes(path);
    cv::Mat image(height, width, type);
    const std::size_t expected = image.total() * image.elemSize();
    if (bytes.size() != expected) {
        throw CliError(kExitWrongFileSize, path + " holds " + std::to_string(bytes.size()) +
                                               " bytes, not " + std::to_string(expected));
    }
    std::copy(bytes.begin(), bytes.end(), image.data);
    return image;
}

Packing parsePacking(const std::string& name) {
    if (name == "words16") {
        return Packing::Words16;
    }
    if (name == "mipi10") {
        return Packing::Mipi10;
    }
    throw CliError(kExitBadArguments, "unknown packing '" + name + "' (words16 or mipi10)");
}

cv::Mat readRawFrame(const std::string& path, int width, int height, Packing packing) {
    if (width <= 0 || height <= 0) {
        throw CliError(kExitBadArguments, "a raw frame needs --width and --height above 0");
    }
    const std::vector<unsigned char> bytes = readBytes(path);
    const std::uint64_t samples = static_cast<std::uint64_t>(width) * height;
    const std::uint64_t expected = packedSize(samples, packing);
    if (bytes.size() != expected) {
        throw CliError(kExitWrongFileSize,
                       path + " holds " + std::to_string(bytes.size()) + " bytes, not " +
                           std::to_string(expected) + " (" + std::to_string(width) + " x " +
                           std::to_string(height) +
                           (packing == Packing::Words16 ? " x 2)" : " RAW10, 5 bytes per 4)"));
    }
    cv::Mat frame(height, width, CV_16UC1);
    auto* out = frame.ptr<unsigned short>();
    if (packing == Packing::Words16) {
        for (std::uint64_t k = 0; k < samples; ++k) {
            out[k] = static_cast<unsigned short>(bytes[2 * k] | (bytes[2 * k + 1] << 8));
        }
        return frame;
    }
    // RAW10: bytes 0-3 hold bits 9..2 of four samples, byte 4 their bits 1..0, sample 0 in
    // the lowest pair.
    for (std::uint64_t k = 0; k < samples; ++k) {
        const std::uint64_t group = k / 4 * 5;
        const int lane = static_cast<int>(k % 4);
        const int low = (bytes[group + 4] >> (2 * lane)) & 0x3;
        out[k] = static_cast<unsigned short>((bytes[group + lane] << 2) | low);
    }
    return frame;
}

cv::Mat readImage(const std::string& path) {
    refuseDirectory(path);
    std::ifstream probe(path, std::ios::binary);
    if (!probe) {
        throw CliError(kExitUnreadableFile, "cannot read " + path);
    }
    cv::Mat image = cv::imread(path, cv::IMREAD_UNCHANGED);
    if (image.empty()) {
        throw CliError(kExitUnreadableFile, "cannot decode " + path + " as an image");
    }
    if (image.channels() == 4) {
        cv::cvtColor(image, image, cv::COLOR_BGRA2BGR);  // the alpha channel carries no scene
    } else if (image.channels() == 2) {
        cv::extractChannel(image, image, 0);  // grey + alpha
    }
    return image;
}

cv::Mat readFrame(const std::string& path, int width, int height, Packing packing) {
    if (!isImagePath(path)) {
        return readRawFrame(path, width, height, packing);
    }
    const cv::Mat image = readImage(path);
    if (image.type() != CV_16UC1) {
        throw CliError(kExitUnreadableFile,
                       path + " is not a 16-bit single-channel image (" +
                           std::to_string(8 * static_cast<int>(image.elemSize1())) + "-bit, " +
                           std::to_string(image.channels()) + " channel" +
                           (image.channels() == 1 ? "" : "s") + ")");
    }
    if ((width > 0 && image.cols != width) || (height > 0 && image.rows != height)) {
        throw CliError(kExitWrongFileSize, path + " is " + std::to_string(image.cols) + " x " +
                                               std::to_string(image.rows) + ", not " +
                                               std::to_string(width) + " x " +
                                               std::to_string(height));
    }
    return image;
}

}  // namespace cli
}  // namespace talonvireo
