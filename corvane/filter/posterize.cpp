// Posterisation with smooth edges.

#include <algorithm>
#include <cmath>
#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/core/interpolation.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/pixel_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// Distance of the positions within a pixel. They are reached by adding it, roundings included.
constexpr double kThird = 0.333333;

/// Display values to steps and sums of nine steps back to display values. The factors are held in single precision.
struct Steps {
    double perStep;
    double perNinth;

    explicit Steps(int levels)
        : perStep(std::max(levels, 1) * static_cast<double>(0.003921569F)),
          perNinth(255.0 / std::max(levels, 1) * static_cast<double>(0.11111111F))
    {}

    double Of(double shown) const { return std::trunc(shown * perStep); }
};

/// A position between two rows, as the readers between samples take it: clamped into the image.
struct RowPosition {
    int index;
    double fraction;

    RowPosition(double y, int height)
    {
        const double inside = y >= height ? height - 1.0 : (y >= 0.0 ? y : 0.0);
        index = static_cast<int>(inside);
        fraction = inside - index;
    }
};

/// One plane of the source between two rows.
struct RowBetween {
    const float* above;
    const float* below;
    double fraction;
    DisplayScale scale;

    RowBetween(const CStlImage& source, const RowPosition& position, int plane)
        : above(source.GetImageAdr(0, position.index, plane, 1)),
          below(source.GetImageAdr(0, position.index + 1, plane, 1)), fraction(position.fraction), scale(source, plane)
    {}

    /// The display value at a position less than a pixel from column x, which has both neighbours. Calculated as the
    /// readers between samples do, since it is cut into steps. A whole position, at which they give the sample itself,
    /// differs only where a neighbour is not finite: then another of the nine positions is NaN in any case.
    double At(int x, double position) const
    {
        const bool isLeft = position < x;
        const double part = position - (isLeft ? x - 1.0 : x);
        const double topLeft = isLeft ? above[x - 1] : above[x];
        const double topRight = isLeft ? above[x] : above[x + 1];
        const double bottomLeft = isLeft ? below[x - 1] : below[x];
        const double bottomRight = isLeft ? below[x] : below[x + 1];
        return scale.To256(Bilinear(topLeft, topRight, bottomLeft, bottomRight, part, fraction));
    }
};

/// Adds up the steps of the three positions about each column.
template <class ShownAt>
void AddSteps(const Steps& steps, int begin, int end, double* __restrict sums, ShownAt shownAt)
{
    for (int x = begin; x < end; ++x) {
        const double first = x - kThird;
        const double second = first + kThird;
        const double third = second + kThird;
        sums[x] += steps.Of(shownAt(x, first)) + steps.Of(shownAt(x, second)) + steps.Of(shownAt(x, third));
    }
}

/// Sums of the steps at nine positions within each pixel of a row.
class StepSums {
public:
    StepSums(const CStlImage& source, const Steps& steps)
        : source_(source), steps_(steps), sums_(static_cast<std::size_t>(source.GetWidth()))
    {}

    /// Those of row y, from column 0; valid between `left` and `right`.
    const double* Row(int y, int left, int right)
    {
        std::fill(sums_.begin() + left, sums_.begin() + right, 0.0);
        double position = y - kThird;
        for (int i = 0; i < 3; ++i) {
            Add(position, left, right);
            position += kThird;
        }
        return sums_.data();
    }

private:
    bool IsColour() const { return source_.GetDimension() >= kColours; }

    void Add(double y, int left, int right)
    {
        double* const sums = sums_.data();
        const auto inner = [&](int begin, int end) {
            const RowPosition row(y, source_.GetHeight());
            const RowBetween first(source_, row, 0);
            if (!IsColour()) {
                return AddSteps(steps_, begin, end, sums, [=](int x, double at) { return first.At(x, at); });
            }
            const RowBetween second(source_, row, 1);
            const RowBetween third(source_, row, PlaneOf(source_, 2));
            AddSteps(steps_, begin, end, sums, [=](int x, double at) {
                return BrightnessOf(first.At(x, at), second.At(x, at), third.At(x, at));
            });
        };
        SplitColumns(left, right, source_.GetWidth(), 1, inner,
                     [&](int x) { AddSteps(steps_, x, x + 1, sums, [&](int, double at) { return Read(at, y); }); });
    }

    /// In the first and the last column, where the next sample in storage is not the neighbour.
    double Read(double x, double y) const
    {
        const auto shown = [&](int plane) { return source_.GetPixelGray256f(x, y, plane); };
        return IsColour() ? BrightnessOf(shown(0), shown(1), shown(PlaneOf(source_, 2))) : shown(0);
    }

    const CStlImage& source_;
    Steps steps_;
    std::vector<double> sums_;
};

void WriteRow(const double* sums, double perNinth, bool roundsFirst, DisplayScale to, int left, int right,
              float* __restrict out)
{
    for (int x = left; x < right; ++x) {
        const double shown = sums[x] * perNinth;
        out[x] = static_cast<float>(to.ToRaw(roundsFirst ? static_cast<float>(shown) : shown));
    }
}

} // namespace

void CImgFilter::AAPosterizationFilter(int levels, CStlImage* source, CRect* rect, int showProgress)
{
    AAPosterizationFilter(levels, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::AAPosterizationFilter(int levels, const CStlImage& source, const CRect* rect, const Run& run)
{
    const Steps steps(levels);
    const auto kernel = [&, stepSums = StepSums(source, steps)](const PlaneBands&, int y, int left, int right) mutable {
        const double* const sums = stepSums.Row(y, left, right);
        for (int plane = 0; plane < GetPlanes(); ++plane) {
            // Red and blue are written as 256f values, which are floats.
            const bool roundsFirst = GetDimension() >= kColours && plane != 1;
            WriteRow(sums, steps.perNinth, roundsFirst, DisplayScale(*this, plane), left, right,
                     GetImageAdr(0, y, plane));
        }
    };
    FilterPixels(*this, source, rect, run, IDS_COMPRESS_GRAY, 0, 1, kernel);
}
