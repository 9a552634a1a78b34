#include "stars/maxima.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "corvane/core/defined.h"
#include "stars/field_blocks.h"
#include "stars/robust.h"

namespace corvane::stars {

namespace {

constexpr int kBlock = 64;             // samples of a row that are passed over together
constexpr float kPerWeights = 0.0625F; // 1 / 16, the sum of all weights
constexpr double kSmoothNoise = 0.375; // of independent samples, after smoothing
constexpr int kNoisePlaces = 64;       // along each axis

void Subtract(const float* row, const float* sky, DefinedTest isDefined, int count, float* out)
{
    for (int x = 0; x < count; ++x) {
        out[x] = isDefined(row[x]) ? row[x] - sky[x] : 0.0F;
    }
}

void SmoothAcross(const float* in, int count, float* out)
{
    for (int x = 0; x < count; ++x) {
        out[x] = (in[x - 1] + in[x + 1]) + 2.0F * in[x];
    }
}

void SmoothDown(const float* above, const float* at, const float* below, int count, float* out)
{
    for (int x = 0; x < count; ++x) {
        out[x] = ((above[x] + below[x]) + 2.0F * at[x]) * kPerWeights;
    }
}

bool AnyAbove(const float* values, const float* threshold, int count)
{
    int any = 0;
    for (int x = 0; x < count; ++x) {
        any |= values[x] > threshold[x] ? 1 : 0;
    }
    return any != 0;
}

/// A row with room for one sample before and behind it, which are 0.
class PaddedRow {
public:
    explicit PaddedRow(int count) : samples_(static_cast<std::size_t>(count) + 2) {}
    float* Data() { return samples_.data() + 1; }
    const float* Data() const { return samples_.data() + 1; }
    void Clear() { std::fill(samples_.begin(), samples_.end(), 0.0F); }

private:
    std::vector<float> samples_;
};

/// Three rows that follow each other, the eldest making room for the next.
class RowRing {
public:
    explicit RowRing(int count) : rows_{PaddedRow(count), PaddedRow(count), PaddedRow(count)} {}
    PaddedRow& At(int y) { return rows_[static_cast<std::size_t>(y + 3) % 3]; }

private:
    std::array<PaddedRow, 3> rows_;
};

/// The smoothed frame above the sky, row by row.
class SmoothedFrame {
public:
    /// Prepares to make the rows from `first` on.
    SmoothedFrame(const CStlImage& image, int plane, const SkyMesh& sky, int first)
        : image_(image), plane_(plane), sky_(sky), isDefined_(image), width_(image.GetWidth()), across_(width_),
          smoothed_(width_), excess_(width_), level_(static_cast<std::size_t>(width_))
    {
        Load(first - 2);
        Load(first - 1);
        Make(first - 1);
    }

    /// Makes the next row; those above the first and below the last one are empty.
    void Make(int y)
    {
        Load(y + 1);
        PaddedRow& row = smoothed_.At(y);
        if (!IsInside(y)) {
            row.Clear();
            return;
        }
        SmoothDown(across_.At(y - 1).Data(), across_.At(y).Data(), across_.At(y + 1).Data(), width_, row.Data());
    }

    /// One of the three rows made last.
    const float* Row(int y) { return smoothed_.At(y).Data(); }

private:
    bool IsInside(int y) const { return y >= 0 && y < image_.GetHeight(); }

    void Load(int y)
    {
        PaddedRow& row = across_.At(y);
        if (!IsInside(y)) {
            row.Clear();
            return;
        }
        sky_.level.FillRow(y, level_.data());
        Subtract(image_.GetImageAdr(0, y, plane_, 1), level_.data(), isDefined_, width_, excess_.Data());
        SmoothAcross(excess_.Data(), width_, row.Data());
    }

    const CStlImage& image_;
    int plane_;
    const SkyMesh& sky_;
    DefinedTest isDefined_;
    int width_;
    RowRing across_;
    RowRing smoothed_;
    PaddedRow excess_;
    std::vector<float> level_;
};

/// Three rows of the smoothed frame, around one.
struct RowTriple {
    const float* above;
    const float* at;
    const float* below;

