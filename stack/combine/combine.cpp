#include "stack/combine/combine.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <string>

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "corvane/core/text.h"
#include "corvane/core/walk.h"
#include "stack/combine/placed_frame.h"
#include "stack/combine/row_window.h"
#include "stack/combine/workbench.h"

namespace corvane::stack {

namespace {

/// Whether several threads may write rows of what combining fills.
bool MayShare(const CombineTarget& target)
{
    const CStlImage* const images[] = {&target.image, target.coverage, target.rejectedLow, target.rejectedHigh,
                                       target.noise};
    return std::all_of(std::begin(images), std::end(images),
                       [](const CStlImage* image) { return image == nullptr || MayShareWork(*image, {}); });
}

constexpr int kFewestColumns = 16;
constexpr double kFewestRows = 128;             // of a band that memory has room for: many more than look at its edges
constexpr double kNearBytes = 32 * 1024 * 1024; // of a band that is combined while a near cache holds much of it

/// A frame at work.
struct PlacedFrame {
    const Placement& placement;
    Mapping mapping; ///< onto the grid
    FrameFacts facts;
    RowWindow window;
    bool usesBlank; ///< it declares one, or leaves a part of the target free

    /// Bytes of a row of all planes.
    std::uint64_t RowBytes() const { return sizeof(float) * facts.width * static_cast<std::uint64_t>(facts.planes); }
};

/// Combines into one target: a band of rows at a time, and in strips of columns when turned frames would not fit.
class BandCombiner {
public:
    BandCombiner(const CombinePlan& plan, FrameSource& source, const CombineTarget& target);
    void Combine(const Run& run, const char* text);

private:
    std::uint64_t Margins(int columns) const;
    int ColumnsOfStrip() const;
    std::uint64_t FixedBytes(int columns) const;
    double BytesOfRow() const;
    int RowsOfBand(int columns) const;
    void OpenStrip(int left, int right, int rows);
    RowSpan Band(int first, int rows) const;
    void ReadBand(int threads, Stage& stage);
    void CombineBand(int threads, Stage& stage);
    void Read(const PlacedFrame& frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) const;
    void CombineRow(int row, int plane, Workbench& bench);
    void Combine(const Stretch& stretch, bool isOwn, Workbench& bench);
    void GrowRow(int row, int plane, Workbench& bench) const;
    void SampleAll(const Stretch& stretch, Workbench& bench) const;
    void Sample(const PlacedFrame& frame, const Stretch& stretch, double* values, int* valid) const;
    float* In(CStlImage* image, const Stretch& stretch) const;
    bool HasBlanks() const;
    bool BlanksAreNan() const;

