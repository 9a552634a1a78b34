#include "corvane/colour/lrgb_composite.h"

#include "corvane/colour/aligned_plane.h"
#include "corvane/colour/composite_rows.h"
#include "corvane/core/lab.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

constexpr double kMostDisplay = 5000.0;

Alignment Scaled(double dx, double dy, double degrees, double scale, const CfPoint& centre)
{
    Alignment alignment = Alignment::Turned(dx, dy, degrees, centre);
    alignment.scale = scale;
    return alignment;
}

/// The display colours of an aligned frame; a monochrome one gives its plane three times.
class AlignedColour {
public:
    AlignedColour(const CStlImage& frame, const Alignment& alignment, int columns)
    {
        for (int p = 0; p < (frame.GetDimension() < 3 ? 1 : 3); ++p) {
            planes_.emplace_back(frame, p, alignment, columns);
        }
    }

    void Sample(int y)
    {
        for (AlignedPlane& plane : planes_) {
            plane.SampleDisplay(y);
        }
    }

    /// Makes the row what the colour model takes: not negative, white 1. NaN stays.
    void ToUnit()
    {
        for (AlignedPlane& plane : planes_) {
            for (double& v : plane.Values()) {
                const double positive = v <= 0.0 ? 0.0 : v;
                v = (positive >= kMostDisplay ? kMostDisplay : positive) * kPer255;
            }
        }
    }

    const double* From(int channel, int column) const
    {
        return planes_[planes_.size() == 1 ? 0 : channel].From(column);
    }

private:
    std::vector<AlignedPlane> planes_;
};

/// A row of colours, first as L, a and b.
struct LabRow {
    std::vector<double> lightness;
    std::vector<double> a;
    std::vector<double> b;

    explicit LabRow(int count) : lightness(static_cast<std::size_t>(count)), a(lightness), b(lightness) {}

    /// Takes L of one frame's colours and a and b of the other's, from a column on.
    void Combine(AlignedColour& luminance, AlignedColour& colour, int left)
    {
        luminance.ToUnit();
        colour.ToUnit();
        const auto count = static_cast<int>(a.size());
        RgbToLabRow(count, colour.From(0, left), colour.From(1, left), colour.From(2, left), lightness.data(), a.data(),
                    b.data());
        RgbToLightnessRow(count, luminance.From(0, left), luminance.From(1, left), luminance.From(2, left),
                          lightness.data());
    }

    /// Writes the colours to the three planes of a row.
    void Store(const CStlImage& result, CompositeRows& rows, int y)
    {
        LabToRgbRow(rows.Count(), lightness.data(), a.data(), b.data(), lightness.data(), a.data(), b.data());
        const double* const channels[] = {lightness.data(), a.data(), b.data()};
        for (int p = 0; p < 3; ++p) {
            const DisplayScale scale(result, p);
            rows.Store(p, y, [=, v = channels[p]](int i) { return scale.ToRaw(v[i] * 255.0); });
        }
    }
};

void TakeLevels(CStlImage& result, const CImage& luminance)
{
    for (int p = 0; p < 3; ++p) {
        result.SetLevel(p, luminance.GetLevelMin(0), luminance.GetLevelMax(0));
    }
}

void AverageRow(const CStlImage& result, const AlignedColour& first, const AlignedColour& second, CompositeRows& rows,
                int y)
{
    for (int p = 0; p < 3; ++p) {
        const DisplayScale scale(result, p);
        const double* const a = first.From(p, rows.Left());
        const double* const b = second.From(p, rows.Left());
        rows.Store(p, y, [=](int i) { return scale.ToRaw((a[i] + b[i]) * 0.5); });
    }
}

} // namespace

void CImgLrgbCmpst::DoLrgb(CStlImage* lum, double dxL, double dyL, double angleL, CStlImage* rgb, double dxC,
                           double dyC, double angleC, double scaleC, CRect* rect, int average, int showProgress)
{
    DoLrgb(*lum, dxL, dyL, angleL, *rgb, dxC, dyC, angleC, scaleC, rect, average,
           WindowRun(*this, average == 0 ? showProgress : 0));
}

void CImgLrgbCmpst::DoLrgb(const CStlImage& lum, double dxL, double dyL, double angleL, const CStlImage& rgb,
                           double dxC, double dyC, double angleC, double scaleC, const CRect* rect, int average,
                           const Run& run)
{
    CompositeRows rows(*this, rect);
    AlignedColour first(lum, Alignment::Turned(dxL, dyL, angleL, lum.GetStdCtr()), rows.Columns());
    AlignedColour second(rgb, Scaled(dxC, dyC, angleC, scaleC, rgb.GetStdCtr()), rows.Columns());
    TakeLevels(*this, lum);
    rows.Walk({&lum, &rgb}, run, IDS_LRGB_COMPOSITE, [&, first, second, lab = LabRow(rows.Count())](int y) mutable {
        first.Sample(y);
        second.Sample(y);
        if (average != 0) {
            AverageRow(*this, first, second, rows, y);
        } else {
            lab.Combine(first, second, rows.Left());
            lab.Store(*this, rows, y);
        }
    });
}

void CImgLrgbCmpst::DoLab(CStlImage* lImage, double dxL, double dyL, double angleL, CStlImage* abImage, double dxC,
                          double dyC, double angleC, double scaleC, CRect* rect, int showProgress)
{
    DoLab(*lImage, dxL, dyL, angleL, *abImage, dxC, dyC, angleC, scaleC, rect, WindowRun(*this, showProgress));
}

void CImgLrgbCmpst::DoLab(const CStlImage& lImage, double dxL, double dyL, double angleL, const CStlImage& abImage,
                          double dxC, double dyC, double angleC, double scaleC, const CRect* rect, const Run& run)
{
    CompositeRows rows(*this, rect);
    const Alignment colour = Scaled(dxC, dyC, angleC, scaleC, abImage.GetStdCtr());
    AlignedPlane ofL(lImage, 0, Alignment::Turned(dxL, dyL, angleL, lImage.GetStdCtr()), rows.Columns());
    AlignedPlane ofA(abImage, 0, colour, rows.Columns());
    AlignedPlane ofB(abImage, 1, colour, rows.Columns());
    TakeLevels(*this, lImage);
    const auto row = [&, ofL, ofA, ofB, lab = LabRow(rows.Count())](int y) mutable {
        for (AlignedPlane* plane : {&ofL, &ofA, &ofB}) {
            plane->Sample(y, 0.0);
        }
        // GetPixelL gives floats.
        std::transform(ofL.From(rows.Left()), ofL.From(rows.Columns()), lab.lightness.begin(),
                       [](double v) { return static_cast<float>(v); });
        std::copy(ofA.From(rows.Left()), ofA.From(rows.Columns()), lab.a.begin());
        std::copy(ofB.From(rows.Left()), ofB.From(rows.Columns()), lab.b.begin());
        lab.Store(*this, rows, y);
    };
    rows.Walk({&lImage, &abImage}, run, IDS_LRGB_COMPOSITE, row);
}
