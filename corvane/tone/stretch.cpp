#include "corvane/tone/stretch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

#include "corvane/core/blank.h"
#include "corvane/core/power.h"
#include "corvane/core/walk.h"

namespace corvane {
namespace {

constexpr int kStretchBlock = 256; // its values stay in the nearest cache

double Midtone(double m, double x)
{
    return (m - 1.0) * x / ((2.0 * m - 1.0) * x - m);
}

double Asinh(double v)
{
    const double square = v * v;
    return Log1p(v + square / (1.0 + std::sqrt(1.0 + square)));
}

double LowOf(const CStlImage& image, int plane, const StretchScope& scope)
{
    return scope.low ? *scope.low : image.GetLevelMin(plane);
}

double HighOf(const CStlImage& image, int plane, const StretchScope& scope)
{
    return scope.high ? *scope.high : image.GetLevelMax(plane);
}

/// The samples of one plane and their places between black and white.
class StretchScale {
public:
    StretchScale(const CStlImage& image, int plane, const StretchScope& scope)
        : low_(LowOf(image, plane, scope)), high_(HighOf(image, plane, scope)), perRange_(1.0 / (high_ - low_)),
          min_(image.GetLevelMin(plane)), range_(image.GetLevelMax(plane) - min_), isBlank_(image)
    {}

    bool HasRange() const { return high_ > low_ && range_ > 0.0; }
    bool IsThere(double v) const { return (v == v) & !isBlank_(v); }
    /// From 0 to 1; 0 for what is not there.
    double Place(double v) const
    {
        const double place = std::max(0.0, std::min(1.0, (v - low_) * perRange_));
        const double within = v >= high_ ? 1.0 : place;
        return IsThere(v) ? within : 0.0;
    }
    /// What comes to a place; what is not there stays.
    float Sample(float v, double place) const
    {
        const auto sample = static_cast<float>(min_ + range_ * place);
        return IsThere(v) ? sample : v;
    }

private:
    double low_;
    double high_;
    double perRange_;
    double min_;
    double range_;
    BlankTest isBlank_;
};

std::vector<StretchScale> ScalesOf(const CStlImage& image, const StretchScope& scope)
{
    std::vector<StretchScale> scales;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        scales.emplace_back(image, plane, scope);
    }
    return scales;
}

/// Stretches rows of one plane.
void StretchRow(const StretchScale& scale, const StretchFunction& function, const float* in, float* out, int count)
{
    double places[kStretchBlock];
    for (int begin = 0; begin < count; begin += kStretchBlock) {
        const int size = std::min(kStretchBlock, count - begin);
        for (int i = 0; i < size; ++i) {
            places[i] = scale.Place(in[begin + i]);
        }
        function(places, size);
        for (int i = 0; i < size; ++i) {
            out[begin + i] = scale.Sample(in[begin + i], places[i]);
        }
    }
}

/// The planes of one row, stretched by one factor for each pixel.
class ColourRow {
public:
    ColourRow(const std::vector<StretchScale>& scales, const StretchFunction& function)
        : scales_(scales), function_(function)
    {}

    /// `in` and `out` are rows of each plane.
    void operator()(const std::vector<const float*>& in, const std::vector<float*>& out, int count)
    {
        for (int begin = 0; begin < count; begin += kStretchBlock) {
            const int size = std::min(kStretchBlock, count - begin);
            FindFactors(in, begin, size);
            for (std::size_t p = 0; p < scales_.size(); ++p) {
                const StretchScale scale = scales_[p]; // a copy stays in registers
                const float* const from = in[p] + begin;
                float* const to = out[p] + begin;
                for (int i = 0; i < size; ++i) {
                    to[i] = scale.Sample(from[i], scale.Place(from[i]) * factor_[i]);
                }
            }
        }
    }

private:
    void FindFactors(const std::vector<const float*>& in, int begin, int size)
    {
        std::fill_n(mean_, size, 0.0);
        std::fill_n(brightest_, size, 0.0);
        std::fill_n(number_, size, 0.0);
        for (std::size_t p = 0; p < scales_.size(); ++p) {
            const StretchScale scale = scales_[p]; // a copy stays in registers
            const float* const from = in[p] + begin;
            for (int i = 0; i < size; ++i) {
                const double place = scale.Place(from[i]);
                mean_[i] += place;
                brightest_[i] = std::max(brightest_[i], place);
                number_[i] += scale.IsThere(from[i]) ? 1.0 : 0.0;
            }
        }
        for (int i = 0; i < size; ++i) {
            mean_[i] /= std::max(number_[i], 1.0);
            factor_[i] = mean_[i];
        }
        function_(factor_, size);
        for (int i = 0; i < size; ++i) {
            const double factor = std::min(factor_[i] / mean_[i], 1.0 / brightest_[i]);
            factor_[i] = mean_[i] > 0.0 ? factor : 0.0;
        }
    }