    const CombinePlan& plan_;
    FrameSource& source_;
    const CombineTarget& target_;
    int width_;
    int firstRow_; ///< of the grid, that the target has
    int endRow_;
    int left_ = 0; ///< first column of the strip
    int columns_ = 0;
    RowSpan band_{0, 0}; ///< rows that are made together
    std::uint64_t memory_;
    std::vector<PlacedFrame> frames_;
    std::vector<Workbench> benches_; ///< one for each thread
    GrownRejection grown_;
};

BandCombiner::BandCombiner(const CombinePlan& plan, FrameSource& source, const CombineTarget& target)
    : plan_(plan), source_(source), target_(target), width_(target.image.GetWidth()), firstRow_(target.firstRow),
      endRow_(firstRow_ + target.image.GetHeight()), memory_(MemoryFor(plan)), grown_(plan, target.image.GetPlanes())
{
    for (const Placement& placement : plan.frames) {
        const FrameFacts facts = source.Facts(placement.frame);
        const Mapping mapping = OnGrid(placement.mapping, plan.grid);
        const bool isSmaller = facts.width < width_ || facts.height < plan.grid.height;
        frames_.push_back({placement, mapping, facts, RowWindow(mapping, facts, 0, width_, plan.interpolation),
                           facts.blank || isSmaller || !mapping.IsIdentity()});
    }
}

void BandCombiner::Combine(const Run& run, const char* text)
{
    const int columns = ColumnsOfStrip();
    const int rows = RowsOfBand(columns);
    const Reservation reservation(FixedBytes(columns) + static_cast<std::uint64_t>(rows * BytesOfRow()));
    const int strips = (width_ + columns - 1) / columns;
    const int count = static_cast<int>(frames_.size());
    int steps = 0;
    for (int first = firstRow_; first < endRow_; first += rows) {
        const RowSpan band = Band(first, rows);
        const RowSpan judged = grown_.Around(band);
        steps += count + judged.end - judged.first + (grown_.Grows() ? band.end - band.first : 0);
    }
    Stage stage(run, text, strips * steps);
    const int threads = ThreadsFor(static_cast<long long>(rows) * columns * count, run.Threads());
    const int readers = std::min(threads, count);
    const int writers = MayShare(target_) ? std::min(threads, rows) : 1;
    std::generate_n(std::back_inserter(benches_), writers,
                    [this] { return Workbench(plan_, target_.tally != nullptr); });
    for (int left = 0; left < width_; left += columns) {
        OpenStrip(left, std::min(left + columns, width_), rows);
        for (int first = firstRow_; first < endRow_; first += rows) {
            band_ = Band(first, rows);
            ReadBand(readers, stage);
            CombineBand(writers, stage);
        }
    }
    for (const Workbench& bench : benches_) {
        if (bench.tally) {
            target_.tally->Add(*bench.tally);
        }
    }
    if (HasBlanks()) {
        target_.image.SetBlankUsed(1);
        target_.image.SetBlank(plan_.blank);
    }
}

RowSpan BandCombiner::Band(int first, int rows) const
{
    return {first, std::min(first + rows, endRow_)};
}

/// Begins a strip of columns that is combined in bands of so many rows.
void BandCombiner::OpenStrip(int left, int right, int rows)
{
    left_ = left;
    columns_ = right - left;
    for (PlacedFrame& frame : frames_) {
        frame.window = RowWindow(frame.mapping, frame.facts, std::max(left - grown_.Reach(), 0),
                                 std::min(right + grown_.Reach(), width_), plan_.interpolation);
        int most = 0;
        for (int first = firstRow_; first < endRow_; first += rows) {
            const RowSpan judged = grown_.Around(Band(first, rows));
            const RowSpan touched = frame.window.Touched(judged.first, judged.end - 1);
            most = std::max(most, touched.end - touched.first);
        }
        frame.window.Reserve(most);
    }
}

void BandCombiner::ReadBand(int threads, Stage& stage)
{
    const RowSpan judged = grown_.Around(band_);
    const auto readFrame = [&](int i) {
        PlacedFrame& frame = frames_[static_cast<std::size_t>(i)];
        frame.window.MoveTo(judged.first, judged.end - 1,
                            [&](int first, int rows, float* samples, std::ptrdiff_t planeStride) {
                                Read(frame, first, rows, samples, planeStride);
                            });
    };
    platform::ForBlocks(static_cast<int>(frames_.size()), threads, readFrame, [&](int) { stage.Step(); });
}

void BandCombiner::CombineBand(int threads, Stage& stage)
{
    const auto forRows = [&](const RowSpan& rows, auto body) {
        // What rows of all frames hold: blocks are as long as the work that they are.
        const RowBlocks blocks({0, rows.first, columns_ * static_cast<int>(frames_.size()), rows.end});
        const auto each = [&](int i, int thread) {
            for (int row = blocks[i].first; row < blocks[i].end; ++row) {
                for (int plane = 0; plane < target_.image.GetPlanes(); ++plane) {
                    body(row, plane, benches_[static_cast<std::size_t>(thread)]);
                }
            }
        };
        platform::ForBlocks(blocks.Count(), threads, each, [&](int i) { CountRows(stage, blocks[i]); });
    };
    const RowSpan judged = grown_.Around(band_);
    grown_.Begin(judged);
    forRows(judged, [&](int row, int plane, Workbench& bench) { CombineRow(row, plane, bench); });
    if (grown_.Grows()) {
        forRows(band_, [&](int row, int plane, Workbench& bench) { GrowRow(row, plane, bench); });
    }
}

bool BandCombiner::HasBlanks() const
{
    const bool someUse = std::any_of(frames_.begin(), frames_.end(), [](const auto& frame) { return frame.usesBlank; });
    const bool someLack =
        std::any_of(benches_.begin(), benches_.end(), [](const Workbench& bench) { return bench.fewest == 0; });
    return plan_.coverage == Coverage::kAll ? someUse : someLack;
}

/// Bytes of what rows of the target touch beyond themselves, counted once for each frame.
std::uint64_t BandCombiner::Margins(int columns) const
{
    const int row = plan_.grid.height / 2;
    const int left = (width_ - columns) / 2;
    std::uint64_t bytes = 0;
    for (const PlacedFrame& frame : frames_) {
        const RowWindow window(frame.mapping, frame.facts, left, left + columns, plan_.interpolation);
        const RowSpan touched = window.Touched(row - grown_.Reach(), row + grown_.Reach());
        bytes += static_cast<std::uint64_t>(std::max(touched.end - touched.first - 1, 0)) * frame.RowBytes();
    }
    return bytes;
}

/// Columns of which the rows take no more than half the memory, as far as fewer columns touch fewer rows.
int BandCombiner::ColumnsOfStrip() const
{
    int columns = width_;
    while (columns / 2 >= kFewestColumns && Margins(columns) > memory_ / 2 && Margins(columns / 2) < Margins(columns)) {
        columns /= 2;
    }
    return columns;
}

/// Bytes that do not depend on how many rows a band has.
std::uint64_t BandCombiner::FixedBytes(int columns) const
{
    return Margins(columns) + frames_.size() * static_cast<std::uint64_t>(width_) * (sizeof(double) + sizeof(int));
}

/// Bytes of what one more row of the target takes of all frames.
double BandCombiner::BytesOfRow() const
{
    const auto marks = static_cast<double>(grown_.RowBytes());
    return std::accumulate(frames_.begin(), frames_.end(), marks, [](double sum, const PlacedFrame& frame) {
        return sum + static_cast<double>(frame.RowBytes()) * std::max(frame.mapping.Scale(), 1.0);
    });
}

/// Rows of the target whose frames fit the memory: of those no more than are of use, unless each band costs by itself.
/// What frames touch beyond the rows of a band is moved to the next one's.
int BandCombiner::RowsOfBand(int columns) const
{
    const double ofRow = std::max(BytesOfRow(), 1.0);
    const double fixed = static_cast<double>(FixedBytes(columns));
    const double fitting = (static_cast<double>(memory_) - fixed) / ofRow;
    const double useful = std::max({kFewestRows, kNearBytes / ofRow, static_cast<double>(Margins(columns)) / ofRow});
    return static_cast<int>(std::clamp(plan_.areBandsLong ? fitting : std::min(fitting, useful), 1.0,
                                       static_cast<double>(std::max(endRow_ - firstRow_, 1))));
}

/// Whether blanks become NaN, which passes on to all that is interpolated from it: where frames may lack pixels, and
/// where a kernel that reaches far would spread a blank's value.
bool BandCombiner::BlanksAreNan() const
{
    return plan_.coverage == Coverage::kAny || plan_.interpolation != Interpolation::kBilinear;
}

/// Reads rows, with the frame's own blanks turned into the plan's, or into NaN.
void BandCombiner::Read(const PlacedFrame& frame, int firstRow, int rowCount, float* samples,
                        std::ptrdiff_t planeStride) const
{
    source_.Read(frame.placement.frame, firstRow, rowCount, samples, planeStride);
    const bool staysBlank = !BlanksAreNan();
    if (!staysBlank || frame.facts.blank != plan_.blank) {
        ReplaceBlanks(frame.facts, staysBlank ? static_cast<float>(plan_.blank) : kNaN, rowCount, samples, planeStride);
    }
}

float* BandCombiner::In(CStlImage* image, const Stretch& stretch) const
{
    return image != nullptr ? image->GetImageAdr(stretch.x, stretch.row - firstRow_, stretch.plane) : nullptr;
}

void BandCombiner::CombineRow(int row, int plane, Workbench& bench)
{
    const bool isOwn = row >= band_.first && row < band_.end;
    const auto combine = [&](int left, int right, bool isMade) {
        for (int x = left; x < right; x += kStretch) {
            Combine({x, row, plane, std::min(kStretch, right - x)}, isMade, bench);
        }
    };
    const int right = left_ + columns_;
    combine(std::max(left_ - grown_.Reach(), 0), left_, false);
    combine(left_, right, isOwn);
    combine(right, std::min(right + grown_.Reach(), width_), false);
}

/// Makes a stretch if it is one's own, or judges it for the sake of those that are.
void BandCombiner::Combine(const Stretch& stretch, bool isOwn, Workbench& bench)
{
    SampleAll(stretch, bench);
    float unused[kStretch];
    const bool wantsBounds = bench.tally || grown_.Grows();
    CombinedRow result{.values = unused};
    if (isOwn) {
        result = {In(&target_.image, stretch), In(target_.coverage, stretch), In(target_.rejectedLow, stretch),
                  In(target_.rejectedHigh, stretch)};
        result.noise = In(target_.noise, stretch);
    }
    result.keptLow = wantsBounds ? bench.low : nullptr;
    result.keptHigh = wantsBounds ? bench.high : nullptr;
    const int fewest = bench.combiner.Combine(bench.lines.data(), stretch.count, result);
    bench.fewest = isOwn ? std::min(bench.fewest, fewest) : bench.fewest;
    if (isOwn && bench.tally) {
        bench.tally->Add(stretch.x, stretch.row, stretch.count, bench.lines, bench.low, bench.high);
    }
    grown_.Enter(stretch, bench.lines, bench.high);
}

/// Makes again what lies beside trails and hits.
void BandCombiner::GrowRow(int row, int plane, Workbench& bench) const
{
    for (const Stretch& stretch : bench.FindGrown(grown_, plane, row, left_, left_ + columns_)) {
        SampleAll(stretch, bench);
        CombinedRow result{.values = In(&target_.image, stretch),
                           .rejectedLow = In(target_.rejectedLow, stretch),
                           .rejectedHigh = In(target_.rejectedHigh, stretch),
                           .noise = In(target_.noise, stretch)};
        bench.CombineAgain(stretch, plan_.coverage, result);
    }
}

void BandCombiner::SampleAll(const Stretch& stretch, Workbench& bench) const
{
    for (std::size_t i = 0; i < frames_.size(); ++i) {
        Sample(frames_[i], stretch, bench.Values(i), bench.Valid(i));
    }
}

void BandCombiner::Sample(const PlacedFrame& frame, const Stretch& stretch, double* values, int* valid) const
{
    const auto& [left, row, plane, count] = stretch;
    frame.window.Sample(plane, left, row, count, plan_.blank, values, valid);
    if (plan_.coverage == Coverage::kAny) {
        frame.window.LeaveOutWrapped(left, row, count, valid);
    } else if (frame.usesBlank) {
        const BlankTest isBlank(plan_.blank);
        const bool isNanBlank = frame.facts.blank && BlanksAreNan();
        for (int x = 0; x < count; ++x) {
            values[x] = isNanBlank && std::isnan(values[x]) ? plan_.blank : values[x];
            valid[x] &= isBlank(values[x]) ? 0 : 1;
        }
    }
    Normalise(frame.placement, plan_.grid, stretch, values, valid);
}

void Check(const CombinePlan& plan, const FrameSource& source, const CombineTarget& target)
{
    const auto& [width, height, scale, left, top] = plan.grid;
    const CStlImage& image = target.image;
    if (!(scale > 0.0)) {
        throw ParameterError("scale", NumberText(scale), "must be above 0");
    }
    if (image.GetWidth() != width || target.firstRow < 0 || target.firstRow + image.GetHeight() > height) {
        throw InputError("target", "is no band of the grid, " + SizeText(width, height));
    }
    for (const Placement& placement : plan.frames) {
        if (source.Facts(placement.frame).planes != image.GetPlanes()) {
            throw InputError("frame " + std::to_string(placement.frame), "has other planes than the target");
        }
    }
}

} // namespace

void CombineFrames(const CombinePlan& plan, FrameSource& source, const CombineTarget& target, const Run& run,
                   const char* text)
{
    Check(plan, source, target);
    BandCombiner(plan, source, target).Combine(run, text);
}

} // namespace corvane::stack
