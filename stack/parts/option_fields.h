#pragma once

#include <type_traits>

#include "stack/options.h"
#include "stack/parts/json_values.h"

/// @name The fields of options, by the names that they have in JSON
/// @{
namespace corvane::stack {

template <Either<CalibrationSet> T, class Visit>
void ForEachField(T& frames, Visit visit)
{
    visit("bias", frames.bias);
    visit("darks", frames.darks);
    visit("flats", frames.flats);
    visit("flat_darks", frames.flatDarks);
    visit("flats_are_calibrated", frames.flatsAreCalibrated);
}

template <Either<RejectOptions> T, class Visit>
void ForEachField(T& reject, Visit visit)
{
    visit("method", reject.method);
    visit("low", reject.low);
    visit("high", reject.high);
    visit("iterations", reject.iterations);
    visit("grow", reject.grow);
}

template <Either<PixelPlace> T, class Visit>
void ForEachField(T& place, Visit visit)
{
    visit("x", place.x);
    visit("y", place.y);
}

template <Either<FollowedPlace> T, class Visit>
void ForEachField(T& place, Visit visit)
{
    visit("x", place.x);
    visit("y", place.y);
    visit("light", place.light);
}

template <Either<Options> T, class Visit>
void ForEachField(T& options, Visit visit)
{
    using Frames = std::conditional_t<std::is_const_v<T>, const CalibrationSet, CalibrationSet>;
    visit("lights", options.lights);
    visit("frames", static_cast<Frames&>(options));
    visit("sets", options.sets);
    visit("set_of_light", options.setOfLight);
    visit("method", options.method);
    visit("combine", options.combine);
    visit("reject", options.reject);
    visit("filter", options.filter);
    visit("allow_mixed", options.allowMixed);
    visit("masters_folder", options.mastersFolder);
    visit("align", options.align);
    visit("reference_file", options.referenceFile);
    visit("aligns_scale", options.alignsScale);
    visit("onto", options.onto);
    visit("follow", options.follow);
    visit("wants_both", options.wantsBoth);
    visit("canvas", options.canvas);
    visit("registered", options.registered);
    visit("transform", options.transform);
    visit("reference", options.reference);
    visit("size", options.size);
    visit("search", options.search);
    visit("reject_fwhm", options.rejectFwhm);
    visit("reject_stars", options.rejectStars);
    visit("reject_background", options.rejectBackground);
    visit("mosaic", options.mosaic);
    visit("pattern", options.pattern);
    visit("demosaic", options.demosaic);
    visit("normalise", options.normalise);
    visit("weight", options.weight);
    visit("coverage", options.coverage);
    visit("interpolation", options.interpolation);
    visit("drizzle", options.drizzle);
    visit("drop", options.drop);
    visit("drop_shape", options.dropShape);
    visit("wants_weights", options.wantsWeights);
    visit("cosmetic", options.cosmetic);
    visit("cosmic", options.cosmic);
    visit("wants_coverage", options.wantsCoverage);
    visit("wants_rejected", options.wantsRejected);
    visit("wants_noise", options.wantsNoise);
    visit("wants_report", options.wantsReport);
    visit("pedestal", options.pedestal);
}

} // namespace corvane::stack
/// @}
