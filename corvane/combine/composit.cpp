#include "corvane/combine/composit.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "corvane/combine/aligned_pixels.h"
#include "corvane/combine/saturation.h"
#include "corvane/core/blank.h"
#include "corvane/core/turn.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// How the values of a pixel are combined.
struct Recipe {
    int mode;
    double ratio;
    Space space;
    Channels channels;
    bool clampsNegative;
    double outside;   ///< what stands for the overlay outside of it
    double undefined; ///< the result's blank value
};

template <class Visit>
void VisitProduct(const Recipe& recipe, Visit visit)
{
    if (recipe.space == Space::kRaw) {
        visit([](double a, double b) { return a * b; });
    } else if (recipe.channels == Channels::kGrey) {
        visit([](double a, double b) { return b <= 0.0 ? 0.0 : a * (std::min(b, 255.0) * kPer255); });
    } else {
        visit([](double a, double b) { return a * ((b < 0.0 ? 0.0 : std::min(b, 255.0)) * kPer255); });
    }
}

template <class Visit>
void VisitQuotient(const Recipe& recipe, Visit visit)
{
    const double undefined = recipe.undefined;
    if (recipe.space == Space::kDisplay && recipe.channels == Channels::kGrey) {
        visit([=](double a, double b) {
            const double quotient = a / ((b <= 0.001 ? 0.001 : std::min(b, 255.0)) * kPer255);
            return b == 0.0 ? undefined : quotient;
        });
    } else {
        visit([=](double a, double b) {
            const double quotient = a / b;
            return b == 0.0 ? undefined : quotient;
        });
    }
}

template <class Visit>
void VisitDifference(const Recipe& recipe, Visit visit)
{
    if (recipe.clampsNegative && recipe.channels == Channels::kColour) {
        visit([](double a, double b) { return a - b < 0.0 ? 0.0 : a - b; });
    } else {
        visit([](double a, double b) { return a - b; });
    }
}

/// Calls visit with the function that combines a base value a and an overlay value b, chosen once for many of them.
template <class Visit>
void VisitFunction(const Recipe& recipe, Visit visit)
{
    switch (recipe.mode) {
    case kCompositeSum:
        return visit([](double a, double b) { return a + b; });
    case kCompositeMean:
        return visit([](double a, double b) { return (a + b) * 0.5; });
    case kCompositeBlend:
        return visit([ratio = recipe.ratio](double a, double b) { return (1.0 - ratio) * a + ratio * b; });
    case kCompositeDifference:
        return VisitDifference(recipe, visit);
    case kCompositeProduct:
        return VisitProduct(recipe, visit);
    case kCompositeQuotient:
        return VisitQuotient(recipe, visit);
    case kCompositeAbsDifference:
        return visit([](double a, double b) { return std::fabs(a - b); });
    case kCompositeMaximum:
        return visit([](double a, double b) { return a <= b ? b : a; });
    case kCompositeMinimum:
        return visit([](double a, double b) { return a >= b ? b : a; });
    default:
        return visit([](double a, double) { return a; });
    }
}

/// Raw space, in the form of a DisplayScale.
struct RawScale {
    double To256(double v) const { return v; }
    double ToRaw(double v) const { return v; }
};

/// One plane of a row: base samples and overlay values combined, or `blank` where a pixel is not valid.
template <class Scale, class Function>
void CombineRow(const Scale& from, const Scale& to, Function combine, const float* base, const double* overlay,
                const int* valid, float blank, int count, float* result)
{
    for (int x = 0; x < count; ++x) {
        const double v = to.ToRaw(combine(from.To256(base[x]), overlay[x]));
        result[x] = valid[x] != 0 ? static_cast<float>(v) : blank;
    }
}

/// Keeps the marks of those pixels that are blank.
template <class T>
void KeepBlank(const BlankTest& isBlank, const T* values, int count, int* marks)
{
    for (int x = 0; x < count; ++x) {
        marks[x] &= isBlank(values[x]) ? 1 : 0;
    }
}

