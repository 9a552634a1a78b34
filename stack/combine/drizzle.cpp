#include "stack/combine/drizzle.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

#include "corvane/combine/dropped_rows.h"
#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/walk.h"
#include "stack/combine/judged_rows.h"
#include "stack/combine/placed_frame.h"

namespace corvane::stack {

namespace {

/// The plane of the filter over a pixel.
int PlaneOf(BayerPattern pattern, int x, int y)
{
    return static_cast<int>(std::strchr("RGB", NameOf(pattern)[2 * (y % 2) + x % 2]) - "RGB");
}

/// How values are judged.
CombinePlan Judging(CombinePlan plan)
{
    plan.coverage = Coverage::kAny;
    const bool isPlainMedian = plan.rule.by == CombineBy::kMedian && plan.rule.rejection == nullptr;
    plan.rule = isPlainMedian ? CombineRule(CombineMethod::kClippedMedian) : plan.rule;
    return plan;
}

/// Whether several threads may write rows of what drizzling fills.
bool MayShare(const DrizzleTarget& target)
{
    const CStlImage* const images[] = {&target.image,      target.weights,      target.coverage,
                                       target.rejectedLow, target.rejectedHigh, target.noise};
    return std::all_of(std::begin(images), std::end(images),
                       [](const CStlImage* image) { return image == nullptr || MayShareWork(*image, {}); });
}

/// A frame at work.
struct DroppedFrame {
    const Placement& placement;
    Mapping mapping; ///< onto the grid on which values are judged
    FrameFacts facts;
    RowWindow window;
    DroppedRows rows; ///< its rows that are in memory, NaN where a pixel is not dropped

    std::uint64_t RowBytes() const { return sizeof(float) * facts.width * static_cast<std::uint64_t>(facts.planes); }
};

/// Drizzles a band of rows of the reference at a time.
class Drizzler {
public:
    Drizzler(const DrizzlePlan& plan, FrameSource& source, const DrizzleTarget& target);
    void Drop(const Run& run, const char* text);

private:
    RowSpan Judged(const RowSpan& band) const;
    double BytesOfRow() const;
    double FixedBytes() const;
    int RowsOfBand(double memory) const;
    void Reserve(const std::vector<RowSpan>& bands);
    void DropBand(const RowSpan& band, const Run& run, Stage& stage);
    void Read(DroppedFrame& frame, const RowSpan& rows);
    void Prepare(std::size_t i);
    void FillRow(int row) const;

