#include "station/DngWriter.h"

#include <cstdint>
#include <fstream>
#include <vector>

#include "station/Failure.h"

namespace talonvireo {
namespace station {

namespace {
enum TiffType : std::uint16_t { kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kSRational = 10 };

struct Entry {
    std::uint16_t tag;
    TiffType type;
    std::uint32_t count;
    std::vector<unsigned char> data;  // little-endian values
};

void put16(std::vector<unsigned char>& out, std::uint32_t v) {
    out.push_back(static_cast<unsigned char>(v & 0xFF));
    out.push_back(static_cast<unsigned char>((v >> 8) & 0xFF));
}

void put32(std::vector<unsigned char>& out, std::uint32_t v) {
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

Entry shorts(std::uint16_t tag, std::initializer_list<std::uint32_t> values) {
    Entry e{tag, kShort, static_cast<std::uint32_t>(values.size()), {}};
    for (const std::uint32_t v : values) {
        put16(e.data, v);
    }
    return e;
}

Entry longs(std::uint16_t tag, std::initializer_list<std::uint32_t> values) {
    Entry e{tag, kLong, static_cast<std::uint32_t>(values.size()), {}};
    for (const std::uint32_t v : values) {
        put32(e.data, v);
    }
    return e;
}

Entry bytes(std::uint16_t tag, std::initializer_list<unsigned char> values) {
    return {tag, kByte, static_cast<std::uint32_t>(values.size()), values};
}

Entry ascii(std::uint16_t tag, const std::string& text) {
    Entry e{tag, kAscii, static_cast<std::uint32_t>(text.size() + 1), {}};
    e.data.assign(text.begin(), text.end());
    e.data.push_back(0);
    return e;
}

// A colour matrix of identity: the mosaic's figures need no colour science.
Entry identityMatrix(std::uint16_t tag) {
    Entry e{tag, kSRational, 9, {}};
    for (int k = 0; k < 9; ++k) {
        put32(e.data, k % 4 == 0 ? 1 : 0);
        put32(e.data, 1);
    }
    return e;
}

// TIFF CFA colour codes: 0 red, 1 green, 2 blue.
std::vector<unsigned char> patternCodes(const std::string& pattern) {
    std::vector<unsigned char> codes;
    for (const char c : pattern) {
        codes.push_back(c == 'R' ? 0 : c == 'G' ? 1 : 2);
    }
    return codes;
}
}  // namespace

void writeDng(const std::string& path, const cv::Mat& mosaic, int bits, const std::string& pattern,
              int whiteLevel) {
    if (mosaic.type() != CV_16UC1 || mosaic.empty() || bits < 1 || bits > 16) {
        throw Failure(Cause::BadInput, "a DNG holds one plane of 1- to 16-bit samples");
    }
    if (pattern != "RGGB" && pattern != "GRBG" && pattern != "GBRG" && pattern != "BGGR") {
        throw Failure(Cause::BadInput, "unknown CFA pattern '" + pattern + "'");
    }
    const std::uint32_t width = static_cast<std::uint32_t>(mosaic.cols);
    const std::uint32_t height = static_cast<std::uint32_t>(mosaic.rows);
    const std::uint32_t imageBytes = width * height * 2;
    const std::vector<unsigned char> codes = patternCodes(pattern);
    std::vector<Entry> entries = {
        longs(254, {0}),  // NewSubFileType: the main image
        longs(256, {width}), longs(257, {height}), shorts(258, {16}),  // BitsPerSample
        shorts(259, {1}),                                              // Compression: none
        shorts(262, {32803}),  // PhotometricInterpretation: CFA
        ascii(271, "talonVireoSFR"), ascii(272, "chart renderer"),
        longs(273, {0}),   // StripOffsets, set below
        shorts(277, {1}),  // SamplesPerPixel
        longs(278, {height}), longs(279, {imageBytes}),
        shorts(284, {1}),       // PlanarConfiguration: chunky
        shorts(33421, {2, 2}),  // CFARepeatPatternDim
        bytes(33422, {codes[0], codes[1], codes[2], codes[3]}),
        bytes(50706, {1, 4, 0, 0}),                                       // DNGVersion
        bytes(50707, {1, 1, 0, 0}),                                       // DNGBackwardVersion
        ascii(50708, "talonVireoSFR chart renderer"), longs(50714, {0}),  // BlackLevel
        // WhiteLevel: full scale of the bits, unless the caller declares another.
        longs(50717, {whiteLevel > 0 ? static_cast<unsigned>(whiteLevel) : (1u << bits) - 1}),
        identityMatrix(50721),  // ColorMatrix1
        shorts(50778, {21}),    // CalibrationIlluminant1: D65
    };
    // Layout: header, IFD, the values too long for their entries, then the image.
    const std::uint32_t ifdOffset = 8;
    const std::uint32_t ifdSize = 2 + 12 * static_cast<std::uint32_t>(entries.size()) + 4;
    std::uint32_t extraOffset = ifdOffset + ifdSize;
    std::uint32_t extraSize = 0;
    for (const Entry& e : entries) {
        if (e.data.size() > 4) {
            extraSize += static_cast<std::uint32_t>((e.data.size() + 1) & ~std::size_t{1});
        }
    }
    const std::uint32_t imageOffset = extraOffset + extraSize;
    for (Entry& e : entries) {
        if (e.tag == 273) {
            e.data.clear();
            put32(e.data, imageOffset);
        }
    }
    std::vector<unsigned char> file = {'I', 'I', 42, 0};
    put32(file, ifdOffset);
    put16(file, static_cast<std::uint32_t>(entries.size()));
    std::vector<unsigned char> extra;
    for (const Entry& e : entries) {
        put16(file, e.tag);
        put16(file, e.type);
        put32(file, e.count);
        if (e.data.size() <= 4) {
            std::vector<unsigned char> inline4 = e.data;
            inline4.resize(4, 0);
            file.insert(file.end(), inline4.begin(), inline4.end());
        } else {
            put32(file, extraOffset + static_cast<std::uint32_t>(extra.size()));
            extra.insert(extra.end(), e.data.begin(), e.data.end());
            if (extra.size() % 2 != 0) {
                extra.push_back(0);  // values start on a word boundary
            }
        }
    }
    put32(file, 0);  // no next IFD
    file.insert(file.end(), extra.begin(), extra.end());
    for (int r = 0; r < mosaic.rows; ++r) {
        const unsigned short* row = mosaic.ptr<unsigned short>(r);
        for (int c = 0; c < mosaic.cols; ++c) {
            put16(file, row[c]);
        }
    }
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(file.data()),
              static_cast<std::streamsize>(file.size()));
    if (!out) {
        throw Failure(Cause::Failed, "cannot write " + path);
    }
}

}  // namespace station
}  // namespace talonvireo
