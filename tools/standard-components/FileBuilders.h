#pragma once
// One builder per standard file.

#include "quartz/QuartzComposition.h"

#include <memory>

namespace standardcomponents {

// Patches the export copies: "Scaling Factor", "Renderer", "Position",
// "Timer", "Enabler", "Logic_1".
std::unique_ptr<QuartzComposition> makeRendererFile();

// Full-frame layers the export adds, each a patch named "Background".
std::unique_ptr<QuartzComposition> makeBackgroundFile();
std::unique_ptr<QuartzComposition> makeMovieBackgroundFile();
std::unique_ptr<QuartzComposition> makeFrameRateFile();

// Components: the root's first child renders the picture ("outputImage").
std::unique_ptr<QuartzComposition> makeTextFile();
std::unique_ptr<QuartzComposition> makeTextComponentFile();
std::unique_ptr<QuartzComposition> makeLowerThirdFile();
std::unique_ptr<QuartzComposition> makeTickerFile();
std::unique_ptr<QuartzComposition> makeClockFile();
std::unique_ptr<QuartzComposition> makeBoxFile();
std::unique_ptr<QuartzComposition> makeImageComponentFile();

// The toolbar's list (an array of entries).
plist::Value makeToolbarComponents();

}  // namespace standardcomponents