    const DrizzlePlan& plan_;
    const CombinePlan judging_;
    FrameSource& source_;
    const DrizzleTarget& target_;
    Grid reference_;
    RowSpan rows_;    ///< of the reference, that are asked for
    int firstFilled_; ///< row of the grid that the target begins with
    int margin_;      ///< rows of the reference that are judged beside those of a band
    std::vector<DroppedFrame> frames_;
    JudgedRows judged_;
};

Drizzler::Drizzler(const DrizzlePlan& plan, FrameSource& source, const DrizzleTarget& target)
    : plan_(plan), judging_(Judging(plan.judged)), source_(source), target_(target), reference_(plan.judged.grid),
      rows_(plan.rows.value_or(RowSpan{0, reference_.height})),
      firstFilled_(DrizzledRows(rows_, reference_, plan.grid).first),
      margin_(2 + static_cast<int>(std::ceil(1.0 / plan.grid.scale))), judged_(judging_, target.image.GetPlanes())
{
    for (const Placement& placement : judging_.frames) {
        const FrameFacts facts = source.Facts(placement.frame);
        const Mapping judged = OnGrid(placement.mapping, reference_);
        margin_ = std::max(margin_, 2 + static_cast<int>(std::ceil(1.0 / plan.grid.scale + 1.0 / judged.Scale())));
        frames_.push_back({placement, judged, facts,
                           RowWindow(judged, facts, 0, reference_.width, judging_.interpolation),
                           DroppedRows(OnGrid(placement.mapping, plan.grid), plan.drop, plan.kernel, facts.width,
                                       facts.planes, placement.weight)});
    }
    margin_ += judged_.Grown().Reach();
}

void Drizzler::Drop(const Run& run, const char* text)
{
    const double memory = static_cast<double>(MemoryFor(plan_.judged));
    const int rows = RowsOfBand(memory);
    const Reservation reservation(static_cast<std::uint64_t>(FixedBytes() + rows * BytesOfRow()));
    std::vector<RowSpan> bands;
    int steps = 0;
    for (int first = rows_.first; first < rows_.end; first += rows) {
        const RowSpan band{first, std::min(first + rows, rows_.end)};
        const RowSpan judged = Judged(band);
        const RowSpan filled = DrizzledRows(band, reference_, plan_.grid);
        bands.push_back(band);
        const int judgings = judged_.Grown().Grows() ? 2 : 1;
        steps += 2 * static_cast<int>(frames_.size()) + judgings * (judged.end - judged.first);
        steps += filled.end - filled.first;
    }
    Reserve(bands);
    Stage stage(run, text, steps);
    for (const RowSpan& band : bands) {
        DropBand(band, run, stage);
    }
    if (target_.tally != nullptr) {
        judged_.AddTo(*target_.tally);
    }
    target_.image.SetBlankUsed(1);
    target_.image.SetBlank(plan_.judged.blank);
}

/// Takes room for the rows of any band.
void Drizzler::Reserve(const std::vector<RowSpan>& bands)
{
    for (DroppedFrame& frame : frames_) {
        int most = 0;
        for (const RowSpan& band : bands) {
            const RowSpan judged = Judged(band);
            const RowSpan touched = frame.window.Touched(judged.first, judged.end - 1);
            most = std::max(most, touched.end - touched.first);
        }
        frame.window.Reserve(most);
        frame.rows.Begin({0, most});
        frame.rows.Begin({0, 0});
    }
}

/// The rows of the reference on which pixels lie that fall into rows of a band.
RowSpan Drizzler::Judged(const RowSpan& band) const
{
    return {std::max(band.first - margin_, 0), std::min(band.end + margin_, reference_.height)};
}

/// Bytes of what one more row of the reference takes of all frames: samples, drops, and what was judged.
double Drizzler::BytesOfRow() const
{
    auto bytes = static_cast<double>(judged_.Grown().RowBytes());
    for (const DroppedFrame& frame : frames_) {
        bytes += 2.0 * static_cast<double>(frame.RowBytes()) * std::max(frame.mapping.Scale(), 1.0) +
                 frame.facts.planes * (reference_.width / 8.0 + 1.0);
    }
    return bytes;
}

/// Bytes of what rows touch beyond themselves.
double Drizzler::FixedBytes() const
{
    double bytes = 2.0 * margin_ * BytesOfRow();
    for (const DroppedFrame& frame : frames_) {
        const RowSpan touched = frame.window.Touched(reference_.height / 2, reference_.height / 2);
        bytes += 2.0 * static_cast<double>(frame.RowBytes()) * std::max(touched.end - touched.first - 1, 0);
    }
    return bytes;
}

int Drizzler::RowsOfBand(double memory) const
{
    const double rows = (memory - FixedBytes()) / std::max(BytesOfRow(), 1.0);
    return static_cast<int>(std::clamp(rows, 1.0, static_cast<double>(std::max(reference_.height, 1))));
}

void Drizzler::DropBand(const RowSpan& band, const Run& run, Stage& stage)
{
    const RowSpan judged = Judged(band);
    const RowSpan filled = DrizzledRows(band, reference_, plan_.grid);
    const int count = static_cast<int>(frames_.size());
    const auto tickFrame = [&](int) { stage.Step(); };
    const auto forRows = [&](const RowSpan& rows, int width, auto body) {
        const RowBlocks blocks({0, rows.first, width * count, rows.end});
        const auto each = [&](int i, int thread) {
            for (int row = blocks[i].first; row < blocks[i].end; ++row) {
                body(row, thread);
            }
        };
        const int threads = MayShare(target_) ? std::min(run.Threads(), blocks.Count()) : 1;
        platform::ForBlocks(blocks.Count(), threads, each, [&](int i) { CountRows(stage, blocks[i]); });
    };
    const auto isOwn = [&](int row) { return row >= band.first && row < band.end; };
    const auto windowOf = [&](std::size_t i) -> const RowWindow& { return frames_[i].window; };
    const RejectedCounts counts{target_.rejectedLow, target_.rejectedHigh, rows_.first};
    const int readers = std::min(run.Threads(), count);
    platform::ForBlocks(
        count, readers, [&](int i) { Read(frames_[i], judged); }, tickFrame);
    judged_.Begin(judged, run.Threads(), target_.tally != nullptr);
    forRows(judged, reference_.width,
            [&](int row, int thread) { judged_.Judge(row, thread, isOwn(row), counts, windowOf); });
    if (judged_.Grown().Grows()) {
        forRows(judged, reference_.width,
                [&](int row, int thread) { judged_.Grow(row, thread, isOwn(row), counts, windowOf); });
    }
    platform::ForBlocks(
        count, readers, [&](int i) { Prepare(i); }, tickFrame);
    forRows(filled, plan_.grid.width, [&](int row, int) { FillRow(row); });
}

void Drizzler::Read(DroppedFrame& frame, const RowSpan& rows)
{
    frame.window.MoveTo(rows.first, rows.end - 1, [&](int first, int count, float* samples, std::ptrdiff_t stride) {
        source_.Read(frame.placement.frame, first, count, samples, stride);
        ReplaceBlanks(frame.facts, kNaN, count, samples, stride);
    });
}

/// Takes over the samples of a frame that are to be dropped.
void Drizzler::Prepare(std::size_t i)
{
    DroppedFrame& frame = frames_[i];
    const Placement& placement = frame.placement;
    const RowSpan held = frame.window.Held();
    const bool isMosaic = !plan_.patterns.empty();
    frame.rows.Begin(held);
    std::vector<Position> places(static_cast<std::size_t>(frame.facts.width)); // of the pixels of a row, on the grid
    for (int y = held.first; y < held.end; ++y) {
        for (int x = 0; x < frame.facts.width; ++x) {
            places[x] = frame.mapping.Inverse({1.0 * x, 1.0 * y});
        }
        for (int plane = 0; plane < frame.facts.planes; ++plane) {
            const Normalisation normalisation =
                placement.normalisation.empty() ? Normalisation() : placement.normalisation[plane];
            const auto normalised = [&](float sample, const Position& at) {
                return sample * normalisation.factor +
                       normalisation.OffsetAt(reference_.XOnReference(at.x), reference_.YOnReference(at.y));
            };
            const float* const samples = frame.window.Row(plane, y);
            float* const drops = frame.rows.Row(plane, y);
            for (int x = 0; x < frame.facts.width; ++x) {
                const bool isOwn = !isMosaic || PlaneOf(plan_.patterns[placement.frame], x, y) == plane;
                const bool isDropped = isOwn && judged_.Has(i, plane, places[x]) && std::isfinite(samples[x]);
                drops[x] = isDropped ? static_cast<float>(normalised(samples[x], places[x])) : kNaN;
            }
        }
    }
}

void Drizzler::FillRow(int row) const
{
    const auto at = [&](CStlImage* image, int x, int plane) {
        return image != nullptr ? image->GetImageAdr(x, row - firstFilled_, plane) : nullptr;
    };
    for (int plane = 0; plane < target_.image.GetPlanes(); ++plane) {
        for (int x = 0; x < plan_.grid.width; x += kDropStretch) {
            DropSums sums(x, row, std::min(kDropStretch, plan_.grid.width - x), target_.noise != nullptr);
            for (const DroppedFrame& frame : frames_) {
                frame.rows.Add(plane, sums);
            }
            sums.Store(plan_.judged.blank, at(&target_.image, x, plane), at(target_.weights, x, plane),
                       at(target_.coverage, x, plane), at(target_.noise, x, plane));
        }
    }
}

} // namespace

RowSpan DrizzledRows(const RowSpan& rows, const Grid& reference, const Grid& grid)
{
    const auto row = [&](int y) {
        return y == reference.height ? grid.height : std::min(static_cast<int>(std::ceil(y * grid.scale)), grid.height);
    };
    return {row(rows.first), row(rows.end)};
}

void DrizzleFrames(const DrizzlePlan& plan, FrameSource& source, const DrizzleTarget& target, const Run& run,
                   const char* text)
{
    for (const Placement& placement : plan.judged.frames) {
        if (source.Facts(placement.frame).planes != target.image.GetPlanes()) {
            throw InputError("frame " + std::to_string(placement.frame), "has other planes than the target");
        }
    }
    Drizzler(plan, source, target).Drop(run, text);
}

} // namespace corvane::stack
