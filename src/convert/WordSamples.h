// Conversions between 10- or 12-bit samples held in 16-bit words (low byte first in memory)
// and bytes, one sample per pixel, rows packed. Each returns false, writing nothing, for a
// null buffer or a width or height of 0 or less.
//
// The byte formulas keep the low eight bits of the shifted sample, so a word wider than its
// nominal depth wraps instead of saturating.
#pragma once

namespace talonvireo {
namespace convert {

// 10-bit words to bytes: (high byte x 64 + low byte >> 2) mod 256, i.e. (word >> 2) mod 256.
bool raw10ToBytes(const unsigned short* words, unsigned char* bytes, int width, int height);

// 12-bit words to bytes: (high byte x 16 + low byte >> 4) mod 256, i.e. (word >> 4) mod 256.
bool raw12ToBytes(const unsigned short* words, unsigned char* bytes, int width, int height);

// 10-bit words to two bytes per sample at the word's own byte positions (2 * width * height
// bytes): the first byte as raw10ToBytes, the second the high byte >> 2 (0 for a true 10-bit
// sample, kept as computed otherwise).
bool raw10ToBytePairs(const unsigned short* words, unsigned char* pairs, int width, int height);

// Bytes to 10-bit words: low byte = value x 4 mod 256, high byte = value >> 6, i.e. value << 2.
bool bytesToRaw10(const unsigned char* bytes, unsigned short* words, int width, int height);

}  // namespace convert
}  // namespace talonvireo
