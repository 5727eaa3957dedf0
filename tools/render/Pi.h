// The one value of pi the renderers and their truth share.
#pragma once

namespace talonvireo {
namespace render {

constexpr double kPi = 3.141592653589793;

}  // namespace render
}  // namespace talonvireo
