// The library's own demosaic: Malvar-He-Cutler 5 x 5 interpolation of an 8- or 16-bit Bayer
// mosaic to RGB in four OpenMP row-parallel passes (one per site of the 2 x 2 cell), then
// OpenCV's RGB-to-grey reduction.
#pragma once

namespace talonvireo {
namespace convert {

// 1 when `format` has any of 0x010, 0x100, 0x400; else 2 when it has any of 0x020, 0x040,
// 0x080, 0x200, 0x800; else 1.
int bytesPerMosaicSample(int format);

// Row of the routine selection table for a Bayer-phase field: 8 (BG) -> 0, 4 (GB) -> 1,
// 1 (RG) -> 2, 2 (GR) -> 3. Any other value throws a default cv::Exception.
int phaseIndex(int phase);

// Routine (0 at blue, 1 at green in a blue row, 2 at green in a red row, 3 at red) for a
// phase index and a cell position (0 even row/even column, 1 even/odd, 2 odd/even, 3 odd/odd).
int routineFor(int phaseIdx, int position);

// Demosaics `mosaic` (height rows of width samples, packed; 8- or 16-bit by the format) into
// `rgb` (height x width pixels of three samples of the same depth: red, green, blue).
// Accepts layout fields (format & 0xF0) 0x10, 0x20 and 0x40 with a non-zero phase field;
// returns -1, writing nothing, for any other code, a null buffer, or a width or height of 0
// or less; throws cv::Exception for a phase field other than 1, 2, 4, 8. Returns 0 otherwise.
// Borders are mirrored without repeating the edge sample (reflect-101, two samples deep);
// every kernel result below 0 becomes 0 and above the sample maximum becomes the maximum.
int demosaicBordered(const void* mosaic, int width, int height, int format, void* rgb);

// demosaicBordered into a temporary RGB image, then OpenCV's RGB-to-grey conversion into
// `grey` (height x width samples of the mosaic's depth, packed). Same refusals.
int demosaicToGrey(const void* mosaic, int width, int height, int format, void* grey);

}  // namespace convert
}  // namespace talonvireo
