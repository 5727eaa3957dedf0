#include "render/DescriptionRenderSettings.h"

#include <cmath>
#include <stdexcept>
#include <string>

#include "render/Undistortion.h"

namespace talonvireo {
namespace render {

namespace {

void require(bool ok, const std::string& what) {
    if (!ok) {
        throw std::invalid_argument("render settings: " + what);
    }
}

bool finite(double v) {
    return std::isfinite(v);
}

}  // namespace

DescriptionRenderSettings settingsForFrame(int width, int height) {
    DescriptionRenderSettings s;
    s.width = width;
    s.height = height;
    s.placement = undistortedRegistration(width, height);
    return s;
}

void checkRenderSettings(const DescriptionRenderSettings& s) {
    require(s.width > 0, "width must be positive");
    require(s.height > 0, "height must be positive");
    require(s.sigmaCentre > 0.0 && finite(s.sigmaCentre), "sigmaCentre must be positive");
    require(s.sigmaCorner > 0.0 && finite(s.sigmaCorner), "sigmaCorner must be positive");
    require(s.bits == 8 || s.bits == 10 || s.bits == 14 || s.bits == 16,
            "bits must be 8, 10, 14 or 16");
    require(s.cornerLight > 0.0 && s.cornerLight <= 1.0, "cornerLight must be in (0, 1]");
    require(s.dark >= 0.0 && s.dark < s.light, "dark must be at least 0 and below light");
    require(s.light <= 1.0, "light must be at most 1");
    require(s.readNoise >= 0.0 && finite(s.readNoise), "readNoise must not be negative");
    require(s.shotNoise >= 0.0 && finite(s.shotNoise), "shotNoise must not be negative");
    require(s.gainRed > 0.0 && finite(s.gainRed), "gainRed must be positive");
    require(s.gainGreen > 0.0 && finite(s.gainGreen), "gainGreen must be positive");
    require(s.gainBlue > 0.0 && finite(s.gainBlue), "gainBlue must be positive");
    if (s.focus.on) {
        const FocusSettings& f = s.focus;
        require(finite(f.lensZ), "focus.lensZ must be finite");
        require(finite(f.bestFocusZ), "focus.bestFocusZ must be finite");
        require(finite(f.slopeX) && finite(f.slopeY), "focus.slopeX and slopeY must be finite");
        require(finite(f.curvature), "focus.curvature must be finite");
        require(finite(f.astigmatism), "focus.astigmatism must be finite");
        require(f.defocusGain >= 0.0 && finite(f.defocusGain),
                "focus.defocusGain must not be negative");
        require(f.pixelPitchUm > 0.0 && finite(f.pixelPitchUm),
                "focus.pixelPitchUm must be positive");
        // The finite parameters can still multiply past the doubles.
        require(std::isfinite(fieldBlur(s).largest()), "focus: the defocus overflows");
    }
    const ChartRegistration& p = s.placement;
    for (const double h : p.homography) {
        require(finite(h), "placement.homography must be finite");
    }
    require(p.normRadius > 0.0 && finite(p.normRadius), "placement.normRadius must be positive");
    require(finite(p.centreX) && finite(p.centreY), "placement centre must be finite");
    require(finite(p.k1) && finite(p.k2), "placement.k1 and k2 must be finite");
    require(distortionBounds(p, s.width, s.height).oneToOne,
            "placement.k1 / k2 fold the frame over (the distortion is not one-to-one there)");
    for (const ClutterDisc& d : s.clutter.discs) {
        require(d.diameter > 0.0 && finite(d.x) && finite(d.y),
                "clutter disc diameter must be positive");
        require(d.polarity == 1 || d.polarity == -1, "clutter disc polarity must be +1 or -1");
    }
    for (const ClutterText& t : s.clutter.texts) {
        require(t.height > 0.0 && finite(t.x) && finite(t.y) && finite(t.angleDeg),
                "clutter text height must be positive");
        require(t.polarity == 1 || t.polarity == -1, "clutter text polarity must be +1 or -1");
    }
    for (const ClutterSpot& spot : s.clutter.spots) {
        require(spot.radius > 0.0 && finite(spot.x) && finite(spot.y),
                "clutter spot radius must be positive");
        require(spot.peak >= 0.0 && finite(spot.peak), "clutter spot peak must not be negative");
    }
}

FieldBlur fieldBlur(const DescriptionRenderSettings& s) {
    return {FrameField::of(s.width, s.height), s.sigmaCentre, s.sigmaCorner,
            FocusField::of(s.focus, s.width, s.height)};
}

double fieldSigma(const DescriptionRenderSettings& s, double x, double y) {
    return fieldBlur(s).sigma(x, y);
}

}  // namespace render
}  // namespace talonvireo