    const std::vector<StretchScale>& scales_;
    const StretchFunction& function_;
    double mean_[kStretchBlock];
    double brightest_[kStretchBlock];
    double number_[kStretchBlock];
    double factor_[kStretchBlock];
};

/// Stretches the rows of an area, whose planes are taken together.
void StretchColours(CStlImage& result, const CStlImage& source, const StretchFunction& function,
                    const StretchScope& scope, const CRect& area, Stage& stage)
{
    const std::vector<StretchScale> scales = ScalesOf(result, scope);
    const int count = static_cast<int>(area.right - area.left);
    const bool isStretched =
        count > 0 && std::all_of(scales.begin(), scales.end(), [](const StretchScale& s) { return s.HasRange(); });
    WalkBlocks(RowBlocks(area), result, {&source}, stage, result.GetPlanes(), [&](const RowBlock& block) {
        ColourRow row(scales, function);
        for (int y = block.first; isStretched && y < block.end; ++y) {
            std::vector<const float*> in;
            std::vector<float*> out;
            for (int plane = 0; plane < result.GetPlanes(); ++plane) {
                in.push_back(source.GetImageAdr(static_cast<int>(area.left), y, plane, 1));
                out.push_back(result.GetImageAdr(static_cast<int>(area.left), y, plane));
            }
            row(in, out, count);
        }
    });
}

} // namespace

StretchFunction MidtoneStretch(double m)
{
    return StretchBy([m](double x) { return Midtone(m, x); });
}

double MidtoneFor(double x, double target)
{
    return x > 0.0 && x < 1.0 ? Midtone(target, x) : 0.5; // the formula is its own inverse in m
}

StretchFunction AsinhStretch(double k)
{
    return StretchBy([k, scale = 1.0 / Asinh(k)](double x) { return Asinh(k * x) * scale; });
}

double AsinhFor(double x, double target)
{
    double low = 1e-6; // the greater k, the brighter
    double high = 1e9;
    for (int i = 0; i < 100; ++i) {
        const double k = std::sqrt(low * high);
        (Asinh(k * x) < target * Asinh(k) ? low : high) = k;
    }
    return std::sqrt(low * high);
}

StretchFunction LogStretch(double k)
{
    return StretchBy([k, scale = 1.0 / Log1p(k)](double x) { return Log1p(k * x) * scale; });
}

StretchFunction GammaStretch(double g)
{
    return StretchBy([y = 1.0 / g](double x) { return Pow(x, y); });
}

StretchFunction TableStretch(std::vector<double> table)
{
    const auto entries = std::make_shared<const std::vector<double>>(std::move(table));
    return [entries](double* values, int count) {
        const double* const t = entries->data();
        const int last = static_cast<int>(entries->size()) - 2;
        for (int i = 0; i < count; ++i) {
            const double place = values[i] * (last + 1);
            const int entry = std::min(static_cast<int>(place), last);
            values[i] = t[entry] + (place - entry) * (t[entry + 1] - t[entry]);
        }
    };
}

void Stretch(CStlImage& result, const CStlImage& source, const std::vector<StretchFunction>& functions,
             const StretchScope& scope, const CRect* rect, const Run& run)
{
    const CRect area = WorkingArea(result, rect);
    Stage stage(run, "Stretching...", static_cast<int>(area.bottom - area.top) * result.GetPlanes());
    if (!scope.perPlane && result.IsColor() != 0) {
        StretchColours(result, source, functions.front(), scope, area, stage);
        return;
    }
    WalkArea(result, source, area, stage, [&](int plane) {
        const auto last = static_cast<int>(functions.size()) - 1;
        return [scale = StretchScale(result, plane, scope),
                function = functions[static_cast<std::size_t>(std::min(plane, last))]](const float* in, float* out,
                                                                                       int count) {
            if (scale.HasRange()) {
                StretchRow(scale, function, in, out, count);
            }
        };
    });
}

std::vector<StretchFunction> EqualisingStretches(const CStlImage& image, const StretchScope& scope, const CRect* rect,
                                                 const Run& run)
{
    constexpr int kBins = 65536;
    std::vector<StretchFunction> functions;
    std::vector<double> below(kBins + 1);
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        std::vector<int> counts(kBins);
        image.GetHistGram(counts.data(), kBins, LowOf(image, plane, scope), HighOf(image, plane, scope), plane, rect,
                          run, 0);
        double sum = 0.0;
        for (std::size_t i = 0; i < counts.size(); ++i) {
            sum += counts[i];
            below[i + 1] += sum;
        }
        if (scope.perPlane || plane == image.GetPlanes() - 1) {
            std::vector<double> parts{0.0, 1.0};
            if (const double all = below.back(); all > 0.0) {
                parts.resize(below.size());
                std::transform(below.begin(), below.end(), parts.begin(), [=](double part) { return part / all; });
            }
            functions.push_back(TableStretch(std::move(parts)));
            std::fill(below.begin(), below.end(), 0.0);
        }
    }
    return functions;
}

} // namespace corvane
