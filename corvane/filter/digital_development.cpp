// Digital development: the response of film, which saturates where an area is bright, by division through a blurred
// image.

#include <algorithm>
#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/mean_rows.h"
#include "corvane/filter/pixel_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// The first and the last plane whose blur divides.
struct Selection {
    int first;
    int last;

    Selection(const CImage& source, const int* selector)
    {
        const int selected = selector == nullptr ? 0 : std::max(*selector, 0);
        const bool isAll = selected >= kColours && source.GetPlanes() >= kColours;
        first = isAll ? 0 : PlaneOf(source, selected);
        last = isAll ? kColours - 1 : first;
    }
};

/// The blurred rows that samples are divided by, in display units.
class Blur {
public:
    Blur(const CStlImage& source, Selection selection, double weight)
        : scale_{{source, 0}, {source, 1}, {source, 2}}, selection_(selection), weight_(weight),
          mean_(static_cast<std::size_t>(source.GetWidth())), shown_(mean_.size())
    {}

    /// The blur about the centre row, from column 0; valid between `left` and `right`.
    const double* Row(const PlaneBands& bands, int left, int right)
    {
        if (selection_.first == selection_.last) {
            const DisplayScale scale = scale_[selection_.first];
            Means(bands[selection_.first], left, right);
            Convert(left, right, [=](double, float mean) { return static_cast<float>(scale.To256(mean)); });
            return shown_.data();
        }
        std::fill(shown_.begin() + left, shown_.begin() + right, 0.0);
        for (int plane = selection_.first; plane <= selection_.last; ++plane) {
            Means(bands[plane], left, right);
            Convert(left, right,
                    [=, scale = scale_[plane]](double sum, float mean) { return sum + scale.To256(mean); });
        }
        Convert(left, right, [](double sum, float) { return sum * 0.3333333333333333; });
        return shown_.data();
    }

private:
    void Means(const Band& band, int left, int right)
    {
        MapSums(band, kSquare3, left, right, mean_.data(),
                [mean = WeightedMean(kSquare3), weight = weight_](double c, double s) { return mean(c, s, weight); });
    }

    template <class Function>
    void Convert(int left, int right, Function function)
    {
        const float* const mean = mean_.data();
        double* const shown = shown_.data();
        for (int x = left; x < right; ++x) {
            shown[x] = function(shown[x], mean[x]);
        }
    }

    DisplayScale scale_[kColours];
    Selection selection_;
    double weight_;
    std::vector<float> mean_;
    std::vector<double> shown_;
};

/// What a sample becomes. In the order written, so that a blur and an offset that cancel do so in the same place.
struct Development {
    double offset; ///< in display units
    double gain;   ///< what equals the mean stays

    void Row(const float* in, const double* blur, DisplayScale from, DisplayScale to, int count,
             float* __restrict out) const
    {
        for (int x = 0; x < count; ++x) {
            const double s = from.To256(in[x]);
            const double developed = s / (blur[x] + offset) * gain;
            out[x] = static_cast<float>(to.ToRaw(s > 0.0 ? developed : s));
        }
    }
};

} // namespace

void CImgFilter::DigitalDvlp(double offset, double weight, CStlImage* source, int* planeSelector, CRect* rect,
                             int showProgress)
{
    DigitalDvlp(offset, weight, *source, planeSelector, rect, WindowRun(*this, showProgress));
}

void CImgFilter::DigitalDvlp(double offset, double weight, const CStlImage& source, const int* planeSelector,
                             const CRect* rect, const Run& run)
{
    const double a = To256(offset, 0);
    const Development development{a, To256(static_cast<double>(source.GetAvrGrayRaw(0)), 0) + a};
    const auto kernel = [&, blur = Blur(source, Selection(source, planeSelector), weight)](
                            const PlaneBands& bands, int y, int left, int right) mutable {
        const double* const blurred = blur.Row(bands, left, right) + left;
        for (int plane = 0; plane < GetPlanes(); ++plane) {
            development.Row(bands[plane].Row(0) + left, blurred, DisplayScale(source, PlaneOf(source, plane)),
                            DisplayScale(*this, plane), right - left, GetImageAdr(left, y, plane));
        }
    };
    FilterPixels(*this, source, rect, run, IDS_DEVELOPMENT, 1, GetPlanes(), kernel);
}
