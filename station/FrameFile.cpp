#include "station/FrameFile.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

namespace {
// A directory opens as a stream on Linux and reads as empty: say what it is instead.
void refuseDirectory(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw Failure(Cause::UnreadableFile, path + " is a directory");
    }
}

std::vector<unsigned char> readBytes(const std::string& path) {
    refuseDirectory(path);
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) {
        throw Failure(Cause::UnreadableFile, "cannot read " + path);
    }
    const std::streamoff size = in.tellg();
    if (size < 0) {
        throw Failure(Cause::UnreadableFile, "cannot read " + path);
    }
    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    in.seekg(0);
    if (!in.read(reinterpret_cast<char*>(bytes.data()), size)) {
        throw Failure(Cause::UnreadableFile, "cannot read " + path);
    }
    return bytes;
}

// MIPI CSI-2 RAW10 and RAW12: a group of `lanes` samples is one byte of high bits per
// sample, then one byte of their `lowBits` low bits, sample 0 in the lowest (RAW10: 4
// samples in 5 bytes, RAW12: 2 in 3).
struct MipiGroup {
    int lowBits;
    int lanes;
};

MipiGroup mipiGroup(Packing packing) {
    const int low = packingBits(packing) - 8;
    return {low, 8 / low};
}

std::uint64_t packedSize(std::uint64_t samples, Packing packing) {
    switch (packing) {
        case Packing::Mipi10:
        case Packing::Mipi12: {
            const MipiGroup g = mipiGroup(packing);
            return (samples * (g.lanes + 1) + g.lanes - 1) / g.lanes;
        }
        case Packing::Raw8:
            return samples;
        case Packing::Words16:
            break;
    }
    return samples * 2;
}

const char* packingName(Packing packing) {
    switch (packing) {
        case Packing::Mipi10:
            return "RAW10, 5 bytes per 4 samples";
        case Packing::Mipi12:
            return "RAW12, 3 bytes per 2 samples";
        case Packing::Raw8:
            return "1 byte per sample";
        case Packing::Words16:
            break;
    }
    return "2 bytes per sample";
}

// `count` samples packed into `out` (zeroed, packedSize bytes).
void packSamples(const unsigned short* in, std::uint64_t count, Packing packing,
                 unsigned char* out) {
    for (std::uint64_t k = 0; k < count; ++k) {
        const unsigned v = in[k];
        switch (packing) {
            case Packing::Words16:
                out[2 * k] = static_cast<unsigned char>(v & 0xFF);
                out[2 * k + 1] = static_cast<unsigned char>(v >> 8);
                break;
            case Packing::Mipi10:
            case Packing::Mipi12: {
                const MipiGroup g = mipiGroup(packing);
                unsigned char* group = out + k / g.lanes * (g.lanes + 1);
                const int lane = static_cast<int>(k % g.lanes);
                group[lane] = static_cast<unsigned char>((v >> g.lowBits) & 0xFF);
                group[g.lanes] = static_cast<unsigned char>(
                    group[g.lanes] | (v & ((1u << g.lowBits) - 1)) << (g.lowBits * lane));
                break;
            }
            case Packing::Raw8:
                out[k] = static_cast<unsigned char>(v & 0xFF);
                break;
        }
    }
}

// `count` samples packed from `in` onwards, into `out`.
void unpackSamples(const unsigned char* in, std::uint64_t count, Packing packing,
                   unsigned short* out) {
    switch (packing) {
        case Packing::Words16:
            for (std::uint64_t k = 0; k < count; ++k) {
                out[k] = static_cast<unsigned short>(in[2 * k] | (in[2 * k + 1] << 8));
            }
            return;
        case Packing::Mipi10:
        case Packing::Mipi12: {
            const MipiGroup g = mipiGroup(packing);
            for (std::uint64_t k = 0; k < count; ++k) {
                const unsigned char* group = in + k / g.lanes * (g.lanes + 1);
                const int lane = static_cast<int>(k % g.lanes);
                out[k] = static_cast<unsigned short>(
                    (group[lane] << g.lowBits) |
                    ((group[g.lanes] >> (g.lowBits * lane)) & ((1 << g.lowBits) - 1)));
            }
            return;
        }
        case Packing::Raw8:
            std::copy(in, in + count, out);
            return;
    }
}
}  // namespace

