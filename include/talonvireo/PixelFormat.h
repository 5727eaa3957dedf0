// Pixel-format codes taken by the region SFR functions.
//
// A code is the sum of one layout value and, for a Bayer mosaic, one phase value. The two
// fields are read independently: the layout field is `format & 0xFF0` and must equal exactly
// one of the layout values; the phase field is `format & 0x0F`. A mosaic is reduced to grey
// by OpenCV's Bayer-to-grey conversion before measuring; every other layout is measured as it
// stands. 16-bit samples are used as they are (no shift, no black level), so 10-, 12- and
// 14-bit data in 16-bit words all work.
#pragma once

namespace talonvireo {
namespace PixelFormat {

// Sample layouts (the `format & 0xFF0` field).
constexpr int Bayer8 = 0x010;    // 8-bit Bayer mosaic, 1 byte per pixel
constexpr int Bayer16 = 0x020;   // Bayer mosaic in 16-bit words, 2 bytes per pixel
constexpr int Bayer16B = 0x040;  // same as Bayer16
constexpr int Bayer16C = 0x080;  // same as Bayer16
constexpr int Grey8 = 0x100;     // 8-bit grey, 1 byte per pixel
constexpr int Grey16 = 0x200;    // 16-bit grey, 2 bytes per pixel
constexpr int Bgr8 = 0x400;      // 8-bit blue-green-red, 3 bytes per pixel
constexpr int Bgr16 = 0x800;     // 16-bit blue-green-red, 6 bytes per pixel

// Bayer phases (the `format & 0x0F` field), named by the first two samples of the first row.
constexpr int PhaseRG = 1;
constexpr int PhaseGR = 2;
constexpr int PhaseGB = 4;
constexpr int PhaseBG = 8;

constexpr int LayoutMask = 0xFF0;
constexpr int PhaseMask = 0x00F;

}  // namespace PixelFormat
}  // namespace talonvireo