/// The blanks of base and overlay, and which pixels they leave to be combined.
class Blanks {
public:
    Blanks(const CStlImage& base, const CStlImage& overlay)
        : base_(base), overlay_(overlay), areUsed_(base.IsBlankUsed() != 0 || overlay.IsBlankUsed() != 0)
    {}

    /// 1 for pixels that have a value, 0 for blank ones: `count` of them from column `left` on, given the base's rows
    /// from there on, plane by plane.
    const int* Valid(const std::vector<const float*>& base, const AlignedPixels& overlay, int left, int count)
    {
        if (!areUsed_) {
            return overlay.Inside() + left;
        }
        ofBase_.assign(static_cast<std::size_t>(count), 1);
        ofOverlay_.assign(static_cast<std::size_t>(count), 1);
        for (int plane = 0; plane < static_cast<int>(base.size()); ++plane) {
            KeepBlank(base_, base[plane], count, ofBase_.data());
            KeepBlank(overlay_, overlay.Channel(plane) + left, count, ofOverlay_.data());
        }
        std::transform(ofBase_.begin(), ofBase_.end(), ofOverlay_.begin(), ofBase_.begin(),
                       [](int a, int b) { return 1 - (a | b); });
        return ofBase_.data();
    }

private:
    BlankTest base_;
    BlankTest overlay_;
    bool areUsed_;
    std::vector<int> ofBase_;
    std::vector<int> ofOverlay_;
};

/// Writes rows of one composite.
class Composite {
public:
    Composite(CStlImage& result, const CStlImage& base, const CStlImage& overlay, const Alignment& alignment,
              const Recipe& recipe, const Blanks& blanks, const CRect& area)
        : result_(result), base_(base), recipe_(recipe), blanks_(blanks), left_(static_cast<int>(area.left)),
          count_(std::min(static_cast<int>(area.right), base.GetWidth()) - left_),
          overlay_(overlay, alignment, recipe.channels, recipe.space, std::max(left_ + count_, 0))
    {}

    void Row(int y)
    {
        if (count_ < 1 || base_.GetHeight() < 1 || base_.GetPlanes() < 1) {
            return;
        }
        std::vector<const float*> base(recipe_.channels == Channels::kGrey ? 1 : 3);
        for (int plane = 0; plane < static_cast<int>(base.size()); ++plane) {
            base[plane] = base_.GetImageAdr(left_, y, std::min(plane, base_.GetPlanes() - 1), 1);
        }
        overlay_.Sample(y, recipe_.outside);
        const int* const valid = blanks_.Valid(base, overlay_, left_, count_);
        for (int plane = 0; plane < std::min(result_.GetPlanes(), 3); ++plane) {
            float* const result = result_.GetImageAdr(left_, y, plane);
            VisitFunction(recipe_, [&](auto function) { Plane(plane, function, base[plane], valid, result); });
        }
    }

private:
    template <class Function>
    void Plane(int plane, Function function, const float* base, const int* valid, float* result) const
    {
        const double* const overlay = overlay_.Channel(plane) + left_;
        if (recipe_.space == Space::kRaw) {
            const auto blank = static_cast<float>(recipe_.undefined);
            CombineRow(RawScale(), RawScale(), function, base, overlay, valid, blank, count_, result);
        } else {
            const DisplayScale from(base_, std::min(plane, base_.GetPlanes() - 1));
            const DisplayScale to(result_, plane);
            const auto blank = static_cast<float>(to.ToRaw(0.0));
            CombineRow(from, to, function, base, overlay, valid, blank, count_, result);
        }
    }

    CStlImage& result_;
    const CStlImage& base_;
    Recipe recipe_;
    Blanks blanks_;
    int left_;
    int count_;
    AlignedPixels overlay_;
};

/// Gives the result the blank value that pixels of this composite need, if any.
void SettleBlanks(CStlImage& result, const CStlImage& base, const CStlImage& overlay, bool isMoved)
{
    if (base.IsBlankUsed() == 0 && overlay.IsBlankUsed() == 0 && !isMoved) {
        return;
    }
    const bool isOverlays = base.IsBlankUsed() == 0 && overlay.IsBlankUsed() != 0;
    result.SetBlank(isOverlays ? overlay.GetBlank() : static_cast<int>(UndefinedValue(base)));
    result.SetBlankUsed(1);
}

} // namespace

