#include "corvane/combine/cut_out_likeness.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/blank.h"

namespace corvane {

namespace {

/// Calls visit(r, s) for the pairs of a plane of which both samples are defined.
template <class Visit>
void ForEachPair(const CStlImage& cutOut, const CRect& part, const CStlImage& image, int x, int y, int plane,
                 Visit visit)
{
    const BlankTest cutOutIsBlank(cutOut);
    const BlankTest imageIsBlank(image);
    for (int row = static_cast<int>(part.top); row < part.bottom; ++row) {
        const float* const r = cutOut.GetImageAdr(0, row, plane, 1);
        const float* const s = image.GetImageAdr(0, y + row, plane, 1) + x;
        for (int i = static_cast<int>(part.left); i < part.right; ++i) {
            if (std::isfinite(r[i]) && std::isfinite(s[i]) && !cutOutIsBlank(r[i]) && !imageIsBlank(s[i])) {
                visit(static_cast<double>(r[i]), static_cast<double>(s[i]));
            }
        }
    }
}

/// Sums of products of deviations from the means.
struct Moments {
    double pairs = 0.0;
    double rr = 0.0;
    double ss = 0.0;
    double rs = 0.0;
};

/// Adds those of a plane; the means come first, since sums of squares of large samples would lose the deviations.
void AddPlane(const CStlImage& cutOut, const CRect& part, const CStlImage& image, int x, int y, int plane,
              Moments& moments)
{
    double pairs = 0.0;
    double r = 0.0;
    double s = 0.0;
    ForEachPair(cutOut, part, image, x, y, plane, [&](double ofCutOut, double ofImage) {
        ++pairs;
        r += ofCutOut;
        s += ofImage;
    });
    r /= pairs;
    s /= pairs;
    ForEachPair(cutOut, part, image, x, y, plane, [&](double ofCutOut, double ofImage) {
        moments.rr += (ofCutOut - r) * (ofCutOut - r);
        moments.ss += (ofImage - s) * (ofImage - s);
        moments.rs += (ofCutOut - r) * (ofImage - s);
    });
    moments.pairs += pairs;
}

} // namespace

CutOutLikeness CompareAt(const CStlImage& cutOut, const CRect& part, const CStlImage& image, int x, int y)
{
    Moments moments;
    for (int plane = 0; plane < cutOut.GetPlanes(); ++plane) {
        AddPlane(cutOut, part, image, x, y, plane, moments);
    }
    const double all = static_cast<double>(part.Width()) * part.Height() * cutOut.GetPlanes();
    const bool isComparable = 2.0 * moments.pairs >= all && moments.rr > 0.0 && moments.ss > 0.0;
    if (!isComparable) {
        return {std::numeric_limits<double>::quiet_NaN(), 0.0};
    }
    const double correlation = std::clamp(moments.rs / std::sqrt(moments.rr) / std::sqrt(moments.ss), -1.0, 1.0);
    const double left = std::max(1.0 - correlation * correlation, 0.0) * moments.ss;
    return {correlation, std::sqrt(left / moments.pairs)};
}

PeakOffset PeakAbout(const CStlImage& cutOut, const CStlImage& image, int x, int y)
{
    const CRect part(x == 0 ? 1 : 0, y == 0 ? 1 : 0,
                     cutOut.GetWidth() - (x + cutOut.GetWidth() == image.GetWidth() ? 1 : 0),
                     cutOut.GetHeight() - (y + cutOut.GetHeight() == image.GetHeight() ? 1 : 0));
    const auto at = [&](int dx, int dy) { return CompareAt(cutOut, part, image, x + dx, y + dy).correlation; };
    // The paraboloid is a x x + b x y + c y y + d x + e y + f.
    const double f = at(0, 0);
    const double left = at(-1, 0);
    const double right = at(1, 0);
    const double above = at(0, -1);
    const double below = at(0, 1);
    const double a = (left + right) / 2.0 - f;
    const double c = (above + below) / 2.0 - f;
    const double d = (right - left) / 2.0;
    const double e = (below - above) / 2.0;
    const double b = (at(-1, -1) + at(1, 1) - at(1, -1) - at(-1, 1)) / 4.0;
    const double determinant = 4.0 * a * c - b * b;
    PeakOffset peak{(b * e - 2.0 * c * d) / determinant, (b * d - 2.0 * a * e) / determinant};
    const bool isPeak = a < 0.0 && determinant > 0.0 && std::fabs(peak.x) <= 1.0 && std::fabs(peak.y) <= 1.0;
    if (!isPeak) {
        return {};
    }
    // No correlation exceeds 1, so neither does the way to a peak: where the place itself has 1, it is the peak.
    const double rise = (d * peak.x + e * peak.y) / 2.0;
    if (rise > 1.0 - f) {
        const double way = 1.0 - std::sqrt(1.0 - std::max(1.0 - f, 0.0) / rise);
        peak = {peak.x * way, peak.y * way};
    }
    return peak;
}

} // namespace corvane
