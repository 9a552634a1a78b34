#include "catalogue/match.h"

#include <cmath>

#include "catalogue/numbers.h"
#include "catalogue/placement.h"
#include "catalogue/row_order.h"
#include "corvane/combine/matching.h"
#include "io/error.h"

namespace corvane::catalogue {
namespace {

/// The difference at an offset, of the kind by which it was found.
double Rms(const CImgMatching& searched, const CStlImage& reference, double x, double y)
{
    double gains[3] = {1.0, 1.0, 1.0};
    for (int plane = 0; plane < reference.GetPlanes(); ++plane) {
        gains[plane] = static_cast<double>(searched.GetAvrGrayRaw(plane)) / reference.GetAvrGrayRaw(plane);
    }
    return std::sqrt(searched.CalcValue(&reference, x, y, gains));
}

/// Without the rounding of the steps by which the search came there.
double Tenths(double v)
{
    return std::round(v * 10.0) / 10.0;
}

} // namespace

void CheckMatch(const MatchOptions& options)
{
    for (const double v : options.start.value_or(std::array{0.0, 0.0})) {
        CheckRange("--start", v, -kMaxShift, kMaxShift);
    }
    CheckRange("--range", options.range, 0.0, kMaxMatchRange);
}

Match RunMatch(io::Frame& reference, io::Frame& image, const MatchOptions& options, const Context& context)
{
    CheckMatch(options);
    CStlImage& small = reference.image;
    if (small.GetPlanes() != image.image.GetPlanes()) {
        throw io::Error(small.GetOrgFileName(), "has " + std::to_string(small.GetPlanes()) +
                                                    (small.GetPlanes() == 1 ? " plane" : " planes") +
                                                    "; the image has " + std::to_string(image.image.GetPlanes()));
    }
    BringToOrderOf(image, reference, context);
    const int middleX = (image.image.GetWidth() - small.GetWidth()) / 2;
    const int middleY = (image.image.GetHeight() - small.GetHeight()) / 2;
    Match match{options.start ? (*options.start)[0] : middleX, options.start ? (*options.start)[1] : middleY, 0.0};
    CImgMatching searched;
    searched.Swap(&image.image);
    const int isFound = searched.Do(&small, &match.x, &match.y, options.range, 1, context.showProgress);
    match.rms = isFound != 0 ? Rms(searched, small, match.x, match.y) : 0.0;
    match.x = Tenths(match.x);
    match.y = Tenths(match.y);
    image.image.Swap(&searched);
    if (isFound == 0) {
        throw io::Error(small.GetOrgFileName(), "overlaps the image nowhere in the range");
    }
    return match;
}

} // namespace corvane::catalogue