std::string lowerExtension(const std::string& path) {
    const std::string name = std::filesystem::path(path).filename().string();
    const auto dot = name.find_last_of('.');
    if (dot == std::string::npos || dot == 0) {
        return "";
    }
    std::string ext = name.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext;
}

int packingBits(Packing packing) {
    switch (packing) {
        case Packing::Mipi10:
            return 10;
        case Packing::Mipi12:
            return 12;
        case Packing::Raw8:
            return 8;
        case Packing::Words16:
            break;
    }
    return 16;
}

bool isImagePath(const std::string& path) {
    const std::string name = std::filesystem::path(path).filename().string();
    const auto dot = name.find_last_of('.');
    if (dot == std::string::npos || dot == 0) {
        return false;  // no extension: raw samples
    }
    const std::string ext = lowerExtension(path);
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
    throw Failure(Cause::UnreadableFile,
                  "unsupported image type '." + ext + "' of " + path +
                      " (images: png pgm ppm pnm tif tiff jpg jpeg bmp webp; raw: raw bin dat)");
}

cv::Mat readRawImage(const std::string& path, int width, int height, int type) {
    if (width <= 0 || height <= 0) {
        throw Failure(Cause::BadInput, "a raw file needs --width and --height above 0");
    }
    const std::vector<unsigned char> bytes = readBytes(path);
    cv::Mat image(height, width, type);
    const std::size_t expected = image.total() * image.elemSize();
    if (bytes.size() != expected) {
        throw Failure(Cause::WrongFileSize, path + " holds " + std::to_string(bytes.size()) +
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
    if (name == "mipi12") {
        return Packing::Mipi12;
    }
    if (name == "raw8") {
        return Packing::Raw8;
    }
    throw Failure(Cause::BadInput,
                  "unknown packing '" + name + "' (words16, mipi10, mipi12 or raw8)");
}

std::uint64_t packedLineBytes(int width, Packing packing) {
    return packedSize(static_cast<std::uint64_t>(std::max(width, 0)), packing);
}

void checkRawLayout(const RawLayout& layout) {
    if (layout.stride > 0 && layout.width > 0 &&
        static_cast<std::uint64_t>(layout.stride) < packedLineBytes(layout.width, layout.packing)) {
        throw Failure(Cause::BadInput,
                      "--stride " + std::to_string(layout.stride) + " is shorter than a line of " +
                          std::to_string(layout.width) + " samples (" +
                          std::to_string(packedLineBytes(layout.width, layout.packing)) +
                          " bytes packed)");
    }
}

namespace {
// Packed little-endian words on a little-endian machine are the frame's own bytes: read them
// straight into it, without a second buffer or an unpacking pass (a line's frame is 24 MB).
// Empty when the file is not exactly that, so that the general path says what is wrong.
cv::Mat readWordsDirectly(const std::string& path, const RawLayout& layout) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    if (layout.packing != Packing::Words16 || layout.stride != 0) {
        return {};
    }
    refuseDirectory(path);
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = in ? static_cast<std::streamoff>(in.tellg()) : -1;
    const std::uint64_t samples =
        static_cast<std::uint64_t>(layout.width) * static_cast<std::uint64_t>(layout.height);
    if (size < 0 || static_cast<std::uint64_t>(size) !=
                        static_cast<std::uint64_t>(layout.offset) + 2 * samples) {
        return {};
    }
    cv::Mat frame(layout.height, layout.width, CV_16UC1);
    in.seekg(layout.offset);
    if (!in.read(reinterpret_cast<char*>(frame.data), static_cast<std::streamsize>(2 * samples))) {
        return {};
    }
    return frame;
#else
    (void)path;
    (void)layout;
    return {};
#endif
}
}  // namespace

cv::Mat readRawFrame(const std::string& path, const RawLayout& layout) {
    if (layout.width <= 0 || layout.height <= 0) {
        throw Failure(Cause::BadInput, "a raw frame needs --width and --height above 0");
    }
    checkRawLayout(layout);
    if (cv::Mat direct = readWordsDirectly(path, layout); !direct.empty()) {
        return direct;
    }
    const std::vector<unsigned char> bytes = readBytes(path);
    const std::uint64_t width = static_cast<std::uint64_t>(layout.width);
    const std::uint64_t height = static_cast<std::uint64_t>(layout.height);
    const std::uint64_t line = packedLineBytes(layout.width, layout.packing);
    const std::uint64_t offset = static_cast<std::uint64_t>(layout.offset);
    const std::uint64_t stride = static_cast<std::uint64_t>(layout.stride);
    const std::uint64_t full =
        offset + (stride > 0 ? stride * height : packedSize(width * height, layout.packing));
    // A padded file may stop right after its last line's samples.
    const std::uint64_t shortest = stride > 0 ? offset + stride * (height - 1) + line : full;
    if (bytes.size() != full && bytes.size() != shortest) {
        std::string shape = std::to_string(width) + " x " + std::to_string(height) + ", " +
                            packingName(layout.packing);
        if (stride > 0) {
            shape += ", lines " + std::to_string(stride) + " bytes apart";
        }
        if (offset > 0) {
            shape += ", after " + std::to_string(offset) + " header bytes";
        }
        throw Failure(Cause::WrongFileSize, path + " holds " + std::to_string(bytes.size()) +
                                                " bytes, not " + std::to_string(full) + " (" +
                                                shape + ")");
    }
    cv::Mat frame(layout.height, layout.width, CV_16UC1);
    if (stride == 0) {
        unpackSamples(bytes.data() + offset, width * height, layout.packing,
                      frame.ptr<unsigned short>());
        return frame;
    }
    for (int r = 0; r < layout.height; ++r) {
        unpackSamples(bytes.data() + offset + stride * static_cast<std::uint64_t>(r), width,
                      layout.packing, frame.ptr<unsigned short>(r));
    }
    return frame;
}

void writeRawFrame(const std::string& path, const cv::Mat& frame, const RawLayout& layout) {
    cv::Mat words;
    frame.convertTo(words, CV_16U);
    RawLayout shape = layout;
    shape.width = words.cols;
    shape.height = words.rows;
    checkRawLayout(shape);
    const std::uint64_t samples = static_cast<std::uint64_t>(words.total());
    const std::uint64_t stride = static_cast<std::uint64_t>(layout.stride);
    std::vector<unsigned char> bytes(
        static_cast<std::size_t>(layout.offset) +
            (stride > 0 ? stride * static_cast<std::uint64_t>(words.rows)
                        : packedSize(samples, layout.packing)),
        0);
    unsigned char* data = bytes.data() + layout.offset;
    if (stride == 0) {
        cv::Mat flat = words.isContinuous() ? words : words.clone();
        packSamples(flat.ptr<unsigned short>(), samples, layout.packing, data);
    } else {
        for (int r = 0; r < words.rows; ++r) {
            packSamples(words.ptr<unsigned short>(r), static_cast<std::uint64_t>(words.cols),
                        layout.packing, data + stride * static_cast<std::uint64_t>(r));
        }
    }
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        throw Failure(Cause::Failed, "cannot write " + path);
    }
}

