#include "corvane/core/aligned_row.h"

#include <vector>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

constexpr double kOutside = -1.0;

/// Samples every row of a frame, one after the other into the same two buffers, as the composite does.
class AlignedRows {
public:
    AlignedRows(const CStlImage& frame, const Alignment& alignment)
        : frame_(frame), alignment_(alignment), values_(static_cast<std::size_t>(frame.GetWidth())),
          inside_(values_.size())
    {}

    void Sample(int y)
    {
        const int count = frame_.GetWidth();
        SampleAlignedRow(frame_, 0, alignment_, y, count, kOutside, values_.data(), inside_.data());
    }

    double Value(int x) const { return values_[static_cast<std::size_t>(x)]; }

private:
    const CStlImage& frame_;
    Alignment alignment_;
    std::vector<double> values_;
    std::vector<int> inside_;
};

/// Samples bands of a frame in memory by a kernel, without the reader of single samples to compare with.
void TimeKernel(Run& run, Interpolation interpolation, double dx, double dy, double degrees)
{
    CStlImage& frame = LargeFrame();
    frame.SetDefaultCenter();
    const Alignment alignment = Alignment::Turned(dx, dy, degrees, frame.GetStdCtr());
    const int width = frame.GetWidth();
    const PlaneRows plane{frame.GetImageAdr(0, 0, 0, 1), width, frame.GetHeight(), 0, 0.0F};
    std::vector<double> values(static_cast<std::size_t>(width));
    std::vector<int> inside(values.size());
    run.Time(frame.GetImageSize(), [&] {
        for (int y = 0; y < frame.GetHeight(); ++y) {
            SampleAlignedStretch(plane, alignment, 0, y, width, kOutside, values.data(), inside.data(), interpolation);
        }
    });
}

void TimeRows(Run& run, double dx, double dy, double degrees)
{
    CStlImage& frame = LargeFrame();
    frame.SetDefaultCenter();
    const Alignment alignment = Alignment::Turned(dx, dy, degrees, frame.GetStdCtr());
    AlignedRows rows(frame, alignment);
    VisitSome(frame.GetWidth(), frame.GetHeight(), [&](int x, int y) {
        rows.Sample(y);
        const double expected = frame.GetPixelGrayRaw(x, y, dx, dy, alignment.sine, alignment.cosine, alignment.scale,
                                                      0, kOutside, 0, nullptr, nullptr, nullptr);
        RequireClose(static_cast<float>(rows.Value(x)), static_cast<float>(expected), x, y);
    });
    run.Time(frame.GetImageSize(), [&] {
        for (int y = 0; y < frame.GetHeight(); ++y) {
            rows.Sample(y);
        }
    });
}

const Line wholeShift("core/AlignedRow/whole shift", {}, [](Run& run) { TimeRows(run, 7.0, -5.0, 0.0); });
const Line fractionalShift("core/AlignedRow/fractional shift", {}, [](Run& run) { TimeRows(run, 7.3, -5.6, 0.0); });
const Line turn("core/AlignedRow/turn", {}, [](Run& run) { TimeRows(run, 7.3, -5.6, 0.7); });
const Line cubicTurn("core/AlignedRow/turn, bicubic", {},
                     [](Run& run) { TimeKernel(run, Interpolation::kBicubic, 7.3, -5.6, 0.7); });
const Line lanczosShift("core/AlignedRow/fractional shift, lanczos3", {},
                        [](Run& run) { TimeKernel(run, Interpolation::kLanczos3, 7.3, -5.6, 0.0); });
const Line lanczosTurn("core/AlignedRow/turn, lanczos3", {},
                       [](Run& run) { TimeKernel(run, Interpolation::kLanczos3, 7.3, -5.6, 0.7); });
const Line widerTurn("core/AlignedRow/turn, lanczos4", {},
                     [](Run& run) { TimeKernel(run, Interpolation::kLanczos4, 7.3, -5.6, 0.7); });

} // namespace
} // namespace corvane::bench