void CImgComposit::Do(CStlImage* base, CStlImage* overlay, double dx, double dy, double angle, int mode, double ratio,
                      int displaySpace, int clampNegative, double fraction, int radius, CRect* rect, int showProgress,
                      int textId)
{
    Do(*base, *overlay, dx, dy, angle, mode, ratio, displaySpace, clampNegative, fraction, radius, rect,
       WindowRun(*this, showProgress), textId);
}

void CImgComposit::Do(const CStlImage& base, const CStlImage& overlay, double dx, double dy, double angle, int mode,
                      double ratio, int displaySpace, int clampNegative, double fraction, int radius, const CRect* rect,
                      const Run& run, int textId)
{
    if (mode == kCompositeDesaturate) {
        Desaturate(base, overlay, dx, dy, angle, ratio, displaySpace, fraction, radius, rect, run, textId);
        return;
    }
    const bool isKnown = mode >= kCompositeSum && mode <= kCompositeDesaturate;
    const Space space = displaySpace != 0 || !isKnown ? Space::kDisplay : Space::kRaw;
    const Blanks blanks(base, overlay); // before a base that is this image is given a blank value
    SettleBlanks(*this, base, overlay, dx != 0.0 || dy != 0.0 || angle != 0.0);
    const double undefined = GetBlank();
    const double beyond = space == Space::kDisplay ? GetOutsideValue(mode) : 0.0;
    const double outside = overlay.IsBlankUsed() != 0 ? undefined : beyond;
    const Recipe recipe{mode, ratio, space, ChannelsOf(*this), clampNegative != 0, outside, undefined};
    const CRect area = WorkingArea(*this, rect);
    const Alignment alignment = Alignment::Turned(dx, dy, angle, overlay.GetStdCtr());
    Composite composite(*this, base, overlay, alignment, recipe, blanks, area);
    WalkLines(*this, {&base, &overlay}, area, run, textId == -1 ? IDS_COMPOSITE : textId,
              [composite](int y) mutable { composite.Row(y); });
}

void CImgComposit::Do(CStlImage* base, CStlImage* overlay, double dx, double dy, double angle, int mode,
                      int displaySpace)
{
    Do(base, overlay, dx, dy, angle, mode, 0.5, displaySpace, 0, 0.95, 0, nullptr, 0, -1);
}

void CImgComposit::Abr(CStlImage* base, CStlImage* overlay, double dx, double dy, double angle, int /*mode*/,
                       double ratio, int displaySpace, int /*clampNegative*/, double fraction, int radius, CRect* rect,
                       int showProgress, int textId)
{
    Desaturate(*base, *overlay, dx, dy, angle, ratio, displaySpace, fraction, radius, rect,
               WindowRun(*this, showProgress), textId);
}

void CImgComposit::Desaturate(const CStlImage& base, const CStlImage& overlay, double dx, double dy, double angle,
                              double ratio, int displaySpace, double fraction, int radius, const CRect* rect,
                              const Run& run, int textId)
{
    const CRect area = WorkingArea(*this, rect);
    const double sine = Sine(angle * kDegree);
    const Alignment alignment(dx, dy, sine, std::sqrt(1.0 - sine * sine), 1.0, overlay.GetStdCtr());
    const Space space = displaySpace != 0 ? Space::kDisplay : Space::kRaw;
    Stage stage(run, textId == -1 ? IDS_COMPOSITE : textId, static_cast<int>(area.bottom - area.top));
    for (int plane = 0; plane < std::min(GetPlanes(), 3); ++plane) {
        ReplaceSaturated(*this, base, overlay, alignment, plane, {ratio, space, fraction, radius}, area, stage);
    }
}

double CImgComposit::GetOutsideValue(int mode)
{
    return mode == kCompositeProduct || mode == kCompositeQuotient ? 255.0 : 0.0;
}
