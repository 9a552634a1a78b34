#include "corvane/combine/mosic.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "corvane/combine/aligned_pixels.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// How two images share the pixels of a canvas.
struct Rule {
    int mode;
    Channels channels;
    Space space;
    bool averages;
    std::array<double, 3> key; ///< on the scale of the space
    double tolerance;
};

Rule MakeRule(const CStlImage& canvas, int mode, const float* key, Space space, bool averages)
{
    Rule rule{mode, ChannelsOf(canvas), space, averages, {}, canvas.GetLevelRange(0) * 0.00390625};
    const int planes = rule.channels == Channels::kGrey ? 1 : std::min(canvas.GetPlanes(), 3);
    for (int plane = 0; key != nullptr && plane < planes; ++plane) {
        const double v = key[plane];
        rule.key[plane] = space == Space::kDisplay ? DisplayScale(canvas, plane).To256(v) : v;
    }
    if (space == Space::kDisplay) {
        rule.tolerance = 1.0;
    }
    return rule;
}

/// What stands for samples outside of an image.
double Beyond(const float* outside, Space space)
{
    return space == Space::kDisplay && outside != nullptr ? outside[0] : 0.0;
}

/// A row of an image aligned onto the canvas; a grey one is its channel three times.
struct Row {
    Row(const AlignedPixels& pixels, int left)
        : red(pixels.Channel(0) + left), green(pixels.Channel(1) + left), blue(pixels.Channel(2) + left),
          inside(pixels.Inside() + left)
    {}

    double Brightness(int x) const { return BrightnessOf(red[x], green[x], blue[x]); }

    const double* red;
    const double* green;
    const double* blue;
    const int* inside;
};

/// Calls visit with the function that tells whether the second image, b, shows at x where both cover a grey canvas.
template <class Visit>
void VisitGrey(const Rule& rule, Visit visit)
{
    switch (rule.mode) {
    case kMosaicSecondOver:
        return visit([](const Row&, const Row&, int) { return true; });
    case kMosaicKey:
        return visit([key = rule.key[0], tolerance = rule.tolerance](const Row&, const Row& b, int x) {
            return !(std::fabs(key - b.red[x]) < tolerance);
        });
    case kMosaicLighter:
        return visit([](const Row& a, const Row& b, int x) { return b.red[x] > a.red[x]; });
    case kMosaicDarker:
        return visit([](const Row& a, const Row& b, int x) { return b.red[x] < a.red[x]; });
    default:
        return visit([](const Row&, const Row&, int) { return false; });
    }
}

/// The same for a colour canvas.
template <class Visit>
void VisitColour(const Rule& rule, Visit visit)
{
    switch (rule.mode) {
    case kMosaicKey:
        return visit([key = rule.key, tolerance = rule.tolerance](const Row&, const Row& b, int x) {
            const double off =
                std::fabs(key[0] - b.red[x]) + std::fabs(key[1] - b.green[x]) + std::fabs(key[2] - b.blue[x]);
            return !(off < tolerance);
        });
    case kMosaicLighter:
        return visit([](const Row& a, const Row& b, int x) { return b.Brightness(x) >= a.Brightness(x); });
    case kMosaicDarker:
        return visit([](const Row& a, const Row& b, int x) { return b.Brightness(x) <= a.Brightness(x); });
    default:
        return VisitGrey(rule, visit);
    }
}

/// Marks the pixels where b shows: where it is alone, and where both are and the rule says so.
template <class Shows>
void Choose(Shows shows, const Row& a, const Row& b, int count, int* chosen)
{
    for (int x = 0; x < count; ++x) {
        const bool isChosen = shows(a, b, x);
        chosen[x] = b.inside[x] & ((1 - a.inside[x]) | (isChosen ? 1 : 0));
    }
}

/// Joins two images on a canvas, row by row.
class Mosaic {
public:
    Mosaic(CStlImage& canvas, const AlignedPixels& first, const AlignedPixels& second, const Rule& rule,
           const CRect& area)
        : canvas_(canvas), first_(first), second_(second), rule_(rule), left_(static_cast<int>(area.left)),
          count_(std::max(static_cast<int>(area.right) - left_, 0)), chosen_(static_cast<std::size_t>(count_))
    {}

    void WriteRow(int y, double outside)
    {
        first_.Sample(y, outside);
        second_.Sample(y, outside);
        const Row a(first_, left_);
        const Row b(second_, left_);
        const auto choose = [&](auto shows) { Choose(shows, a, b, count_, chosen_.data()); };
        rule_.channels == Channels::kGrey ? VisitGrey(rule_, choose) : VisitColour(rule_, choose);
        for (int plane = 0; plane < std::min(canvas_.GetPlanes(), 3); ++plane) {
            WritePlane(plane, first_.Channel(plane) + left_, second_.Channel(plane) + left_,
                       canvas_.GetImageAdr(left_, y, plane));
        }
    }

private:
    void WritePlane(int plane, const double* a, const double* b, float* canvas) const
    {
        const DisplayScale scale(canvas_, plane);
        const bool isDisplay = rule_.space == Space::kDisplay;
        for (int x = 0; x < count_; ++x) {
            const double shown = chosen_[x] != 0 ? b[x] : a[x];
            const double v = rule_.averages ? (a[x] + b[x]) * 0.5 : shown;
            const double display = scale.ToRaw(v);
            canvas[x] = static_cast<float>(isDisplay ? display : v);
        }
    }

    CStlImage& canvas_;
    AlignedPixels first_;
    AlignedPixels second_;
    Rule rule_;
    int left_;
    int count_;
    std::vector<int> chosen_; ///< 1 where the second image shows
};

} // namespace

void CImgMosic::Do(CStlImage* first, int ox, int oy, CStlImage* second, double dx, double dy, double angle, int mode,
                   float* key, float* outside, int displaySpace, int average, CRect* rect, int showProgress)
{
    Do(*first, ox, oy, *second, dx, dy, angle, mode, key, outside, displaySpace, average, rect,
       WindowRun(*this, showProgress));
}

void CImgMosic::Do(const CStlImage& first, int ox, int oy, const CStlImage& second, double dx, double dy, double angle,
                   int mode, const float* key, const float* outside, int displaySpace, int average, const CRect* rect,
                   const Run& run)
{
    const CRect area = WorkingArea(*this, rect);
    const Space space = displaySpace != 0 ? Space::kDisplay : Space::kRaw;
    const Rule rule = MakeRule(*this, mode, key, space, average != 0);
    const int columns = std::max({static_cast<int>(area.left), static_cast<int>(area.right), 0});
    const Alignment shift(ox, oy, 0.0, 1.0, 1.0, first.GetStdCtr());
    const Alignment turn = Alignment::Turned(ox + dx, oy + dy, angle, second.GetStdCtr());
    const AlignedPixels firstPixels(first, shift, rule.channels, space, columns);
    const AlignedPixels secondPixels(second, turn, rule.channels, space, columns);
    const double beyond = Beyond(outside, space);
    Mosaic mosaic(*this, firstPixels, secondPixels, rule, area);
    WalkLines(*this, {&first, &second}, area, run, IDS_MOSAIC,
              [mosaic, beyond](int y) mutable { mosaic.WriteRow(y, beyond); });
}
