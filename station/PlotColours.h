// The colours the station's pictures draw with: the Okabe-Ito palette, apart for every colour
// vision (BGR). Tangential edges are blue and sagittal ones vermilion in every picture.
#pragma once

#include <opencv2/core.hpp>

namespace talonvireo {
namespace station {
namespace palette {

inline const cv::Scalar kBlue(178, 114, 0);
inline const cv::Scalar kSkyBlue(233, 180, 86);
inline const cv::Scalar kVermilion(0, 94, 213);
inline const cv::Scalar kReddishPurple(167, 121, 204);
inline const cv::Scalar kBluishGreen(115, 158, 0);

inline const cv::Scalar kTangential = kBlue;
inline const cv::Scalar kSagittal = kVermilion;

}  // namespace palette
}  // namespace station
}  // namespace talonvireo
