// Otsu's threshold over the darker part of a sample set: only the samples up to the bin at
// which the running count first exceeds `fraction` of them take part, so a ring that is
// mostly light background still splits its dark mark from the light.
#pragma once

#include <vector>

namespace RegularSFR {

// Grey level 0..255 that maximises the between-class score; the smallest wins a tie, and 0
// comes back when no level scores above 0 (no samples, or all in one bin).
int otsuThresholdBelowQuantile(std::vector<unsigned char> samples, float fraction);

}  // namespace RegularSFR
