#include "stack/combine/normalise.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "corvane/core/blank.h"
#include "stars/robust.h"

namespace corvane::stack {

namespace {

constexpr int kRows = 128;
constexpr int kColumns = 256;              // of each of these rows
constexpr int kReach = 2;                  // next sample of the same filter in a mosaic
const double kDifference = std::sqrt(6.0); // noise of 2 a - b - c in that of a sample

/// Positions spread over a length, no more than `most`. An odd distance takes every filter of a mosaic in turn.
struct Spread {
    int step;
    int first;

    Spread(int length, int most)
        : step(((length + most - 1) / most) | 1), first(std::clamp(step / 2, 0, std::max(length - 1, 0)))
    {}
};

/// Collects samples of a plane, row by row.
class LevelMeasure {
public:
    explicit LevelMeasure(const BlankTest& isBlank) : isBlank_(isBlank) {}

    void Add(std::span<const float> row)
    {
        const int width = static_cast<int>(row.size());
        const Spread columns(width, kColumns);
        for (int x = columns.first; x < width; x += columns.step) {
            if (IsDefined(row[x])) {
                samples_.push_back(row[x]);
                AddDifference(row, x);
            }
        }
    }

    FrameLevel Level()
    {
        const stars::RobustLevel level = stars::MeasureLevel(std::move(samples_));
        return {level.median, level.deviation, stars::MeasureLevel(std::move(differences_)).deviation / kDifference};
    }

private:
    bool IsDefined(double v) const { return std::isfinite(v) && !isBlank_(v); }

    void AddDifference(std::span<const float> row, int x)
    {
        const bool isInside = x >= kReach && x + kReach < static_cast<int>(row.size());
        if (isInside && IsDefined(row[x - kReach]) && IsDefined(row[x + kReach])) {
            differences_.push_back(2.0 * row[x] - row[x - kReach] - row[x + kReach]);
        }
    }

    BlankTest isBlank_;
    std::vector<double> samples_;
    std::vector<double> differences_;
};

/// The ratio of two measures, if it can be a factor.
std::optional<double> Ratio(double a, double b)
{
    const double ratio = a / b;
    return a > 0.0 && b > 0.0 && ratio > 0.0 && std::isfinite(ratio) ? std::optional(ratio) : std::nullopt;
}

} // namespace

FrameLevel MeasureFrame(const CStlImage& image, int plane)
{
    LevelMeasure measure((BlankTest(image)));
    const Spread rows(image.GetHeight(), kRows);
    for (int y = rows.first; y < image.GetHeight(); y += rows.step) {
        measure.Add({image.GetImageAdr(0, y, plane, 1), static_cast<std::size_t>(image.GetWidth())});
    }
    return measure.Level();
}

Normalisation NormalisationOf(const FrameLevel& reference, const FrameLevel& frame, NormaliseMethod method,
                              std::optional<double> fluxRatio)
{
    if (method == NormaliseMethod::kNone) {
        return {};
    }
    if (method == NormaliseMethod::kScale) {
        return {Ratio(reference.background, frame.background).value_or(1.0), 0.0};
    }
    const bool trustsSpread = method == NormaliseMethod::kBoth;
    const auto ofSpread = trustsSpread ? Ratio(reference.spread, frame.spread) : std::nullopt;
    const auto ofLight = fluxRatio ? Ratio(*fluxRatio, 1.0) : ofSpread;
    const double factor = method != NormaliseMethod::kOffset ? ofLight.value_or(1.0) : 1.0;
    return {factor, reference.background - factor * frame.background};
}

} // namespace corvane::stack