    bool IsMaximum(int x) const
    {
        const float s = at[x];
        return s > above[x - 1] && s > above[x] && s > above[x + 1] && s > at[x - 1] && s >= at[x + 1] &&
               s >= below[x - 1] && s >= below[x] && s >= below[x + 1];
    }
};

void CollectRow(const RowTriple& rows, const float* threshold, int count, int y, std::vector<Maximum>& maxima)
{
    for (int first = 0; first < count; first += kBlock) {
        const int end = std::min(first + kBlock, count);
        if (!AnyAbove(rows.at + first, threshold + first, end - first)) {
            continue;
        }
        for (int x = first; x < end; ++x) {
            if (rows.at[x] > threshold[x] && rows.IsMaximum(x)) {
                maxima.push_back({x, y, rows.at[x]});
            }
        }
    }
}

void KeepBrightest(std::vector<Maximum>& maxima, std::size_t limit)
{
    const auto isBrighter = [](const Maximum& a, const Maximum& b) { return a.excess > b.excess; };
    const auto isBefore = [](const Maximum& a, const Maximum& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; };
    std::stable_sort(maxima.begin(), maxima.end(), isBrighter);
    maxima.resize(std::min(maxima.size(), limit));
    std::sort(maxima.begin(), maxima.end(), isBefore);
}

/// A sample of the smoothed frame above the sky, in units of the sky's deviation.
double SmoothedInNoise(const CStlImage& image, int plane, const SkyMesh& sky, const DefinedTest& isDefined, int x,
                       int y)
{
    const double level = sky.level.At(x, y);
    double sum = 0.0;
    for (int i = 0; i < 9; ++i) {
        const int dx = i % 3 - 1;
        const int dy = i / 3 - 1;
        const float v = image.GetPixelGrayRaw(x + dx, y + dy, plane);
        sum += isDefined(v) ? (2 - dx * dx) * (2 - dy * dy) * (v - level) : 0.0;
    }
    return sum * kPerWeights / sky.noise.At(x, y);
}

/// The deviation of the smoothed sky as a share of that of single samples: more than 0.375 where an earlier step has
/// spread every sample's noise over its neighbours.
double SmoothedNoise(const CStlImage& image, int plane, const SkyMesh& sky)
{
    const DefinedTest isDefined(image);
    std::vector<double> deviations;
    for (int j = 0; j < kNoisePlaces; ++j) {
        for (int i = 0; i < kNoisePlaces; ++i) {
            const int x = static_cast<int>((i + 0.5) * image.GetWidth() / kNoisePlaces);
            const int y = static_cast<int>((j + 0.5) * image.GetHeight() / kNoisePlaces);
            const double v = SmoothedInNoise(image, plane, sky, isDefined, x, y);
            if (std::isfinite(v) && isDefined(image.GetPixelGrayRaw(x, y, plane))) {
                deviations.push_back(v);
            }
        }
    }
    return std::max(kSmoothNoise, MeasureLevel(std::move(deviations)).deviation);
}

std::vector<Maximum> MaximaOfBlock(const CStlImage& image, int plane, const SkyMesh& sky, float factor,
                                   const RowBlock& block)
{
    const int width = image.GetWidth();
    SmoothedFrame frame(image, plane, sky, block.first);
    std::vector<float> threshold(static_cast<std::size_t>(width));
    std::vector<Maximum> maxima;
    frame.Make(block.first);
    for (int y = block.first; y < block.end; ++y) {
        frame.Make(y + 1);
        sky.noise.FillRow(y, threshold.data());
        for (float& t : threshold) {
            t *= factor;
        }
        CollectRow({frame.Row(y - 1), frame.Row(y), frame.Row(y + 1)}, threshold.data(), width, y, maxima);
    }
    return maxima;
}

} // namespace

std::vector<Maximum> FindMaxima(const CStlImage& image, int plane, const SkyMesh& sky, double sigmas, std::size_t limit,
                                const Run& run)
{
    const auto factor = static_cast<float>(sigmas * SmoothedNoise(image, plane, sky));
    std::vector<Maximum> maxima;
    const auto find = [&](const RowBlock& block) { return MaximaOfBlock(image, plane, sky, factor, block); };
    const auto add = [&](std::vector<Maximum> next) {
        maxima.insert(maxima.end(), next.begin(), next.end());
        if (maxima.size() / 2 > limit) {
            KeepBrightest(maxima, limit);
        }
    };
    FoldFieldBlocks(image, run, find, add);
    KeepBrightest(maxima, limit);
    return maxima;
}

} // namespace corvane::stars
