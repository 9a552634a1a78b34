// Isophotes.

#include <algorithm>
#include <cmath>
#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/pixel_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

constexpr double kWhite = 255.0;

/// The levels of brightness that lines are drawn at.
class Isophotes {
public:
    explicit Isophotes(int levels) : levels_(std::max(levels, 1)), perStep_((levels_ + 1.0) / kWhite) {}

    /// The number of levels that a brightness reaches; NaN reaches none.
    double Reached(double bright) const
    {
        const double steps = bright * perStep_;
        return std::floor(steps > 0.0 ? std::min(steps, levels_) : 0.0);
    }

private:
    double levels_;
    double perStep_;
};

/// What a line and the pixels beside it are drawn with.
struct Ink {
    double black;
    double white;
    bool isOverlay;

    Ink(const CStlImage& image, int plane, bool overlay)
        : black(image.GetLevelMin(plane)), white(image.GetLevelMax(plane)), isOverlay(overlay)
    {}

    double operator()(bool isLine, double bright, double sample) const
    {
        const double line = (isOverlay & (bright >= kWhite / 2)) ? black : white;
        const double beside = isOverlay ? sample : black;
        return isLine ? line : beside;
    }
};

/// The lines in one row.
class LineRow {
public:
    LineRow(const CStlImage& source, int levels)
        : brightness_(source), isophotes_(levels), width_(source.GetWidth()), bright_(Columns()), up_(Columns()),
          middle_(Columns()), down_(Columns()), fewest_(Columns())
    {}

    void MoveTo(const PlaneBands& bands, int left, int right)
    {
        const int first = std::max(left - 1, 0);
        const int last = std::min(right + 1, width_);
        Reach(bands, -1, first, last, up_);
        Reach(bands, 1, first, last, down_);
        Reach(bands, 0, first, last, middle_);
        FindFewest(left, right);
    }

    /// Draws what belongs between `left` and `right`, over the samples of `in`.
    void Draw(const Ink& ink, const float* in, int left, int right, float* __restrict out) const
    {
        const double* const bright = bright_.data();
        const double* const middle = middle_.data();
        const double* const fewest = fewest_.data();
        for (int x = left; x < right; ++x) {
            out[x] = static_cast<float>(ink(middle[x] > fewest[x], bright[x], in[x]));
        }
    }

private:
    std::size_t Columns() const { return static_cast<std::size_t>(width_); }

    /// Counts the levels that the row dy below the centre reaches; leaves its brightness.
    void Reach(const PlaneBands& bands, int dy, int left, int right, std::vector<double>& reached)
    {
        brightness_.Row(bands, dy, left, right, bright_.data());
        std::transform(bright_.begin() + left, bright_.begin() + right, reached.begin() + left,
                       [lines = isophotes_](double bright) { return lines.Reached(bright); });
    }

    /// The fewest levels that one of the four neighbours reaches.
    void FindFewest(int left, int right)
    {
        const auto fewest = [up = up_.data(), middle = middle_.data(), down = down_.data()](int x, int before,
                                                                                            int after) {
            return std::min(std::min(up[x], down[x]), std::min(middle[before], middle[after]));
        };
        const auto inner = [=, out = fewest_.data()](int begin, int end) {
            for (int x = begin; x < end; ++x) {
                out[x] = fewest(x, x - 1, x + 1);
            }
        };
        SplitColumns(left, right, width_, 1, inner, [&](int x) {
            fewest_[static_cast<std::size_t>(x)] =
                fewest(x, x + MirrorOffset(x, -1, width_), x + MirrorOffset(x, 1, width_));
        });
    }

    Brightness brightness_;
    Isophotes isophotes_;
    int width_;
    std::vector<double> bright_;
    std::vector<double> up_, middle_, down_; ///< levels that the rows reach
    std::vector<double> fewest_;
};

} // namespace

void CImgFilter::ContourFilter(int levels, int overlay, CStlImage* source, CRect* rect, int showProgress)
{
    ContourFilter(levels, overlay, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::ContourFilter(int levels, int overlay, const CStlImage& source, const CRect* rect, const Run& run)
{
    const auto kernel = [&, lines = LineRow(source, levels)](const PlaneBands& bands, int y, int left,
                                                             int right) mutable {
        lines.MoveTo(bands, left, right);
        for (int plane = 0; plane < GetPlanes(); ++plane) {
            lines.Draw(Ink(*this, plane, overlay != 0), bands[plane].Row(0), left, right, GetImageAdr(0, y, plane));
        }
    };
    FilterPixels(*this, source, rect, run, IDS_EDGE_DEFINE, 1, 1, kernel);
}
