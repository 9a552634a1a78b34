#include "catalogue/star_shift.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "catalogue/display_levels.h"
#include "catalogue/numbers.h"
#include "corvane/combine/matching.h"
#include "corvane/core/blank.h"
#include "corvane/core/error.h"
#include "corvane/filter/filter.h"

namespace corvane::catalogue {
namespace {

constexpr double kLeastPeak = 2.0; // standard deviations of the sky; the smoothed sky itself hardly has 1.5
constexpr double kSkyLevel = 10.0; // in units of the peak, so that a star hardly changes the mean
constexpr int kSquare3 = 1;        // the 3 x 3 neighbourhood of CImgFilter
constexpr int kFineReach = 3;      // the fine passes look so far beyond the range [pixels]

/// A square of a plane; NaN where the frame has nothing.
CStlImage Square(const CStlImage& image, int plane, int left, int top, int size)
{
    const BlankTest isBlank(image);
    CStlImage square(-32, size, size, 1, 1.0, 0.0, 1);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const int column = left + x;
            const int row = top + y;
            const bool isInside = column >= 0 && column < image.GetWidth() && row >= 0 && row < image.GetHeight();
            const float v = image.GetPixelGrayRaw(column, row, plane);
            const bool isDefined = isInside && std::isfinite(v) && !isBlank(v);
            square.SetPixelGrayRaw(x, y, isDefined ? v : std::numeric_limits<float>::quiet_NaN(), 0);
        }
    }
    return square;
}

/// Applies value(v) to every sample.
template <class Value>
void Change(CStlImage& image, Value value)
{
    for (int y = 0; y < image.GetHeight(); ++y) {
        float* const row = image.GetImageAdr(0, y, 0);
        std::transform(row, row + image.GetWidth(), row, [&](float v) { return static_cast<float>(value(v)); });
    }
}

/// A square about a place, smoothed so that a search between samples is not drawn to whole pixels, on a scale of its
/// own: the sky, and what is undefined, at one level, the brightest 1 above it.
CImgMatching Cut(const io::Frame& frame, int plane, int centreX, int centreY, int size)
{
    CStlImage square = Square(frame.image, plane, centreX - size / 2, centreY - size / 2, size);
    const Sky sky = MeasureSky(square);
    Change(square, [&](double v) { return std::isnan(v) ? 0.0 : v - sky.mean; });
    CImgFilter smooth(square);
    smooth.MeanFilter(kSquare3, 1.0, &square, nullptr, 0);
    smooth.CalcMinMax();
    const double peak = smooth.GetMaxPixel(0);
    if (!(peak > kLeastPeak * sky.sigma)) {
        throw FileError(frame.image.GetOrgFileName(), "shows no star within " + std::to_string(size / 2) +
                                                          " pixels of " + std::to_string(centreX) + "," +
                                                          std::to_string(centreY));
    }
    Change(smooth, [&](double v) { return v / peak + kSkyLevel; });
    CImgMatching cut;
    cut.Swap(&smooth);
    return cut;
}

/// Without the rounding of the steps by which a search came there.
double Tenths(double v)
{
    return std::round(v * 10.0) / 10.0;
}

void CheckInside(const io::Frame& first, const StarSearch& search)
{
    const CStlImage& image = first.image;
    if (!(search.at[0] < image.GetWidth()) || !(search.at[1] < image.GetHeight())) {
        throw FileError(image.GetOrgFileName(),
                        "--at = " + NumbersText({search.at[0], search.at[1]}) + ": must lie within the image, of " +
                            std::to_string(image.GetWidth()) + " x " + std::to_string(image.GetHeight()) + " pixels");
    }
}

} // namespace

Fit FindShift(const io::Frame& first, int firstPlane, io::Frame& frame, int plane, const StarSearch& search,
              const Context& context)
{
    CheckInside(first, search);
    const int x = static_cast<int>(search.at[0]);
    const int y = static_cast<int>(search.at[1]);
    const int reach = search.range / 2;
    const int margin = reach + kFineReach;
    CImgMatching patch = Cut(first, firstPlane, x, y, search.size);
    CImgMatching window = Cut(frame, plane, x, y, search.size + 2 * margin);
    double matchX = margin; // of the patch in the window, since both have their middle on one place
    double matchY = margin;
    window.Do(&patch, &matchX, &matchY, search.range, 1, context.showProgress);
    const Fit fit{margin - Tenths(matchX), margin - Tenths(matchY), 0.0, 1};
    if (std::max(std::fabs(fit.dx), std::fabs(fit.dy)) >= reach) {
        throw FileError(frame.image.GetOrgFileName(),
                        "the star is not within --range = " + std::to_string(search.range) + " of its place in " +
                            first.image.GetOrgFileName() + ": the best match lies at the edge");
    }
    frame.image.SetStdCtr(x - fit.dx, y - fit.dy);
    return fit;
}

} // namespace corvane::catalogue
