#include "corvane/combine/median_composit.h"

#include <cmath>
#include <deque>
#include <vector>

#include "bench/combine/plain_statistic.h"
#include "bench/support/bench.h"
#include "corvane/core/blank.h"

namespace corvane::bench {
namespace {

struct Method {
    const char* name;
    void (CImgMedianComposit::*calc)();
    CombineMethod plain;
    double limit; ///< seconds for 20 frames of 2048 x 2048
};

constexpr Method kMethods[] = {
    {"median", &CImgMedianComposit::Calc, CombineMethod::kMedian, 0.35},
    {"clipped median", &CImgMedianComposit::CalcClipping, CombineMethod::kClippedMedian, 0.5},
    {"clipped mean", &CImgMedianComposit::AddAvrCalcClipping, CombineMethod::kClippedMean, 0.5},
};

/// A night's frames in memory, each with its own shift.
class Night {
public:
    Night(int frames, int width, int height, double fraction) : fraction_(fraction)
    {
        for (int i = 0; i < frames; ++i) {
            Sky& frame = frames_.emplace_back(width, height, 1, static_cast<std::uint64_t>(i) + 10);
            frame.SetBlank(-32768); // stacking makes a shifted frame use blanks: do so at once, for equal runs
            frame.SetBlankUsed(1);
        }
    }

    void Stack(CStlImage& target, const Method& method)
    {
        CImgMedianComposit composit(&target);
        for (int y = 0; y < target.GetHeight(); ++y) {
            for (std::size_t i = 0; i < frames_.size(); ++i) {
                composit.Store(&frames_[i], y, ShiftX(i), ShiftY(i), 0.0);
            }
            (composit.*method.calc)();
        }
    }

    /// The defined result of one pixel: from every frame, or of the last one that has nothing there.
    double Expected(int x, int y, const Method& method) const
    {
        std::vector<double> values;
        double undefined = 0.0;
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            int isOutside = 0;
            const double v = frames_[i].GetPixelGrayRaw(x, y, ShiftX(i), ShiftY(i), 0.0, 1.0, 1.0, 0,
                                                        UndefinedValue(frames_[i]), 0, &isOutside, nullptr, nullptr);
            isOutside != 0 ? static_cast<void>(undefined = v) : values.push_back(v);
        }
        const std::vector<double> weights(values.size(), 1.0);
        return values.size() < frames_.size() ? undefined : PlainStatistic(values, weights, method.plain);
    }

    std::uint64_t Bytes() const { return frames_.size() * frames_.front().GetImageSize(); }

private:
    double ShiftX(std::size_t i) const { return static_cast<double>(i % 7) - 3.0 + fraction_ * static_cast<double>(i); }
    double ShiftY(std::size_t i) const { return static_cast<double>(i % 5) - 2.0 - fraction_ * static_cast<double>(i); }

    std::deque<Sky> frames_;
    double fraction_;
};

void TimeStack(Run& run, const Method& method, int frames, int height, double fraction)
{
    const int width = Size(2048, 75);
    Night night(frames, width, height, fraction);
    const auto stack = [&](CStlImage& target) { night.Stack(target, method); };
    const auto makeTarget = [=] { return CStlImage(-32, width, height, 1, 1.0, 0.0, 1); };
    CStlImage checked = makeTarget();
    stack(checked);
    CheckSamples(checked, [&](int x, int y, int) { return night.Expected(x, y, method); });
    run.Time(night.Bytes(), [&] {
        CStlImage target = makeTarget();
        stack(target);
    });
}

std::deque<Line> MakeLines()
{
    constexpr double kFraction = 0.0137;
    // As many samples as 20 whole frames, for which n log n in time allows this much more.
    const double perSample = std::log(200.0) / std::log(20.0);
    std::deque<Line> lines;
    for (const Method& method : kMethods) {
        const std::string name = std::string("combine/MedianComposit/") + method.name;
        lines.emplace_back(name + ", 20 frames, whole shifts", Seconds(method.limit),
                           [&](Run& run) { TimeStack(run, method, 20, Size(2048, 19), 0.0); });
        lines.emplace_back(name + ", 20 frames, fractional shifts", Seconds(method.limit),
                           [&](Run& run) { TimeStack(run, method, 20, Size(2048, 19), kFraction); });
        lines.emplace_back(name + ", 200 frames of 204 rows", Seconds(method.limit * perSample),
                           [&](Run& run) { TimeStack(run, method, 200, Size(204, 9), kFraction); });
    }
    return lines;
}

const std::deque<Line> medianLines = MakeLines();

} // namespace
} // namespace corvane::bench