cv::Mat readImage(const std::string& path) {
    refuseDirectory(path);
    std::ifstream probe(path, std::ios::binary);
    if (!probe) {
        throw Failure(Cause::UnreadableFile, "cannot read " + path);
    }
    cv::Mat image = cv::imread(path, cv::IMREAD_UNCHANGED);
    if (image.empty()) {
        throw Failure(Cause::UnreadableFile, "cannot decode " + path + " as an image");
    }
    if (image.channels() == 4) {
        cv::cvtColor(image, image, cv::COLOR_BGRA2BGR);  // the alpha channel carries no scene
    } else if (image.channels() == 2) {
        cv::extractChannel(image, image, 0);  // grey + alpha
    }
    return image;
}

cv::Mat readFrame(const std::string& path, const RawLayout& layout) {
    if (!isImagePath(path)) {
        return readRawFrame(path, layout);
    }
    const int width = layout.width;
    const int height = layout.height;
    const cv::Mat image = readImage(path);
    if (image.type() != CV_16UC1) {
        throw Failure(Cause::UnreadableFile,
                      path + " is not a 16-bit single-channel image (" +
                          std::to_string(8 * static_cast<int>(image.elemSize1())) + "-bit, " +
                          std::to_string(image.channels()) + " channel" +
                          (image.channels() == 1 ? "" : "s") + ")");
    }
    if ((width > 0 && image.cols != width) || (height > 0 && image.rows != height)) {
        throw Failure(Cause::WrongFileSize, path + " is " + std::to_string(image.cols) + " x " +
                                                std::to_string(image.rows) + ", not " +
                                                std::to_string(width) + " x " +
                                                std::to_string(height));
    }
    return image;
}

}  // namespace station
}  // namespace talonvireo
